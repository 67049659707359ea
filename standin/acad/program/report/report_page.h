#ifndef REPORT_PAGE_H
#define REPORT_PAGE_H

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace program {

/// The page with data, as it stands: a session, or {"live": {"host": ADDRESS}}.
std::string pageWith(const nlohmann::json& data);

/// Returns the text of a value; what isn't UTF-8 in it is replaced.
std::string jsonText(const nlohmann::json& value);

} // namespace program

#endif
