// The functions of the library, as the command line and the bridge call them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "caixora.hpp"
#include "tools/reply.h"

namespace caixora {

// An argument: a Windows-1252 text, a number, or an amount in reais.
using Value = std::variant<std::string, std::int32_t, std::uint32_t, double>;
enum class Type { kText, kInteger, kNatural, kAmount };

struct Function {
  const char* name;
  Kind kind;
  std::string_view parameters;  // separated by blanks
  std::span<const Type> types;
  Reply (*call)(FARPROC, const std::vector<Value>&);
};

std::span<const Function> AllFunctions();

// Null when there is no function of that name.
const Function* FindFunction(std::string_view name);

std::vector<std::string_view> ParameterNames(const Function& function);

// Its address in the library; an ErroDeUso when the library lacks it.
FARPROC AddressOf(const caixora_pdv::Biblioteca& library, const Function& function);

// A text argument in Windows-1252, or an ErroDeUso that names it.
std::string EncodeText(Kind kind, std::string_view parameter, std::string_view utf8);

// One call. The values are of the function's types.
Reply CallFunction(const Function& function, FARPROC address, const std::vector<Value>& values);

}  // namespace caixora
