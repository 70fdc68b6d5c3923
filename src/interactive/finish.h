// The end of an interactive flow: one more run of the companion, then the sending program.
#pragma once

#include "interactive/flow_call.h"

namespace caixora {

// Returns once the companion has ended, without a time limit, and the sender has been started.
FlowCode FinishFlow(const FlowCall& call) noexcept;

}  // namespace caixora
