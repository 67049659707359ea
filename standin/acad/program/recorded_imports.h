#ifndef RECORDED_IMPORTS_H
#define RECORDED_IMPORTS_H

#include <windows.h>

#include <functional>

namespace program {

/// Leads a loaded module's calls of Windows through the trace of calls, those alone that the model knows. Its
/// timer callbacks are bracketed. Lasts until the module is unloaded. For Windows: the stand-in's calls trace
/// themselves.
/// tickSource  says what GetTickCount gives the module; empty: the truth
void recordImports(HMODULE module, std::function<DWORD()> tickSource);

} // namespace program

#endif
