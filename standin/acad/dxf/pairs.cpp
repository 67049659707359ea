#include "pairs.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace dxf {

namespace {

constexpr std::uintmax_t kMaxFileSize = std::uintmax_t(1) << 30; // bytes
constexpr double kMaxNumber = 1e15;  // drawing units; beyond, doubles hold no useful fraction
constexpr size_t kMaxShown = 40;     // characters of a bad value that a message shows
constexpr size_t kMaxValue = 255;    // characters of a name that are kept
constexpr long kMaxInt = 1000000000; // more vertices or faces no file of ours can hold
constexpr int kLowestCode = -5;
constexpr int kHighestCode = 1071;

struct Pair {
  int code = 0;
  std::string value;
};

std::string shown(const std::string& value) {
  std::string result = "\"";
  for (const char c : value.substr(0, kMaxShown))
    result += c >= ' ' && c <= '~' ? c : '?';
  return result + (value.size() > kMaxShown ? "...\"" : "\"");
}

std::string trimmed(const char* begin, const char* end) {
  while (begin < end && (*begin == ' ' || *begin == '\t'))
    ++begin;
  while (begin < end && (end[-1] == ' ' || end[-1] == '\t' || end[-1] == '\r'))
    --end;
  return std::string(begin, end);
}

/// Gives a file's pairs one after the other.
class PairReader {
public:
  explicit PairReader(const std::string& text) : mNext(text.data()), mEnd(text.data() + text.size()) {}

  /// Number of the line that the last pair's value stands in.
  size_t line() const { return mLine; }

  /// False at the end of the file.
  bool read(Pair& pair) {
    std::string code;
    if (!readLine(code) || (code.empty() && mNext == mEnd))
      return false;
    char* end = nullptr;
    const long number = std::strtol(code.c_str(), &end, 10);
    if (code.empty() || *end || number < kLowestCode || number > kHighestCode)
      throw BadFile(mLine, shown(code) + " is no group code");
    pair.code = static_cast<int>(number);
    if (!readLine(pair.value))
      throw BadFile(mLine, "the file ends between a group code and its value");
    return true;
  }

private:
  bool readLine(std::string& text) {
    if (mNext == mEnd)
      return false;
    const char* const end = std::find(mNext, mEnd, '\n');
    text = trimmed(mNext, end);
    mNext = end == mEnd ? mEnd : end + 1;
    ++mLine;
    return true;
  }

  const char* mNext;
  const char* mEnd;
  size_t mLine = 0;
};

bool isCoordinate(int code) {
  return (code >= 10 && code <= 59) || (code >= 210 && code <= 239);
}

/// Codes that our entities are made of. The rest (handles, colours, extra data of applications) can stay
/// away.
bool isOfUse(int code) {
  return code == 0 || code == 2 || code == 8 || isCoordinate(code) || (code >= 66 && code <= 79) ||
         code == 90;
}

bool isKnownKind(const std::string& kind) {
  static const std::set<std::string> kKnown = {
      "LINE",   "POINT",  "CIRCLE", "ARC",   "ELLIPSE", "LWPOLYLINE", "POLYLINE", "VERTEX",
      "SEQEND", "INSERT", "3DFACE", "SOLID", "TRACE",   "SPLINE",     "BLOCK",    "ENDBLK"};
  return kKnown.count(kind) != 0;
}

void checkNumber(const Pair& pair, size_t line) {
  const char* const text = pair.value.c_str();
  char* end = nullptr;
  const double value = std::strtod(text, &end);
  if (end == text || *end || !std::isfinite(value))
    throw BadFile(line, shown(pair.value) + " is no number");
  if (std::fabs(value) > kMaxNumber)
    throw BadFile(line, shown(pair.value) + " is too large for a coordinate");
}

typedef std::vector<Pair> Pairs;

int intOf(const Pairs& pairs, int code) {
  for (const Pair& pair : pairs)
    if (pair.code == code)
      return static_cast<int>(std::clamp(std::strtol(pair.value.c_str(), nullptr, 10), -kMaxInt, kMaxInt));
  return 0;
}

std::string textOf(const Pairs& pairs, int code) {
  for (const Pair& pair : pairs)
    if (pair.code == code)
      return pair.value;
  return "0";
}

/// Collects entities and writes them out when they are whole. A polyline is whole with all its vertices.
class EntityWriter {
public:
  explicit EntityWriter(std::map<std::string, int>& skipped) : mSkipped(skipped) {}

