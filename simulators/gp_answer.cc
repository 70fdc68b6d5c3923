#include "simulators/gp_answer.h"

#include <algorithm>
#include <ctime>
#include <string_view>
#include <utility>
#include <vector>

#include "simulators/now.h"
#include "support/ansi.h"

namespace caixora::gp {
namespace {

// Readers find keys anywhere in a line and cut values at "=": an echoed text must hold neither.
std::string Harmless(std::string_view text) {
  std::string clean(text.substr(0, 40));
  std::ranges::replace_if(
      clean, [](char c) { return c == '=' || c == '-'; }, ' ');
  return clean;
}

void Add(std::string& answer, std::string_view key, std::string_view value) {
  answer.append(key).append(" = ").append(value).append("\r\n");
}

std::vector<std::string> Receipt(const Operation& operation, const Request& request,
                                 const std::string& nsu) {
  static constexpr std::pair<std::string_view, std::string_view> kEchoes[] = {
      {"001-000", "CUPOM"},    {"012-000", "NSU ORIGINAL"}, {"022-000", "DATA ORIGINAL"},
      {"800-007", "CONTROLE"}, {"800-004", "PARCELAS"},     {"800-010", "PARCELAS"},
      {"250-000", "KM"},       {"250-001", "PLACA"},        {"250-002", "MATRICULA"},
      {"261-000", "ITENS"},
  };
  std::vector<std::string> lines = {"GP SIMULADO   REDE SIMULADA", std::string(operation.title),
                                    Now("%d/%m/%Y %H:%M"), "NSU: " + nsu};
  for (const auto& [key, label] : kEchoes)
    if (request.Has(key)) lines.push_back(std::string(label) + ": " + Harmless(request.Value(key)));
  if (request.Has("003-000"))
    lines.push_back("VALOR: R$ " + ReadableAmount(request.Value("003-000")));
  lines.push_back("TESTE SEM VALOR FISCAL");
  return lines;
}

// Fields that seldom come; together with the usual ones they fill every place of a result.
constexpr std::pair<std::string_view, std::string_view> kSeldomFields[] = {
    {"010-001", "77"},        {"031-000", "CAMPO 31"},
    {"170-000", "CAMPO 170"}, {"504-001", "REDE SUBSTITUTA"},
    {"640-000", "640"},       {"740-000", "CAMPO 740"},
    {"741-000", "CAMPO 741"}, {"742-000", "CAMPO 742"},
};

std::string NextNsu() {
  static unsigned long long counter = static_cast<unsigned long long>(std::time(nullptr));
  return std::to_string(1'000'000'000 + ++counter % 1'000'000'000).substr(1);
}

}  // namespace

std::string Compose(const Request& request, const Operation* operation, const Outcome& outcome) {
  const bool approved = operation != nullptr && outcome.approved;
  std::string answer;
  std::vector<std::string> receipt;
  for (const std::string_view key : {"000-000", "001-000", "003-000"})
    if (request.Has(key)) Add(answer, key, request.Value(key));
  Add(answer, "009-000", approved ? "0" : "5");
  if (approved) {
    const std::string nsu = NextNsu();
    if (!operation->type.empty()) {
      Add(answer, "010-000", "REDE SIMULADA");
      Add(answer, "011-000", operation->type);
      Add(answer, "012-000", request.Value("012-000", nsu));
      Add(answer, "013-000", nsu.substr(3));
      Add(answer, "018-000", request.Value("800-004", request.Value("800-010", "0")));
      Add(answer, "040-000", "BANDEIRA TESTE");
      Add(answer, "800-007", "CTRL" + nsu);
    }
    if (outcome.every_field)
      for (const auto& [key, value] : kSeldomFields) Add(answer, key, value);
    if (operation->receipt && outcome.receipt) receipt = Receipt(*operation, request, nsu);
  }
  Add(answer, "028-000", std::to_string(receipt.size()));
  for (std::size_t i = 0; i < receipt.size(); ++i)
    Add(answer, "029-" + std::to_string(1001 + i).substr(1), receipt[i]);
  Add(answer, "030-000",
      approved    ? operation->message
      : operation ? outcome.refusal
                  : u8"OPERAÇÃO DESCONHECIDA"_ansi);
  Add(answer, "999-999", "0");
  return answer;
}

}  // namespace caixora::gp
