#ifndef MENU_EXPRESSION_H
#define MENU_EXPRESSION_H

#include <string>
#include <vector>

namespace host {

/// Evaluates a bracketed expression of the command line: (command ...), with texts in quotes and (menucmd
/// "M=...") in it. The text of menucmd may hold $(name,argument,...), nested; names are getvar, if, =, !=, <
/// and >. Returns false for anything else.
/// inputs  what the expression types; empty for a bare Enter
bool evaluateExpression(const std::wstring& text, std::vector<std::wstring>& inputs);

} // namespace host

#endif
