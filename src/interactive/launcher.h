// Runs the companion program Trevix.exe: the checks and steps that the start and the finish of an
// interactive flow share, and the restart that a cancelled flow ends with.
#pragma once

#include <string>

#include "interactive/flow_call.h"

namespace caixora {

inline constexpr char kCompanionExe[] = "Trevix.exe";

// What a run is for. The two differ in what becomes of the exchange files and in log lines.
enum class Run : std::uint8_t { kStart, kFinish };

// Checks, stops a companion that runs, readies the files and starts the companion with the
// arguments' line. kDone when it runs.
FlowCode RunCompanion(Run run, FlowArguments& arguments);

// Starts a flow.
FlowCode StartClient(const FlowCall& call) noexcept;

// Asks the system three times to end every companion. Whether one is left is the caller's question.
void StopClient();

// Starts the companion with its cancel line; nothing is checked.
void RestartClient();

// The companion's folder is the value of this key in the configuration file. Under it lie the
// program, the mark that its updater puts there while it replaces the program, and the folders of
// the exchange.
inline constexpr char kPathKey[] = "CAMINHO";
std::string CompanionUnder(const std::string& folder);
std::string UpdateMarkUnder(const std::string& folder);
inline constexpr char kQuestionFolder[] = "\\Req";
inline constexpr char kAnswerFolder[] = "\\Resp";

// The two small files of the exchange with the companion: where they lie under ClientFolder, and
// their removal.
inline constexpr char kQuestionFile[] = "\\Req001.txt";
inline constexpr char kAnswerFile[] = "\\Resp001.txt";
void SetExchangeFolders();
void RemoveQuestionAndAnswer();

// Codes that several operations return, each with its one log line.
FlowCode RefuseNotElevated() noexcept;
FlowCode RefuseStartFailed() noexcept;
FlowCode RefuseStillRunning() noexcept;

// After StopClient: kDone, or RefuseStillRunning when a companion still runs.
FlowCode CheckStopped();

}  // namespace caixora
