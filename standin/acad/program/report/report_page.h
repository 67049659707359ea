#ifndef REPORT_PAGE_H
#define REPORT_PAGE_H

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace program {

/// The report: one page that needs nothing beside it, made from a session's data.
/// Numbers are rounded to what a picture needs; the full ones are in session.json.
std::string reportPage(const nlohmann::json& session);

/// The page with data, as it stands: a session, or {"live": {"host": ADDRESS}}.
std::string pageWith(const nlohmann::json& data);

/// Returns a JSON text that may be put inside a script element: nothing in it can end the element or open a
/// comment.
std::string forScriptElement(const nlohmann::json& value);

} // namespace program

#endif
