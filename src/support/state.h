// Everything that outlives a call, in one object. It starts empty, lives as long as the library is
// loaded and is never guarded: the host makes one call at a time. Folders and names stay between
// calls, on purpose: what one call found, a later one may still use.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace caixora {

// What the host decided about its last sale, from the confirmation or undo until the next answer is
// read. Meanwhile requests are answered by the library itself.
enum class Pending : std::uint8_t { kNothing, kConfirmation, kUndo };

// As the log names it.
constexpr std::string_view NameOf(Pending pending) {
  constexpr std::string_view kNames[] = {"", "CONFIRMAR", "CANCELAR"};
  return kNames[static_cast<std::size_t>(pending)];
}

// One pair of ConfigQJ.ini.
struct ConfigPair {
  std::string key, value;
};

struct State {
  // Folder of the program in use: the GP's (with its trailing backslash) during a payment call, the
  // companion's, as ConfigQJ.ini gives it, during the interactive flow.
  std::string ClientFolder;

  // File name of that program; the process check looks for it.
  std::string ClientExeName;

  // The one folder through which the GP takes requests and answers, without trailing backslash.
  std::string ExchangeFolder;

  // Folders of the companion's question and answer files.
  std::string ReqFolder;
  std::string RespFolder;

  // Version of this library; stands in every log line.
  std::string LogVersionText;

  // Folder text to which the log adds "Log\". It is ClientFolder, but for a cancelled flow, which
  // may leave a text in ClientFolder under which no log could be opened.
  std::string LogBaseFolder;

  Pending PendingConfirmation = Pending::kNothing;

  // Set while the request in progress is a liveness request, whose answer has a file of its own.
  bool AnswerIsLiveness = false;

  // The GP's answer from its removal until the host is about to get its result. The hard stop of
  // the log puts it back on disk: an approved payment must not vanish with the process.
  struct {
    std::string path, bytes;
  } UnreturnedAnswer;

  // The pairs of ConfigQJ.ini as last read, in file order, repeated keys included.
  std::vector<ConfigPair> ConfigList;

  // Every change of program moves the log along with it.
  void SetClientFolder(const std::string& folder) {
    LogBaseFolder = folder;
    ClientFolder = folder;
  }
};

inline State state;

}  // namespace caixora
