// Everything that outlives a call, all in one place. It starts empty, lives as long as the process
// and is never guarded: the host makes one call at a time. Folders and names stay between calls, on
// purpose: what one call found, a later one may still use.
#pragma once

#include <string>
#include <vector>

namespace caixora {

// Folder of the program in use: the GP's (with its trailing backslash) during a payment call, the
// companion's, as ConfigQJ.ini gives it, during the interactive flow.
inline std::string ClientFolder;

// File name of that program; the process check looks for it.
inline std::string ClientExeName;

// The one folder through which the GP takes requests and answers, without trailing backslash.
inline std::string ExchangeFolder;

// Folders of the companion's question and answer files.
inline std::string ReqFolder;
inline std::string RespFolder;

// Version of this library; stands in every log line.
inline std::string LogVersionText;

// Folder text to which the log adds "Log\". It is ClientFolder, but for a cancelled flow, which may
// leave a text in ClientFolder under which no log could be opened.
inline std::string LogBaseFolder;

// "CONFIRMAR", "CANCELAR" or empty. While it is not empty, requests are answered by the library.
inline std::string PendingConfirmation;

// Set while the request in progress is a liveness request, whose answer has a file of its own.
inline bool AnswerIsLiveness = false;

// The GP's answer from its removal until the host is about to get its result. The hard stop of the
// log puts it back on disk: an approved payment must not vanish with the process.
struct AnswerFile {
  std::string path, bytes;
};
inline AnswerFile UnreturnedAnswer;

// The pairs of ConfigQJ.ini as last read, in file order, repeated keys included.
struct ConfigPair {
  std::string key, value;
};
inline std::vector<ConfigPair> ConfigList;

// Every change of program moves the log along with it.
inline void SetClientFolder(const std::string& folder) {
  LogBaseFolder = folder;
  ClientFolder = folder;
}

}  // namespace caixora
