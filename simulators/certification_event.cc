#include "simulators/certification_event.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

namespace caixora::certification {
namespace {

using Test = Condition::Test;

std::string Reais(std::string_view cents) { return "R$ " + gp::ReadableAmount(cents); }

}  // namespace

bool IsSale(const Request& request) {
  return request.Header() == "CRT" && request.Value("800-001") != "6";
}

bool IsHarmless(const Request& request) {
  constexpr std::string_view kHarmless[] = {"ATV", "ADM", "REL", "CPF", "CNPJ", "CPFCNPJ"};
  const std::string_view header = request.Header();
  if (header == "CRT") return !IsSale(request);
  if (header == "FLUXO")
    return request.Value("fluxo_evento") == "pergunta" ||
           request.Value("fluxo_evento") == "resposta" ||
           request.Value("fluxo_evento") == "retorno";
  return std::ranges::find(kHarmless, header) != std::end(kHarmless);
}

bool IsOf(Kind kind, const Request& request) {
  const auto flow = [&](std::string_view event) {
    return request.Header() == "FLUXO" && request.Value("fluxo_evento") == event;
  };
  switch (kind) {
    case Kind::kSale:
      return IsSale(request);
    case Kind::kConfirmation:
      return request.Header() == "CNF";
    case Kind::kUndo:
      return request.Header() == "NCN";
    case Kind::kOutcome:
      return request.IsSettlement();
    case Kind::kCancellation:
      return request.Header() == "CNC";
    case Kind::kReprint:
      return request.Header() == "ADM" && request.Subtype() == "REIMPRESSAO";
    case Kind::kRequest:
      return request.Header() != "FLUXO" && !request.IsSettlement();
    case Kind::kFlowStart:
      return flow("inicio");
    case Kind::kFlowAnswer:
      return flow("resposta");
    case Kind::kFlowReturn:
      return flow("retorno");
    case Kind::kFlowFinish:
      return flow("fim");
    case Kind::kFlowCancel:
      return flow("cancelamento");
    case Kind::kFlowEnd:
      return flow("fim") || flow("cancelamento");
    case Kind::kQuestion:
      break;
  }
  return false;
}

std::string Shortened(std::string_view value) {
  std::string digits;
  for (const char c : value) {
    const bool is_digit = c >= '0' && c <= '9';
    if (is_digit) digits += c;
    if (!is_digit && c != '.' && c != '-' && c != '/') return std::string(value);
  }
  if (digits.size() != 11 && digits.size() != 14) return std::string(value);
  return digits.substr(0, 2) + "…" + digits.substr(digits.size() - 2);
}

std::string Readable(std::string_view key, std::string_view value) {
  if (value.empty()) return "vazio";
  return key == "003-000" ? gp::ReadableAmount(value) : Shortened(value);
}

std::string Named(std::string_view key) {
  const std::string_view name = NameOf(key);
  return name.empty() ? "campo " + std::string(key) : std::string(name);
}

std::string Describe(const Request& request) {
  constexpr std::pair<std::string_view, std::string_view> kHeaders[] = {
      {"CRT", "uma venda"},
      {"CNF", "uma confirmação"},
      {"NCN", "um desfazimento"},
      {"CNC", "um cancelamento"},
      {"CEL", "uma recarga"},
      {"ATV", "uma consulta ao GP"},
      {"REL", "um relatório"},
      {"ADM", "uma função administrativa"},
      {"CPF", "um pedido de CPF"},
      {"CNPJ", "um pedido de CNPJ"},
      {"CPFCNPJ", "um pedido de documento"},
  };
  std::string text;
  if (request.Header() == "FLUXO") {
    constexpr std::pair<std::string_view, std::string_view> kEvents[] = {
        {"inicio", "o início de um fluxo"},  {"pergunta", "uma pergunta do fluxo"},
        {"resposta", "uma resposta do PDV"}, {"retorno", "o retorno do fluxo"},
        {"fim", "a finalização do fluxo"},   {"cancelamento", "o cancelamento do fluxo"}};
    const std::string_view event = request.Value("fluxo_evento");
    for (const auto& [name, description] : kEvents)
      if (name == event) return std::string(description);
    return "fluxo: " + std::string(event);
  }
  for (const auto& [header, name] : kHeaders)
    if (header == request.Header()) text = name;
  if (IsOf(Kind::kReprint, request)) text = "uma reimpressão";
  if (text.empty()) text = "um pedido \"" + std::string(request.Header()) + '"';
  if (request.Has("003-000")) text += " de " + Reais(request.Value("003-000"));
  if (request.Has("001-000")) text += " (cupom " + std::string(request.Value("001-000")) + ')';
  return text;
}

const Condition* AmountOf(const Expectation& expectation) {
  for (const Condition& condition : expectation.conditions)
    if (condition.key == "003-000" && condition.test == Test::kEqual) return &condition;
  return nullptr;
}

std::string Describe(const Expectation& expectation) {
  switch (expectation.kind) {
    case Kind::kSale:
      if (const Condition* amount = AmountOf(expectation); amount && amount->value[0] != '$')
        return "a venda de " + Reais(amount->value);
      return "a venda";
    case Kind::kCancellation:
      return "o cancelamento";
    case Kind::kReprint:
      return "a reimpressão";
    case Kind::kFlowStart:
      return "o início do fluxo";
    case Kind::kFlowAnswer:
      return "a resposta à pergunta do fluxo";
    case Kind::kFlowReturn:
      return "o retorno do fluxo";
    case Kind::kFlowFinish:
      return "a finalização do fluxo";
    case Kind::kFlowCancel:
      return "o cancelamento do fluxo";
    case Kind::kFlowEnd:
      return "a finalização ou o cancelamento do fluxo";
    default:
      break;
  }
  for (const Condition& condition : expectation.conditions)
    if (condition.key == "000-000") return "o pedido " + condition.value;
  return "o pedido";
}

std::optional<long long> Cents(std::string_view text) {
  long long cents = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, cents);
  return error == std::errc() && end == last ? std::optional(cents) : std::nullopt;
}

bool IsMeantFor(const Expectation& expectation, const Request& request) {
  if (!IsOf(expectation.kind, request)) return false;
  const Condition* amount = AmountOf(expectation);
  return expectation.kind == Kind::kCancellation ||
         (amount != nullptr && amount->value == request.Value("003-000"));
}

}  // namespace caixora::certification
