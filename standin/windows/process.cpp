#include "report.h"
#include "state.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using desktop::detail::Call;
using desktop::detail::Locked;
using desktop::detail::Quoted;

namespace desktop {

void setMessageBoxAnswer(std::function<int(const MessageBox&)> answer) {
  const Locked s;
  s->boxAnswer = std::move(answer);
}

} // namespace desktop

int WINAPI MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type) {
  if (Call("MessageBoxW", owner, Quoted{text}, Quoted{caption}, type).mustFail())
    return 0;
  // The default caption of Windows.
  const desktop::MessageBox box{owner, caption ? caption : L"Error", text ? text : L"", type};
  const auto answer = Locked()->boxAnswer;
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
  return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : 0;
}
