// Finds the GP and its exchange folder anew at the start of every call, by opening the files that
// gp_candidates.h names.
#pragma once

#include "exchange/tef_call.h"

namespace caixora {

// Sets ClientFolder and ClientExeName (they keep what they hold when no GP is found) and
// ExchangeFolder. On a developer's machine, which a file marks, the GP is not watched in this call:
// it is neither looked for nor started for its absence. A GP there that does not take the request
// is still killed and started like any other.
Refusal LocateGp(Exchange& exchange);

}  // namespace caixora
