// The clock of the log: the stamp at the start of each of its lines, and times as texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace caixora {

// Seconds of the machine's own clock, since 1970 by its calendar.
using LogTime = std::int64_t;
inline constexpr LogTime kNoTime = std::numeric_limits<LogTime>::min();

std::string DateText(LogTime time);   // 07/03/2024
std::string ClockText(LogTime time);  // 09:15:05

// "07/03/2024 09:15:05 ::1.0.0.0:: "
struct Stamp {
  LogTime time = kNoTime;
  std::uint32_t message = 0;  // where the message begins
};
inline constexpr std::size_t kVersionBegin = 22;

// The one at the start of the text; no time when there is none.
Stamp ReadStamp(std::string_view text);

// True of what is left of a stamp where the log was cut.
bool BeginsAsStamp(std::string_view text);

}  // namespace caixora
