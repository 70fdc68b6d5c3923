#include "tools/diagnosis_output.h"

#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>

namespace caixora {
namespace {

struct StatusName {
  std::string_view shown, id;
};
// In the order of Status.
constexpr std::array kStatusNames = {StatusName{"OK   ", "ok"}, StatusName{"AVISO", "aviso"},
                                     StatusName{"FALHA", "falha"}};

const StatusName& NameOf(Status status) {
  return kStatusNames.at(static_cast<std::size_t>(status));
}

}  // namespace

std::string DiagnosisText(const Diagnosis& diagnosis) {
  std::string text;
  for (const auto& [id, finding] : diagnosis.items) {
    text.append(NameOf(finding.status).shown).append(" ").append(id).append(": ");
    text.append(finding.text);
    if (!finding.remedy.empty()) text.append(" → ").append(finding.remedy);
    text += '\n';
  }
  const auto answer = [](bool works) { return works ? "sim" : "não"; };
  return text + "Uma venda pode funcionar aqui: " + answer(diagnosis.sale) +
         ". Um fluxo interativo: " + answer(diagnosis.flow) + ".\n";
}

nlohmann::ordered_json DiagnosisJson(const Diagnosis& diagnosis) {
  nlohmann::ordered_json items = nlohmann::ordered_json::array();
  for (const auto& [id, finding] : diagnosis.items)
    items.push_back({{"id", id},
                     {"estado", NameOf(finding.status).id},
                     {"texto", finding.text},
                     {"correcao", finding.remedy}});
  return {{"venda", diagnosis.sale}, {"interativo", diagnosis.flow}, {"itens", std::move(items)}};
}

}  // namespace caixora
