#include "report_page.h"

#include "page.h"

#include <nlohmann/json.hpp>

#include <stdexcept>

namespace program {

namespace {

using nlohmann::json;

void replaceOnce(std::string& text, const std::string& mark, const std::string& by) {
  const std::size_t at = text.find(mark);
  if (at == std::string::npos)
    throw std::logic_error("the page has no place " + mark);
  text.replace(at, mark.size(), by);
}

/// Returns a JSON text that may be put inside a script element: nothing in it can end the element or open a
/// comment.
std::string forScriptElement(const json& value) {
  std::string out;
  for (const char c : jsonText(value)) {
    // These characters occur only inside JSON's strings, where the escaped form means the same.
    if (c == '<')
      out += "\\u003c";
    else if (c == '>')
      out += "\\u003e";
    else
      out += c;
  }
  return out;
}

} // namespace

std::string jsonText(const json& value) {
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string pageWith(const json& data) {
  std::string page = kPage;
  // The data goes in last, so that nothing in it is taken for a mark.
  replaceOnce(page, "@@STYLE@@", kPageStyle);
  replaceOnce(page, "@@LIBRARIES@@", kPageLibraries);
  replaceOnce(page, "@@SCRIPT@@", kPageScript);
  replaceOnce(page, "@@SESSION@@", forScriptElement(data));
  return page;
}

} // namespace program
