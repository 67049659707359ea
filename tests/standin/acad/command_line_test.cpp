#include <stdexcept>

#include "accmd.h"
#include "acdocman.h"
#include "acedads.h"
#include "host_test.h"

namespace {

int gRuns = 0;

void countRun() {
  ++gRuns;
}

void fail() {
  throw std::runtime_error("it broke");
}

class CommandLineTest : public HostTest {
protected:
  CommandLineTest() {
    gRuns = 0;
    addLine({10, 20, 30}, {14, 26, 38});
  }
  static AcEdCommandStack* stack() {
    return static_cast<AcEdCommandStack*>(acrxSysRegistry()->at(L"ACAD_REGISTERED_COMMANDS"));
  }
  /// What running a text printed.
  static std::wstring answerTo(const std::wstring& text) {
    const size_t before = host::printed().size();
    host::type(text);
    host::runQueue();
    return host::printed().substr(before);
  }
};

TEST_F(CommandLineTest, RunsLaterInOrder) {
  AcApDocument* const documentP = acDocManagerPtr()->curDocument();
  for (const wchar_t* const text : {L"\x1b\x1b", L"NOSUCH\n"})
    EXPECT_EQ(acDocManagerPtr()->sendStringToExecute(documentP, text), Acad::eOk);
  EXPECT_TRUE(host::history().empty());
  EXPECT_EQ(host::runQueue(), 2);
  EXPECT_EQ(host::historyText(), "> <ESC><ESC>\n> NOSUCH\nUnknown command \"NOSUCH\".\n");
  acutPrintf(L"\n=> %ls: %d%%%8.2f", L"Move", 7, 1.5);
  EXPECT_EQ(host::printed(), L"Unknown command \"NOSUCH\".\n\n=> Move: 7%    1.50");
}

TEST_F(CommandLineTest, FindsRegisteredCommands) {
  EXPECT_EQ(stack()->addCommand(L"G", L"OWN", L"EIGENES", 0, countRun), Acad::eOk);
  EXPECT_EQ(stack()->addCommand(L"g", L"own", L"X", 0, countRun), Acad::eDuplicateKey);
  EXPECT_EQ(stack()->addCommand(L"G", L"BROKEN", nullptr, 0, fail), Acad::eOk);
  EXPECT_EQ(answerTo(L"_own\neigenes '_OWN \n"), L""); // the last Enter repeats
  EXPECT_EQ(gRuns, 4);
  EXPECT_NE(answerTo(L"OWN\n"), L"") << "without the mark it is the local name that counts";
  EXPECT_NE(answerTo(L"BROKEN\n").find(L"it broke"), std::wstring::npos);
  EXPECT_EQ(stack()->removeCmd(L"G", L"Own"), Acad::eOk);
  EXPECT_NE(answerTo(L"_OWN\n"), L"");
}

TEST_F(CommandLineTest, DrawsUntilEscapeCancels) {
  EXPECT_EQ(answerTo(L"_LINE\n0,0\n4,0\nnonsense\n4,3,7\nC\n"), L"Invalid point.\n");
  EXPECT_EQ(answerTo(L"LINE 0,0 '_-VIEW _TOP 1,0 \x1b" // the view leaves the line running
                     L"2,0 "),
            L"*Cancel*\nUnknown command \"2,0\".\n");
  EXPECT_EQ(host::entityCount(), 5);
}

TEST_F(CommandLineTest, ShowsTheSixViews) {
  struct Case {
    const wchar_t* name;
    AcGeVector3d towards, up;
  };
  for (const Case& c : {Case{L"FRONT", {0, -1, 0}, {0, 0, 1}}, Case{L"RIGHT", {1, 0, 0}, {0, 0, 1}},
                        Case{L"TOP", {0, 0, 1}, {0, 1, 0}}, Case{L"BACK", {0, 1, 0}, {0, 0, 1}},
                        Case{L"LEFT", {-1, 0, 0}, {0, 0, 1}}, Case{L"BOTTOM", {0, 0, -1}, {0, 1, 0}}}) {
    EXPECT_EQ(answerTo(std::wstring(L"'_-VIEW _") + c.name + L" "), L"");
    for (const host::ViewState& view : {host::view(), host::storedView()}) {
      EXPECT_TRUE(view.position == AcGePoint3d(12, 23, 34) + c.towards * 100);
      EXPECT_TRUE(view.up == c.up);
    }
  }
}

TEST_F(CommandLineTest, ZoomsToAllOfTheDrawing) {
  EXPECT_EQ(answerTo(L"'_ZOOM _ALL "), L"");
  EXPECT_TRUE(host::view().position == AcGePoint3d(12, 23, 134));
  EXPECT_NEAR(host::view().fieldHeight, 6 * 1.05, 1e-9);
  EXPECT_NEAR(host::view().fieldWidth, 4 * 6 * 1.05, 1e-9); // the shape of the field stays
  EXPECT_EQ(host::storedView().fieldHeight, host::view().fieldHeight);
  host::setLayout(true); // a layout is zoomed through its viewport
  EXPECT_EQ(answerTo(L"_ZOOM _EXTENTS "), L"");
  EXPECT_EQ(host::layout().centre.y, 23);
  EXPECT_NEAR(host::layout().viewHeight, 6 * 1.05, 1e-9);
}

TEST_F(CommandLineTest, WorksOutMenuExpressions) {
  EXPECT_EQ(answerTo(L"(command \"LINE\" \"0,0\" \"1,0\" \"\")\n"), L"");
  EXPECT_EQ(host::entityCount(), 2);
  EXPECT_EQ(
      answerTo(L"(command (menucmd \"M=a$(if,$(=,$(getvar,CVPORT),2),yes,no)$(if,0,x,y)$(if,0,x)\"))\n"),
      L"Unknown command \"ayesy\".\n");
  EXPECT_EQ(answerTo(L"(command \"a\\\"b) (\\\\\")\n"), L"Unknown command \"a\"b) (\\\".\n");
  std::wstring deep;
  for (int i = 0; i < 1000; ++i)
    deep += L"$(if,1,";
  for (const std::wstring& bad :
       {std::wstring(L"M=$("), std::wstring(L"M=$(if,1"), L"M=" + deep, std::wstring(L"P1=+x")})
    EXPECT_EQ(answerTo(L"(command (menucmd \"" + bad + L"\"))\n").find(L"; error: bad expression"), 0u);
}

} // namespace
