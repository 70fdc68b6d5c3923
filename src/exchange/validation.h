// The checks that every operation passes before anything is written.
#pragma once

#include "exchange/tef_call.h"

namespace caixora {

// Checks CNPJs, instalments and amount, in this order, and takes the punctuation out of the CNPJs.
Refusal ValidateArguments(Exchange& exchange);

}  // namespace caixora
