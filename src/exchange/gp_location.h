// Finds the GP and its exchange folder anew at the start of every call, by opening files on fixed
// drives and paths. There is no configuration for it.
#pragma once

#include "exchange/validation.h"

namespace caixora {

// Sets ClientFolder and ClientExeName (they keep what they hold when no GP is found) and
// ExchangeFolder. `check_liveness` becomes false on a developer's machine, where the GP is run from
// a debugger and must be neither looked for nor started.
Refusal LocateGp(bool& check_liveness);

}  // namespace caixora
