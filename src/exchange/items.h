// The item lines (261-xxx) of a payment link and of a fleet sale: two item texts, two numberings.
#pragma once

#include <string>
#include <string_view>

#include "exchange/tef_call.h"

namespace caixora {

// Both append the lines of the items to the record, or refuse the items. Items are separated by
// "|"; a call without items (count below 1 or no text) appends nothing.

// Items of exactly six fields separated by the not sign; the fields are checked.
Refusal AppendLinkItems(const TefArguments& arguments, std::string& record);

// Items of fields separated by "-", of which the first six are sent and missing ones are empty; the
// number of items is checked.
Refusal AppendFleetItems(const TefArguments& arguments, std::string& record);

// A number as links take it: integer, decimal or exponent form with "." or "," as decimal mark.
// Lenient on purpose: "1.2.3", "1-2" and "1e" pass.
bool NumeroValido(std::string_view text);

}  // namespace caixora
