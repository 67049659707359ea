#ifndef PARAMETER_H
#define PARAMETER_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <variant>

#include "util.h"

/// Returns the text with blanks after it, up to that many columns; a longer one as it is.
std::string padded(std::string text, std::size_t width);

/// Returns the number that a text starts with, 0 if it doesn't start with one. A number out of range becomes
/// the nearest one that fits.
std::int32_t toNumber(const std::string& text);

/// One parameter of the settings file, a field of an Owner. A table of these drives reading, writing and the
/// dump for the log. Any thread.
template <class Owner> struct Parameter {
  const char* key;
  std::variant<std::string Owner::*, std::int32_t Owner::*, bool Owner::*> field;
  const char* name;         // of the field, for the dump
  const char* defaultValue; // as the file writes it
  const char* comment;      // in the file, with its "#"

  /// Sets the field from the file's text.
  void read(Owner& owner, const std::string& text) const {
    if (const auto* const textP = std::get_if<std::string Owner::*>(&field))
      owner.** textP = text;
    else if (const auto* const numberP = std::get_if<std::int32_t Owner::*>(&field))
      owner.** numberP = toNumber(text);
    else
      owner.*std::get<bool Owner::*>(field) = Util::isOn(text);
  }

  /// Writes the file's line.
  /// width  columns that the value takes; a longer one takes its own length
  void write(std::ostream& os, const Owner& owner, int width) const {
    std::string text;
    if (const auto* const textP = std::get_if<std::string Owner::*>(&field))
      text = owner.**textP;
    else if (const auto* const numberP = std::get_if<std::int32_t Owner::*>(&field))
      text = std::to_string(owner.**numberP);
    else
      text = Util::onOffText(owner.*std::get<bool Owner::*>(field));
    writeLine(os, text, width);
  }

  /// Writes the file's line with that value.
  void writeLine(std::ostream& os, const std::string& text, int width) const {
    constexpr std::size_t kKeyWidth = 22;
    os << '\t' << padded(key, kKeyWidth) << "= " << padded(text, static_cast<std::size_t>(width)) << comment
       << '\n';
  }

  /// Writes name and value for the log, on/off values as 1 and 0.
  /// width  columns that the name takes, right-aligned
  void dump(std::ostream& os, const Owner& owner, std::size_t width) const {
    const std::string text = name;
    os << std::string(width - (std::min)(width, text.size()), ' ') << text << ": ";
    std::visit([&](auto member) { os << owner.*member; }, field);
  }
};

#endif
