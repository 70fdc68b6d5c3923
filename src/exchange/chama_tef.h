// The one routine behind every payment operation.
#pragma once

#include "exchange/tef_call.h"

namespace caixora {

// Runs one complete exchange with the GP and returns its result, never null. Blocks until the
// exchange has ended. Nothing is thrown: a failure that has no text of its own becomes one of the
// two "S;0;FALHA INTERNA" texts, and an answer that could not be returned stays on disk until the
// next call cleans the folder.
ResultString ChamaTef(const TefCall& call) noexcept;

}  // namespace caixora
