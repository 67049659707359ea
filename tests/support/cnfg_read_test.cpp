#include "cnfg.h"

#include <gtest/gtest.h>

#include "temp_folder.h"

namespace {

using Parameter = std::pair<std::string, std::string>;

class CnfgRead : public testing::Test {
protected:
  /// Opens a file of these bytes.
  Cnfg& open(const std::string& bytes) {
    mFolder.write("some file.ini", bytes);
    EXPECT_EQ(Cnfg::kOk, mCnfg.open(mFolder.backslashed("some file.ini")));
    return mCnfg;
  }
  /// The parameters from the read position up to the first call that doesn't give one.
  std::vector<Parameter> rest() {
    std::vector<Parameter> all;
    std::string name, value;
    while (mCnfg.readNextParameter(name, value, true) == Cnfg::kOk)
      all.emplace_back(name, value);
    EXPECT_EQ(Cnfg::kNoMoreParameters, mCnfg.mError);
    return all;
  }

  rig::TempFolder mFolder;
  Cnfg mCnfg;
};

TEST_F(CnfgRead, TakesALineApart) {
  const struct {
    const char *line, *name, *untrimmed, *trimmed;
  } kLines[] = {
      {"key", "key", "", ""},
      {"key =", "key", "", ""},
      {"key = value # comment", "key", " value ", "value"},
      {"key = a=b", "key", " a=b", "a=b"},
      {"key == b", "key", " b", "b"},
      {"key=\t=\tb", "key", "b", "b"},
      {"key = =b", "key", " =b", "=b"},
      {"key\t= value", "key", " value", "value"},
      {"key\tvalue", "key", "value", "value"},
      {"\t key  \t= a\tb \t", "key", " a\tb \t", "a\tb"},
      {"my key = 1", "my key", " 1", "1"},
      {"key # note", "key # note", "", ""},
      {"key # note = 1", "key # note", " 1", "1"},
      {"key = \t ", "key", " \t ", ""},
      {"key=#", "key", "", ""},
      {"key = [S]", "key", " [S]", "[S]"},
      {"key = a\rb", "key", " a", "a"},
  };
  for (const auto& entry : kLines) {
    open("[S]\n" + std::string(entry.line) + "\n");
    for (const bool trim : {false, true}) {
      std::string name = "old", value = "old";
      EXPECT_EQ(Cnfg::kOk, mCnfg.readParameterAt(name, value, "S", 0, trim)) << entry.line;
      EXPECT_EQ(entry.name, name) << entry.line;
      EXPECT_EQ(trim ? entry.trimmed : entry.untrimmed, value) << entry.line;
    }
  }
}

TEST_F(CnfgRead, ALineWithoutANameEndsTheSectionAndIsConsumed) {
  for (const char* const line : {"", " \t", " # comment", "\t#", "[T]", "[unclosed", "= value", "\r"}) {
    open("[S]\na = 1\n" + std::string(line) + "\nb = 2\n");
    // A carriage return in front of the line feed goes with it: the last of these lines is an empty one.
    ASSERT_EQ(Cnfg::kOk, mCnfg.selectSection("S"));
    EXPECT_EQ((std::vector<Parameter>{{"a", "1"}}), rest()) << line;
    EXPECT_EQ((std::vector<Parameter>{{"b", "2"}}), rest()) << line;
    std::string value;
    EXPECT_EQ(Cnfg::kNoParameter, mCnfg.readParameter("b", value, "S", true)) << line;
  }
}

TEST_F(CnfgRead, NamesCompareExactlyAndTheFirstOneWins) {
  open("[s]\na = lower\n[S]\nA = upper\n# one\n#a = 0\na = 1\n\r\r\na = 2\nab = 3\n[S]\nlate = 4\n# last");
  std::string value;
  EXPECT_EQ(Cnfg::kOk, mCnfg.readParameter("a", value, "S", true));
  EXPECT_EQ("1", value);
  EXPECT_EQ(Cnfg::kOk, mCnfg.readParameter("ab", value, "", true)) << "from the read position on";
  EXPECT_EQ("3", value);
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.readParameter("a", value, "", true));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.readParameter("late", value, "S", true));
  ASSERT_EQ(Cnfg::kOk, mCnfg.selectSection("S"));
  EXPECT_EQ((std::vector<Parameter>{{"A", "upper"}, {"a", "1"}, {"a", "2"}, {"ab", "3"}}), rest());
}

