#ifndef MENU_EXPRESSION_H
#define MENU_EXPRESSION_H

#include <string>
#include <vector>

namespace host {

/// Works out a bracketed expression of the command line: (command ...), with texts in quotes and
/// (menucmd "M=...") in it. The text of menucmd holds $(name,argument,...), nested as one likes; names are
/// getvar, if, =, !=, < and >. False for anything else.
/// inputs  what the expression types, an empty one being a bare Enter
bool evaluateExpression(const std::wstring& text, std::vector<std::wstring>& inputs);

} // namespace host

#endif
