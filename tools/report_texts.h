// What the report says of numbers, times and calls, the way people write it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/log_reader.h"

namespace caixora {

inline constexpr LogTime kHour = 3600;
inline constexpr LogTime kDay = 24 * kHour;

inline LogTime DayOf(LogTime time) { return time - ((time % kDay) + kDay) % kDay; }
inline LogTime HourOf(LogTime time) { return (time - DayOf(time)) / kHour; }

std::string Number(std::int64_t number);  // 12.345
std::string Counted(std::size_t count, std::string_view one, std::string_view many);
std::string Reais(std::int64_t cents);  // R$ 12,50
std::string Duration(std::int64_t ms);  // 1 h 2 min, 1 min 5 s, 1,2 s
std::string_view Weekday(LogTime time);

// An amount as the log shows it, "12.500000".
std::string AmountText(const Call& call);
// A sale that was approved with another amount.
bool AmountDiffers(const Call& call);

// What the result says to people: "TRANSACAO NEGADA" of "S;0;TRANSACAO NEGADA".
std::string ResultMessage(const Call& call);
std::string_view FirstLine(std::string_view text);
std::string_view PhaseTitle(const Call& call, std::size_t phase);

// The digits of "Caixora_20240307091505.log", which are a time and no CNPJ.
std::string_view RotationStamp(std::string_view name);

}  // namespace caixora
