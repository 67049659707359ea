#ifndef TEXT_H
#define TEXT_H

#include <string>

namespace host {

/// Text byte by byte; a character that has no byte becomes a question mark.
std::string narrow(const std::wstring& text);
std::wstring widen(const std::string& text);
std::wstring lowered(const std::wstring& text);

} // namespace host

#endif
