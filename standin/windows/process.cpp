#include "report.h"
#include "state.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using desktop::detail::Call;
using desktop::detail::Locked;
using desktop::detail::Quoted;

namespace desktop {

std::vector<MessageBox> messageBoxes() {
  const Locked s;
  return s->boxes;
}

void setMessageBoxAnswer(std::function<int(const MessageBox&)> answer) {
  const Locked s;
  s->boxAnswer = std::move(answer);
}

} // namespace desktop

int WINAPI MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type) {
  if (Call("MessageBoxW", owner, Quoted{text}, Quoted{caption}, type).mustFail())
    return 0;
  desktop::MessageBox box;
  box.owner = owner;
  box.caption = caption ? caption : L"Error"; // the default of Windows
  box.text = text ? text : L"";
  box.type = type;
  std::function<int(const desktop::MessageBox&)> answer;
  {
    const Locked s;
    s->boxes.push_back(box);
    answer = s->boxAnswer;
  }
  return answer ? answer(box) : IDOK;
}

BOOL WINAPI Beep(DWORD frequency, DWORD milliseconds) {
  return Call("Beep", frequency, milliseconds).mustFail() ? FALSE : TRUE;
}

DWORD WINAPI GetCurrentProcessId(void) {
  return static_cast<DWORD>(getpid());
}

DWORD WINAPI GetCurrentThreadId(void) {
  return static_cast<DWORD>(syscall(SYS_gettid));
}

DWORD WINAPI GetFileAttributesA(LPCSTR path) {
  struct stat status {};
  if (!path || stat(path, &status) != 0)
    return INVALID_FILE_ATTRIBUTES;
  return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}
