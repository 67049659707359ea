#include <algorithm>

#include "cnfg.h"

#include <gtest/gtest.h>

#include "temp_folder.h"

namespace {

using Parameter = std::pair<std::string, std::string>;

class CnfgTest : public testing::Test {
protected:
  /// Opens a file of these bytes.
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
  /// A line of a parameter as it is written.
  static std::string line(const std::string& name, const std::string& value) {
    return padded(name, 32) + "= " + padded(value, 34);
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

  static constexpr char kName[] = "some file.ini";
  rig::TempFolder mFolder;
  Cnfg mCnfg;
};

TEST_F(CnfgTest, TakesALineApart) {
  const struct {
    const char *line, *name, *untrimmed, *trimmed;
  } kLines[] = {
      {"key =", "key", "", ""},
      {"key = value # comment", "key", " value ", "value"},
      {"key = a=b", "key", " a=b", "a=b"},
      {"key == b", "key", " b", "b"},
      {"key=\t=\tb", "key", "b", "b"},
      {"key\t= value", "key", " value", "value"},
      {"\t key  \t= a\tb \t", "key", " a\tb \t", "a\tb"},
      {"my key = 1", "my key", " 1", "1"},
      {"key # note = 1", "key # note", " 1", "1"},
      {"key=#", "key", "", ""},
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

TEST_F(CnfgTest, ALineWithoutANameEndsTheSectionAndIsConsumed) {
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

TEST_F(CnfgTest, NamesCompareExactlyAndTheFirstOneWins) {
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

TEST_F(CnfgTest, FindsASectionByAllTextBetweenItsBrackets) {
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

TEST_F(CnfgTest, LineEndsOfBothKindsAndNoneAtTheEnd) {
  const std::vector<Parameter> expected = {{"a", "1"}, {"b", ""}, {"c", "3"}};
  for (const char* const text : {"[S]\na = 1\nb\nc = 3\n", "[S]\r\na = 1\r\nb\r\nc = 3\r\n",
                                 "[S]\na = 1\nb\nc = 3", "[S]\r\na = 1\r\nb\r\nc = 3\r"}) {
    open(text);
    ASSERT_EQ(Cnfg::kOk, mCnfg.selectSection("S"));
    EXPECT_EQ(expected, rest());
  }
}

TEST_F(CnfgTest, AtTheFilesEndTheTextsStayAsTheyWere) {
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

TEST_F(CnfgTest, GivesParametersByTheirPlace) {
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

TEST_F(CnfgTest, WhatIsNoFileIsToldAndAnotherOneCanBeOpenedThen) {
  mFolder.makeFolder("folder.ini");
  for (const char* const file : {"missing.ini", "folder.ini"}) {
    EXPECT_EQ(Cnfg::kNoFile, mCnfg.open(mFolder.backslashed(file)));
    EXPECT_EQ("File '" + mFolder.backslashed(file) + "' not found!", mCnfg.errorText());
  }
  std::string name, value;
  open("[S]\na = 1\n");
  EXPECT_EQ("OK", mCnfg.errorText());
  EXPECT_EQ(Cnfg::kOk, mCnfg.readParameter("a", value, "S", true));
  EXPECT_EQ(Cnfg::kNoMoreParameters, mCnfg.readNextParameter(name, value, true));
  EXPECT_EQ("No further parameter in section 'S'!", mCnfg.errorText());
}

TEST_F(CnfgTest, RebuildsALineInColumns) {
  const std::string name32 = padded("name", 32);
  const std::string longName(33, 'n'), longValue(35, 'v');
  const struct {
    std::string line, name, value, rebuilt;
  } kLines[] = {
      {"name = old", "name", "new", line("name", "new")},
      {"\t name = old # why", "name", "new", "\t " + line("name", "new") + "# why"},
      {"name\t=old#why", "name", "new", name32 + "\t= " + padded("new", 34) + "#why"},
      {"name", "name", "new", name32 + " " + padded("new", 34)},
      {"name = old # why", "name", "", line("name", "") + "# why"},
      {"name = old\r\n", "name", "new", line("name", "new")},
      {"[no section\nname = old", "name", "new", "[no section\n" + line("name", "new")},
      {"name = old", "name", "a # b", line("name", "a # b")},
      {longName + " = old # why", longName, longValue, longName + "= " + longValue + "# why"},
  };
  for (const auto& entry : kLines) {
    open("[S]\n" + entry.line);
    EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter(entry.name, entry.value, "S")) << entry.line;
    EXPECT_EQ("[S]\n" + entry.rebuilt + "\n", saved()) << entry.line; // the last one with a line feed
  }
}

TEST_F(CnfgTest, LeavesEveryOtherLineAsItIs) {
  const std::string head = "# head\r\n\r\n [S] # x\r\n  odd   =\t 1  # c\r\nb = 2\n\t\n";
  const std::string tail = "[T]\r\nnonsense [\r\n# end";
  open(head + "a = 1 # c\r\n" + tail + "\n\r\n\n\r\n");
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("a", "9", "S"));
  EXPECT_EQ(head + "a = 1 # c\r\n" + tail + "\n\r\n\n\r\n", mFolder.read(kName)) << "before save()";
  // Line ends become line feeds, and empty lines at the file's end go.
  std::string expected = head + line("a", "9") + "# c\r\n" + tail + "\n";
  expected.erase(std::remove(expected.begin(), expected.end(), '\r'), expected.end());
  EXPECT_EQ(expected, saved());
}

TEST_F(CnfgTest, ALongerOldTextLeavesNothingBehind) {
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

TEST_F(CnfgTest, SearchesUpToTheNextSectionPastBlankLinesAndComments) {
  open("[R]\nlate = 0\n[S]\n\n # c\n\r\nlate = 1\nlate = 2\n[T]\nother = 3\n");
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameter("other", "x", "S"));
  EXPECT_EQ("Parameter 'other' in section 'S' not found! (" + mFolder.backslashed(kName) + ")",
            mCnfg.errorText());
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameter("LATE", "x", "S"));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameter("# c", "x", "S"));
  EXPECT_EQ(Cnfg::kNoSection, mCnfg.writeParameter("late", "x", "s"));
  EXPECT_EQ("Section 's' not found!", mCnfg.errorText());
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("late", "9", "S"));
  EXPECT_EQ("[R]\nlate = 0\n[S]\n\n # c\n\n" + line("late", "9") + "\nlate = 2\n[T]\nother = 3\n", saved());
}

TEST_F(CnfgTest, WithoutASectionTheSearchGoesOnBehindTheLastLine) {
  open("[S]\na = 1\nb = 2\na = 3\n");
  EXPECT_EQ(Cnfg::kNoSection, mCnfg.writeParameter("a", "x", "")) << "nothing to go on from";
  EXPECT_EQ("Section '' not found!", mCnfg.errorText());
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("a", "one", "S"));
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("a", "three", ""));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameter("b", "x", ""));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameter("b", "x", "")) << "already at the end";
  EXPECT_EQ("[S]\n" + line("a", "one") + "\nb = 2\n" + line("a", "three") + "\n", saved());
}

