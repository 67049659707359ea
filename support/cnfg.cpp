#include "cnfg.h"

#include <algorithm>

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

std::string padded(std::string text, std::size_t width) {
  if (text.size() < width)
    text.append(width - text.size(), ' ');
  return text;
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
  std::getline(mFile, line);
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

Cnfg::Cut Cnfg::cut(const std::string& line) const {
  Cut parts;
  const std::size_t first = std::min(line.find_first_not_of(kBlanks), line.size());
  parts.leading = line.substr(0, first);
  const std::size_t nameEnd = std::min(line.find_first_of(mSeparators, first), line.size());
  parts.name = line.substr(first, nameEnd - first);
  parts.name.erase(parts.name.find_last_not_of(' ') + 1);
  const std::size_t valueStart = std::min(line.find_first_not_of(mSeparators, nameEnd), line.size());
  parts.separator = line.substr(nameEnd, valueStart - nameEnd);
  const std::size_t valueEnd = std::min(line.find_first_of(mLineEnds, valueStart), line.size());
  parts.value = line.substr(valueStart, valueEnd - valueStart);
  parts.tail = line.substr(valueEnd);
  return parts;
}

/// What cut() gives as name and value, into texts whose room is used again: the readers' way, without the
/// pieces that only a writer needs.
void Cnfg::cutNameAndValue(const std::string& line, std::string& name, std::string& value) const {
  const std::size_t first = std::min(line.find_first_not_of(kBlanks), line.size());
  const std::size_t nameEnd = std::min(line.find_first_of(mSeparators, first), line.size());
  std::size_t last = nameEnd;
  while (last > first && line[last - 1] == ' ')
    --last;
  name.assign(line, first, last - first);
  const std::size_t valueStart = std::min(line.find_first_not_of(mSeparators, nameEnd), line.size());
  const std::size_t valueEnd = std::min(line.find_first_of(mLineEnds, valueStart), line.size());
  value.assign(line, valueStart, valueEnd - valueStart);
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

/// Lines keep a carriage return at their end here, so that lines that nobody addresses go back as they came.
void Cnfg::load() {
  mLines.clear();
  mFile.clear();
  mFile.seekg(0);
  std::string line;
  while (mFile.good() && std::getline(mFile, line))
    mLines.push_back(line);
  mIsLoaded = true;
  while (!mLines.empty() && (mLines.back().empty() || mLines.back() == "\r"))
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

void Cnfg::rebuildLine(std::string& line, const Cut& old, const std::string& name,
                       const std::string& value) const {
  // A line that had a name only gets a separator, or the value would read as part of the name.
  const std::string separator = old.separator.empty() ? "=" : old.separator;
  // What ends a value in reading can't be kept in one.
  const std::string kept = value.substr(0, value.find_first_of(mLineEnds));
  line = old.leading + padded(name, kNameWidth) + separator + " " + padded(kept, kValueWidth) + old.tail;
}

namespace {

/// Parts a line of mLines from the carriage return at its end, which is no part of the line's text.
std::string withoutReturn(const std::string& line, std::string& carriageReturn) {
  const bool hasReturn = !line.empty() && line.back() == '\r';
  carriageReturn = hasReturn ? "\r" : "";
  return hasReturn ? line.substr(0, line.size() - 1) : line;
}

} // namespace

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
    if (kind == Kind::Section)
      return setError(kNoParameter);
    std::string carriageReturn;
    const Cut parts = cut(withoutReturn(line, carriageReturn));
    if (kind == Kind::Parameter && parts.name == name) {
      rebuildLine(line, parts, name, value);
      line += carriageReturn;
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
  std::string& line = mLines[mLineIndex];
  std::string carriageReturn;
  const Cut parts = cut(withoutReturn(line, carriageReturn));
  rebuildLine(line, parts, name, value);
  line += carriageReturn;
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
