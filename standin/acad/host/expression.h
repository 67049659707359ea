#ifndef EXPRESSION_H
#define EXPRESSION_H

#include <functional>
#include <string>

namespace host {

/// Runs a bracketed expression of the command line: (command ...) with texts and (menucmd ...) in it,
/// (menucmd "..."), or (NAME) for a function that an application has lent. take   gets the inputs that a
/// (command ...) types; an empty one is a bare Enter error  the reason, if the result is false
bool evaluateExpression(const std::wstring& text, const std::function<void(const std::wstring&)>& take,
                        std::wstring& error);

} // namespace host

#endif
