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

void sendItself() {
  ++gRuns;
  acDocManagerPtr()->sendStringToExecute(acDocManagerPtr()->curDocument(), L"AGAIN ");
}

void fail() {
  throw std::runtime_error("it broke");
}

AcEdCommandStack* commandStack() {
  return static_cast<AcEdCommandStack*>(acrxSysRegistry()->at(L"ACAD_REGISTERED_COMMANDS"));
}

class CommandLine : public HostTest {
protected:
  CommandLine() { gRuns = 0; }

  static void run(const std::wstring& text) {
    host::type(text);
    host::runQueue();
  }
  static void addCommand(const ACHAR* globalName, const ACHAR* localName, AcRxFunctionPtr function) {
    ASSERT_EQ(commandStack()->addCommand(L"GROUP", globalName, localName, 0, function), Acad::eOk);
  }
  static void addCube() { addLine({10, 20, 30}, {14, 26, 38}); }
  /// What running a text printed.
  static std::wstring answerTo(const std::wstring& text) {
    const size_t before = host::printed().size();
    run(text);
    return host::printed().substr(before);
  }
};

TEST_F(CommandLine, RunsLaterInOrderAndKeepsARecord) {
  double seconds = 5;
  host::setClock([&seconds] { return seconds; });
  AcApDocument* const documentP = acDocManagerPtr()->curDocument();
  for (const wchar_t* const text : {L"\x1b\x1b", L"NOSUCH\n"})
    EXPECT_EQ(acDocManagerPtr()->sendStringToExecute(documentP, text, true, false, true), Acad::eOk);
  EXPECT_EQ(acDocManagerPtr()->sendStringToExecute(nullptr, L"LOST\n"), Acad::eNoDocument);
  EXPECT_TRUE(host::history().empty());
  seconds = 6;
  EXPECT_EQ(host::runQueue(), 2);
  ASSERT_EQ(host::history().size(), 3u);
  EXPECT_TRUE(host::history()[0].isTyped);
  EXPECT_EQ(host::history()[0].text, L"\x1b\x1b");
  EXPECT_FALSE(host::history()[2].isTyped);
  EXPECT_EQ(host::history()[2].seconds, 6);
  EXPECT_EQ(host::historyText(), "> <ESC><ESC>\n> NOSUCH\nUnknown command \"NOSUCH\".\n");
  acutPrintf(L"\n=> %ls: %d%%%8.2f", L"Move", 7, 1.5);
  EXPECT_EQ(host::printed(), L"Unknown command \"NOSUCH\".\n\n=> Move: 7%    1.50");
}

TEST_F(CommandLine, FindsRegisteredCommandsByEitherName) {
  addCommand(L"OWN_COMMAND", L"EIGENES", countRun);
  EXPECT_EQ(commandStack()->addCommand(L"group", L"own_command", L"X", 0, countRun), Acad::eDuplicateKey);
  run(L"_own_command\n'eigenes '_OWN_COMMAND ");
  EXPECT_EQ(gRuns, 3);
  run(L"OWN_COMMAND\n_EIGENES\n"); // without the mark it is the local name that counts
  EXPECT_EQ(gRuns, 3);
  EXPECT_EQ(commandStack()->removeCmd(L"GROUP", L"Own_Command"), Acad::eOk);
  EXPECT_EQ(commandStack()->removeCmd(L"GROUP", L"OWN_COMMAND"), Acad::eKeyNotFound);
  run(L"_OWN_COMMAND\n");
  EXPECT_EQ(gRuns, 3);
}

TEST_F(CommandLine, SurvivesCommandsThatFailOrSendThemselves) {
  addCommand(L"BROKEN", nullptr, fail);
  EXPECT_NE(answerTo(L"BROKEN\n").find(L"it broke"), std::wstring::npos);
  addCommand(L"AGAIN", nullptr, sendItself);
  host::type(L"AGAIN\n");
  EXPECT_EQ(host::runQueue(), 10000);
  EXPECT_EQ(host::queueLength(), 1);
}

TEST_F(CommandLine, DrawsLinesAndCircles) {
  EXPECT_EQ(answerTo(L"_LINE\n0,0\n4,0\nnonsense\n4,3,7\nC\n"), L"Invalid point.\n");
  EXPECT_EQ(host::entityCount(), 3);
  EXPECT_EQ(host::extents().maxPoint().z, 7);
  const auto* const lastP = dynamic_cast<const AcDbLine*>(host::entity(3));
  ASSERT_NE(lastP, nullptr);
  EXPECT_EQ(lastP->endPoint().x, 0);
  run(L"circle 5,5 -1 x 2\n");
  EXPECT_EQ(host::entityCount(), 4);
  EXPECT_EQ(host::extents().maxPoint().y, 7);
  for (const wchar_t* const bad : {L"1", L"1,2,3,4", L"1,", L"1,nan", L"1e300,0", L"1,2x"})
    run(std::wstring(L"\x1bLINE 0,0 ") + bad + L" ");
  EXPECT_EQ(host::entityCount(), 4);
}

TEST_F(CommandLine, EnterRepeatsAndEscapeCancels) {
  addCommand(L"COUNT", nullptr, countRun);
  run(L"\n");
  EXPECT_EQ(gRuns, 0);
  run(L"COUNT \n ");
  EXPECT_EQ(gRuns, 3);
  EXPECT_EQ(answerTo(L"LINE 0,0 '_-VIEW _TOP 1,0 \x1b" // the view leaves the line running
                     L"2,0 "),
            L"*Cancel*\nUnknown command \"2,0\".\n");
  EXPECT_EQ(host::entityCount(), 1);
  run(L"COU\x1bNOPE\n"); // what was half typed goes too
  host::type(L"LINE 0,0 COUNT ");
  host::reset();
  EXPECT_EQ(host::queueLength(), 0);
  EXPECT_TRUE(host::history().empty());
  run(L"1,1 \nCOUNT\n");
  EXPECT_EQ(host::entityCount(), 0);
  EXPECT_EQ(gRuns, 3);
}

