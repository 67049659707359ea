// The commands that write: a fresh settings file, and a report of a fault.

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

#include <boost/crc.hpp>

#include "findings.h"
#include "log_parameters.h"
#include "settings_parameters.h"

namespace doctor {

namespace {

using Files = std::vector<std::pair<std::string, std::string>>; // names and bytes

void write(const std::string& path, const std::string& bytes) {
  std::ofstream file(Util::nativePath(path), std::ios::binary);
  file << bytes;
  file.close();
  if (!file)
    throw std::runtime_error("'" + path + "' can't be written");
}

/// Returns the text in lower case and with backslashes.
std::string folded(std::string text) {
  for (char& c : text)
    c = c == '/' ? '\\' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

/// Replaces each occurrence of a name that isn't part of a word, in any case and with either slash.
void replace(std::string& text, const std::string& name, const std::string& by) {
  std::string search = folded(text);
  const auto isInWord = [&](std::size_t i) { return i < search.size() && std::isalnum(search[i] & 0xFF); };
  for (std::size_t at = 0; !name.empty() && (at = search.find(folded(name), at)) != std::string::npos;) {
    const bool isPart = isInWord(at - 1) || isInWord(at + name.size());
    const std::string& put = isPart ? text.substr(at, name.size()) : by;
    text.replace(at, name.size(), put);
    search.replace(at, name.size(), put);
    at += put.size();
  }
}

void removeNames(std::string& text, const std::string& home) {
  replace(text, home, "%USERPROFILE%");
  replace(text, home.substr(home.find_last_of("\\/") + 1), "%NAME%");
  for (const char* const variable : {"USERNAME", "USER", "LOGNAME"})
    if (const char* const nameP = std::getenv(variable))
      replace(text, nameP, "%NAME%");
}

/// Returns numbers of 16 bits, the lower byte first.
std::string words(std::initializer_list<std::size_t> numbers) {
  std::string out;
  for (const std::size_t number : numbers)
    out.append({static_cast<char>(number), static_cast<char>(number >> 8)});
  return out;
}

/// Returns a number of 32 bits.
std::string twoWords(std::size_t number) {
  return words({number, number >> 16});
}

/// Returns a ZIP of files, each with its name and bytes, stored as they are. Debian has no library for ZIPs
/// that serves MinGW as well, and a report is small.
std::string zipOf(const Files& files) {
  std::string out, directory;
  for (const auto& [name, bytes] : files) {
    boost::crc_32_type crc;
    crc.process_bytes(bytes.data(), bytes.size());
    // Version 2.0, flags, stored, time and day: the earliest of a ZIP, since the files themselves hold their
    // times. Then check sum, both sizes, length of the name, no extra field.
    const std::string facts = words({20, 0, 0, 0, 0x21}) + twoWords(crc.checksum()) + twoWords(bytes.size()) +
                              twoWords(bytes.size()) + words({name.size(), 0});
    // Comment, disk, attributes; then where the file's own header is.
    directory += "PK\1\2" + words({20}) + facts + words({0, 0, 0, 0, 0}) + twoWords(out.size()) + name;
    out += "PK\3\4" + facts + name + bytes;
  }
  // Disks, entries, the directory's size and place, comment.
  return out + directory + "PK\5\6" + words({0, 0, files.size(), files.size()}) + twoWords(directory.size()) +
         twoWords(out.size()) + words({0});
}

} // namespace

void writeDefaults(const Report& report) {
  const std::string& path = report.mSettingsFile;
  std::string kept = path + ".bak";
  for (int i = 2; Util::fileExists(kept); ++i)
    kept = path + ".bak" + std::to_string(i);
  if (Util::fileExists(path)) {
    if (std::rename(Util::nativePath(path).c_str(), Util::nativePath(kept).c_str()) != 0)
      throw std::runtime_error("'" + path + "' can't be renamed");
    std::cerr << "The old settings are in '" << kept << "'.\n";
  }
  std::ostringstream os;
  os << kSettingsHead << '[' << kProgramSection << "]\n";
  for (const auto& parameter : kProgramParameters)
    parameter.writeLine(os, parameter.defaultValue, kValueWidth);
  os << "\n[" << kLogSection << "]\n";
  for (const auto& parameter : kLogParameters)
    parameter.writeLine(os, parameter.defaultValue, kValueWidth);
  write(path, os.str());
  std::cerr << "'" << path << "' has the defaults. A plug-in that is loaded overwrites it at its end.\n\n";
}

void writeReport(Report& report, const std::string& path) {
  Files files = {{"findings.txt", report.text()}};
  for (const auto& [name, place] : Files{{"autocad_addin.ini", report.mSettingsFile},
                                         {"autocad.mnu", report.mMenuFile},
                                         {"log.txt", report.mLogFile}}) {
    if (const auto bytes = report.read(place))
      files.emplace_back(name, *bytes);
  }
  for (auto& file : files)
    removeNames(file.second, report.mHome);
  write(path, zipOf(files));
  std::cout << "'" << path << "' is written, without your name and home folder. Look through it first.\n";
}

} // namespace doctor
