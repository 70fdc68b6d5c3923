// What lines of the log carry: numbers, an operation with its arguments, a result.
#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "tools/log_reader.h"

namespace caixora {

// Empty when the message has another label.
inline std::string_view Behind(std::string_view label, std::string_view message) {
  return message.starts_with(label) ? message.substr(label.size()) : std::string_view{};
}

template <typename Number>
std::optional<Number> WholeNumber(std::string_view text) {
  Number number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// "12.500000" or "12,50" in cents, to the nearest.
std::optional<std::int64_t> Cents(std::string_view text);

// Takes the name of the operation, its kind and its arguments from its line.
void ReadOperation(std::string_view message, Call& call);

inline constexpr std::string_view kReturn = "RETORNO: ";

// A result as the host got it, but for its line ends: the log shows each carriage return as a
// blank.
std::string ResultText(std::string_view logged);

// The fields behind "C;" of a logged result; empty ones where it ends early.
std::array<std::string_view, 15> RecordFields(std::string_view logged);

// The library's own answer has a coupon and nothing else.
bool IsLocalAnswer(std::string_view result);

// A log that ends within its last line may leave open whose answer this is.
bool IsCut(std::string_view result);

}  // namespace caixora
