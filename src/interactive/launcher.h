// Runs the companion program Trevix.exe: the checks and steps that the start and the finish of an
// interactive flow share, and the restart that a cancelled flow ends with.
#pragma once

#include "interactive/flow_call.h"

namespace caixora {

inline constexpr char kCompanionExe[] = "Trevix.exe";

// What the finish does in its own way.
struct RunVariant {
  std::string_view entry;
  std::string_view companion_missing;
  void (*ready_exchange_files)();
  std::string_view starting;
  std::string_view not_running;
};

// Starts a flow.
FlowCode StartClient(const FlowCall& call) noexcept;

// Checks, stops a running companion, readies the files and starts the companion with the
// arguments' line. kDone when it runs.
FlowCode RunCompanion(const RunVariant& variant, FlowArguments& arguments);

// Asks the system three times to end every companion. Whether one is left is the caller's question.
void StopClient();

// Starts the companion with its cancel line; nothing is checked.
void RestartClient();

// The two small files of the exchange with the companion: where they lie under ClientFolder, and
// their removal.
inline constexpr char kQuestionFile[] = "\\Req001.txt";
inline constexpr char kAnswerFile[] = "\\Resp001.txt";
void SetExchangeFolders();
void RemoveExchangeFiles();

// Codes that several operations return, each with its one log line.
FlowCode RefuseNotElevated() noexcept;
FlowCode RefuseStartFailed() noexcept;
FlowCode RefuseStillRunning() noexcept;

// The last word on a companion that was to be stopped: kDone, or RefuseStillRunning.
FlowCode CheckStopped();

}  // namespace caixora
