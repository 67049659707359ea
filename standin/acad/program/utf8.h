#ifndef UTF8_H
#define UTF8_H

#include <string>

namespace program {

/// UTF-8 to the host's wide text. Bytes that are no UTF-8 become U+FFFD.
std::wstring widened(const std::string& text);
/// Wide text to UTF-8. What is no character becomes U+FFFD.
std::string narrowed(const std::wstring& text);

} // namespace program

#endif
