#ifndef TEMP_FOLDER_H
#define TEMP_FOLDER_H

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace rig {

/// A new, empty folder with blanks in its name, as users have them. The destructor removes it and its content.
///
/// Names below the folder may hold backslashes on every system; an empty name is the folder itself.
class TempFolder {
public:
  TempFolder() {
    std::random_device number;
    do
      mRoot = std::filesystem::temp_directory_path() /
              ("ov test " + std::to_string(number()) + " " + std::to_string(number()));
    while (!std::filesystem::create_directory(mRoot)); // it is another program's
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(mRoot, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  /// Returns the full path with the separators of this system.
  std::string native(const std::string& name = {}) const { return below(name).string(); }
  /// Returns the full path with backslashes only, as the plug-in joins its paths.
  std::string backslashed(const std::string& name = {}) const {
    std::string path = native(name);
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
  }

  /// Makes a folder and those above it.
  void makeFolder(const std::string& name) const { std::filesystem::create_directories(below(name)); }
  bool exists(const std::string& name) const { return std::filesystem::exists(below(name)); }
  /// Removes a file or a folder with all that is in it, if it is there.
  void remove(const std::string& name) const { std::filesystem::remove_all(below(name)); }

  /// Writes a file, byte for byte.
  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(below(name), std::ios::binary);
    file << bytes;
    file.close();
  }
  /// Returns the bytes of a file, which has to be there.
  std::string read(const std::string& name) const {
    std::ifstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(below(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

private:
  std::filesystem::path below(std::string name) const {
    std::replace(name.begin(), name.end(), '\\', '/');
    return name.empty() ? mRoot : (mRoot / name).make_preferred();
  }

  std::filesystem::path mRoot;
};

} // namespace rig

#endif
