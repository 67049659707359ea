#ifndef ENGINE_SCRIPT_H
#define ENGINE_SCRIPT_H

#include <istream>
#include <string>
#include <vector>

#include "engine_rig.h"

/// Scripts of the engine in tests/fixtures: cases, each a list of lines. The heads of the files tell what the
/// words of a line mean. What a pass is compared with is the affair of the tests that play them.

struct ScriptLine {
  int number = 0;
  std::string text;
  std::string word() const { return text.substr(0, text.find(' ')); }
};

struct ScriptCase {
  std::string file;
  std::string name;
  std::vector<ScriptLine> lines;
};

/// The cases of a file in tests/fixtures, without comments and empty lines; none if it can't be read.
std::vector<ScriptCase> readScript(const std::string& file);
/// Full path of a file in tests/fixtures.
std::string fixturePath(const std::string& file);

std::string caseName(const testing::TestParamInfo<ScriptCase>& info);
void PrintTo(const ScriptCase& scriptCase, std::ostream* os);

/// The numbers up to the first word that is none.
std::vector<double> numbersOf(std::istream& in);

/// An engine that is set up by lines of a script. Scrolling is off until a line turns it on.
class EngineScript : public EngineTest {
protected:
  void SetUp() override;
  void TearDown() override;

  /// Does what a line says that changes the surroundings. Fails the test if it isn't understood.
  void set(const std::string& text);
  /// A pass with the sample behind the line's first word. Gives what handleDeviceCap gave.
  bool passOf(const std::string& text);

  std::vector<std::string> mKinds; // of the entities, in the order of their numbers
#ifndef _WIN32
  std::vector<HWND> mWindows;
#endif

private:
  void setNumbers(const std::string& word, const std::vector<double>& v, bool isPerspective);
  void setToggle(const std::string& name, bool isOn);
  void addEntity(std::istream& in);
  void addWindow(std::istream& in);
  void setBar(std::istream& in);
};

#endif
