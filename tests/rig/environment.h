#ifndef ENVIRONMENT_H
#define ENVIRONMENT_H

#include <cstdlib>
#include <string>

namespace rig {

/// Sets an environment variable for this process and those that it starts.
inline void setEnvironment(const char* name, const std::string& value) {
#ifdef _WIN32
  _putenv_s(name, value.c_str());
#else
  setenv(name, value.c_str(), 1);
#endif
}

} // namespace rig

#endif
