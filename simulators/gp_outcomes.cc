#include "simulators/gp_outcomes.h"

#include <algorithm>

#include "support/ansi.h"

namespace caixora::gp {
namespace {

using namespace std::chrono_literals;

constexpr Outcome kOutcomes[] = {
    {"01", Action::kAnswer, true, false, false, 0ms, "", "aprova sem comprovante"},
    {"02", Action::kAnswer, false, false, false, 0ms, u8"TRANSAÇÃO NÃO AUTORIZADA"_ansi, "recusa"},
    {"03", Action::kStaySilent, true, true, false, 0ms, "", "recebe e nunca responde"},
    {"04", Action::kExit, true, true, false, 0ms, "", "recebe e encerra o GP sem responder"},
    {"05", Action::kNeverTake, true, true, false, 0ms, "", "nunca recebe o pedido"},
    {"06", Action::kAnswer, true, true, true, 0ms, "", "aprova com todos os campos"},
    {"07", Action::kAnswer, true, true, false, 3000ms, "", "aprova depois de 3 s"},
    {"08", Action::kAnswer, false, false, false, 0ms, u8"transação não autorizada"_ansi,
     "recusa com mensagem em minúsculas"},
    {"", Action::kAnswer, true, true, false, 0ms, "", "aprova com comprovante"},
};

}  // namespace

std::span<const Outcome> Outcomes() { return kOutcomes; }

const Outcome& OutcomeOfCents(std::string_view cents) {
  return *std::ranges::find_if(
      kOutcomes, [&](const Outcome& row) { return row.cents.empty() || row.cents == cents; });
}

const Outcome& FindOutcome(const Request& request) {
  const std::string_view amount = request.Value("003-000");
  return OutcomeOfCents(amount.substr(amount.size() - std::min<std::size_t>(2, amount.size())));
}

}  // namespace caixora::gp
