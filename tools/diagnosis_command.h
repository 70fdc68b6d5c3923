// The tool's verb "diagnostico".
#pragma once

#include <span>
#include <string>

namespace caixora {

// Gives the exit status: 0 all well, 1 warnings, 2 a failure. Wrong arguments are an ErroDeUso.
int RunDiagnosis(std::span<const std::string> arguments);

}  // namespace caixora
