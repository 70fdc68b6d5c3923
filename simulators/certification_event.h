// What a request is to a certification, and its words for it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "simulators/certification_script.h"
#include "simulators/gp_request.h"

namespace caixora::certification {

using gp::Request;

// A list of paid links is a CRT too, and no sale.
bool IsSale(const Request& request);

// What the program may ask for at any time.
bool IsHarmless(const Request& request);

bool IsOf(Kind kind, const Request& request);

// Whether the request was meant for this, be its other fields right or wrong.
bool IsMeantFor(const Expectation& expectation, const Request& request);

// The condition on the amount; null when any will do.
const Condition* AmountOf(const Expectation& expectation);

std::optional<long long> Cents(std::string_view text);

// "uma venda de R$ 12,50 (cupom 17)"
std::string Describe(const Request& request);
// "a venda de R$ 12,50"
std::string Describe(const Expectation& expectation);

// The field by its name or number.
std::string Named(std::string_view key);
// A CPF or CNPJ, with its punctuation or without, keeps its ends.
std::string Shortened(std::string_view value);
// An amount, or a field's value, for a reader.
std::string Readable(std::string_view key, std::string_view value);

}  // namespace caixora::certification
