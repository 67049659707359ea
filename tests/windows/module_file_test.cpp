// What the module's file shows to Windows: two exports, and the device library by ordinal alone.

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

namespace {

/// A library's file, as the loader reads it.
class Image {
public:
  explicit Image(const char* path) {
    std::ifstream file(path, std::ios::binary);
    mBytes.assign(std::istreambuf_iterator<char>(file), {});
  }

  template <class T> T at(std::size_t offset) const {
    T value = {};
    if (offset + sizeof value <= mBytes.size())
      std::memcpy(&value, mBytes.data() + offset, sizeof value);
    return value;
  }
  IMAGE_NT_HEADERS64 headers() const {
    return at<IMAGE_NT_HEADERS64>(static_cast<std::size_t>(at<IMAGE_DOS_HEADER>(0).e_lfanew));
  }
  DWORD directory(int index) const { return headers().OptionalHeader.DataDirectory[index].VirtualAddress; }

  /// Place in the file of an address in memory.
  std::size_t place(DWORD address) const {
    const IMAGE_NT_HEADERS64 nt = headers();
    std::size_t offset =
        static_cast<std::size_t>(at<IMAGE_DOS_HEADER>(0).e_lfanew) + sizeof(IMAGE_NT_HEADERS64);
    for (int i = 0; i < nt.FileHeader.NumberOfSections; ++i, offset += sizeof(IMAGE_SECTION_HEADER)) {
      const auto section = at<IMAGE_SECTION_HEADER>(offset);
      if (address >= section.VirtualAddress && address < section.VirtualAddress + section.SizeOfRawData)
        return address - section.VirtualAddress + section.PointerToRawData;
    }
    return mBytes.size();
  }
  std::string text(DWORD address) const {
    std::string found;
    for (std::size_t i = place(address); i < mBytes.size() && mBytes[i]; ++i)
      found += mBytes[i];
    return found;
  }

  std::set<std::string> exports() const {
    const auto table = at<IMAGE_EXPORT_DIRECTORY>(place(directory(IMAGE_DIRECTORY_ENTRY_EXPORT)));
    std::set<std::string> names;
    for (DWORD i = 0; i < table.NumberOfNames; ++i)
      names.insert(text(at<DWORD>(place(table.AddressOfNames) + i * sizeof(DWORD))));
    EXPECT_EQ(table.NumberOfFunctions, table.NumberOfNames) << "something is exported without a name";
    return names;
  }
  /// By library: names, and ordinals as "#104".
  std::map<std::string, std::set<std::string>> imports() const {
    std::map<std::string, std::set<std::string>> found;
    std::size_t entry = place(directory(IMAGE_DIRECTORY_ENTRY_IMPORT));
    for (;; entry += sizeof(IMAGE_IMPORT_DESCRIPTOR)) {
      const auto library = at<IMAGE_IMPORT_DESCRIPTOR>(entry);
      if (!library.Name)
        return found;
      std::set<std::string>& functions = found[text(library.Name)];
      for (std::size_t i = place(library.OriginalFirstThunk); at<ULONGLONG>(i) != 0; i += sizeof(ULONGLONG)) {
        const auto thunk = at<ULONGLONG>(i);
        functions.insert(IMAGE_SNAP_BY_ORDINAL64(thunk) ? "#" + std::to_string(IMAGE_ORDINAL64(thunk))
                                                        : text(static_cast<DWORD>(thunk) + 2));
      }
    }
  }

private:
  std::vector<char> mBytes;
};

TEST(ModuleFile, ExportsTheTwoEntryPointsAndNothingElse) {
  EXPECT_EQ(Image(OV_MODULE).exports(), (std::set<std::string>{"acrxEntryPoint", "acrxGetApiVersion"}));
}

TEST(ModuleFile, TakesTheDeviceLibraryByOrdinalAlone) {
  const auto imports = Image(OV_MODULE).imports();
  ASSERT_EQ(imports.count("ov_devlink_64.dll"), 1u);
  EXPECT_EQ(imports.at("ov_devlink_64.dll"),
            (std::set<std::string>{"#104", "#106", "#108", "#110", "#116", "#117", "#180"}));
}

TEST(ModuleFile, NeedsNoCompilerRuntimeBesideIt) {
  for (const auto& library : Image(OV_MODULE).imports()) {
    EXPECT_EQ(library.first.find("libstdc++"), std::string::npos);
    EXPECT_EQ(library.first.find("libgcc"), std::string::npos);
    EXPECT_EQ(library.first.find("winpthread"), std::string::npos);
  }
}

} // namespace
