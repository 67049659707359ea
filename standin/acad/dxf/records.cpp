#include "records.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace dxf {

namespace {

constexpr std::uintmax_t kMaxFileSize = std::uintmax_t(256) << 20; // bytes
constexpr double kMaxNumber = 1e15; // drawing units; beyond, doubles hold no useful fraction
constexpr double kMaxInteger = 1e9;
constexpr size_t kMaxShown = 40; // characters of a value that a message shows
constexpr int kLowestCode = -5;
constexpr int kHighestCode = 1071;

std::string_view trimmed(std::string_view text) {
  constexpr char kBlanks[] = " \t\r";
  const size_t begin = text.find_first_not_of(kBlanks);
  return begin == std::string_view::npos ? std::string_view()
                                         : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

} // namespace

std::string printable(std::string_view value) {
  std::string result(value.substr(0, kMaxShown));
  std::replace_if(
      result.begin(), result.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return value.size() > kMaxShown ? result + "..." : result;
}

double Pair::number() const {
  // After the value comes a line's end or the end of the text, where strtod stops at the latest. An empty
  // value has no such end.
  char* end = nullptr;
  const double result = value.empty() ? NAN : std::strtod(value.data(), &end);
  if (end != value.data() + value.size() || !std::isfinite(result))
    throw BadFile(line, "\"" + printable(value) + "\" is not a number");
  if (std::fabs(result) > kMaxNumber)
    throw BadFile(line, "\"" + printable(value) + "\" is too large");
  return result;
}

const Pair* Record::find(int code) const {
  const auto found =
      std::find_if(pairs.begin(), pairs.end(), [code](const Pair& p) { return p.code == code; });
  return found == pairs.end() ? nullptr : &*found;
}

std::string_view Record::text(int code) const {
  const Pair* const pairP = find(code);
  return pairP ? pairP->value : std::string_view();
}

double Record::number(int code, double fallback) const {
  const Pair* const pairP = find(code);
  return pairP ? pairP->number() : fallback;
}

int Record::integer(int code, int fallback) const {
  return static_cast<int>(std::clamp(number(code, fallback), -kMaxInteger, kMaxInteger));
}

AcGePoint3d Record::point(int code) const {
  return {number(code), number(code + 10), number(code + 20)};
}

AcGeVector3d Record::normal() const {
  const AcGeVector3d direction(number(210), number(220), number(230));
  return direction.isZeroLength() ? AcGeVector3d::kZAxis : direction.normal();
}

std::vector<double> Record::numbers(int code) const {
  std::vector<double> result;
  for (const Pair& pair : pairs)
    if (pair.code == code)
      result.push_back(pair.number());
  return result;
}

std::vector<AcGePoint3d> Record::points(int code) const {
  std::vector<AcGePoint3d> result;
  for (const Pair& pair : pairs)
    if (pair.code == code)
      result.push_back({pair.number(), 0, 0});
    else if (pair.code == code + 10 && !result.empty())
      result.back().y = pair.number();
    else if (pair.code == code + 20 && !result.empty())
      result.back().z = pair.number();
  return result;
}

bool Records::readLine(std::string_view& line) {
  if (mRest.empty())
    return false;
  const size_t end = mRest.find('\n');
  line = trimmed(mRest.substr(0, end));
  mRest.remove_prefix(end == std::string_view::npos ? mRest.size() : end + 1);
  ++mLine;
  return true;
}

void Records::readNext() {
  std::string_view code;
  mHasNext = readLine(code);
  if (!mHasNext)
    return;
  const char* const end = code.data() + code.size();
  const auto [stop, failure] = std::from_chars(code.data(), end, mNext.code);
  if (failure != std::errc() || stop != end || mNext.code < kLowestCode || mNext.code > kHighestCode)
    throw BadFile(mLine, "\"" + printable(code) + "\" is not a group code");
  if (!readLine(mNext.value))
    throw BadFile(mLine, "the file ends between a group code and its value");
  mNext.line = mLine;
}

bool Records::read(Record& record) {
  while (mHasNext && mNext.code != 0) // before the first record
    readNext();
  if (!mHasNext)
    return false;
  record.kind = mNext.value;
  record.line = mNext.line;
  record.pairs.clear();
  record.vertices.clear();
  if (record.kind == "EOF")
    return true;
  for (readNext(); mHasNext && mNext.code != 0; readNext())
    record.pairs.push_back(mNext);
  if (record.kind == "POLYLINE")
    while (mHasNext && mNext.value == "VERTEX")
      read(record.vertices.emplace_back());
  return true;
}

std::string readTextFile(const std::string& path) {
  std::error_code failure;
  const std::uintmax_t size = std::filesystem::file_size(path, failure);
  if (failure)
    throw BadFile(failure.message());
  if (size > kMaxFileSize)
    throw BadFile("is larger than " + std::to_string(kMaxFileSize >> 20) + " MB");
  std::string text(static_cast<size_t>(size), '\0');
  std::ifstream in(path, std::ios::binary);
  if (!in.read(text.data(), static_cast<std::streamsize>(size)))
    throw BadFile("cannot be read");
  if (text.empty())
    throw BadFile("the file is empty");
  if (text.compare(0, 18, "AutoCAD Binary DXF") == 0)
    throw BadFile("a DXF file in binary form; save it as text");
  const auto zero = std::find(text.begin(), text.end(), '\0');
  if (zero != text.end())
    throw BadFile(static_cast<size_t>(std::count(text.begin(), zero, '\n')) + 1, "not a text file");
  return text;
}

} // namespace dxf
