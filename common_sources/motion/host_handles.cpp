#include "host_handles.h"

namespace motion {

SelectionSet::~SelectionSet() {
  try {
    free();
  } catch (...) {
  }
}

bool SelectionSet::takeImplied() {
  mIsHeld = acedSSGet(L"I", nullptr, nullptr, nullptr, mName) == RTNORM;
  return mIsHeld;
}

void SelectionSet::free() {
  if (!mIsHeld)
    return;
  acedSSFree(mName);
  mIsHeld = false;
}

Adesk::Int32 selectionLength(const ads_name set) {
  Adesk::Int32 length = 0;
  return acedSSLength(set, &length) == RTNORM && length > 0 ? length : 0;
}

} // namespace motion