TEST_F(CnfgTest, MakesAnyLineOfASectionIntoAParameter) {
  open("[S]\na = 1 # keep\n\n  # note\n[T]\n");
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameterAt("one", "1", "S", 0));
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameterAt("two", "2", "S", 1));
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameterAt("three", "3", "S", 2));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameterAt("x", "4", "S", 4));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameterAt("x", "4", "S", 0xFFFFFFFFu));
  EXPECT_EQ(Cnfg::kNoParameter, mCnfg.writeParameterAt("x", "4", "T", 0));
  EXPECT_EQ(Cnfg::kNoSection, mCnfg.writeParameterAt("x", "4", "U", 0));
  const auto withoutSeparator = [](const char* name, const char* value) {
    return padded(name, 32) + " " + padded(value, 34);
  };
  EXPECT_EQ("[S]\n" + line("one", "1") + "# keep\n" + withoutSeparator("two", "2") + "\n  " +
                withoutSeparator("three", "3") + "\n[T]\n",
            saved());
}

TEST_F(CnfgTest, SavesNothingIfNothingWasWritten) {
  open("[S]\r\na = 1\n\n\n");
  EXPECT_EQ("[S]\r\na = 1\n\n\n", saved());
  // A new file isn't written over with the lines of the one before.
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("a", "2", "S"));
  open("[S]\nb = 1\n\n");
  EXPECT_EQ("[S]\nb = 1\n\n", saved());
}

TEST_F(CnfgTest, AFileThatIsGoneIsNotMadeAnew) {
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
