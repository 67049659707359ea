#include "engine.h"

#include "support.h"

#include <cstdlib>

namespace model {

namespace {

constexpr int ZOOM_KEY = 0x2000C;

void sendToHost(Replay& replay, const Documents& documents, const std::wstring& what, bool activate) {
  if (documents.manager != 0) {
    replay.call("sendStringToExecute", {documents.current, activate ? 1.0 : 0.0, 0, 1}, what);
  }
}

const wchar_t* viewCommand(int eventCode) {
  switch (eventCode) {
  case 0x20009:
    return L"'_-VIEW _FRONT ";
  case 0x2000A:
    return L"'_-VIEW _RIGHT ";
  case 0x2000B:
    return L"'_-VIEW _TOP ";
  case 0x20016:
    return L"'_-VIEW _BACK ";
  case 0x20017:
    return L"'_-VIEW _LEFT ";
  case 0x20018:
    return L"'_-VIEW _BOTTOM ";
  default:
    return nullptr;
  }
}

/// Build the line of input for a token of a macro.
std::wstring lineOf(const std::string& token) {
  std::wstring wide;
  for (const char c : token) {
    wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
  }
  return token.compare(0, 2, "M=") == 0 ? L"(command (menucmd \"" + wide + L"\"))\n" : wide + L"\n";
}

} // namespace

Engine::Engine(Inputs& inputs) : mInputs(&inputs) {
  readSettings();
}

void Engine::readSettings() {
  mTraSensBase = mInputs->traSensBase() == 0 ? 20000 : mInputs->traSensBase();
  mRotSensBase = mInputs->rotSensBase() == 0 ? 10000 : mInputs->rotSensBase();
  mMaxContMoveTime = mInputs->maxContMoveTime();
  mUseInt3dIntrfce = mInputs->useInt3dIntrfce();
}

void Engine::timerProc(Replay& replay) {
  try {
    replay.call("KillTimer", {timerId});
    if (!menuIsLoaded) {
      loadMenufile(replay);
    }
    doTransform(replay);
    if (!isPumpRunning) {
      return;
    }
    const double id = ask(replay, "SetTimer", {capIsMoving ? 10.0 : 100.0});
    if (id == 0) {
      replay.log("ERR", "Error TimerProc()");
    } else {
      timerId = id;
    }
  } catch (const HostException&) {
    replay.log("ERR", "Error TimerProc()");
  }
}

void Engine::doTransform(Replay& replay) {
  const auto entry = static_cast<std::uint32_t>(ask(replay, "GetTickCount"));
  std::uint32_t elapsed = 0;
  bool keepGoing = true;
  while (elapsed < mMaxContMoveTime && keepGoing) {
    elapsed = static_cast<std::uint32_t>(ask(replay, "GetTickCount")) - entry;
    try {
      handleDeviceKeys(replay);
      keepGoing = !mUseInt3dIntrfce && handleDeviceCap(replay);
    } catch (const HostException&) {
      replay.log("ERR", "Error doTransform()");
    }
  }
}

void Engine::handleDeviceKeys(Replay& replay) {
  try {
    const int key = mInputs->pendingKey();
    if (key >= 0) {
      execApplFunction(replay, key);
      mInputs->keyServed();
    }
    const int special = mInputs->pendingSpecial();
    if (special > 0) {
      execSpecialApplFunction(replay, special);
      mInputs->specialServed();
    }
  } catch (const HostException&) {
    replay.log("ERR", "Error handleDeviceKeys()");
  }
}

bool Engine::handleDeviceCap(Replay& replay) {
  const int threshold = static_cast<short>(mInputs->minThreshold());
  const int mode = retrieveMode(replay);
  Sample sample{};
  bool isDeflected = false;
  for (int i = 0; i < 6; ++i) {
    const short value = mInputs->axis(i);
    sample[static_cast<std::size_t>(i)] = value;
    isDeflected = isDeflected || std::abs(static_cast<int>(value)) > threshold;
  }
  if (!isDeflected) {
    handleCapIsReleased(replay, mode);
    return false;
  }
  if (scrollTreesAndLists(replay, sample[0], sample[1], sample[2])) {
    return true;
  }
  if (mode == 1) {
    handleCapIsDeflectedIn2DMode(replay, sample[0], sample[1], sample[2]);
  } else {
    handleCapIsDeflectedIn3DMode(replay, sample);
  }
  if (!capIsMoving) {
    capIsMoving = true;
    replay.log("INF", "Cap moving.");
  }
  return true;
}

int Engine::retrieveMode(Replay& replay) {
  const auto variable = [&replay](const wchar_t* name, int fallback) {
    const Call& read = replay.call("acedGetVar", {}, name);
    return out(read, 0) == RTNORM ? static_cast<int>(out(read, 1)) : fallback;
  };
  const bool was2D = viewMode == 1;
  const int tilemode = variable(L"tilemode", was2D ? 0 : 1);
  const int cvport = variable(L"cvport", was2D ? 1 : 2);
  viewMode = tilemode == 0 && cvport == 1 ? 1 : 2;
  return viewMode;
}

void Engine::loadMenufile(Replay& replay) {
  modes.clear();
  menuEntries.clear();
  std::string path;
  std::vector<std::string> names;
  std::vector<std::string> values;
  if (!mInputs->menuFile(path, names, values)) {
    return;
  }
  modes = names;
  for (const std::string& value : values) {
    const std::size_t brace = value.find('}');
    if (brace != std::string::npos && brace + 1 < value.size()) {
      const std::string macro = value.substr(brace + 1);
      menuEntries.push_back(macro.substr(0, macro.find('|')));
    }
  }
  replay.log("CRT", text("Menu file '", path, "' with ", menuEntries.size(), " entries loaded."));
  menuIsLoaded = !modes.empty();
}

void Engine::execApplFunction(Replay& replay, int keyEvent) {
  const Documents documents = currentDocument(replay);
  const int count = static_cast<int>(menuEntries.size());
  if (keyEvent >= count) {
    replay.log("ERR", text("keyEvent (", keyEvent, "') too big (max. is ", count - 1, ")!"));
    return;
  }
  std::istringstream entry(menuEntries[static_cast<std::size_t>(keyEvent)]);
  bool isFirst = true;
  for (std::string token; std::getline(entry, token, ';'); isFirst = false) {
    if (isFirst) {
      sendToHost(replay, documents, L"\x1b\x1b", true);
    }
    sendToHost(replay, documents, lineOf(token), true);
  }
}

void Engine::execSpecialApplFunction(Replay& replay, int eventCode) {
  const Documents documents = currentDocument(replay);
  if (viewMode == 1) {
    if (eventCode == ZOOM_KEY) {
      sendToHost(replay, documents, L"_ZOOM _ALL ", false);
    }
    return;
  }
  const wchar_t* const zoomCommand = L"'_ZOOM _ALL ";
  if (eventCode == ZOOM_KEY) {
    sendToHost(replay, documents, zoomCommand, false);
    return;
  }
  if (const wchar_t* command = viewCommand(eventCode)) {
    sendToHost(replay, documents, command, false);
  } else {
    replay.log("ERR", text("Unknown special command '", eventCode, "' found!"));
  }
  if (mInputs->zoomAllAfterView()) {
    sendToHost(replay, documents, zoomCommand, false);
  }
}

} // namespace model
