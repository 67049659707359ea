#include "controls.h"

namespace program {

const char* pointerName(session::Pointer where) {
  switch (where) {
  case session::Pointer::view:
    return "view";
  case session::Pointer::tree:
    return "tree";
  case session::Pointer::list:
    return "list";
  case session::Pointer::edit:
    return "edit";
  case session::Pointer::wheel:
    return "wheel";
  case session::Pointer::none:
    break;
  }
  return "none";
}

} // namespace program
