// The running flow: the companion's questions and the host's answers, through two small files.
#pragma once

#include "interactive/flow_call.h"
#include "system/result_string.h"

namespace caixora {

// One poll for the companion's next text. Never null; empty when there is nothing yet.
ResultString AwaitQuestion() noexcept;

// Hands the host's answer to the companion: written under another name first, so that the companion
// never sees part of an answer. What an interrupted call left under that name stays in front.
FlowCode AnswerQuestion(const char* sInformacao) noexcept;

// Stops the companion and has it give up the flow.
FlowCode CancelFlow() noexcept;

}  // namespace caixora
