// The GP's answer record: which fields are kept, and the result text made of them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace caixora {

// What is kept of an answer. Named by what the fields hold, or by their number where their meaning
// is the GP's own.
enum class Slot : std::uint8_t {
  kCoupon,
  kAmount,
  kStatus,
  kNetwork,
  k010_001,
  kType,
  kNSU,
  kAuthorisation,
  kInstalments,
  kReceiptLines,
  kMessage,
  k031_000,
  kInstitution,
  k170_000,
  kControl,
  k640_000,
  k504_001,
  k740_000,
  k741_000,
  k742_000,
  kCount,
};

struct Answer {
  std::array<std::string, static_cast<std::size_t>(Slot::kCount)> slots;
  std::string receipt;  // "I;" lines, separated by carriage return and line feed

  std::string& operator[](Slot slot) { return slots[static_cast<std::size_t>(slot)]; }
  const std::string& operator[](Slot slot) const { return slots[static_cast<std::size_t>(slot)]; }
};

// Reads the bytes of an answer file. Never fails on their content: lines that hold no known key
// feed nothing. Logs the coupon and message lines as it meets them.
Answer ParseAnswer(std::string bytes);

// "S;0;", "S;1;" or "S;2;" with what belongs behind it.
std::string ComposeResult(Answer answer);

}  // namespace caixora
