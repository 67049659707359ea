#include "desktop_test.h"

#include <filesystem>
#include <fstream>

class Process : public DesktopTest {};

TEST_F(Process, NarrowTextIsOneByteACharacter) {
  char narrow[5] = "####";
  BOOL isDefaultUsed = TRUE;
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"a\xFC\\", -1, narrow, 4, " ", &isDefaultUsed), 4);
  EXPECT_STREQ(narrow, "a\xFC\\");
  EXPECT_FALSE(isDefaultUsed);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"x\u20ACy", -1, narrow, 4, " ", &isDefaultUsed), 4);
  EXPECT_STREQ(narrow, "x y");
  EXPECT_TRUE(isDefaultUsed);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"\u20AC", -1, narrow, 4, nullptr, nullptr), 2);
  EXPECT_STREQ(narrow, "?");
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"abcd", -1, nullptr, 0, " ", nullptr), 5);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"abcd", -1, narrow, 4, " ", nullptr), 0) << "doesn't fit";
  EXPECT_EQ(WideCharToMultiByte(65001, 0, L"a", -1, narrow, 4, " ", nullptr), 0);
  EXPECT_STREQ(narrow, "?");
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"bcd", 1, narrow, 4, " ", nullptr), 1);
  EXPECT_EQ(std::string(narrow, 5), std::string("b\0y\0", 5)) << "no terminator";

  wchar_t wide[4] = L"###";
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "a\xFC\\", 2, wide, 4), 2);
  EXPECT_EQ(std::wstring(wide, 3), L"a\xFC#") << "no terminator";
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -1, wide, 3), 0) << "doesn't fit";
  EXPECT_EQ(MultiByteToWideChar(65001, 0, "a", -1, wide, 4), 0);
}

TEST_F(Process, MessageBoxesAreKeptAndAnswered) {
  EXPECT_EQ(MessageBoxW(nullptr, L"Text\n\nmore", L"Title", MB_OK), IDOK);
  desktop::setMessageBoxAnswer([](const desktop::MessageBox& box) {
    // Free to look at the desktop while it answers.
    return desktop::messageBoxes().size() == 2 && box.text == L"Second" ? IDCANCEL : 0;
  });
  const HWND owner = desktop::addWindow({});
  EXPECT_EQ(MessageBoxW(owner, L"Second", nullptr, MB_ICONERROR), IDCANCEL);
  call_log::failAt("MessageBoxW", 1);
  EXPECT_EQ(MessageBoxW(nullptr, L"", L"", 0), 0);
  const auto boxes = desktop::messageBoxes();
  ASSERT_EQ(boxes.size(), 2u);
  EXPECT_EQ(boxes[0].caption, L"Title");
  EXPECT_EQ(boxes[0].text, L"Text\n\nmore");
  EXPECT_EQ(boxes[1].owner, owner);
  EXPECT_EQ(boxes[1].caption, L"Error");
  EXPECT_EQ(boxes[1].type, MB_ICONERROR);
}

TEST_F(Process, FileAttributesTellFoldersFromFiles) {
  namespace fs = std::filesystem;
  const std::string file = (fs::temp_directory_path() / "ov_process_test").string();
  EXPECT_EQ(GetFileAttributesA(fs::temp_directory_path().c_str()), FILE_ATTRIBUTE_DIRECTORY);
  std::ofstream(file) << "x";
  EXPECT_EQ(GetFileAttributesA(file.c_str()), FILE_ATTRIBUTE_NORMAL);
  fs::permissions(file, fs::perms::owner_read);
  EXPECT_EQ(GetFileAttributesA(file.c_str()), FILE_ATTRIBUTE_READONLY);
  fs::remove(file);
  EXPECT_EQ(GetFileAttributesA(file.c_str()), INVALID_FILE_ATTRIBUTES);
}
