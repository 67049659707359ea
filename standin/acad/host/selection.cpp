#include <windows.h>

#include "acedads.h"
#include "state.h"

namespace {

// What tells the names apart: a selection set carries its serial number, which is above 0, an entity this.
constexpr Adesk::Int64 kEntityName = -1;
// The host gives out no more sets at a time, so that callers who never free theirs notice.
constexpr int kMaxSets = 128;

host::SelectionSet* findSet(const ads_name ss) {
  auto& sets = host::document().sets;
  if (!ss || ss[0] < 1 || static_cast<size_t>(ss[0]) > sets.size())
    return nullptr;
  host::SelectionSet& set = sets[static_cast<size_t>(ss[0]) - 1];
  return set.idsP && set.serial == ss[1] ? &set : nullptr;
}

std::string narrowed(const ACHAR* text) {
  return calls::isRecording() && text ? host::narrow(text) : std::string();
}

} // namespace

int acedSSGet(const ACHAR* mode, const void*, const void*, const resbuf*, ads_name ss) {
  if (calls::enter("acedSSGet", narrowed(mode)))
    return RTERROR;
  host::Document& d = host::document();
  const bool isImplied = mode && (mode[0] == L'I' || mode[0] == L'i') && mode[1] == 0;
  if (!isImplied || d.selectedP->empty() || d.held.selectionSets >= kMaxSets)
    return RTERROR;
  size_t place = 0;
  while (place < d.sets.size() && d.sets[place].idsP)
    ++place;
  if (place == d.sets.size())
    d.sets.emplace_back();
  static Adesk::Int64 sSerial = 0;
  d.sets[place] = {d.selectedP, ++sSerial};
  ++d.held.selectionSets;
  ss[0] = static_cast<Adesk::Int64>(place) + 1;
  ss[1] = sSerial;
  return RTNORM;
}

int acedSSLength(const ads_name ss, Adesk::Int32* length) {
  if (calls::enter("acedSSLength"))
    return RTERROR;
  const host::SelectionSet* const setP = findSet(ss);
  if (!setP)
    return RTERROR;
  *length = static_cast<Adesk::Int32>(setP->idsP->size());
  return RTNORM;
}

int acedSSName(const ads_name ss, Adesk::Int32 i, ads_name entity) {
  if (calls::enter("acedSSName", calls::isRecording() ? std::to_string(i) : ""))
    return RTERROR;
  const host::SelectionSet* const setP = findSet(ss);
  if (!setP || i < 0 || static_cast<size_t>(i) >= setP->idsP->size())
    return RTERROR;
  entity[0] = (*setP->idsP)[static_cast<size_t>(i)].asOldId();
  entity[1] = kEntityName;
  return RTNORM;
}

int acedSSFree(const ads_name ss) {
  if (calls::enter("acedSSFree"))
    return RTERROR;
  host::SelectionSet* const setP = findSet(ss);
  if (!setP)
    return RTERROR;
  setP->idsP.reset();
  --host::document().held.selectionSets;
  return RTNORM;
}

Acad::ErrorStatus acdbGetObjectId(AcDbObjectId& id, const ads_name name) {
  if (calls::enter("acdbGetObjectId"))
    return Acad::eUnknownObjectId;
  const AcDbObjectId candidate(name[0]);
  if (name[1] != kEntityName || !host::find(candidate))
    return Acad::eUnknownObjectId;
  id = candidate;
  return Acad::eOk;
}

int acedRedraw(const ads_name entity, int mode) {
  if (calls::enter("acedRedraw", calls::isRecording() ? std::to_string(mode) : ""))
    return RTERROR;
  if (!entity || entity[1] != kEntityName || !host::find(AcDbObjectId(entity[0])))
    return RTERROR;
  host::document().isRedrawPending = true;
  return RTNORM;
}

namespace host {

void select(const std::vector<AcDbObjectId>& ids) {
  document().selectedP = std::make_shared<std::vector<AcDbObjectId>>(ids);
}

void selectNumbers(const std::vector<int>& numbers) {
  std::vector<AcDbObjectId> ids;
  for (const int number : numbers)
    if (const AcDbEntity* const entityP = entity(number))
      ids.push_back(entityP->objectId());
  select(ids);
}

void selectAll() {
  std::vector<AcDbObjectId> ids;
  for (const AcDbEntity* const entityP : document().modelSpace)
    if (entityP)
      ids.push_back(entityP->objectId());
  select(ids);
}

const std::vector<AcDbObjectId>& selected() {
  return *document().selectedP;
}

} // namespace host
