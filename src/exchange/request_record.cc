#include "exchange/request_record.h"

#include "exchange/amount.h"
#include "support/log.h"
#include "support/text.h"

namespace caixora {
namespace {

constexpr std::string_view kTerminator = "999-999";

std::string TextOf(Value value, const TefArguments& arguments) {
  switch (value) {
    case Value::kNone:
      return {};
    case Value::kCliente:
      return arguments.sCNPJCliente;
    case Value::kParceiro:
      return arguments.sCNPJParceiro;
    case Value::kParcelas:
      return std::to_string(arguments.iParcelas);
    case Value::kValor:
      return PrintAmount(arguments.dValor);
    case Value::kCupom:
      return std::to_string(arguments.iCupom);
    case Value::kLeitor:
      return std::to_string(arguments.iLeitor);
    case Value::kControle:
      return arguments.sControle;
    case Value::kNSU:
      return arguments.sNSU;
    case Value::kCampo011:
      return arguments.sCampo011;
    case Value::kCampo012:
      return arguments.sCampo012;
    case Value::kKM:
      return arguments.sKM;
    case Value::kPlaca:
      return arguments.sPlaca;
    case Value::kMatricula:
      return arguments.sMatricula;
    case Value::kQtdeItens:
      return std::to_string(arguments.iQtdeItens);
    case Value::kItens:
      return arguments.sItens;
    case Value::kData:
      return arguments.data;
  }
  return {};
}

// The record has two formats of its own and shows everything else as the log does.
std::string RecordText(Value value, const TefArguments& arguments) {
  if (value == Value::kValor) return FormatarValor(arguments.dValor);
  if (value == Value::kData) return RetornaNumeros(arguments.data);
  return TextOf(value, arguments);
}

bool IsLeftOut(const Line& line, const std::string& text, const TefArguments& arguments) {
  switch (line.when) {
    case When::kAlways:
      return false;
    case When::kWithAmount:
      return !(arguments.dValor > 0);
    case When::kNotEmpty:
      return text.empty();
  }
  return false;
}

}  // namespace

Refusal BuildRecord(const Operation& operation, const TefArguments& arguments,
                    std::string& record) {
  for (const Line& line : operation.record) {
    if (line.items != nullptr) {
      if (Refusal refusal = line.items(arguments, record)) return refusal;
      continue;
    }
    const std::string text =
        line.value == Value::kNone ? std::string(line.text) : RecordText(line.value, arguments);
    if (IsLeftOut(line, text, arguments)) continue;
    record.append(line.key).append(" = ").append(text);
    if (line.key != kTerminator) record.push_back('\n');
  }
  return std::nullopt;
}

void LogOperation(const Operation& operation, const TefArguments& arguments) {
  if (operation.log_head.empty()) return;
  std::string line(operation.log_head);
  line.append(arguments.sCNPJCliente);
  for (const LogLabel& label : operation.log_tail)
    line.append(label.label).append(TextOf(label.value, arguments));
  WriteLog({line});
}

}  // namespace caixora
