#include <windows.h>

#include "acedads.h"
#include "frames.h"
#include "trace_types.h"

namespace {

// A name's first number is a set's serial number or an entity's id; the second one tells them apart.
constexpr Adesk::Int64 kSetName = -2;
constexpr Adesk::Int64 kEntityName = -1;
// Limit of sets at a time, so that callers who never free theirs notice.
constexpr int kMaxSets = 128;

/// Returns the ids of a set that a caller holds, null if there is no such set.
const std::vector<AcDbObjectId>* findSet(const ads_name ss) {
  const auto& sets = host::document().sets;
  const auto set = ss && ss[1] == kSetName ? sets.find(ss[0]) : sets.end();
  return set == sets.end() ? nullptr : &set->second;
}

/// Returns the number of a set or an entity in the trace, 0 for none.
Adesk::Int64 nameNumber(const ads_name name) {
  return name ? name[0] : 0;
}

} // namespace

int acedSSGet(const ACHAR* mode, const void*, const void*, const resbuf*, ads_name ss) {
  call_log::Call call("acedSSGet", mode);
  host::Document& d = host::document();
  const bool isImplied = mode && (mode[0] == L'I' || mode[0] == L'i') && mode[1] == 0;
  if (call.mustFail() || !isImplied || d.selected.empty() || d.held.selectionSets >= kMaxSets)
    return call.returns(RTERROR, nameNumber(ss));
  static Adesk::Int64 sSerial = 0;
  d.sets[++sSerial] = d.selected;
  ++d.held.selectionSets;
  ss[0] = sSerial;
  ss[1] = kSetName;
  return call.returns(RTNORM, nameNumber(ss));
}

int acedSSLength(const ads_name ss, Adesk::Int32* length) {
  call_log::Call call("acedSSLength", nameNumber(ss));
  const std::vector<AcDbObjectId>* const idsP = call.mustFail() ? nullptr : findSet(ss);
  if (idsP)
    *length = static_cast<Adesk::Int32>(idsP->size());
  return call.returns(idsP ? RTNORM : RTERROR, *length);
}

int acedSSName(const ads_name ss, Adesk::Int32 i, ads_name entity) {
  call_log::Call call("acedSSName", nameNumber(ss), call_log::shown(i));
  const std::vector<AcDbObjectId>* const idsP = call.mustFail() ? nullptr : findSet(ss);
  if (!idsP || i < 0 || static_cast<size_t>(i) >= idsP->size())
    return call.returns(RTERROR, nameNumber(entity));
  entity[0] = (*idsP)[static_cast<size_t>(i)].asOldId();
  entity[1] = kEntityName;
  return call.returns(RTNORM, nameNumber(entity));
}

int acedSSFree(const ads_name ss) {
  call_log::Call call("acedSSFree", nameNumber(ss));
  host::Document& d = host::document();
  if (call.mustFail() || !findSet(ss))
    return call.returns(RTERROR);
  d.sets.erase(ss[0]);
  --d.held.selectionSets;
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
  host::Document& d = host::document();
  d.isRedrawPending = true;
  // The last of the selection completes a step, which the display shows as one frame.
  if (!d.selected.empty() && d.selected.back() == AcDbObjectId(entity[0]))
    host::showFrame(host::isLayout());
  return call.returns(RTNORM);
}

namespace host {

void select(const std::vector<AcDbObjectId>& ids) {
  document().selected = ids;
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
    ids.push_back(entityP->objectId());
  select(ids);
}

const std::vector<AcDbObjectId>& selected() {
  return document().selected;
}

} // namespace host
