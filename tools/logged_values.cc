#include "tools/logged_values.h"

#include <algorithm>
#include <vector>

#include "exchange/operations.h"
#include "exchange/tef_call.h"
#include "support/text.h"

namespace caixora {
namespace {

constexpr std::string_view kLocalAnswer = "S;2;COMANDO COM SUCESSO\nC;";

struct NamedOperation {
  const Operation* operation;
  std::string_view name;
};

const std::vector<NamedOperation>& NamedOperations() {
  static const std::vector<NamedOperation> named = [] {
    constexpr std::string_view kLabel = "[METODO] ";
    std::vector<NamedOperation> operations;
    for (std::int32_t code = 0; code < 100; ++code) {
      const Operation* const operation = FindOperation(code);
      if (operation == nullptr || operation->code != code) continue;
      const std::string_view line = Behind(kLabel, operation->log_line.text());
      if (!line.empty()) operations.push_back({operation, line.substr(0, line.find(':'))});
    }
    return operations;
  }();
  return named;
}

CallKind KindOf(const Operation& operation) {
  constexpr std::int32_t kListsLinks = 24;  // has the header of a sale and sells nothing
  constexpr std::int32_t kConfirms = 98;
  constexpr std::int32_t kUndoes = 99;
  if (operation.code == kConfirms) return CallKind::kConfirmation;
  if (operation.code == kUndoes) return CallKind::kUndo;
  const bool sells = operation.request.text().starts_with("000-000 = CRT|");
  return sells && operation.code != kListsLinks ? CallKind::kSale : CallKind::kPayment;
}

void TakeArgument(Value value, std::string_view text, Call& call) {
  if (value == Value::kCupom) call.coupon = WholeNumber<std::int32_t>(text);
  if (value != Value::kValor) return;
  call.amount = text;
  call.cents = Cents(text);
}

// True when the message is this operation's line; its arguments are taken then.
bool ReadArguments(const Operation& operation, std::string_view message, Call& call) {
  Value value = Value::kNone;
  bool first = true;
  for (const Part& part : operation.log_line.parts()) {
    const std::size_t end = first ? 0 : message.find(part.before);
    if (end == message.npos || !message.substr(end).starts_with(part.before)) return false;
    TakeArgument(value, message.substr(0, end), call);
    message.remove_prefix(end + part.before.size());
    value = part.value;
    first = false;
  }
  TakeArgument(value, message, call);
  return true;
}

}  // namespace

std::optional<std::int64_t> Cents(std::string_view text) {
  const std::size_t mark = text.find_first_of(".,");
  const auto whole = WholeNumber<std::int64_t>(text.substr(0, mark));
  if (!whole || *whole < 0 || *whole > 1'000'000'000'000) return std::nullopt;
  std::int64_t thousandths = 0;
  std::int64_t unit = 100;
  for (const char c : mark == text.npos ? std::string_view{} : text.substr(mark + 1)) {
    if (c < '0' || c > '9') return std::nullopt;
    thousandths += unit * (c - '0');
    unit /= 10;
  }
  return *whole * 100 + (thousandths + 5) / 10;
}

void ReadOperation(std::string_view message, Call& call) {
  const std::string_view line = Behind("[METODO] ", message);
  call.operation = line.substr(0, line.find(':'));
  for (const auto& [operation, name] : NamedOperations()) {
    if (name != call.operation) continue;
    call.kind = KindOf(*operation);
    ReadArguments(*operation, message, call);
    return;
  }
}

std::string ResultText(std::string_view logged) {
  std::string text;
  for (std::string_view line; TakePiece(logged, '\n', line);) {
    if (!logged.empty() && line.ends_with(' ')) line.remove_suffix(1);
    text.append(text.empty() ? "" : "\n").append(line);
  }
  return text;
}

std::array<std::string_view, 15> RecordFields(std::string_view logged) {
  std::array<std::string_view, 15> fields{};
  const std::size_t begin = logged.find("\nC;");
  if (begin == logged.npos) return fields;
  std::string_view line = logged.substr(begin + 3);
  line = line.substr(0, line.find('\n'));
  for (std::string_view& field : fields) TakePiece(line, ';', field);
  return fields;
}

bool IsLocalAnswer(std::string_view result) {
  constexpr std::string_view kRest = ";;;;;;;1;;;;;;;";
  if (!result.starts_with(kLocalAnswer) || !result.ends_with(kRest)) return false;
  result.remove_prefix(kLocalAnswer.size());
  return result.find_first_of(";\n") == result.size() - kRest.size();
}

bool IsCut(std::string_view result) {
  if (result.starts_with("S;0;") || result.starts_with("S;1;")) return false;
  constexpr std::ptrdiff_t kSeparators = 14;
  const std::size_t record = result.find("\nC;");
  if (!result.starts_with("S;2;") || record == result.npos) return true;
  const std::string_view line = result.substr(record + 3);
  return std::ranges::count(line.substr(0, line.find('\n')), ';') < kSeparators;
}

}  // namespace caixora
