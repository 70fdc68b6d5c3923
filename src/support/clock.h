// The machine's local time, for the stamps of the log. Tests link a clock of their own.
#pragma once

#include "support/log_line.h"

namespace caixora {

LogTime Now() noexcept;

}  // namespace caixora