TEST_F(CommandLine, ShowsTheSixViewsInMemoryAndInTheDrawing) {
  struct Case {
    const wchar_t* name;
    AcGeVector3d towards, up;
  };
  addCube();
  for (const Case& c : {Case{L"FRONT", {0, -1, 0}, {0, 0, 1}}, Case{L"RIGHT", {1, 0, 0}, {0, 0, 1}},
                        Case{L"TOP", {0, 0, 1}, {0, 1, 0}}, Case{L"BACK", {0, 1, 0}, {0, 0, 1}},
                        Case{L"LEFT", {-1, 0, 0}, {0, 0, 1}}, Case{L"BOTTOM", {0, 0, -1}, {0, 1, 0}}}) {
    run(std::wstring(L"'_-VIEW _") + c.name + L" ");
    for (const host::ViewState& view : {host::view(), host::storedView()}) {
      EXPECT_TRUE(view.target == AcGePoint3d(12, 23, 34));
      EXPECT_TRUE(view.position == view.target + c.towards * 100);
      EXPECT_TRUE(view.up == c.up);
      EXPECT_EQ(view.fieldWidth, 40);
    }
  }
  EXPECT_EQ(answerTo(L"'_-VIEW _SIDEWAYS "), L"Invalid option \"_SIDEWAYS\".\n");
}

TEST_F(CommandLine, ZoomsToAllOfTheDrawing) {
  int frames = 0;
  for (const wchar_t* const text : {L"'_ZOOM _ALL ", L"_ZOOM _EXTENTS ", L"zoom e\n", L"Zoom A\n"}) {
    host::reset();
    addCube();
    host::setFrameSink([&frames](const host::Frame&) { ++frames; });
    run(text);
    EXPECT_TRUE(host::view().target == AcGePoint3d(12, 23, 34));
    EXPECT_TRUE(host::view().position == AcGePoint3d(12, 23, 134));
    EXPECT_NEAR(host::view().fieldHeight, 6 * 1.05, 1e-9);
    EXPECT_NEAR(host::view().fieldWidth, 4 * 6 * 1.05, 1e-9); // the shape of the field stays
    EXPECT_EQ(host::storedView().fieldHeight, host::view().fieldHeight);
  }
  EXPECT_EQ(frames, 4);
  host::reset();
  run(L"ZOOM E\n");
  addPoint(1, 2, 3);
  run(L"ZOOM E\n");
  EXPECT_EQ(host::view().fieldWidth, 40);
  EXPECT_EQ(host::view().target.z, 3);
  // A layout is zoomed through its viewport.
  host::reset();
  addCube();
  host::setLayout(true);
  run(L"_ZOOM _ALL ");
  EXPECT_EQ(host::layout().centre.x, 12);
  EXPECT_EQ(host::layout().centre.y, 23);
  EXPECT_NEAR(host::layout().viewHeight, 6 * 1.05, 1e-9);
  EXPECT_EQ(host::view().fieldWidth, 40);
  addPoint(40, 20, 0); // now the width counts
  run(L"_ZOOM _ALL ");
  EXPECT_NEAR(host::layout().viewHeight, 30 / 1.5 * 1.05, 1e-9);
}

TEST_F(CommandLine, WorksOutMenuExpressions) {
  EXPECT_EQ(answerTo(L"(menucmd \"M=a$(+,1,$(*,2,3))b$(if,$(=,$(getvar,CVPORT),2),yes,no)$(if,0,x,y)$("
                     L"if,0,x)$(eval,e)\")\n"),
            L"a7byesye\n");
  addCube();
  run(L"_ZOOM\n");
  run(L"(command (menucmd \"M=$(if,$(=,$(getvar,tilemode),1),_EXTENTS,_ALL)\"))\n");
  EXPECT_EQ(host::view().target.x, 12);
  std::wstring deep = L"M=";
  for (int i = 0; i < 1000; ++i)
    deep += L"$(eval,";
  deep += L"x" + std::wstring(1000, L')');
  for (const std::wstring& bad : {std::wstring(L"M=$("), std::wstring(L"M=$(+,1"), deep,
                                  std::wstring(L"M=$(nosuch,1,2)"), std::wstring(L"P1=+x")})
    EXPECT_EQ(answerTo(L"(command (menucmd \"" + bad + L"\"))\n").find(L"; error: bad argument to menucmd"),
              0u);
}

TEST_F(CommandLine, TakesExpressionsAsAWhole) {
  EXPECT_EQ(answerTo(L"(command \"LINE\" \"0,0\" \"1,0\" \"\")\n"), L"");
  EXPECT_EQ(host::entityCount(), 1);
  // Brackets and quotes inside a text don't end it.
  EXPECT_EQ(answerTo(L"(command \"a\\\"b) (\\\\\")\n"), L"Unknown command \"a\"b) (\\\".\n");
  EXPECT_EQ(answerTo(L"(command \"LINE\" "), L"");
  EXPECT_EQ(answerTo(L"\x1b(nosuch)\n"), L"; error: no function definition: nosuch\n");
  for (const std::wstring& bad : {std::wstring(), std::wstring(200000, L'(') + std::wstring(200000, L')')})
    EXPECT_EQ(answerTo(L"(" + bad + L")\n"), L"; error: malformed expression\n");
}

} // namespace
