// The answer record of the simulated GP.
#pragma once

#include <string>

#include "simulators/gp_operations.h"
#include "simulators/gp_outcomes.h"
#include "simulators/gp_request.h"

namespace caixora::gp {

// A request for nothing known (operation: null) is refused.
std::string Compose(const Request& request, const Operation* operation, const Outcome& outcome);

}  // namespace caixora::gp
