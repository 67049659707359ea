#include "cnfg.h"

#include <algorithm>

#include "parameter_text.h"
#include "util.h"

namespace {

constexpr char kBlanks[] = " \t";
constexpr std::size_t kNameWidth = 32;
constexpr std::size_t kValueWidth = 34;

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
  // Bytes as they are: line ends are told apart in readLine, alike on every system.
  mFile.open(Util::nativePath(fileName), std::ios::in | std::ios::binary);
  return setError(mFile.is_open() ? kOk : kNoFile);
}

/// Reads a line, without its line feed and without a carriage return directly in front of that. Gives false
/// at the end of the file, with an empty line.
bool Cnfg::readLine(std::string& line) {
  line.clear();
  if (!mFile.good())
    return false;
  // Not with getline: without memory it would end the file here, and the keys behind would be missing.
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

/// Into texts whose room is used again.
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

void Cnfg::load() {
  mLines.clear();
  mFile.clear();
  mFile.seekg(0);
  std::string line;
  while (readLine(line))
    mLines.push_back(line);
  mIsLoaded = true;
  while (!mLines.empty() && mLines.back().empty())
    mLines.pop_back();
}

/// Puts mLineIndex on the line behind the section's line.
bool Cnfg::findSectionLine(const std::string& section) {
  mSection = section;
  if (!mIsLoaded)
    load();
  for (std::size_t i = 0; i < mLines.size(); ++i) {
    if (isSectionLine(mLines[i], section)) {
      mLineIndex = static_cast<std::uint32_t>(i + 1);
      return true;
    }
  }
  return false;
}

/// Gives a line a new name and value, with its old leading blanks, separator run and tail.
void Cnfg::rebuildLine(std::string& line, const std::string& name, const std::string& value) const {
  const Places old = placesIn(line);
  line = line.substr(0, old.name) + padded(name, kNameWidth) +
         line.substr(old.separator, old.value - old.separator) + " " + padded(value, kValueWidth) +
         line.substr(old.tail);
}

int Cnfg::writeParameter(const std::string& name, const std::string& value, const std::string& section) {
  setError(kOk);
  mParameter = name;
  if (!section.empty()) {
    if (!findSectionLine(section))
      return setError(kNoSection);
  } else if (!mIsLoaded) {
    mSection.clear();
    return setError(kNoSection);
  } else {
    ++mLineIndex;
  }
  for (; mLineIndex < mLines.size(); ++mLineIndex) {
    std::string& line = mLines[mLineIndex];
    const Kind kind = kindOf(line);
    // Without its closing bracket it is of no use, and doesn't end a section.
    if (kind == Kind::Section && line.find(']') != std::string::npos)
      return setError(kNoParameter);
    const Places places = placesIn(line);
    if (kind == Kind::Parameter && line.compare(places.name, places.nameEnd - places.name, name) == 0) {
      rebuildLine(line, name, value);
      return mError;
    }
  }
  return setError(kNoParameter);
}

int Cnfg::writeParameterAt(const std::string& name, const std::string& value, const std::string& section,
                           unsigned offset) {
  setError(kOk);
  mParameter = name;
  if (!findSectionLine(section))
    return setError(kNoSection);
  if (offset >= mLines.size() - mLineIndex)
    return setError(kNoParameter);
  mLineIndex += offset;
  rebuildLine(mLines[mLineIndex], name, value);
  return mError;
}

int Cnfg::save() {
  if (!mIsLoaded)
    return setError(kOk);
  // Whole before the file is opened: the time in which the file is neither old nor new is one write.
  std::string text;
  for (const std::string& line : mLines)
    text += line + "\n";
  const std::string path = Util::nativePath(mFileName);
  mFile.close();
  mFile.clear();
  mFile.open(path, std::ios::in | std::ios::out | std::ios::binary);
  if (!mFile.is_open())
    return setError(kNoFile);
  // It is there and may be written. Opened anew it is emptied, so that no old text stays behind a shorter new
  // one.
  mFile.close();
  mFile.open(path, std::ios::in | std::ios::out | std::ios::trunc | std::ios::binary);
  mFile.write(text.data(), static_cast<std::streamsize>(text.size()));
  mFile.close();
  const bool isWritten = !mFile.fail();
  mFile.clear();
  mFile.open(path, std::ios::in | std::ios::out | std::ios::binary);
  return setError(isWritten && mFile.is_open() ? kOk : kNoFile);
}
