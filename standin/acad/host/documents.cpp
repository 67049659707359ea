#include <algorithm>

#include "acdocman.h"
#include "state.h"

void AcApDocManagerReactor::documentCreated(AcApDocument*) {}
void AcApDocManagerReactor::documentToBeDestroyed(AcApDocument*) {}

namespace {

/// One document is open at a time; this object stands for whichever it is.
AcApDocument& currentDocument() {
  static AcApDocument* const documentP = new AcApDocument; // see host::state()
  return *documentP;
}

class DocManager : public AcApDocManager {
public:
  AcApDocument* curDocument() const override {
    if (calls::enter("curDocument") || !host::state().hasDocument)
      return nullptr;
    return &currentDocument();
  }

  Acad::ErrorStatus lockDocument(AcApDocument* document, AcAp::DocLockMode mode, const ACHAR*, const ACHAR*,
                                 bool) override {
    if (calls::enter("lockDocument", calls::isRecording() ? std::to_string(mode) : std::string()))
      return Acad::eNotApplicable;
    if (!isOpen(document))
      return Acad::eNoDocument;
    ++host::document().held.locks;
    return Acad::eOk;
  }

  Acad::ErrorStatus unlockDocument(AcApDocument* document) override {
    if (calls::enter("unlockDocument"))
      return Acad::eNotApplicable;
    if (!isOpen(document))
      return Acad::eNoDocument;
    if (host::document().held.locks == 0)
      return Acad::eNotLocked;
    --host::document().held.locks;
    return Acad::eOk;
  }

  Acad::ErrorStatus sendStringToExecute(AcApDocument* document, const ACHAR* text, bool activate,
                                        bool wrapUpInactiveDoc, bool echoString) override {
    const auto flag = [](bool isOn) { return isOn ? " 1" : " 0"; };
    if (calls::enter("sendStringToExecute", calls::isRecording() && text
                                                ? "\"" + host::escaped(text) + "\"" + flag(activate) +
                                                      flag(wrapUpInactiveDoc) + flag(echoString)
                                                : std::string()))
      return Acad::eNotApplicable;
    if (!isOpen(document))
      return Acad::eNoDocument;
    if (!text)
      return Acad::eInvalidInput;
    host::type(text);
    return Acad::eOk;
  }

  void addReactor(AcApDocManagerReactor* reactor) override {
    if (!calls::enter("addReactor"))
      host::state().reactors.push_back(reactor);
  }

  void removeReactor(AcApDocManagerReactor* reactor) override {
    calls::enter("removeReactor"); // never fails: the host would call an object that is gone
    auto& reactors = host::state().reactors;
    reactors.erase(std::remove(reactors.begin(), reactors.end(), reactor), reactors.end());
  }

private:
  static bool isOpen(const AcApDocument* document) {
    return document == &currentDocument() && host::state().hasDocument;
  }
};

} // namespace

AcApDocManager* acDocManagerPtr() {
  static DocManager* const managerP = new DocManager;
  return calls::enter("acDocManagerPtr") || !host::state().hasDocumentManager ? nullptr : managerP;
}

namespace host {

void closeDocument() {
  State& s = state();
  // A reactor may remove itself or others, which may be gone then.
  const auto reactors = s.reactors;
  for (AcApDocManagerReactor* const reactorP : reactors)
    if (std::find(s.reactors.begin(), s.reactors.end(), reactorP) != s.reactors.end())
      reactorP->documentToBeDestroyed(&currentDocument());
  s.documentP = std::make_unique<Document>();
  for (AcApDocManagerReactor* const reactorP : s.reactors)
    reactorP->documentCreated(&currentDocument());
}

void setHasDocument(bool hasDocument) {
  state().hasDocument = hasDocument;
}

void setHasDocumentManager(bool hasManager) {
  state().hasDocumentManager = hasManager;
}

} // namespace host