TEST_F(CnfgRead, FindsASectionByAllTextBetweenItsBrackets) {
  const struct {
    const char* line;
    const char* section;
    int code;
  } kLines[] = {
      {"[S]", "S", Cnfg::kOk},         {" \t[S] text behind", "S", Cnfg::kOk},
      {"[S]]", "S", Cnfg::kOk},        {"[ S ]", "S", Cnfg::kNoSection},
      {"[ S ]", " S ", Cnfg::kOk},     {"[a [b]", "a [b", Cnfg::kOk},
      {"[S", "S", Cnfg::kNoSection},   {"x [S]", "S", Cnfg::kNoSection},
      {"#[S]", "S", Cnfg::kNoSection}, {"[]", "", Cnfg::kOk},
      {"[SS]", "S", Cnfg::kNoSection},
  };
  for (const auto& entry : kLines) {
    open(std::string(entry.line) + "\na = 1\n");
    EXPECT_EQ(entry.code, mCnfg.selectSection(entry.section)) << entry.line;
    const std::vector<Parameter> expected =
        entry.code == Cnfg::kOk ? std::vector<Parameter>{{"a", "1"}} : std::vector<Parameter>{};
    EXPECT_EQ(expected, rest()) << entry.line;
  }
}

TEST_F(CnfgRead, LineEndsOfBothKindsAndNoneAtTheEnd) {
  const std::vector<Parameter> expected = {{"a", "1"}, {"b", ""}, {"c", "3"}};
  for (const char* const text : {"[S]\na = 1\nb\nc = 3\n", "[S]\r\na = 1\r\nb\r\nc = 3\r\n",
                                 "[S]\na = 1\nb\nc = 3", "[S]\r\na = 1\r\nb\r\nc = 3\r"}) {
    open(text);
    ASSERT_EQ(Cnfg::kOk, mCnfg.selectSection("S"));
    EXPECT_EQ(expected, rest());
  }
}

TEST_F(CnfgRead, AtTheFilesEndTheTextsStayAsTheyWere) {
  open("[S]\na = 1");
  std::string name, value;
  EXPECT_EQ(Cnfg::kOk, mCnfg.readParameterAt(name, value, "S", 0, true));
  EXPECT_EQ(Cnfg::kNoMoreParameters, mCnfg.readNextParameter(name, value, true));
  EXPECT_EQ("a", name);
  EXPECT_EQ("1", value);
  // A search that fails leaves the file at its end, too; one that follows starts at the top again.
  EXPECT_EQ(Cnfg::kNoSection, mCnfg.selectSection("T"));
  EXPECT_EQ(Cnfg::kNoMoreParameters, mCnfg.readNextParameter(name, value, true));
  EXPECT_EQ("1", value);
  EXPECT_EQ(Cnfg::kOk, mCnfg.readParameter("a", value, "S", true));
}

TEST_F(CnfgRead, GivesParametersByTheirPlace) {
  open("[R]\nz = 0\n[S]\na = 1\n# no place of its own\nb = 2\n\nc = 3\n");
  std::string name, value;
  EXPECT_EQ(Cnfg::kOk, mCnfg.readParameterAt(name, value, "S", 1, true));
  EXPECT_EQ("b", name);
  EXPECT_EQ("2", value);
  EXPECT_EQ(Cnfg::kOk, mCnfg.readParameterAt(name, value, "S", 0, true));
  EXPECT_EQ("a", name);
  // The place behind the blank line isn't the section's any more.
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.readParameterAt(name, value, "S", 2, true));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.readParameterAt(name, value, "S", 3, true));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.mError);
  EXPECT_EQ(Cnfg::kNoSection, mCnfg.readParameterAt(name, value, "T", 0, true));
}

TEST_F(CnfgRead, EachResultHasATextThatNamesWhatWasSearchedFor) {
  const std::string path = mFolder.backslashed("some file.ini");
  std::string name, value;
  open("");
  EXPECT_EQ("OK", mCnfg.errorText());
  EXPECT_EQ(Cnfg::kNoSection, mCnfg.selectSection("S"));
  EXPECT_EQ("Section 'S' not found!", mCnfg.errorText());
  open("[S]");
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.readParameter("a", value, "S", true));
  EXPECT_EQ("Parameter 'a' in section 'S' not found! (" + path + ")", mCnfg.errorText());
  EXPECT_EQ(Cnfg::kOk, mCnfg.selectSection("S"));
  EXPECT_EQ("OK", mCnfg.errorText());
  EXPECT_EQ(Cnfg::kNoMoreParameters, mCnfg.readNextParameter(name, value, true));
  EXPECT_EQ("No further parameter in section 'S'!", mCnfg.errorText());
  mFolder.makeFolder("folder.ini");
  for (const char* const file : {"missing.ini", "folder.ini"}) {
    EXPECT_EQ(Cnfg::kNoFile, mCnfg.open(mFolder.backslashed(file)));
    EXPECT_EQ("File '" + mFolder.backslashed(file) + "' not found!", mCnfg.errorText());
  }
  open("[S]\na = 1\n"); // one that failed can be opened on another file
  EXPECT_EQ(Cnfg::kOk, mCnfg.readParameter("a", value, "S", true));
  mCnfg.mError = 5;
  EXPECT_EQ("Unknown error in class Cnfg!", mCnfg.errorText());
}

} // namespace