  void start(const std::string& kind) {
    finishEntity();
    if (kind != "VERTEX")
      finishPolyline();
    mKind = kind;
    mIsKnown = isKnownKind(kind);
  }
  /// Whether it is worth looking at the pairs of the entity.
  bool isKnown() const { return mIsKnown; }
  void add(const Pair& pair) {
    if (isOfUse(pair.code))
      mPairs.push_back(pair);
  }
  void finish() {
    finishEntity();
    finishPolyline();
  }
  void writePair(int code, const std::string& value) { mOut << code << '\n' << value << '\n'; }
  std::string text() const { return mOut.str(); }

private:
  void finishEntity() {
    constexpr int kPaperSpace = 67;
    if (mKind == "VERTEX")
      mVertices.push_back(std::move(mPairs));
    else if (!mKind.empty() && !mIsKnown)
      ++mSkipped[mKind.substr(0, kMaxShown)];
    else if (mIsKnown && !isFrame() && intOf(mPairs, kPaperSpace) == 1)
      ++mSkipped["entity on a layout"];
    else if (mKind == "POLYLINE") {
      mPolyline = std::move(mPairs);
      mIsInPolyline = true;
    } else if (mIsKnown && mKind != "SEQEND")
      writeEntity();
    mKind.clear();
    mIsKnown = false;
    mPairs.clear();
  }

  /// What only stands around entities. A layout's block is read as a block that nobody inserts.
  bool isFrame() const { return mKind == "BLOCK" || mKind == "ENDBLK" || mKind == "SEQEND"; }

  void writeEntity() {
    std::set<int> counts;
    if (mKind == "LWPOLYLINE")
      counts = {90};
    else if (mKind == "SPLINE")
      counts = {72, 73, 74};
    writePair(0, mKind);
    if (mKind == "LWPOLYLINE")
      writeCount(90, 10);
    if (mKind == "SPLINE") {
      writeCount(72, 40);
      writeCount(73, 10);
      writeCount(74, 11);
    }
    writePairs(mPairs, counts);
  }
  void writeCount(int code, int counted) {
    writePair(code, std::to_string(std::count_if(mPairs.begin(), mPairs.end(),
                                                 [counted](const Pair& p) { return p.code == counted; })));
  }
  void writePairs(const Pairs& pairs, const std::set<int>& leftOut) {
    for (const Pair& pair : pairs)
      if (leftOut.count(pair.code) == 0)
        writePair(pair.code, pair.value.substr(0, kMaxValue));
  }

  /// Points that lie on the line or mesh come first. dxflib passes over the faces of a mesh, so they go in
  /// the guise of points behind them, with their corners as coordinates and bulge; the mesh's first size says
  /// where they begin.
  void finishPolyline() {
    constexpr int kIsFaceMesh = 64;
    if (mIsInPolyline) {
      const bool isFaceMesh = (intOf(mPolyline, 70) & kIsFaceMesh) != 0;
      Pairs points;
      Pairs faces;
      int count = 0;
      for (const Pairs& vertex : mVertices)
        addVertex(vertex, isFaceMesh, points, faces, count);
      writePair(0, "POLYLINE");
      if (isFaceMesh)
        writePair(71, std::to_string(count));
      writePairs(mPolyline, isFaceMesh ? std::set<int>{71} : std::set<int>());
      writePairs(points, {});
      writePairs(faces, {});
      writePair(0, "SEQEND");
    }
    mIsInPolyline = false;
    mPolyline.clear();
    mVertices.clear();
  }
  static void addVertex(const Pairs& vertex, bool isFaceMesh, Pairs& points, Pairs& faces, int& count) {
    constexpr int kSplineControl = 16;
    constexpr int kMeshCorner = 64;
    constexpr int kFaceMeshPart = 128;
    const int flags = intOf(vertex, 70);
    if (isFaceMesh && (flags & kFaceMeshPart) && !(flags & kMeshCorner)) {
      faces.push_back({0, "VERTEX"});
      const int carriers[] = {10, 20, 30, 42};
      for (int i = 0; i < 4; ++i)
        faces.push_back({carriers[i], std::to_string(std::abs(intOf(vertex, 71 + i)))});
    } else if (!(flags & kSplineControl)) { // such a point shapes the line, but doesn't lie on it
      ++count;
      points.push_back({0, "VERTEX"});
      for (const int code : {10, 20, 30, 42})
        points.push_back({code, textOf(vertex, code)});
    }
  }

