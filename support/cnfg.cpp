#include "cnfg.h"

#include <algorithm>

#include "util.h"

namespace {

constexpr char kBlanks[] = " \t";

void trimBlanks(std::string& text) {
  const std::size_t last = text.find_last_not_of(kBlanks);
  text.erase(last == std::string::npos ? 0 : last + 1);
  text.erase(0, text.find_first_not_of(kBlanks));
}

} // namespace

Cnfg::Cnfg() : mCommentChar('#'), mIsLoaded(false), mError(kOk), mLineIndex(0) {}

Cnfg::Cnfg(const std::string& fileName, int& status) : Cnfg() {
  status = open(fileName);
}

int Cnfg::setError(std::int32_t code) {
  mError = code;
  return code;
}

int Cnfg::open(const std::string& fileName) {
  mLineEnds = "#\r\n";
  mCommentChar = mLineEnds[0];
  mSeparators = "=\t";
  mIsLoaded = false;
  mLines.clear();
  mLineIndex = 0;
  mFileName = fileName;
  mFile.close();
  mFile.clear();
  if (!Util::fileExists(fileName))
    return setError(kNoFile);
  // Binary: readLine handles both kinds of line ends, alike on every system.
  mFile.open(Util::nativePath(fileName), std::ios::in | std::ios::binary);
  return setError(mFile.is_open() ? kOk : kNoFile);
}

/// Reads a line, without its line feed and a carriage return directly before that. Returns false at the end
/// of the file, with an empty line.
bool Cnfg::readLine(std::string& line) {
  line.clear();
  if (!mFile.good())
    return false;
  // Not with getline: without memory it would end the file here, and the keys after it would be missing.
  for (int c = mFile.get(); mFile.good() && c != '\n'; c = mFile.get())
    line += static_cast<char>(c);
  if (!mFile.eof() && !line.empty() && line.back() == '\r')
    line.pop_back();
  return true;
}

Cnfg::Kind Cnfg::kindOf(const std::string& line) const {
  const std::size_t first = line.find_first_not_of(kBlanks);
  if (first == std::string::npos)
    return Kind::Blank;
  if (line[first] == mCommentChar)
    return Kind::Comment;
  return line[first] == '[' ? Kind::Section : Kind::Parameter;
}

bool Cnfg::isSectionLine(const std::string& line, const std::string& section) const {
  if (kindOf(line) != Kind::Section)
    return false;
  const std::size_t open = line.find('[');
  const std::size_t close = line.find(']', open);
  return close != std::string::npos && line.compare(open + 1, close - open - 1, section) == 0;
}

Cnfg::Places Cnfg::placesIn(const std::string& line) const {
  Places places;
  places.name = (std::min)(line.find_first_not_of(kBlanks), line.size());
  places.separator = (std::min)(line.find_first_of(mSeparators, places.name), line.size());
  places.nameEnd = places.separator;
  while (places.nameEnd > places.name && line[places.nameEnd - 1] == ' ')
    --places.nameEnd;
  places.value = (std::min)(line.find_first_not_of(mSeparators, places.separator), line.size());
  places.tail = (std::min)(line.find_first_of(mLineEnds, places.value), line.size());
  return places;
}

void Cnfg::cutNameAndValue(const std::string& line, std::string& name, std::string& value) const {
  const Places places = placesIn(line);
  name.assign(line, places.name, places.nameEnd - places.name);
  value.assign(line, places.value, places.tail - places.value);
}

int Cnfg::selectSection(const std::string& section) {
  setError(kOk);
  mSection = section;
  mFile.clear();
  mFile.seekg(0);
  std::string line;
  while (readLine(line)) {
    if (isSectionLine(line, section))
      return mError;
  }
  return setError(kNoSection);
}

int Cnfg::readNextParameter(std::string& name, std::string& value, bool trim) {
  setError(kOk);
  if (!mFile.good())
    return setError(kNoMoreParameters);
  std::string line;
  do {
    readLine(line);
  } while (!line.empty() && (line[0] == mCommentChar || line[0] == '\r'));

  if (kindOf(line) == Kind::Parameter) {
    cutNameAndValue(line, name, value);
  } else {
    name.clear();
    value.clear();
  }
  if (trim)
    trimBlanks(value);
  if (name.empty())
    setError(kNoMoreParameters);
  return mError;
}

int Cnfg::readParameter(const std::string& name, std::string& value, const std::string& section, bool trim) {
  setError(kOk);
  mParameter = name;
  if (!section.empty() && selectSection(section) != kOk)
    return mError;
  std::string found;
  do {
    if (readNextParameter(found, value, trim) != kOk)
      return setError(kNoParameter);
  } while (found != name);
  return mError;
}

int Cnfg::readParameterAt(std::string& name, std::string& value, const std::string& section, unsigned index,
                          bool trim) {
  mParameter = name;
  if (selectSection(section) != kOk)
    return mError;
  for (std::uint64_t i = 0; i <= index; ++i) {
    if (readNextParameter(name, value, trim) != kOk)
      return setError(kNoParameter);
  }
  return mError;
}

std::string Cnfg::errorText() const {
  switch (mError) {
  case kOk:
    return "OK";
  case kNoFile:
    return "File '" + mFileName + "' not found!";
  case kNoSection:
    return "Section '" + mSection + "' not found!";
  case kNoParameter:
    return "Parameter '" + mParameter + "' in section '" + mSection + "' not found! (" + mFileName + ")";
  case kNoMoreParameters:
    return "No further parameter in section '" + mSection + "'!";
  default:
    return "Unknown error in class Cnfg!";
  }
}
