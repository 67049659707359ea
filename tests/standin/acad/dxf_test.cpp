#include "dxf_reader.h"
#include "host_test.h"
#include "temp_folder.h"

namespace {

class Dxf : public HostTest {
protected:
  dxf::Result loadText(const std::string& text) {
    host::reset();
    mFolder.write("some.dxf", text);
    return dxf::load(mPath);
  }
  /// Turns "0 LINE 10 1.5" into lines of codes and values.
  static std::string lines(std::string words) {
    for (char& c : words)
      if (c == ' ')
        c = '\n';
    return words + "\n";
  }
  static std::string section(const std::string& name, const std::string& words) {
    return lines("0 SECTION 2 " + name) + (words.empty() ? "" : lines(words)) + lines("0 ENDSEC");
  }
  dxf::Result loadEntities(const std::string& words, const std::string& blocks = "") {
    return loadText((blocks.empty() ? "" : section("BLOCKS", blocks)) + section("ENTITIES", words) +
                    lines("0 EOF"));
  }
  static void expectBox(const AcGePoint3d& low, const AcGePoint3d& high) {
    ::expectBox(host::extents(), low, high);
  }

  const rig::TempFolder mFolder;
  const std::string mPath = mFolder.native("some.dxf");
};

TEST_F(Dxf, ReadsEachKindOfEntity) {
  const struct {
    const char* words;
    AcGePoint3d low, high;
  } cases[] = {
      {"0 LINE 8 0 10 1 20 2 30 3 11 4 21 5 31 6", {1, 2, 3}, {4, 5, 6}},
      {"0 POINT 10 -1 20 0 30 0", {-1, 0, 0}, {-1, 0, 0}},
      {"0 3DFACE 10 0 20 0 30 0 11 1 21 0 31 0 12 1 22 1 32 2", {0, 0, 0}, {1, 1, 2}},
      // Seen along its normal, minus z, x is turned round.
      {"0 SOLID 10 0 20 0 30 5 11 1 21 0 31 5 12 0 22 1 32 5 13 1 23 1 33 5 210 0 220 0 230 -1",
       {-1, 0, -5},
       {0, 1, -5}},
      {"0 ARC 10 0 20 0 30 0 40 2 50 90 51 180", {-2, 0, 0}, {0, 2, 0}},
      {"0 CIRCLE 10 3 20 0 30 4 40 1 210 1 220 0 230 0", {4, 2, -1}, {4, 4, 1}},
      {"0 ELLIPSE 10 1 20 1 30 0 11 0 21 4 31 0 40 0.5 41 0 42 6.283185307179586", {-1, -3, 0}, {3, 5, 0}},
      // Half a circle back; the point that shapes a curve is left out.
      {"0 POLYLINE 66 1 70 1 10 0 20 0 30 0 0 VERTEX 10 0 20 0 30 7 0 VERTEX 10 2 20 0 30 7 42 1"
       " 0 VERTEX 10 9 20 9 30 7 70 16 0 SEQEND",
       {0, 0, 7},
       {2, 1, 7}},
      {"0 POLYLINE 30 7 0 VERTEX 10 0 20 0 30 0 0 VERTEX 10 1 20 1 30 0", {0, 0, 7}, {1, 1, 7}},
      {"0 LWPOLYLINE 90 -1 70 1 38 7 10 1 20 1 10 3 20 1 42 1 210 0 220 0 230 -1", {-3, 1, -7}, {-1, 2, -7}},
      // Without SEQEND.
      {"0 POLYLINE 70 8 0 VERTEX 10 1 20 2 30 3 0 VERTEX 10 4 20 5 30 6", {1, 2, 3}, {4, 5, 6}},
      // A face that names a vertex beyond the last one is left out.
      {"0 POLYLINE 70 64 71 99 72 99 0 VERTEX 10 0 20 0 30 0 70 192 0 VERTEX 10 1 20 0 30 0 70 192"
       " 0 VERTEX 70 128 71 1 72 2 73 -3 0 VERTEX 10 0 20 1 30 5 70 192 0 VERTEX 70 128 71 1 72 2 73 9"
       " 0 SEQEND",
       {0, 0, 0},
       {1, 1, 5}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.words);
    EXPECT_EQ(loadEntities(c.words).summary(), "1 entity");
    expectBox(c.low, c.high);
  }
}

TEST_F(Dxf, InsertsNestedBlocks) {
  const std::string blocks = "0 BLOCK 2 OUTER 10 0 20 0 30 0 0 INSERT 2 INNER 10 5 20 0 0 ENDBLK"
                             " 0 BLOCK 2 INNER 10 1 20 0 30 0 0 LINE 10 1 20 0 11 3 21 0 0 ENDBLK"
                             " 0 BLOCK 2 LOOP 0 INSERT 2 LOOP 0 LINE 10 0 20 0 11 1 21 1 0 ENDBLK"
                             " 0 BLOCK 2 *Paper_Space 67 1 0 LINE 67 1 10 0 20 0 11 99 21 99 0 ENDBLK";
  EXPECT_EQ(loadEntities("0 INSERT 2 OUTER 10 100 20 0 30 0 50 90 41 2 42 1 43 1", blocks).entities, 1);
  expectBox({100, 10, 0}, {100, 14, 0});
  const dxf::Result looped = loadEntities("0 INSERT 2 LOOP 10 1 20 0 0 INSERT 2 NOSUCH 10 0", blocks);
  EXPECT_EQ(looped.entities, 1); // the line in it
  EXPECT_EQ(looped.skipped.at("INSERT of an unknown, circular or too deep block"), 2);
  loadEntities("0 INSERT 2 INNER 10 0 20 0 70 3 71 2 44 10 45 20", blocks); // 3 columns, 2 rows
  EXPECT_EQ(host::strokes(1).size(), 6u);
  expectBox({0, 0, 0}, {22, 20, 0});
}

TEST_F(Dxf, BoundsWhatInsertsStandFor) {
  std::string blocks = "0 BLOCK 2 B0 0 LINE 10 0 20 0 11 1 21 1 0 ENDBLK";
  for (int i = 1; i <= 9; ++i) {
    blocks += " 0 BLOCK 2 B" + std::to_string(i);
    for (int k = 0; k < 10; ++k)
      blocks += " 0 INSERT 2 B" + std::to_string(i - 1) + " 10 0 20 0";
    blocks += " 0 ENDBLK";
  }
  for (const char* const insert : {"B9", "B0 70 30000 71 30000", "B0 70 100 71 200", "B0 42 -1e7"}) {
    const dxf::Result result = loadEntities(std::string("0 INSERT 2 ") + insert + " 0 POINT 10 0", blocks);
    EXPECT_EQ(result.entities, 1);
    EXPECT_GE(result.skipped.at("INSERT that stands for too much"), 1) << insert;
  }
}

TEST_F(Dxf, BoundsBlockDepth) {
  constexpr int kLevels = 50000; // a stack holds fewer
  std::string blocks = "0 BLOCK 2 B0 0 POINT 10 1 0 ENDBLK";
  std::string upwards;
  for (int i = 1; i < kLevels; ++i) {
    const std::string below = std::to_string(i - 1);
    blocks += " 0 BLOCK 2 B" + std::to_string(i) + " 0 INSERT 2 B" + below + " 0 ENDBLK";
    upwards += " 0 INSERT 2 B" + below;
  }
  EXPECT_EQ(loadEntities("0 INSERT 2 B" + std::to_string(kLevels - 1), blocks).entities, 0);
  EXPECT_EQ(loadEntities(upwards.substr(1), blocks).entities, 17);
}

TEST_F(Dxf, CountsWhatItLeavesOut) {
  const dxf::Result result = loadEntities("0 TEXT 1 words 10 bad 0 HATCH 91 999999999 0 TEXT 1 more 0 LINE "
                                          "67 1 10 0 20 0 11 5 21 5 0 POINT 10 1");
  EXPECT_EQ(result.summary(), "1 entity; left out: 1 HATCH, 2 TEXT, 1 entity on a layout");
  EXPECT_EQ(loadText(section("HEADER", "9 $ACADVER 1 AC1015") + lines("0 EOF")).summary(), "0 entities");
}

TEST_F(Dxf, RejectsBadFilesInOneLine) {
  const std::string good = section("ENTITIES", "0 POINT 10 1 20 2 30 3");
  const std::pair<std::string, std::string> cases[] = {
      {"", ": the file is empty"},
      {"hello\nworld\n", ":1: \"hello\" is not a group code"},
      {std::string("0\nSECTION\n\0\n", 12), ":3: not a text file"},
      {"AutoCAD Binary DXF\r\n\x1a", ": a DXF file in binary form; save it as text"},
      {lines("0 EOF"), ":2: no section, this is no DXF file"},
      {good, ":14: the file ends without EOF, it is not whole"},
      {good.substr(0, good.size() - 7), ":13: the file ends between a group code and its value"},
      {lines("0 SECTION 2 ENTITIES 0 LINE 0 EOF"), ":8: EOF inside the section \"ENTITIES\""},
      {lines("0 LINE 0 EOF"), ":2: a section should begin here, not \"LINE\""},
      {lines("0 SECTION 0 EOF"), ":2: a section without a name"},
      {"0\nSECTION\n99999\nx\n", ":3: \"99999\" is not a group code"},
      {section("ENTITIES", "0 LINE 10 nan 20 0 11 1 21 1"), ":8: \"nan\" is not a number"},
      {section("ENTITIES", "0 LINE 10 1 20 1e16 11 1"), ":10: \"1e16\" is too large"},
      {"0\nSECTION\n2\nENTITIES\n0\nPOINT\n10\n\n20\n5\n", ":8: \"\" is not a number"},
  };
  for (const auto& [text, reason] : cases) {
    EXPECT_EQ(loadText(text).error, mPath + reason);
    EXPECT_EQ(host::entityCount(), 0);
  }
  for (const std::string& path : {mFolder.native("missing"), mFolder.native()})
    EXPECT_EQ(dxf::load(path).error.rfind(path + ": ", 0), 0u);
}

} // namespace
