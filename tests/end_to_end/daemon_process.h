#ifndef DAEMON_PROCESS_H
#define DAEMON_PROCESS_H

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "process.h"
#include "temp_folder.h"

/// The daemon's program. Plays a session from its first client's connection on. The destructor kills it.
class DaemonProcess : public Process {
public:
  /// port  0 takes any free one
  /// more  options beyond those that every test needs
  DaemonProcess(const rig::TempFolder& folder, const std::string& session, const std::string& port = "0",
                const std::vector<std::string>& more = {})
      : Process(OV_DAEMON, arguments(folder, write(folder, session), port, more),
                folder.native("daemon.txt")),
        mFolder(folder) {
    line("port");
  }

  /// Waits for the line that the daemon writes to a file, and returns it.
  std::string line(const std::string& name) const {
    for (int i = 0; written(name).find('\n') == std::string::npos; ++i) {
      if (i == 2000)
        throw std::runtime_error("the daemon didn't start: " + written("daemon.txt"));
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    const std::string text = written(name);
    return text.substr(0, text.find_first_of("\r\n"));
  }

  std::string port() const { return std::to_string(std::stoi(written("port"))); }
  bool isRecorded(const std::string& text) const { return written("record").find(text) != std::string::npos; }

private:
  static std::vector<std::string> arguments(const rig::TempFolder& folder, const std::string& session,
                                            const std::string& port, const std::vector<std::string>& more) {
    std::vector<std::string> out = {
        session, "--port", port, "--port-file", folder.native("port"), "--record", folder.native("record")};
    out.insert(out.end(), more.begin(), more.end());
    return out;
  }
  static std::string write(const rig::TempFolder& folder, const std::string& session) {
    folder.write("a.session", session);
    folder.remove("port");
    folder.remove("record");
    return folder.native("a.session");
  }
  /// Returns what the daemon has written to a file so far. Windows may refuse to open a file that is being created.
  std::string written(const std::string& name) const {
    try {
      return mFolder.read(name);
    } catch (const std::runtime_error&) {
      return {};
    }
  }

  const rig::TempFolder& mFolder;
};

#endif
