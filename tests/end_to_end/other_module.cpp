// A plug-in that only writes down what the host tells it.
#include <cstdlib>
#include <fstream>
#include <string>

#ifdef _WIN32
#define OV_EXPORT extern "C" __declspec(dllexport)
#else
#define OV_EXPORT extern "C" __attribute__((visibility("default")))
#endif

#include "rxapp.h"

namespace {

std::string variable(const char* name) {
  const char* const valueP = std::getenv(name);
  return valueP ? valueP : "";
}

} // namespace

OV_EXPORT AcRx::AppRetCode acrxEntryPoint(int messageCode, void* applicationData);
OV_EXPORT int acrxGetApiVersion();

AcRx::AppRetCode acrxEntryPoint(int messageCode, void* applicationData) {
  std::ofstream(variable("OV_TEST_MESSAGES"), std::ios::app) << messageCode << (applicationData ? " " : "! ");
  return variable("OV_TEST_REFUSED") == std::to_string(messageCode) ? AcRx::kRetError : AcRx::kRetOK;
}

int acrxGetApiVersion() {
  return variable("OV_TEST_VERSION").empty() ? 0x170000 : std::atoi(variable("OV_TEST_VERSION").c_str());
}
