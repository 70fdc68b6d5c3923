#include "simulators/gp_keys.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace caixora::gp {
namespace {

struct OutcomeKey {
  char key;
  std::string_view cents;  // whose row of the outcomes it stands for
};

constexpr OutcomeKey kOutcomeKeys[] = {
    {'a', ""}, {'n', "02"}, {'s', "03"}, {'m', "04"}, {'d', "07"}};

}  // namespace

std::string Keys::Help() {
  std::string text = "Teclas, para o próximo pedido:\n";
  for (const auto& [key, cents] : kOutcomeKeys)
    text += std::string("  ") + key + ": " + std::string(OutcomeOfCents(cents).description) + "\n";
  return text + "Outras: r mostra o livro, q ou Esc encerra, h ou ? mostra as teclas\n";
}

// A confirmation or an undo gets no answer: the choice waits for a request that does.
const Outcome* Keys::Decide(const Request& request) {
  return request.IsSettlement() ? nullptr : chosen_;
}

void Keys::Received(const Request& request, const Outcome&, Moment) {
  if (!request.IsSettlement()) chosen_ = nullptr;
}

bool Keys::Key(char key) {
  const auto* found = std::ranges::find(kOutcomeKeys, key, &OutcomeKey::key);
  if (found != std::end(kOutcomeKeys)) {
    chosen_ = &OutcomeOfCents(found->cents);
    say_("Próximo pedido: " + std::string(chosen_->description) + "\n");
  } else if (key == 'r') {
    report_();
  } else if (key == 'q' || key == kEscape) {
    ended_ = true;
  } else if (key == 'h' || key == '?') {
    say_(Help());
  } else {
    return false;
  }
  return true;
}

std::optional<int> Keys::Tick(Moment) { return ended_ ? std::optional(kEnded) : std::nullopt; }

}  // namespace caixora::gp
