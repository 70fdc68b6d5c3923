// The functions of the library, as the command line and the bridge call them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "caixora.h"

namespace caixora {

enum class Kind {
  kSale,
  kOutcome,  // Confirmar and Desfazimento
  kPayment,  // the other functions that return "S;..."
  kTest,
  kInteractive,
};

// An argument: a Windows-1252 text, a number, or an amount in reais.
using Value = std::variant<std::string, std::int32_t, std::uint32_t, double>;
enum class Type { kText, kInteger, kNatural, kAmount };

// A code of an interactive function, a constant text, or a result to be freed.
using Returned = std::variant<std::int32_t, const char*, CaixoraTexto>;
using Address = void (*)();

struct Function {
  const char* name;
  Kind kind;
  std::string_view parameters;  // separated by blanks
  std::string_view summary;
  std::span<const Type> types;
  Returned (*call)(Address, const std::vector<Value>&);
};

std::span<const Function> AllFunctions();

// Null when there is no function of that name.
const Function* FindFunction(std::string_view name);

std::vector<std::string_view> ParameterNames(const Function& function);

// The least number that the tool takes for an integer parameter.
std::int32_t LeastFor(const Function& function, std::string_view parameter);

// Why the values, of the function's types, must not be sent although the library would take them;
// empty when they may. The names are those that the caller gave.
std::string WrongValues(const Function& function, std::span<const std::string_view> names,
                        std::span<const Value> values);

}  // namespace caixora
