#include "cnfg.h"

#include <gtest/gtest.h>

#include "temp_folder.h"

namespace {

class CnfgWrite : public testing::Test {
protected:
  Cnfg& open(const std::string& bytes) {
    mFolder.write(kName, bytes);
    EXPECT_EQ(Cnfg::kOk, mCnfg.open(mFolder.backslashed(kName)));
    return mCnfg;
  }
  /// The file's bytes after saving.
  std::string saved() {
    EXPECT_EQ(Cnfg::kOk, mCnfg.save());
    return mFolder.read(kName);
  }
  static std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width - text.size(), ' ');
  }

  static constexpr char kName[] = "some file.ini";
  rig::TempFolder mFolder;
  Cnfg mCnfg;
};

TEST_F(CnfgWrite, RebuildsALineInColumns) {
  const std::string name32 = padded("name", 32);
  const std::string longName(33, 'n'), longValue(35, 'v');
  const struct {
    std::string line, name, value, rebuilt;
  } kLines[] = {
      {"name = old", "name", "new", name32 + "= " + padded("new", 34)},
      {"\t name = old # why", "name", "new", "\t " + name32 + "= " + padded("new", 34) + "# why"},
      {"name\t=old#why", "name", "new", name32 + "\t= " + padded("new", 34) + "#why"},
      {"name", "name", "new", name32 + "= " + padded("new", 34)}, // or the value would read as the name's
      {"name = old # why", "name", "", name32 + "= " + padded("", 34) + "# why"},
      {"name\r", "name", "new", name32 + "= " + padded("new", 34) + "\r"},
      {"[no section\nname = old", "name", "new", "[no section\n" + name32 + "= " + padded("new", 34)},
      {"name = old", "name", "a # b", name32 + "= " + padded("a ", 34)}, // couldn't be read back otherwise
      {"name = old # why", "name", "a\r\nb = c", name32 + "= " + padded("a", 34) + "# why"},
      {longName + " = old # why", longName, longValue, longName + "= " + longValue + "# why"},
  };
  for (const auto& entry : kLines) {
    open("[S]\n" + entry.line);
    EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter(entry.name, entry.value, "S")) << entry.line;
    EXPECT_EQ("[S]\n" + entry.rebuilt + "\n", saved()) << entry.line; // the last one with a line feed
  }
}

TEST_F(CnfgWrite, LeavesEveryOtherLineAsItIs) {
  const std::string head = "# head\r\n\r\n [S] # x\r\n  odd   =\t 1  # c\r\nb = 2\n\t\n";
  const std::string tail = "[T]\r\nnonsense [\r\n# end";
  open(head + "a = 1 # c\r\n" + tail + "\n\r\n\n\r\n");
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("a", "9", "S"));
  EXPECT_EQ(head + "a = 1 # c\r\n" + tail + "\n\r\n\n\r\n", mFolder.read(kName)) << "before save()";
  // Only blank lines at the file's end go.
  EXPECT_EQ(head + padded("a", 32) + "= " + padded("9", 34) + "# c\r\n" + tail + "\n", saved());
}

TEST_F(CnfgWrite, ALongerOldTextLeavesNothingBehind) {
  const std::string blanks(200, ' ');
  open("[S]\n# " + std::string(300, 'x') + "\na =" + blanks + "1\n");
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameterAt("b", "2", "S", 0));
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("a", "3", "S"));
  const std::string bytes = saved();
  EXPECT_EQ(bytes.size() - 1, bytes.find('\n', bytes.find("\na") + 1)) << bytes;
  std::string value;
  EXPECT_EQ(Cnfg::kOk, mCnfg.readParameter("a", value, "S", true)) << "the same object goes on";
  EXPECT_EQ("3", value);
}

TEST_F(CnfgWrite, SearchesUpToTheNextSectionPastBlankLinesAndComments) {
  open("[R]\nlate = 0\n[S]\n\n # c\n\r\nlate = 1\nlate = 2\n[T]\nother = 3\n");
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameter("other", "x", "S"));
  EXPECT_EQ("Parameter 'other' in section 'S' not found! (" + mFolder.backslashed(kName) + ")",
            mCnfg.errorText());
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameter("LATE", "x", "S"));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameter("# c", "x", "S"));
  EXPECT_EQ(Cnfg::kNoSection, mCnfg.writeParameter("late", "x", "s"));
  EXPECT_EQ("Section 's' not found!", mCnfg.errorText());
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("late", "9", "S"));
  EXPECT_EQ("[R]\nlate = 0\n[S]\n\n # c\n\r\n" + padded("late", 32) + "= " + padded("9", 34) +
                "\nlate = 2\n[T]\nother = 3\n",
            saved());
}

TEST_F(CnfgWrite, WithoutASectionTheSearchGoesOnBehindTheLastLine) {
  open("[S]\na = 1\nb = 2\na = 3\n");
  EXPECT_EQ(Cnfg::kNoSection, mCnfg.writeParameter("a", "x", "")) << "nothing to go on from";
  EXPECT_EQ("Section '' not found!", mCnfg.errorText());
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("a", "one", "S"));
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("a", "three", ""));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameter("b", "x", ""));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameter("b", "x", "")) << "already at the end";
  EXPECT_EQ("[S]\n" + padded("a", 32) + "= " + padded("one", 34) + "\nb = 2\n" + padded("a", 32) + "= " +
                padded("three", 34) + "\n",
            saved());
}

TEST_F(CnfgWrite, MakesAnyLineOfASectionIntoAParameter) {
  open("[S]\na = 1 # keep\n\n  # note\n[T]\n");
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameterAt("one", "1", "S", 0));
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameterAt("two", "2", "S", 1));
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameterAt("three", "3", "S", 2));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameterAt("x", "4", "S", 4));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameterAt("x", "4", "S", 0xFFFFFFFFu));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameterAt("x", "4", "T", 0));
  EXPECT_EQ(Cnfg::kNoSection, mCnfg.writeParameterAt("x", "4", "U", 0));
  EXPECT_EQ("[S]\n" + padded("one", 32) + "= " + padded("1", 34) + "# keep\n" + padded("two", 32) + "= " +
                padded("2", 34) + "\n  " + padded("three", 32) + "= " + padded("3", 34) + "\n[T]\n",
            saved());
}

TEST_F(CnfgWrite, SavesNothingIfNothingWasWritten) {
  open("[S]\r\na = 1\n\n\n");
  EXPECT_EQ("[S]\r\na = 1\n\n\n", saved());
  // A new file isn't written over with the lines of the one before.
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("a", "2", "S"));
  open("[S]\nb = 1\n\n");
  EXPECT_EQ("[S]\nb = 1\n\n", saved());
}

TEST_F(CnfgWrite, AFileThatIsGoneIsNotMadeAnew) {
  open("[S]\na = 1\n");
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("a", "2", "S"));
  mCnfg.mFile.close(); // some systems don't remove files that are open
  mFolder.remove(kName);
  EXPECT_EQ(Cnfg::kNoFile, mCnfg.save());
  EXPECT_EQ("File '" + mFolder.backslashed(kName) + "' not found!", mCnfg.errorText());
  EXPECT_FALSE(mFolder.exists(kName));
  mFolder.makeFolder(kName);
  EXPECT_EQ(Cnfg::kNoFile, mCnfg.save());
}

} // namespace
