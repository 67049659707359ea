#ifndef NAMED_VIEWS_H
#define NAMED_VIEWS_H

#include <string>

namespace host {

/// Shows one of the six standard views of the drawing, in memory and in the drawing. Returns false for an
/// unknown name.
/// name  in lower case
bool showNamedView(const std::wstring& name);

} // namespace host

#endif