  std::map<std::string, int>& mSkipped;
  std::string mKind; // empty: between entities
  bool mIsKnown = false;
  Pairs mPairs;
  bool mIsInPolyline = false;
  Pairs mPolyline;
  std::vector<Pairs> mVertices;
  std::ostringstream mOut;
};

/// The file's order: sections from "0 SECTION" to "0 ENDSEC", then "0 EOF".
class Checker {
public:
  Checker(const std::string& text, std::map<std::string, int>& skipped) : mReader(text), mWriter(skipped) {}

  std::string run() {
    Pair pair;
    while (mReader.read(pair)) {
      if (pair.code == 999) // a comment
        continue;
      if (pair.code == 0 && pair.value == "EOF") {
        end();
        return mWriter.text();
      }
      if (mSection.empty())
        startSection(pair);
      else if (pair.code == 0 && pair.value == "ENDSEC")
        endSection();
      else if (isShown())
        takePair(pair);
    }
    throw BadFile(mReader.line(), mHasSection ? "the file ends without EOF, it is not whole"
                                              : "no section, this is no DXF file");
  }

private:
  bool isShown() const { return mSection == "ENTITIES" || mSection == "BLOCKS"; }

  void startSection(const Pair& pair) {
    // Some writers end a section too soon. Its rest names no entities, and nothing is lost with it.
    if (pair.code != 0 || pair.value == "ENDSEC")
      return;
    if (pair.value != "SECTION")
      throw BadFile(mReader.line(), "a section should begin here, not " + shown(pair.value));
    Pair name;
    if (!mReader.read(name) || name.code != 2 || name.value.empty())
      throw BadFile(mReader.line(), "a section without a name");
    mSection = name.value;
    mHasSection = true;
    if (isShown()) {
      mWriter.writePair(0, "SECTION");
      mWriter.writePair(2, mSection);
    }
  }
  void endSection() {
    if (isShown()) {
      mWriter.finish();
      mWriter.writePair(0, "ENDSEC");
    }
    mSection.clear();
  }
  void takePair(const Pair& pair) {
    if (pair.code == 0) {
      mWriter.start(pair.value);
      return;
    }
    if (!mWriter.isKnown())
      return;
    if (isCoordinate(pair.code))
      checkNumber(pair, mReader.line());
    mWriter.add(pair);
  }
  void end() {
    if (!mSection.empty())
      throw BadFile(mReader.line(), "EOF inside the section " + shown(mSection));
    if (!mHasSection)
      throw BadFile(mReader.line(), "no section, this is no DXF file");
    mWriter.writePair(0, "EOF");
  }

  PairReader mReader;
  EntityWriter mWriter;
  std::string mSection; // empty: between sections
  bool mHasSection = false;
};

} // namespace

std::string checkedEntities(const std::string& text, std::map<std::string, int>& skipped) {
  return Checker(text, skipped).run();
}

std::string readTextFile(const std::string& path) {
  std::error_code failure;
  if (std::filesystem::is_directory(path, failure))
    throw BadFile("is a folder");
  std::ifstream in(path, std::ios::binary);
  if (!in)
    throw BadFile("cannot be opened");
  const std::uintmax_t size = std::filesystem::file_size(path, failure);
  if (!failure && size > kMaxFileSize)
    throw BadFile("is larger than 1 GB");
  std::ostringstream content;
  content << in.rdbuf();
  std::string text = content.str();
  if (text.empty())
    throw BadFile("the file is empty");
  if (text.compare(0, 18, "AutoCAD Binary DXF") == 0)
    throw BadFile("a DXF file in binary form; save it as text");
  const size_t zero = text.find('\0');
  if (zero != std::string::npos)
    throw BadFile(static_cast<size_t>(
                      std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(zero), '\n')) +
                      1,
                  "not a text file");
  return text;
}

} // namespace dxf
