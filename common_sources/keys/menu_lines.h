#ifndef MENU_LINES_H
#define MENU_LINES_H

#include <functional>
#include <string>

// The form of the menu file.

constexpr char kMenuFileName[] = "autocad.mnu";

using AddMenuLine = std::function<void(const std::string& name, const std::string& value)>;

/// Reads a menu file from its start, and hands over the lines of its two sections in order. Returns false if
/// it can't be opened; nothing is handed over then.
bool readMenuLines(const std::string& path, const AddMenuLine& addMode, const AddMenuLine& addEntry);

/// Extracts the macro of an entry's value: the text after the first "}", up to the next "|". Returns false if
/// there is none.
bool cutMacro(const std::string& value, std::string& macro);

#endif
