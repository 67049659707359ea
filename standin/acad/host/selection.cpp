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

/// The number that stands for a set in the trace, 0 for none.
Adesk::Int64 setNumber(const ads_name ss) {
  return ss ? ss[1] : 0;
}

/// The same for an entity's name.
Adesk::Int64 nameNumber(const ads_name entity) {
  return entity ? entity[0] : 0;
}

} // namespace

int acedSSGet(const ACHAR* mode, const void*, const void*, const resbuf*, ads_name ss) {
  call_log::Call call("acedSSGet", mode);
  host::Document& d = host::document();
  const bool isImplied = mode && (mode[0] == L'I' || mode[0] == L'i') && mode[1] == 0;
  if (call.mustFail() || !isImplied || d.selectedP->empty() || d.held.selectionSets >= kMaxSets)
    return call.returns(RTERROR, setNumber(ss));
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
  return call.returns(RTNORM, setNumber(ss));
}

int acedSSLength(const ads_name ss, Adesk::Int32* length) {
  call_log::Call call("acedSSLength", setNumber(ss));
  const host::SelectionSet* const setP = call.mustFail() ? nullptr : findSet(ss);
  if (setP)
    *length = static_cast<Adesk::Int32>(setP->idsP->size());
  return call.returns(setP ? RTNORM : RTERROR, *length);
}

int acedSSName(const ads_name ss, Adesk::Int32 i, ads_name entity) {
  call_log::Call call("acedSSName", setNumber(ss), call_log::shown(i));
  const host::SelectionSet* const setP = call.mustFail() ? nullptr : findSet(ss);
  if (!setP || i < 0 || static_cast<size_t>(i) >= setP->idsP->size())
    return call.returns(RTERROR, nameNumber(entity));
  entity[0] = (*setP->idsP)[static_cast<size_t>(i)].asOldId();
  entity[1] = kEntityName;
  return call.returns(RTNORM, nameNumber(entity));
}

int acedSSFree(const ads_name ss) {
  call_log::Call call("acedSSFree", setNumber(ss));
  host::SelectionSet* const setP = call.mustFail() ? nullptr : findSet(ss);
  if (!setP)
    return call.returns(RTERROR);
  setP->idsP.reset();
  --host::document().held.selectionSets;
  return call.returns(RTNORM);
}

Acad::ErrorStatus acdbGetObjectId(AcDbObjectId& id, const ads_name name) {
  call_log::Call call("acdbGetObjectId", nameNumber(name));
  const AcDbObjectId candidate(name[0]);
  if (call.mustFail() || name[1] != kEntityName || !host::find(candidate))
    return call.returns(Acad::eUnknownObjectId, id);
  id = candidate;
  return call.returns(Acad::eOk, id);
}

int acedRedraw(const ads_name entity, int mode) {
  call_log::Call call("acedRedraw", nameNumber(entity), call_log::shown(mode));
  if (call.mustFail() || !entity || entity[1] != kEntityName || !host::find(AcDbObjectId(entity[0])))
    return call.returns(RTERROR);
  host::document().isRedrawPending = true;
  return call.returns(RTNORM);
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
