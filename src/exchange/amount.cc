#include "exchange/amount.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace caixora {
namespace {

constexpr std::uint64_t kMillion = 1000000;

// The fraction, below 1, in millionths; a tie goes to the even one, as printf has it. Exact: the
// fraction is mantissa / 2^shift, and the product's 73 bits are kept as high * 2^27 + low.
std::uint64_t Millionths(double fraction) {
  int exponent = 0;
  const double scaled = std::ldexp(std::frexp(fraction, &exponent), 53);
  const auto mantissa = static_cast<std::uint64_t>(scaled);
  std::uint64_t low = (mantissa & 0x7FFFFFF) * kMillion;
  const std::uint64_t high = (mantissa >> 27) * kMillion + (low >> 27);
  low &= 0x7FFFFFF;

  const int shift = 53 - exponent - 27;
  if (shift >= 64) return 0;
  const std::uint64_t quotient = high >> shift;
  const std::uint64_t rest = high - (quotient << shift);
  const std::uint64_t half = std::uint64_t{1} << (shift - 1);
  const bool tie = rest == half && low == 0;
  const bool up = tie ? quotient % 2 == 1 : rest >= half;
  return quotient + (up ? 1 : 0);
}

}  // namespace

bool IsSendableAmount(double reais) noexcept {
  // Looked at as bits first: Pascal hosts run with floating-point exceptions on, and there the mere
  // comparison of a NaN ends the program.
  constexpr std::uint64_t kExponent = 0x7FF0000000000000;
  if ((std::bit_cast<std::uint64_t>(reais) & kExponent) == kExponent) return false;
  return reais >= 0.0 && reais < 2147483648.0;
}

std::string PrintAmount(double reais) {
  std::uint64_t whole = static_cast<std::uint32_t>(reais);
  std::uint64_t millionths = Millionths(reais - static_cast<double>(whole));
  whole += millionths / kMillion;
  millionths %= kMillion;
  std::string decimals = std::to_string(millionths);
  decimals.insert(0, 6 - decimals.size(), '0');
  return std::to_string(whole) + "." + decimals;
}

std::string FormatarValor(double reais) {
  std::string digits = PrintAmount(reais);
  digits.erase(digits.find('.'), 1);
  digits.resize(std::to_string(static_cast<std::int32_t>(reais)).size() + 2);
  return digits;
}

}  // namespace caixora
