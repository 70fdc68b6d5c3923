// Amounts as texts. Everything works on the number's exact value, without the host's locale.
#pragma once

#include <string>

namespace caixora {

// True for an amount that can be sent: finite, not negative, and with a whole part that a signed
// 32-bit integer holds.
bool IsSendableAmount(double reais) noexcept;

// As printf's "%f" with a point: 12.5 is "12.500000". REQUIRES IsSendableAmount.
std::string PrintAmount(double reais);

// Cents without a separator, cut and not rounded: 12.5 is "1250", 10.999 is "1099", 0.5 is "050".
// REQUIRES IsSendableAmount.
//
// The text keeps as many digits of PrintAmount as the whole part has, and two more. An amount that
// six decimals round up to a longer whole part therefore loses a digit: 9.9999999 is "100". GPs and
// hosts agree on these digits, and hosts round to cents first.
std::string FormatarValor(double reais);

}  // namespace caixora
