#ifndef TEXT_H
#define TEXT_H

#include <string>

namespace host {

/// Converts character by character; one above 0xFF becomes a question mark.
std::string narrow(const std::wstring& text);
std::wstring widen(const std::string& text);
std::wstring lowered(const std::wstring& text);

} // namespace host

#endif
