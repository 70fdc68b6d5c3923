// The end of an interactive flow: one more run of the companion, then the sending program.
#pragma once

#include <string>

#include "interactive/flow_call.h"

namespace caixora {

// The sending program, in the companion's folder.
std::string SenderUnder(const std::string& folder);

// Returns once the companion has ended, without a time limit, and the sender has been started.
FlowCode FinishFlow(const FlowCall& call) noexcept;

}  // namespace caixora
