#ifndef TEMP_FOLDER_H
#define TEMP_FOLDER_H

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace rig {

/// A new, empty folder of a test's own, with blanks in its name as users have them; it goes with all that is
/// in it when the object goes.
///
/// Names below the folder may hold backslashes on every system; an empty name stands for the folder itself.
class TempFolder {
public:
  TempFolder() {
    static std::atomic<unsigned> count{0};
    const auto base = std::filesystem::temp_directory_path();
    // Two test programs may start in the same moment: only the one that makes the folder has it.
    do {
      const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
      mRoot = base / ("ov test " + std::to_string(stamp) + " " + std::to_string(++count));
    } while (!std::filesystem::create_directory(mRoot));
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(mRoot, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  /// Full path with the separators of this system.
  std::string native(const std::string& name = {}) const { return below(name).string(); }
  /// Full path with nothing but backslashes, as the plug-in joins its paths.
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
    std::ofstream file(below(name), std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file)
      throw std::runtime_error("can't write " + native(name));
  }
  /// The bytes of a file, which has to be there.
  std::string read(const std::string& name) const {
    std::ifstream file(below(name), std::ios::binary);
    if (!file)
      throw std::runtime_error("can't read " + native(name));
    return std::string(std::istreambuf_iterator<char>(file), {});
  }

private:
  std::filesystem::path below(const std::string& name) const {
    if (name.empty())
      return mRoot;
    std::string generic = name;
    std::replace(generic.begin(), generic.end(), '\\', '/');
    return (mRoot / generic).make_preferred();
  }

  std::filesystem::path mRoot;
};

} // namespace rig

#endif
