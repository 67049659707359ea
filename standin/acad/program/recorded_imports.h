#ifndef RECORDED_IMPORTS_H
#define RECORDED_IMPORTS_H

#include <windows.h>

#include <functional>

namespace program {

/// Redirects a loaded module's Windows calls through the trace of calls, as far as the model knows them. Its timer
/// callbacks are bracketed. Lasts until the module is unloaded. For Windows only: the stand-in's calls trace
/// themselves.
/// tickSource  returns what GetTickCount returns to the module; empty: the system's count
void recordImports(HMODULE module, std::function<DWORD()> tickSource);

} // namespace program

#endif
