#include "calls.h"
#include "desktop.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace {

class Process : public testing::Test {
protected:
  void SetUp() override { desktop::reset(); }
  void TearDown() override {
    calls::clear();
    desktop::reset();
  }
};

} // namespace

TEST_F(Process, NarrowTextIsOneByteACharacter) {
  char narrow[16] = "###############";
  BOOL isDefaultUsed = TRUE;
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"a\xFC\\", -1, narrow, 16, " ", &isDefaultUsed), 4);
  EXPECT_STREQ(narrow, "a\xFC\\");
  EXPECT_FALSE(isDefaultUsed);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"x\u20ACy", -1, narrow, 16, " ", &isDefaultUsed), 4);
  EXPECT_STREQ(narrow, "x y");
  EXPECT_TRUE(isDefaultUsed);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"\u20AC", -1, narrow, 16, nullptr, nullptr), 2);
  EXPECT_STREQ(narrow, "?");
}

TEST_F(Process, NarrowTextThatDoesNotFit) {
  char narrow[4] = "###";
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"abcd", -1, nullptr, 0, " ", nullptr), 5);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"abcd", -1, narrow, 4, " ", nullptr), 0);
  EXPECT_STREQ(narrow, "###");
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"abcd", 2, narrow, 4, " ", nullptr), 2) << "no terminator";
  EXPECT_STREQ(narrow, "ab#");
  EXPECT_EQ(WideCharToMultiByte(65001, 0, L"a", -1, narrow, 4, " ", nullptr), 0);
}

TEST_F(Process, MessageBoxesAreKeptAndAnswered) {
  EXPECT_EQ(MessageBoxW(nullptr, L"Text\n\nmore", L"Title", MB_OK), IDOK);
  desktop::setMessageBoxAnswer([](const desktop::MessageBox& box) {
    // Free to look at the desktop while it answers.
    return desktop::messageBoxes().size() == 2 && box.text == L"Second" ? IDCANCEL : 0;
  });
  const HWND owner = desktop::addWindow({});
  EXPECT_EQ(MessageBoxW(owner, L"Second", nullptr, MB_ICONERROR), IDCANCEL);
  const auto boxes = desktop::messageBoxes();
  ASSERT_EQ(boxes.size(), 2u);
  EXPECT_EQ(boxes[0].owner, nullptr);
  EXPECT_EQ(boxes[0].caption, L"Title");
  EXPECT_EQ(boxes[0].text, L"Text\n\nmore");
  EXPECT_EQ(boxes[1].owner, owner);
  EXPECT_EQ(boxes[1].caption, L"Error");
  EXPECT_EQ(boxes[1].type, MB_ICONERROR);
  calls::failAt("MessageBoxW", 1);
  EXPECT_EQ(MessageBoxW(nullptr, L"", L"", 0), 0);
  EXPECT_EQ(desktop::messageBoxes().size(), 2u);
}

TEST_F(Process, FileAttributesTellFoldersFromFiles) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::temp_directory_path() / "ov_process_test";
  fs::create_directories(folder);
  const std::string file = (folder / "file").string();
  std::ofstream(file) << "x";
  EXPECT_EQ(GetFileAttributesA(folder.c_str()), FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(GetFileAttributesA(file.c_str()), FILE_ATTRIBUTE_NORMAL);
  fs::permissions(file, fs::perms::owner_read);
  EXPECT_EQ(GetFileAttributesA(file.c_str()), FILE_ATTRIBUTE_READONLY);
  fs::remove_all(folder);
  EXPECT_EQ(GetFileAttributesA(file.c_str()), INVALID_FILE_ATTRIBUTES);
}
