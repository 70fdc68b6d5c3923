// The checks that every operation passes before anything is written.
#pragma once

#include <optional>
#include <string>

#include "exchange/tef_call.h"

namespace caixora {

// A refusal: the "S;0;" text that ends the call.
using Refusal = std::optional<std::string>;

// Checks CNPJs, instalments and amount, in this order, and takes the punctuation out of the CNPJs.
Refusal ValidateArguments(TefArguments& arguments);

}  // namespace caixora
