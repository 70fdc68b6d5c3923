#include "tools/report_texts.h"

#include <algorithm>

namespace caixora {

std::string Number(std::int64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t i = digits.size(); i > 3; i -= 3) digits.insert(i - 3, 1, '.');
  return digits;
}

std::string Counted(std::size_t count, std::string_view one, std::string_view many) {
  return Number(static_cast<std::int64_t>(count)).append(" ").append(count == 1 ? one : many);
}

std::string Reais(std::int64_t cents) {
  const std::int64_t rest = cents % 100;
  return "R$ " + Number(cents / 100) + (rest < 10 ? ",0" : ",") + std::to_string(rest);
}

std::string Duration(std::int64_t ms) {
  const std::int64_t seconds = (ms + 500) / 1000;
  if (seconds >= 3600)
    return std::to_string(seconds / 3600) + " h " + std::to_string(seconds / 60 % 60) + " min";
  if (seconds >= 60)
    return std::to_string(seconds / 60) + " min " + std::to_string(seconds % 60) + " s";
  const std::int64_t tenths = (ms + 50) / 100;
  return std::to_string(tenths / 10) + "," + std::to_string(tenths % 10) + " s";
}

std::string_view Weekday(LogTime time) {
  constexpr std::string_view kNames[] = {"quinta",  "sexta", "sábado", "domingo",
                                         "segunda", "terça", "quarta"};
  return kNames[((DayOf(time) / kDay) % 7 + 7) % 7];
}

std::string AmountText(const Call& call) {
  if (!call.cents) return std::string(call.amount);
  const std::size_t mark = call.amount.find_first_of(".,");
  const bool only_cents = mark == call.amount.npos ||
                          call.amount.find_first_not_of(
                              '0', std::min(mark + 3, call.amount.size())) == call.amount.npos;
  if (only_cents) return Reais(*call.cents);
  std::string text = "R$ " + std::string(call.amount);
  std::ranges::replace(text, '.', ',');
  return text;
}

bool AmountDiffers(const Call& call) {
  return call.outcome == Outcome::kApproved && call.kind == CallKind::kSale && call.cents &&
         call.answered_cents && *call.answered_cents != *call.cents;
}

std::string_view RotationStamp(std::string_view name) {
  constexpr std::string_view kBefore = "Caixora_", kBehind = ".log";
  constexpr std::size_t kDigits = 14;
  if (!name.starts_with(kBefore) || !name.ends_with(kBehind)) return {};
  name = name.substr(kBefore.size(), name.size() - kBefore.size() - kBehind.size());
  return name.size() == kDigits && name.starts_with("20") ? name : std::string_view{};
}

std::string_view FirstLine(std::string_view text) { return text.substr(0, text.find('\n')); }

std::string ResultMessage(const Call& call) {
  const std::string_view line = FirstLine(call.result);
  if (call.kind != CallKind::kFlow)
    return std::string(line.substr(std::min<std::size_t>(4, line.size())));
  const bool is_code = !line.empty() && line.find_first_not_of("0123456789") == line.npos;
  return (is_code ? "código " : "") + std::string(line);
}

std::string_view PhaseTitle(const Call& call, std::size_t phase) {
  if (call.kind != CallKind::kFlow) return PhaseName(static_cast<CallPhase>(phase));
  return static_cast<CallPhase>(phase) == CallPhase::kGp ? "Trevix e operador" : "início";
}

}  // namespace caixora
