#include "report_page.h"

#include "page.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <stdexcept>

namespace program {

namespace {

using nlohmann::json;

/// Survey coordinates have seven digits before the point, and a line that a view turns about is worked out from the
/// small differences of two views.
constexpr int kSignificantDigits = 11;

double rounded(double value) {
  if (value == 0 || !std::isfinite(value))
    return value;
  const double scale = std::pow(10.0, kSignificantDigits - 1 - std::floor(std::log10(std::fabs(value))));
  const double result = std::round(value * scale) / scale;
  return std::isfinite(result) ? result : value;
}

void roundAll(json& value) {
  if (value.is_number_float()) {
    value = rounded(value.get<double>());
  } else if (value.is_structured()) {
    for (json& part : value)
      roundAll(part);
  }
}

void replaceOnce(std::string& text, const std::string& mark, const std::string& by) {
  const std::size_t at = text.find(mark);
  if (at == std::string::npos)
    throw std::logic_error("the page has no place " + mark);
  text.replace(at, mark.size(), by);
}

} // namespace

std::string forScriptElement(const json& value) {
  // Text of a log or a drawing need not be UTF-8; what isn't is replaced rather than refused.
  const std::string text = value.dump(-1, ' ', false, json::error_handler_t::replace);
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
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

std::string reportPage(const json& session) {
  json data = session;
  if (data.contains("frames"))
    roundAll(data["frames"]);
  if (data.contains("drawing"))
    roundAll(data["drawing"]);
  return pageWith(data);
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
