#include <algorithm>

#include "acdocman.h"
#include "call_log.h"
#include "state.h"

void AcApDocManagerReactor::documentToBeDestroyed(AcApDocument*) {}

namespace {

class DocManager : public AcApDocManager {
public:
  AcApDocument* curDocument() const override {
    call_log::Call call("curDocument");
    return call.returns(call.mustFail() || !host::state().hasDocument ? nullptr : &host::document().handle);
  }

  Acad::ErrorStatus lockDocument(AcApDocument* document, AcAp::DocLockMode mode, const ACHAR*, const ACHAR*,
                                 bool prompt) override {
    call_log::Call call("lockDocument", document, call_log::shown(mode), prompt);
    const Acad::ErrorStatus status = refusal(call, document);
    if (status == Acad::eOk)
      ++host::document().held.locks;
    return call.returns(status);
  }

  Acad::ErrorStatus unlockDocument(AcApDocument* document) override {
    call_log::Call call("unlockDocument", document);
    Acad::ErrorStatus status = refusal(call, document);
    host::Document& d = host::document();
    if (status == Acad::eOk && d.held.locks == 0)
      status = Acad::eNotLocked;
    if (status == Acad::eOk && --d.held.locks == 0 && !d.movement.empty()) {
      d.undone.push_back(std::move(d.movement));
      d.movement.clear();
    }
    return call.returns(status);
  }

  Acad::ErrorStatus sendStringToExecute(AcApDocument* document, const ACHAR* text, bool activate,
                                        bool wrapUpInactiveDoc, bool echoString) override {
    call_log::Call call("sendStringToExecute", call_log::Quoted{text}, document, call_log::shown(activate),
                        call_log::shown(wrapUpInactiveDoc), call_log::shown(echoString));
    const Acad::ErrorStatus status = refusal(call, document);
    if (status == Acad::eOk) {
      host::type(text);
      ++host::state().sentTexts;
    }
    return call.returns(status);
  }

  void addReactor(AcApDocManagerReactor* reactor) override {
    if (!call_log::Call("addReactor").mustFail())
      host::state().reactors.push_back(reactor);
  }

  void removeReactor(AcApDocManagerReactor* reactor) override {
    const call_log::Call call("removeReactor"); // never fails: the host would call a destroyed object
    auto& reactors = host::state().reactors;
    reactors.erase(std::remove(reactors.begin(), reactors.end(), reactor), reactors.end());
  }

private:
  /// Returns why an operation on a document isn't done, eOk if it is. Only the current one can be worked on.
  static Acad::ErrorStatus refusal(const call_log::Call& call, const AcApDocument* document) {
    if (call.mustFail())
      return Acad::eNotApplicable;
    return document == &host::document().handle && host::state().hasDocument ? Acad::eOk : Acad::eNoDocument;
  }
};

} // namespace

AcApDocManager* acDocManagerPtr() {
  static DocManager* const managerP = new DocManager;
  call_log::Call call("acDocManagerPtr");
  return call.returns(call.mustFail() || !host::state().hasDocumentManager ? nullptr : managerP);
}

namespace host {

void openDocument() {
  State& s = state();
  s.documents.push_back(std::make_unique<Document>(++s.opened));
}

bool switchDocument(int number) {
  auto& all = state().documents;
  const auto found =
      std::find_if(all.begin(), all.end(), [number](const auto& d) { return d->number == number; });
  if (found != all.end())
    std::rotate(found, found + 1, all.end());
  return document().number == number;
}

void closeDocument() {
  State& s = state();
  // A reactor may remove and destroy itself or others.
  const auto reactors = s.reactors;
  for (AcApDocManagerReactor* const reactorP : reactors)
    if (std::find(s.reactors.begin(), s.reactors.end(), reactorP) != s.reactors.end())
      reactorP->documentToBeDestroyed(&document().handle);
  s.documents.pop_back();
}

int documentNumber() {
  return document().number;
}

std::string& documentName() {
  return document().name;
}

std::int64_t sentTexts() {
  return state().sentTexts;
}

void setHasDocument(bool hasDocument) {
  state().hasDocument = hasDocument;
}

void setHasDocumentManager(bool hasManager) {
  state().hasDocumentManager = hasManager;
}

} // namespace host
