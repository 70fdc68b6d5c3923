// A call of a function of the library.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "caixora.hpp"
#include "tools/functions.h"
#include "tools/reply.h"

namespace caixora {

// Its address in the library; an ErroDeUso when the library lacks it.
Address AddressOf(const caixora_pdv::Biblioteca& library, const Function& function);

// A text argument in Windows-1252, or an ErroDeUso that names it.
std::string EncodeText(Kind kind, std::string_view parameter, std::string_view utf8);

// One call. The values are of the function's types.
Reply CallFunction(const Function& function, Address address, const std::vector<Value>& values);

}  // namespace caixora
