// The request record that goes to the GP.
//
//    record = { line LF } "999-999 = 0"           two operations lack the last line
//    line   = NNN-NNN " = " value                 three digits, a hyphen, three digits
//
// On disk every LF is CR LF. Values stand as they are given, without quotes or escapes. The keys
// of item lines are "261-" and a number of one digit or more. Which lines an operation sends is its
// row in operations.cc.
#pragma once

#include "exchange/tef_call.h"

namespace caixora {

// Logs the operation's line and builds its record. Refuses items that are not as they should be. A
// code without an operation has an empty record.
Refusal BuildRequest(Exchange& exchange);

}  // namespace caixora
