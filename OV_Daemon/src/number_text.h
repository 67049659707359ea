#ifndef NUMBER_TEXT_H
#define NUMBER_TEXT_H

#include <cstddef>

/// Room that the functions below need at most, characters.
constexpr std::size_t kNumberRoom = 24;

/// Writes a number as an output stream does that is as good as new: six digits, no zeros at the end, "C"
/// locale. Gives the characters written, without a terminator; 0 if the number is one of the few that take
/// the long way, those below 0.0001 and from 999999.5 up, and those whose last digit hangs by a hair.
///
/// A number of a record costs more than all the rest of it on the stream's own way.
std::size_t writeNumber(char* to, double value);

/// Writes a number in decimal. Gives the characters written.
std::size_t writeNumber(char* to, int value);
std::size_t writeNumber(char* to, unsigned value);

#endif
