#include "cnfg.h"

#include <gtest/gtest.h>

#include "parameter.h"
#include "temp_folder.h"

namespace {

/// A line as the writing operations build it.
std::string line(const std::string& name, const std::string& value, const std::string& separator = "= ") {
  return padded(name, 32) + separator + padded(value, 34);
}

class CnfgTest : public testing::Test {
protected:
  void open(const std::string& bytes) {
    mFolder.write(kName, bytes);
    ASSERT_EQ(Cnfg::kOk, mCnfg.open(mFolder.backslashed(kName)));
  }
  /// Returns a parameter's value, or the code of the failure.
  std::string valueOf(const std::string& name, const std::string& section) {
    std::string value;
    const int code = mCnfg.readParameter(name, value, section, true);
    return code == Cnfg::kOk ? value : std::to_string(code);
  }

  static constexpr char kName[] = "some file.ini";
  rig::TempFolder mFolder;
  Cnfg mCnfg;
};

TEST_F(CnfgTest, SplitsLineIntoNameAndValue) {
  const struct {
    const char *line, *name, *untrimmed, *trimmed;
  } kLines[] = {
      {"key = value # comment", "key", " value ", "value"},
      {"key == a=b", "key", " a=b", "a=b"},
      {"key=\t=\tb", "key", "b", "b"},
      {"\t my key  \t= a\tb \t", "my key", " a\tb \t", "a\tb"},
      {"key # note=#", "key # note", "", ""},
      {"key = a\rb", "key", " a", "a"},
  };
  for (const auto& c : kLines) {
    open("[S]\n# no parameter\nfirst\n" + std::string(c.line) + "\r\n");
    for (const bool trim : {false, true}) {
      std::string name, value;
      EXPECT_EQ(Cnfg::kOk, mCnfg.readParameterAt(name, value, "S", 1, trim));
      EXPECT_EQ(c.name, name) << c.line;
      EXPECT_EQ(trim ? c.trimmed : c.untrimmed, value) << c.line;
      EXPECT_EQ(Cnfg::kNoParameter, mCnfg.readParameterAt(name, value, "S", 2, trim));
    }
  }
}

TEST_F(CnfgTest, ReportsEachFailure) {
  mFolder.makeFolder("folder.ini");
  for (const char* const file : {"missing.ini", "folder.ini"}) {
    EXPECT_EQ(Cnfg::kNoFile, mCnfg.open(mFolder.backslashed(file)));
    EXPECT_EQ("File '" + mFolder.backslashed(file) + "' not found!", mCnfg.errorText());
  }
  open("[S]\na = 1");
  EXPECT_EQ("2", valueOf("a", "T"));
  EXPECT_EQ("Section 'T' not found!", mCnfg.errorText());
  EXPECT_EQ("1", valueOf("a", "S")) << "searches from the top again";
  EXPECT_EQ("OK", mCnfg.errorText());
  std::string name = "old", value = "old";
  EXPECT_EQ(Cnfg::kNoMoreParameters, mCnfg.readNextParameter(name, value, true));
  EXPECT_EQ("old old", name + ' ' + value) << "unchanged at the file's end";
  EXPECT_EQ("No further parameter in section 'S'!", mCnfg.errorText());
  EXPECT_EQ("3", valueOf("b", "S"));
  EXPECT_EQ("Parameter 'b' in section 'S' not found! (" + mFolder.backslashed(kName) + ")",
            mCnfg.errorText());
  EXPECT_EQ(Cnfg::kOk, mCnfg.writeParameter("a", "2", "S"));
  mCnfg.mFile.close(); // some systems don't remove open files
  mFolder.remove(kName);
  EXPECT_EQ(Cnfg::kNoFile, mCnfg.save());
  EXPECT_FALSE(mFolder.exists(kName));
}

TEST_F(CnfgTest, WritesParametersInColumns) {
  struct Write {
    const char *section, *name, *value;
    int code;
    int offset = -1; // of the line; below zero: by name
  };
  const std::string longName(33, 'n'), longValue(35, 'v');
  const struct {
    std::string text;
    std::vector<Write> writes;
    std::string saved;
  } kFiles[] = {
      // Line ends, and empty lines at the end, are the only other changes.
      {"# a\r\n\r\n [S] # x\r\n#a\n\n[open\n\t name\t=" + std::string(200, ' ') +
           "old#why\r\nname = 2\n[T]\nb = 2\n\n\r\n",
       {{"S", "b", "x", Cnfg::kNoParameter},
        {"S", "NAME", "x", Cnfg::kNoParameter},
        {"S", "#a", "x", Cnfg::kNoParameter},
        {"s", "name", "x", Cnfg::kNoSection},
        {"S", "name", "new", Cnfg::kOk}},
       "# a\n\n [S] # x\n#a\n\n[open\n\t " + line("name", "new", "\t= ") + "#why\nname = 2\n[T]\nb = 2\n"},
      // Without a section the search goes on after the last line written.
      {"[S]\na = 1\nb = 2\na = 3",
       {{"", "a", "x", Cnfg::kNoSection},
        {"S", "a", "one", Cnfg::kOk},
        {"", "a", "three", Cnfg::kOk},
        {"", "b", "x", Cnfg::kNoParameter}},
       "[S]\n" + line("a", "one") + "\nb = 2\n" + line("a", "three") + "\n"},
      {"[S]\na = 1 # keep\n\n[T]",
       {{"S", "x", "4", Cnfg::kNoParameter, 3},
        {"S", "one", "", Cnfg::kOk, 0},
        {"S", longName.c_str(), longValue.c_str(), Cnfg::kOk, 1},
        {"T", "x", "4", Cnfg::kNoParameter, 0},
        {"U", "x", "4", Cnfg::kNoSection, 0}},
       "[S]\n" + line("one", "") + "# keep\n" + longName + " " + longValue + "\n[T]\n"},
      {"[S]\r\na = 1\n\n\n", {}, "[S]\r\na = 1\n\n\n"}};
  for (const auto& file : kFiles) {
    open(file.text);
    for (const Write& w : file.writes)
      EXPECT_EQ(w.code, w.offset < 0 ? mCnfg.writeParameter(w.name, w.value, w.section)
                                     : mCnfg.writeParameterAt(w.name, w.value, w.section, unsigned(w.offset)))
          << w.name;
    EXPECT_EQ(file.text, mFolder.read(kName)) << "before save()";
    EXPECT_EQ(Cnfg::kOk, mCnfg.save());
    EXPECT_EQ(file.saved, mFolder.read(kName));
    EXPECT_EQ(Cnfg::kOk, mCnfg.selectSection("S")) << "the saved file can be read on";
  }
}

} // namespace
