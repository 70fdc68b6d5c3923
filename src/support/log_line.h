// What a log line looks like and when it is written: plain decisions over texts.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "system/time.h"

namespace caixora {

// A message is written from its pieces, so that callers need not build it.
using Pieces = std::initializer_list<std::string_view>;

enum class Detail : std::uint8_t { kOrdinary = 0, kDetailed = 1 };

enum class LogMode : std::uint8_t { kOff, kOrdinary, kDetailed };

// The mode that the start of the switch file asks for: its first line is empty (ordinary lines),
// exactly "DETALHADO" (detailed ones too) or anything else (none). kSwitchBytes of the file decide.
inline constexpr std::size_t kSwitchBytes = 16;
LogMode ModeOf(std::string_view start_of_switch_file);

constexpr bool IsWritten(LogMode mode, Detail detail) {
  return mode == LogMode::kDetailed || (mode == LogMode::kOrdinary && detail == Detail::kOrdinary);
}

// Size in whole mebibytes from which the log is moved aside before the next line.
inline constexpr std::int32_t kRotationSizeMB = 10;
std::string RotatedLogName(const LocalTime& time);

// The bytes that one line adds to the log, with the line feed that stands before it.
//
// A carriage return becomes a blank. The line is a C string and its own printf format: it ends at
// its first NUL and "%%" comes out as "%". Any other conversion has no argument to take and stands
// as it is: messages hold texts of the host and of other programs, which must not be able to read
// or write memory.
std::string FormatLogLine(const LocalTime& time, std::string_view version, Pieces message,
                          Detail detail);

}  // namespace caixora
