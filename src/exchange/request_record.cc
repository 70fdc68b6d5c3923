#include "exchange/request_record.h"

#include <algorithm>

#include "exchange/amount.h"
#include "exchange/answer_file.h"
#include "exchange/items.h"
#include "exchange/operations.h"
#include "support/log.h"
#include "support/logged_text.h"

namespace caixora {
namespace {

// An argument as the log shows it.
std::string LogText(Value value, const TefArguments& arguments) {
  switch (value) {
    case Value::kCNPJCliente:
      return arguments.sCNPJCliente;
    case Value::kCNPJParceiro:
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
    case Value::kNone:
    case Value::kLinkItems:
    case Value::kFleetItems:
      break;
  }
  return {};
}

// The record has two formats of its own and shows everything else as the log does.
std::string RecordText(Value value, const TefArguments& arguments) {
  if (value == Value::kValor) return FormatarValor(arguments.dValor);
  if (value == Value::kData) return RetornaNumeros(arguments.data);
  return LogText(value, arguments);
}

void LogOperation(const Operation& operation, const TefArguments& arguments) {
  std::string line;
  for (const Part& part : operation.log_line.parts())
    line.append(part.before).append(LogText(part.value, arguments));
  if (!line.empty()) WriteLog({line});
}

void AppendLines(std::string& record, std::string_view text) {
  const auto written = static_cast<std::ptrdiff_t>(record.size());
  record.append(text);
  std::replace(record.begin() + written, record.end(), '|', '\n');
}

Refusal BuildRecord(const Operation& operation, const TefArguments& arguments,
                    std::string& record) {
  for (const Part& part : operation.request.parts()) {
    const std::string text = RecordText(part.value, arguments);
    const bool empty = part.value == Value::kValor ? !(arguments.dValor > 0) : text.empty();
    if (part.optional && empty) continue;
    AppendLines(record, part.before);
    record.append(text);
    AppendLines(record, part.after);
    Refusal refusal;
    if (part.value == Value::kLinkItems) refusal = AppendLinkItems(arguments, record);
    if (part.value == Value::kFleetItems) refusal = AppendFleetItems(arguments, record);
    if (refusal) return refusal;
  }
  return std::nullopt;
}

}  // namespace

Refusal BuildRequest(Exchange& exchange) {
  WriteLog({"ENVIANDO COMANDO"});
  const TefArguments& arguments = exchange.arguments;
  const Operation* operation = FindOperation(arguments.codigo);
  if (operation == nullptr) return std::nullopt;
  LogOperation(*operation, arguments);
  if (operation->extra == Extra::kLiveness) ExpectLivenessAnswer();
  if (Refusal refusal = BuildRecord(*operation, arguments, exchange.request)) return refusal;
  if (operation->extra == Extra::kLogsRecord) {
    WriteLog({"****IntPos****"});
    WriteLog({exchange.request}, Detail::kDetailed);
  }
  return std::nullopt;
}

}  // namespace caixora
