#ifndef PAGE_H
#define PAGE_H

namespace program {

/// The files of the folder page/, built into the program.
extern const char* const kPage;
extern const char* const kPageStyle;
extern const char* const kPageLibraries;
extern const char* const kPageScript;

} // namespace program

#endif
