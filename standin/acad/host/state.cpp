#include "state.h"

#include "command_line.h"
#include "command_stack.h"

namespace host {

Document::Document(int aNumber) : number(aNumber), objects(1), variables({{L"tilemode", 1}, {L"cvport", 2}}) {
  static Adesk::Int64 sGeneration = 0;
  generation = ++sGeneration;
  viewport = addObject(std::make_unique<AcDbViewport>());
}

AcDbObjectId Document::addObject(std::unique_ptr<AcDbObject> object) {
  const AcDbObjectId id((generation << 32) + static_cast<Adesk::Int64>(objects.size()));
  object->mHost.id = id;
  objects.push_back(std::move(object));
  return id;
}

State& state() {
  static State* const stateP = new State;
  if (stateP->documents.empty())
    stateP->documents.push_back(std::make_unique<Document>(++stateP->opened));
  return *stateP;
}

void reset() {
  State& s = state();
  s.documents.clear();
  s.opened = 0;
  s.hasDocument = true;
  s.hasDocumentManager = true;
  s.history.clear();
  s.sentTexts = 0;
  s.frameSink = nullptr;
  s.refreshRate = 0;
  s.menuText.clear();
  clearCommands();
  clearCommandLine();
}

double now() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

} // namespace host
