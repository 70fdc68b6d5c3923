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

// Logs the one line of a host that does not run as administrator.
FlowCode RefuseNotElevated();

// As the last word on a companion that was to be stopped: kDone, or kStillRunning with its log
// line.
FlowCode CheckStopped();

}  // namespace caixora
