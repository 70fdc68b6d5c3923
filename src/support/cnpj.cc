#include "support/cnpj.h"

#include <array>
#include <span>
#include <string>

#include "support/text.h"

namespace caixora {
namespace {

// Modulus 11. The weights of the second digit are those of the first behind a 6, so that one list
// serves both: the first skips its head.
constexpr std::array kWeights{6, 5, 4, 3, 2, 9, 8, 7, 6, 5, 4, 3, 2};

int CheckDigit(std::span<const int> digits, std::span<const int> weights) {
  int sum = 0;
  for (std::size_t i = 0; i < weights.size(); ++i) sum += digits[i] * weights[i];
  const int rest = sum % 11;
  return rest < 2 ? 0 : 11 - rest;
}

}  // namespace

bool ValidarCNPJ(std::string_view text) {
  std::array<int, kCnpjLength> digits{};
  const std::string characters = WithoutPunctuation(text);
  if (characters.size() > digits.size()) return false;
  for (std::size_t i = 0; i < characters.size(); ++i)
    if (characters[i] >= '0' && characters[i] <= '9') digits[i] = characters[i] - '0';

  const std::span weights(kWeights);
  return digits[12] == CheckDigit(digits, weights.subspan(1)) &&
         digits[13] == CheckDigit(digits, weights);
}

}  // namespace caixora
