#include "tools/log_time.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace caixora {
namespace {

constexpr std::string_view kShape = "00/00/0000 00:00:00 ::";
static_assert(kShape.size() == kVersionBegin);

std::string TwoDigits(LogTime number) {
  return std::string(number < 10 ? "0" : "").append(std::to_string(number));
}

}  // namespace

std::string DateText(LogTime time) {
  const std::chrono::sys_seconds seconds{std::chrono::seconds(time)};
  const std::chrono::year_month_day date{std::chrono::floor<std::chrono::days>(seconds)};
  return TwoDigits(static_cast<unsigned>(date.day())) + "/" +
         TwoDigits(static_cast<unsigned>(date.month())) + "/" +
         std::to_string(static_cast<int>(date.year()));
}

std::string ClockText(LogTime time) {
  std::string text;
  const LogTime second = ((time % 86400) + 86400) % 86400;
  for (const LogTime part : {second / 3600, second / 60 % 60, second % 60})
    text.append(text.empty() ? "" : ":").append(TwoDigits(part));
  return text;
}

bool BeginsAsStamp(std::string_view text) {
  const auto fits = [](char c, char shape) {
    return shape == '0' ? c >= '0' && c <= '9' : c == shape;
  };
  const std::size_t size = std::min(text.size(), kShape.size());
  return std::ranges::equal(text.substr(0, size), kShape.substr(0, size), fits);
}

Stamp ReadStamp(std::string_view text) {
  if (text.size() < kShape.size()) return {};
  std::array<int, 6> numbers{};
  std::size_t number = 0;
  for (std::size_t i = 0; i < kShape.size(); ++i) {
    if (kShape[i] == '0') {
      if (text[i] < '0' || text[i] > '9') return {};
      numbers[number] = numbers[number] * 10 + (text[i] - '0');
    } else {
      if (text[i] != kShape[i]) return {};
      if (number + 1 < numbers.size()) ++number;
    }
  }
  const auto [day, month, year, hour, minute, second] = numbers;
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok() || hour > 23 || minute > 59 || second > 60) return {};
  const std::string_view rest = text.substr(kShape.size(), 64);
  const std::size_t end = rest.find(":: ");
  if (end == rest.npos || rest.find('\n') < end) return {};
  const LogTime days = std::chrono::sys_days(date).time_since_epoch().count();
  return {.time = days * 86400 + hour * 3600 + minute * 60 + second,
          .message = static_cast<std::uint32_t>(kShape.size() + end + 3)};
}

}  // namespace caixora
