#include <deque>
#include <vector>

#include "command_line.h"

#include "command_stack.h"
#include "commands.h"
#include "menu_expression.h"
#include "state.h"
#include "text.h"

namespace host {

namespace {

constexpr wchar_t kEscape = 0x1B;
constexpr int kMaxTextsARun = 10000;

/// The command line: texts wait in the queue and are split into inputs. An input goes to the running command
/// or starts one.
class CommandLine {
public:
  void run(const std::wstring& text);
  void take(const std::wstring& input);
  void clear();

  std::deque<std::wstring> mQueue;

private:
  void key(wchar_t c);
  void expressionKey(wchar_t c);
  void cancel();
  void start(const std::wstring& typedName, bool isTransparent);

  std::wstring mInput;                  // typed, not yet ended
  int mDepth = 0;                       // open brackets of the expression that is being typed
  bool mIsInString = false;             // inside a quoted text of the expression
  bool mIsEscaped = false;              // directly after a backslash in that text
  bool mEndIsDue = false;               // an expression has run; the blank or Enter that follows is ignored
  std::vector<RunningCommand> mRunning; // a transparent command is after the one it interrupts
  std::wstring mLast;                   // the command that a bare Enter repeats
};

void CommandLine::run(const std::wstring& text) {
  state().history.push_back({now(), true, text});
  for (const wchar_t c : text)
    key(c);
}

void CommandLine::key(wchar_t c) {
  if (c == kEscape) {
    cancel();
    return;
  }
  if (mDepth > 0) {
    expressionKey(c);
    return;
  }
  if (c == L' ' || c == L'\n' || c == L'\r' || c == L'\t') {
    if (mEndIsDue) {
      mEndIsDue = false;
      return;
    }
    const std::wstring input = std::move(mInput);
    mInput.clear();
    take(input);
    return;
  }
  mEndIsDue = false;
  if (c == L'(' && mInput.empty())
    expressionKey(c);
  else
    mInput += c;
}

void CommandLine::expressionKey(wchar_t c) {
  mInput += c;
  if (mIsInString) {
    if (!mIsEscaped && c == L'"')
      mIsInString = false;
    mIsEscaped = !mIsEscaped && c == L'\\';
    return;
  }
  if (c == L'"')
    mIsInString = true;
  else if (c == L'(')
    ++mDepth;
  else if (c == L')')
    --mDepth;
  if (mDepth > 0)
    return;
  const std::wstring expression = std::move(mInput);
  mInput.clear();
  mEndIsDue = true;
  std::vector<std::wstring> inputs;
  if (!evaluateExpression(expression, inputs)) {
    print(L"; error: bad expression: " + expression + L"\n");
    return;
  }
  for (const std::wstring& input : inputs)
    take(input);
}

void CommandLine::cancel() {
  if (!mRunning.empty())
    print(L"*Cancel*\n");
  mRunning.clear();
  mInput.clear();
  mDepth = 0;
  mIsInString = false;
  mIsEscaped = false;
  mEndIsDue = false;
}

void CommandLine::take(const std::wstring& input) {
  const bool isTransparent = !input.empty() && input[0] == L'\'';
  if (!mRunning.empty() && !isTransparent) {
    if (!mRunning.back()(input))
      mRunning.pop_back();
    return;
  }
  if (!input.empty())
    start(input, isTransparent);
  else if (!mLast.empty())
    start(mLast, false);
}

void CommandLine::start(const std::wstring& typedName, bool isTransparent) {
  // ' marks a transparent command, _ a global name, the same in all languages.
  const size_t begin = typedName.find_first_not_of(L"'_.");
  const std::wstring name = begin == std::wstring::npos ? L"" : typedName.substr(begin);
  const bool isGlobal = typedName.find(L'_') < begin;
  if (!isTransparent)
    mLast = typedName;
  if (runRegisteredCommand(name, isGlobal) || runCommand(lowered(name)))
    return;
  if (RunningCommand command = makeCommand(lowered(name)))
    mRunning.push_back(std::move(command));
  else
    print(L"Unknown command \"" + typedName + L"\".\n");
}

void CommandLine::clear() {
  cancel();
  mQueue.clear();
  mLast.clear();
}

CommandLine& commandLine() {
  static CommandLine* const lineP = new CommandLine; // see state()
  return *lineP;
}

} // namespace

int runQueue() {
  CommandLine& line = commandLine();
  int count = 0;
  for (; count < kMaxTextsARun && !line.mQueue.empty(); ++count) {
    const std::wstring text = std::move(line.mQueue.front());
    line.mQueue.pop_front();
    line.run(text);
  }
  return count;
}

void type(const std::wstring& text) {
  commandLine().mQueue.push_back(text);
}

void clearCommandLine() {
  commandLine().clear();
  state().history.clear(); // with the line that cancelling printed
}

void print(const std::wstring& text) {
  state().history.push_back({now(), false, text});
}

const std::vector<HistoryLine>& history() {
  return state().history;
}

std::wstring printed() {
  std::wstring result;
  for (const HistoryLine& line : history())
    if (!line.isTyped)
      result += line.text;
  return result;
}

namespace {

/// Returns typed text for a person to read, without the Enter at its end.
std::string readable(const std::wstring& typed) {
  if (typed == L"\n")
    return "<ENTER>";
  std::string result;
  for (const char c : narrow(typed)) {
    if (c == '\x1b')
      result += "<ESC>";
    else
      result += c == '\n' ? ' ' : c;
  }
  while (!result.empty() && result.back() == ' ')
    result.pop_back();
  return result;
}

} // namespace

std::string historyText() {
  std::string result;
  const auto toNewLine = [&result] {
    if (!result.empty() && result.back() != '\n')
      result += '\n';
  };
  for (const HistoryLine& line : history()) {
    if (line.isTyped) {
      toNewLine();
      result += "> " + readable(line.text) + "\n";
      continue;
    }
    const std::string text = narrow(line.text);
    // A text that begins with a line break starts a new line; after a typed text it is on one already.
    const bool isOnNewLine = !text.empty() && text[0] == '\n' && (result.empty() || result.back() == '\n');
    result += isOnNewLine ? text.substr(1) : text;
  }
  toNewLine();
  return result;
}

} // namespace host
