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
  State fresh;
  fresh.reactors = std::move(state().reactors);
  state() = std::move(fresh);
  clearCommands();
  clearCommandLine();
}

double now() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

} // namespace host
