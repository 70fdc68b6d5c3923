// The public check-digit rule of the Brazilian company tax id (CNPJ).
#pragma once

#include <cstddef>
#include <string_view>

namespace caixora {

inline constexpr std::size_t kCnpjLength = 14;

// True when the check digits are right. Lenient on purpose: characters that are no digits, and
// those missing from fourteen, count as 0, so that "abc" and the empty text pass. Whoever needs
// fourteen characters asks for them. There is no list of forbidden numbers.
bool ValidarCNPJ(std::string_view text);

}  // namespace caixora
