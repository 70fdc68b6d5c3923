#include "support/log_line.h"

#include <algorithm>

#include "support/text_mode.h"

namespace caixora {
namespace {

std::string TwoDigits(int number) {
  const std::string digits = std::to_string(number);
  return number < 10 ? "0" + digits : digits;
}

}  // namespace

LogMode ModeOf(std::string_view start_of_switch_file) {
  std::string text(start_of_switch_file);
  DecodeTextMode(text);
  const std::string_view line = std::string_view(text).substr(0, text.find('\n'));
  if (line.empty()) return LogMode::kOrdinary;
  return line == "DETALHADO" ? LogMode::kDetailed : LogMode::kOff;
}

std::string RotatedLogName(const LocalTime& time) {
  return "Caixora_" + std::to_string(time.year) + TwoDigits(time.month) + TwoDigits(time.day) +
         TwoDigits(time.hour) + TwoDigits(time.minute) + TwoDigits(time.second) + ".log";
}

std::string FormatLogLine(const LocalTime& time, std::string_view version, Pieces message,
                          Detail detail) {
  std::string line = "\n" + TwoDigits(time.day) + "/" + TwoDigits(time.month) + "/" +
                     std::to_string(time.year) + " " + TwoDigits(time.hour) + ":" +
                     TwoDigits(time.minute) + ":" + TwoDigits(time.second) + " ::";
  line.append(version).append(":: ");
  for (const std::string_view piece : message) line.append(piece);
  if (detail == Detail::kDetailed) line.append(" (f)");

  std::replace(line.begin(), line.end(), '\r', ' ');
  line.resize(std::min(line.find('\0'), line.size()));
  std::size_t kept = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    line[kept++] = line[i];
    if (line[i] == '%' && i + 1 < line.size() && line[i + 1] == '%') ++i;
  }
  line.resize(kept);
  return line;
}

}  // namespace caixora
