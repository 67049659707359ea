#ifndef RECORDS_H
#define RECORDS_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "gepnt.h"

namespace dxf {

/// Why a file can't be read: what follows its path in the message.
class BadFile : public std::runtime_error {
public:
  explicit BadFile(const std::string& reason) : runtime_error(": " + reason) {}
  BadFile(size_t line, const std::string& reason)
      : runtime_error(":" + std::to_string(line) + ": " + reason) {}
};

/// The value without control characters and not too long, for a message.
std::string printable(std::string_view value);

/// A group code with its value, which is part of the file's text.
struct Pair {
  int code = 0;
  std::string_view value;
  size_t line = 0; // of the value, from 1

  /// Throws BadFile if the value is no number or too large.
  double number() const;
};

/// The pairs from one code 0 to the next: an entity, the begin or end of a block or section. Of a code that
/// comes more than once, the first pair counts. Nobody asks for comments, code 999.
struct Record {
  std::string_view kind; // value of the code 0
  size_t line = 0;
  std::vector<Pair> pairs;      // without the code 0
  std::vector<Record> vertices; // of a POLYLINE

  /// Null if there is none.
  const Pair* find(int code) const;
  std::string_view text(int code) const;
  double number(int code, double fallback = 0) const;
  int integer(int code, int fallback = 0) const;
  /// The point with x in this code, y in code + 10 and z in code + 20. Missing coordinates are 0.
  AcGePoint3d point(int code) const;
  /// Direction of an entity's plane, of length 1; world Z unless given.
  AcGeVector3d normal() const;
  /// All values of a code that is repeated, and all points.
  std::vector<double> numbers(int code) const;
  std::vector<AcGePoint3d> points(int code) const;
};

/// Splits a file's text, which must outlive it and what it reads, into records. Throws BadFile where the text
/// isn't made of pairs.
class Records {
public:
  explicit Records(std::string_view text) : mRest(text) { readNext(); }

  /// Reads the next record, a POLYLINE with its vertices. False at the end of the text. What follows EOF
  /// isn't looked at.
  bool read(Record& record);
  /// Number of the last line that was looked at.
  size_t line() const { return mLine; }

private:
  bool readLine(std::string_view& line);
  /// Puts the next pair into mNext.
  void readNext();

  std::string_view mRest;
  size_t mLine = 0;
  Pair mNext;
  bool mHasNext = false;
};

/// The whole of a text file. Throws BadFile if it can't be read, is empty or is none.
std::string readTextFile(const std::string& path);

} // namespace dxf

#endif
