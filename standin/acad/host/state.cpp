#include "state.h"

#include <cstdio>
#include <cwctype>

namespace host {

namespace {

Adesk::Int64 nextGeneration() {
  static Adesk::Int64 sGeneration = 0;
  return ++sGeneration;
}

} // namespace

Document::Document()
    : generation(nextGeneration()), objects(1, nullptr), variables({{L"tilemode", 1}, {L"cvport", 2}}),
      selectedP(std::make_shared<std::vector<AcDbObjectId>>()) {
  const LayoutState fresh;
  viewport =
      addObject(std::make_unique<AcDbViewport>(fresh.width, fresh.height, fresh.viewHeight, fresh.centre));
}

Document::~Document() {
  for (AcDbObject* const objectP : objects) {
    if (!objectP)
      continue;
    HostAccess::setId(*objectP, AcDbObjectId::kNull); // it needn't leave the list that goes with it
    delete objectP;
  }
}

AcDbObjectId Document::addObject(std::unique_ptr<AcDbObject> object) {
  const AcDbObjectId id((generation << 32) + static_cast<Adesk::Int64>(objects.size()));
  HostAccess::setId(*object, id);
  objects.push_back(object.get());
  object.release();
  return id;
}

State& state() {
  static State* const stateP = [] {
    State* const newP = new State;
    newP->documentP = std::make_unique<Document>();
    newP->menuText = defaultMenu();
    return newP;
  }();
  return *stateP;
}

void reset() {
  State& s = state();
  s.documentP = std::make_unique<Document>();
  s.hasDocument = true;
  s.hasDocumentManager = true;
  s.history.clear();
  s.clock = nullptr;
  s.menuText = defaultMenu();
  s.frameSink = nullptr;
  s.refreshRate = 0;
  clearCommands();
  clearQueue();
}

double now() {
  static const auto sStart = std::chrono::steady_clock::now();
  const State& s = state();
  return s.clock ? s.clock()
                 : std::chrono::duration<double>(std::chrono::steady_clock::now() - sStart).count();
}

void setClock(std::function<double()> clock) {
  state().clock = std::move(clock);
}

std::string narrow(const std::wstring& text) {
  std::string result;
  for (const wchar_t c : text)
    result += static_cast<unsigned long>(c) <= 0xFF ? static_cast<char>(static_cast<unsigned char>(c)) : '?';
  return result;
}

std::wstring widen(const std::string& text) {
  std::wstring result;
  for (const char c : text)
    result += static_cast<wchar_t>(static_cast<unsigned char>(c));
  return result;
}

std::wstring lowered(const std::wstring& text) {
  std::wstring result = text;
  for (wchar_t& c : result)
    c = static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
  return result;
}

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

} // namespace host
