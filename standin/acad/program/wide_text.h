#ifndef WIDE_TEXT_H
#define WIDE_TEXT_H

#include <string>

namespace program {

/// Returns UTF-8 as the host's wide text. Bytes that are not UTF-8 become U+FFFD.
std::wstring widened(const std::string& text);
/// Returns wide text as UTF-8. Invalid units become U+FFFD.
std::string narrowed(const std::wstring& text);

} // namespace program

#endif
