#ifndef REPORT_PAGE_H
#define REPORT_PAGE_H

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace program {

/// Returns the complete page with its data: a session, or {"live": {"host": ADDRESS}}.
std::string pageWith(const nlohmann::json& data);

/// Returns the JSON text of a value. Invalid UTF-8 is replaced.
std::string jsonText(const nlohmann::json& value);

} // namespace program

#endif
