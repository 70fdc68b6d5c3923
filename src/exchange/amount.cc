#include "exchange/amount.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace caixora {

bool IsSendableAmount(double reais) noexcept {
  // Looked at as bits first: Pascal hosts run with floating-point exceptions on, and there the mere
  // comparison of a NaN ends the program.
  constexpr std::uint64_t kExponent = 0x7FF0000000000000;
  if ((std::bit_cast<std::uint64_t>(reais) & kExponent) == kExponent) return false;
  return reais >= 0.0 && reais < 2147483648.0;
}

std::string PrintAmount(double reais) {
  // reais is mantissa / 2^shift exactly; 128 bits hold the mantissa's 53 with the 20 of a million.
  __extension__ using Wide = unsigned __int128;
  int exponent = 0;
  const double fraction = std::frexp(reais, &exponent);
  const Wide scaled = Wide{static_cast<std::uint64_t>(std::ldexp(fraction, 53))} * 1000000;
  const int shift = 53 - exponent;

  std::uint64_t millionths = 0;
  if (shift < 128) {
    millionths = static_cast<std::uint64_t>(scaled >> shift);
    const Wide rest = scaled & ((Wide{1} << shift) - 1);
    const Wide half = Wide{1} << (shift - 1);
    if (rest > half || (rest == half && millionths % 2 == 1)) ++millionths;
  }
  std::string decimals = std::to_string(millionths % 1000000);
  decimals.insert(0, 6 - decimals.size(), '0');
  return std::to_string(millionths / 1000000) + "." + decimals;
}

std::string FormatarValor(double reais) {
  std::string digits = PrintAmount(reais);
  digits.erase(digits.find('.'), 1);
  digits.resize(std::to_string(static_cast<std::int32_t>(reais)).size() + 2);
  return digits;
}

}  // namespace caixora
