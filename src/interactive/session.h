// The running flow: the companion's questions and the host's answers, through two small files.
#pragma once

#include <string>

#include "interactive/flow_call.h"
#include "system/result_string.h"

namespace caixora {

// One poll for the companion's next text. Never null; empty when there is nothing yet.
ResultString AwaitQuestion() noexcept;

// The host's answer until it is whole.
inline constexpr char kStagingFile[] = "\\Resp001_Temp.txt";

// Hands the host's answer to the companion: written under another name first, so that the companion
// never sees part of an answer. What an interrupted call left under that name stays in front.
FlowCode AnswerQuestion(const char* sInformacao) noexcept;

// Stops the companion and has it give up the flow. What becomes the companion's folder then is the
// raw folder.
FlowCode CancelFlow() noexcept;

// The first line of the configuration file as it stands; false when it cannot be read. With the
// usual file the line begins with its key, so that nothing is found there and later waits look in
// vain until the next start; hosts that cancel rely on that silence.
bool ReadRawFolder(std::string& line);

// No log can be opened under a key, and without its log the library ends the host; so the log moves
// along only to a folder that is there, or to the current one that an empty text stands for. A NUL
// would end the path before the log's name.
bool TakesLog(const std::string& raw_folder);

}  // namespace caixora
