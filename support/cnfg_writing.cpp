// The writing operations of Cnfg. Nothing in this plug-in calls them: it writes its settings file itself.

#include "cnfg.h"

#include "parameter.h"
#include "util.h"

namespace {

// Columns that a rewritten parameter takes.
constexpr std::size_t kNameWidth = 32;
constexpr std::size_t kValueWidth = 34;

} // namespace

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

/// Sets mLineIndex to the line after the section's line.
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

/// Replaces a line's name and value. Its leading blanks, separators and tail stay.
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
    // A section line without its closing bracket doesn't end a section.
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
  // Composed before the file is opened: the time in which the file is neither old nor new is one write.
  std::string text;
  for (const std::string& line : mLines)
    text += line + "\n";
  const std::string path = Util::nativePath(mFileName);
  mFile.close();
  mFile.clear();
  mFile.open(path, std::ios::in | std::ios::out | std::ios::binary);
  if (!mFile.is_open())
    return setError(kNoFile);
  // The file exists and may be written. Now empty it, so that no old text follows a shorter new one.
  mFile.close();
  mFile.open(path, std::ios::in | std::ios::out | std::ios::trunc | std::ios::binary);
  mFile.write(text.data(), static_cast<std::streamsize>(text.size()));
  mFile.close();
  const bool isWritten = !mFile.fail();
  mFile.clear();
  mFile.open(path, std::ios::in | std::ios::out | std::ios::binary);
  return setError(isWritten && mFile.is_open() ? kOk : kNoFile);
}
