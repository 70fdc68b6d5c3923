#include "tools/arguments.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace caixora {
namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr std::int64_t kMostCents = 214'748'364'799;

bool OnlyDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of(kDigits) == std::string_view::npos;
}

// What both kinds of number refuse; empty when the text may yet be one.
std::string_view WrongCharacters(std::string_view text, std::string_view allowed) {
  if (text.empty()) return "está vazio";
  if (text.find_first_of(" \t") != std::string_view::npos) return "não pode ter espaços";
  if (text.starts_with('+')) return "não leva o sinal de mais";
  if (std::ranges::any_of(text, [&](char c) {
        return kDigits.find(c) == std::string_view::npos &&
               allowed.find(c) == std::string_view::npos;
      }))
    return "tem outros caracteres além de algarismos";
  return {};
}

std::string WrongAmount(std::string_view text) {
  if (text.starts_with('-')) return "não pode ser negativo";
  if (const auto wrong = WrongCharacters(text, ",."); !wrong.empty()) return std::string(wrong);
  const std::size_t mark = text.find_first_of(",.");
  if (mark == std::string_view::npos) return {};
  const std::string_view whole = text.substr(0, mark);
  const std::string_view cents = text.substr(mark + 1);
  if (cents.find_first_of(",.") != std::string_view::npos)
    return "não leva separador de milhar, e tem uma só vírgula ou um só ponto";
  if (whole.empty()) return "não tem a parte inteira";
  if (cents.empty()) return "não tem os centavos";
  if (cents.size() == 3)
    return "tem três casas: \"" + std::string(whole) + "," + std::string(cents, 0, 2) +
           "\", ou \"" + std::string(whole) + std::string(cents) + ",00\"?";
  if (cents.size() > 2) return "tem mais de duas casas: arredonde antes para centavos";
  return {};
}

std::string WrongWhole(std::string_view text) {
  if (const auto wrong = WrongCharacters(text, "-,."); !wrong.empty()) return std::string(wrong);
  if (text.find_first_of(",.") != std::string_view::npos)
    return "não leva casas nem separador de milhar";
  if (!OnlyDigits(text.substr(text.starts_with('-') ? 1 : 0)))
    return "tem outros caracteres além de algarismos";
  return {};
}

}  // namespace

ParsedNumber ParseWhole(std::string_view text, std::int64_t least, std::int64_t most) {
  std::string wrong = WrongWhole(text);
  std::int64_t value = 0;
  if (wrong.empty()) {
    const auto error = std::from_chars(text.data(), text.data() + text.size(), value).ec;
    if (error == std::errc{} && value >= least && value <= most) return value;
    wrong = "está fora do alcance";
  }
  return wrong + "; falta um número inteiro de " + std::to_string(least) + " a " +
         std::to_string(most);
}

ParsedNumber ParseAmount(std::string_view text) {
  std::string wrong = WrongAmount(text);
  if (wrong.empty()) {
    const std::size_t mark = std::min(text.find_first_of(",."), text.size());
    std::string digits(text.substr(0, mark));
    const std::string_view cents = text.substr(std::min(mark + 1, text.size()));
    digits.append(cents).append(2 - cents.size(), '0');
    std::int64_t value = 0;
    const auto error = std::from_chars(digits.data(), digits.data() + digits.size(), value).ec;
    if (error == std::errc{} && value <= kMostCents) return value;
    wrong = "passa de 2147483647,99";
  }
  return wrong + "; falta um valor em reais, como 12,50";
}

}  // namespace caixora
