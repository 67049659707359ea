#ifndef PARAMETER_TEXT_H
#define PARAMETER_TEXT_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

/// Parameters as the settings file has them, to and from text. Any thread.

/// The text with blanks behind it, up to that many columns; a longer one as it is.
std::string padded(std::string text, std::size_t width);

/// One parameter line of the settings file, its line feed included.
/// head     tab, key, "=" and blank, 25 characters
/// width    columns that the value takes; a longer one takes its own length
/// comment  with its "#"
void writeParameterLine(std::ostream& os, const char* key, const std::string& value, int width,
                        const char* comment);

/// The number that a text starts with, 0 if it doesn't start with one. A number out of range becomes the
/// nearest one that fits.
std::int32_t toNumber(const std::string& text);

#endif
