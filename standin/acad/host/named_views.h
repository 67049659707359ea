#ifndef NAMED_VIEWS_H
#define NAMED_VIEWS_H

#include <string>

namespace host {

// Views are shown in memory and in the drawing. Names are in lower case.

/// Shows one of the six standard views of the drawing, or one of the four isometric ones. Returns false for an
/// unknown name.
bool showNamedView(const std::wstring& name);
/// Saves the view under a name, and shows it again. Returns false for an unknown name.
void saveView(const std::wstring& name);
bool restoreView(const std::wstring& name);
/// Shows the view before the last change. Returns false if there is none.
bool showPreviousView();
/// Fits all of model space into the layout's viewport. Does nothing if the drawing is empty.
void fitLayout();

} // namespace host

#endif
