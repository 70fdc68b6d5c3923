// The answer of the simulated GP as a step of a certification wants it.
#pragma once

#include <string>
#include <string_view>

#include "simulators/certification_script.h"

namespace caixora::certification {

// Gives a composed answer the message of the part, or its long receipt.
std::string Dressed(std::string_view answer, const Part& part);

}  // namespace caixora::certification
