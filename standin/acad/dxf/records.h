#ifndef RECORDS_H
#define RECORDS_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "gepnt.h"

namespace dxf {

/// The reason why a file can't be read, as it follows the path in the message.
class BadFile : public std::runtime_error {
public:
  explicit BadFile(const std::string& reason) : runtime_error(": " + reason) {}
  BadFile(size_t line, const std::string& reason)
      : runtime_error(":" + std::to_string(line) + ": " + reason) {}
};

/// Returns the value for a message: printable and not too long.
std::string printable(std::string_view value);

/// A group code with its value, which is part of the file's text.
struct Pair {
  int code = 0;
  std::string_view value;
  size_t line = 0; // of the value, from 1

  /// Throws BadFile if the value isn't a number or is too large.
  double number() const;
};

/// The pairs from one code 0 to the next: an entity, the begin or end of a block or section. The operations
/// for one value take the first pair of a code.
struct Record {
  std::string_view kind; // value of the code 0
  size_t line = 0;
  std::vector<Pair> pairs;      // without the code 0
  std::vector<Record> vertices; // of a POLYLINE

  /// Returns the first pair of a code, null if there is none.
  const Pair* find(int code) const;
  std::string_view text(int code) const;
  double number(int code, double fallback = 0) const;
  int integer(int code, int fallback = 0) const;
  /// Returns the point with x in this code, y in code + 10 and z in code + 20. Missing coordinates are 0.
  AcGePoint3d point(int code) const;
  /// Returns the normal of the entity's plane, a unit vector; world Z if there is none.
  AcGeVector3d normal() const;
  /// Return all values or points of a repeated code.
  std::vector<double> numbers(int code) const;
  std::vector<AcGePoint3d> points(int code) const;
};

/// Splits a file's text, which must outlive it and what it reads, into records. Throws BadFile where the text
/// isn't made of pairs.
class Records {
public:
  explicit Records(std::string_view text) : mRest(text) { readNext(); }

  /// Reads the next record, a POLYLINE with its vertices. Returns false at the end of the text. Text after
  /// EOF is ignored.
  bool read(Record& record);
  /// Returns the number of the last line read.
  size_t line() const { return mLine; }

private:
  bool readLine(std::string_view& line);
  /// Reads the next pair into mNext.
  void readNext();

  std::string_view mRest;
  size_t mLine = 0;
  Pair mNext;
  bool mHasNext = false;
};

/// Returns the text of a file. Throws BadFile if it can't be read, is empty or isn't a text file.
std::string readTextFile(const std::string& path);

} // namespace dxf

#endif
