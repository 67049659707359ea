#ifndef SCRIPT_H
#define SCRIPT_H

#include "comparison.h"

/// Scripts of the engine in tests/fixtures: cases, each a list of lines. The comment at the top of each file
/// explains the words.

struct ScriptLine {
  int number = 0; // in its file
  std::string text;
  std::string word() const { return text.substr(0, text.find(' ')); }
};

struct ScriptCase {
  std::string file, name;
  std::vector<ScriptLine> lines;
};

/// Texts with the names that a trace has for them.
using Values = std::vector<std::pair<std::string, std::string>>;

#ifndef _WIN32
constexpr bool kHasDesktop = true;
#else
constexpr bool kHasDesktop = false; // the windows aren't ours, and calls of Windows leave no record
#endif

/// Returns the full path of a script.
std::string scriptPath(const std::string& file);
/// Returns the cases of some files that can be played on this system, without comments and empty lines.
std::vector<ScriptCase> playableCases(std::initializer_list<const char*> files);
void PrintTo(const ScriptCase& scriptCase, std::ostream* os);

/// An engine that is set up by lines of a script. Scrolling is off until a line turns it on.
class Script : public EngineTest, public testing::WithParamInterface<ScriptCase> {
protected:
  void SetUp() override;

  /// Does what a line says. Fails the test if it isn't understood.
  void play(const std::string& text);
  /// Returns the positions of all scroll bars.
  Values barPositions() const;

  rig::ModelInputs mInputs;
  bool mIsHandled = false; // by the last pass

private:
  void addWindow(const std::string& text);
  void setBar(const std::string& text);
  static void setReader(const std::string& place);

  std::vector<HWND> mWindows;
};

#endif
