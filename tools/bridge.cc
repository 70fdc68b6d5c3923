#include "tools/bridge.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/arguments.h"
#include "tools/call.h"
#include "tools/functions.h"
#include "tools/line_reader.h"

namespace caixora {
namespace {

using caixora_pdv::Centavos;
using caixora_pdv::ErroDeUso;
using nlohmann::json;

constexpr int kDepthLimit = 16;
constexpr std::string_view kCents = "centavos";  // may stand for dValor

std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

json Parse(const Line& line) {
  if (line.too_long)
    throw ErroDeUso("A linha tem mais de " + std::to_string(kLineLimit) + " bytes");
  // Whoever wrote it may have ended on the way, and half an amount can look like a whole one.
  if (!line.ended) throw ErroDeUso("A entrada terminou no meio da linha");
  std::vector<std::set<std::string>> keys;  // of each open object
  const auto check = [&](int depth, json::parse_event_t event, json& value) {
    if (depth > kDepthLimit) throw ErroDeUso("O JSON tem níveis demais");
    if (event == json::parse_event_t::object_start) keys.emplace_back();
    if (event == json::parse_event_t::object_end) keys.pop_back();
    if (event == json::parse_event_t::key && !keys.back().insert(value.get<std::string>()).second)
      throw ErroDeUso("Chave repetida: " + Quoted(value.get<std::string>()));
    return true;
  };
  try {
    return json::parse(line.text, check);
  } catch (const json::parse_error& error) {
    throw ErroDeUso("JSON inválido no byte " + std::to_string(error.byte));
  } catch (const json::exception&) {
    throw ErroDeUso("O JSON tem um número fora do alcance");
  }
}

template <class T>
T ReadNumber(std::string_view name, const json& value, T least, T most) {
  const bool fits = value.is_number_unsigned()
                        ? std::cmp_less_equal(value.get<std::uint64_t>(), most) &&
                              std::cmp_greater_equal(value.get<std::uint64_t>(), least)
                        : value.is_number_integer() &&
                              std::cmp_less_equal(value.get<std::int64_t>(), most) &&
                              std::cmp_greater_equal(value.get<std::int64_t>(), least);
  if (!fits)
    throw ErroDeUso(std::string(name) + ": falta um número inteiro de " + std::to_string(least) +
                    " a " + std::to_string(most));
  return value.get<T>();
}

// In cents.
std::int64_t ReadAmount(std::string_view name, const json& value) {
  if (name == kCents) return ReadNumber<std::int64_t>(name, value, 0, Centavos::maximo);
  // Without its comma or point a text may well be meant in cents.
  if (value.is_string() && value.get<std::string>().find_first_of(",.") != std::string::npos) {
    const ParsedNumber amount = ParseAmount(value.get<std::string>());
    if (const auto* const cents = std::get_if<std::int64_t>(&amount)) return *cents;
  }
  throw ErroDeUso(std::string(name) +
                  ": falta um texto como \"12,50\", de até 2147483647,99, com no máximo duas "
                  "casas (ou, no lugar dele, \"centavos\": 1250)");
}

Value ReadValue(const Function& function, Type type, std::string_view name, const json& value) {
  switch (type) {
    case Type::kInteger:
      return ReadNumber<std::int32_t>(name, value, LeastFor(function, name), INT32_MAX);
    case Type::kNatural:
      return ReadNumber<std::uint32_t>(name, value, 0, UINT32_MAX);
    case Type::kAmount:
      return Centavos(ReadAmount(name, value)).Reais();
    case Type::kText:
      break;
  }
  if (!value.is_string()) throw ErroDeUso(std::string(name) + ": falta um texto");
  return EncodeText(function.kind, name, value.get_ref<const std::string&>());
}

// The arguments, each with the name that it was given by, in the order of the header.
std::vector<std::pair<std::string_view, const json*>> MatchArguments(const Function& function,
                                                                     const json& arguments) {
  const std::vector<std::string_view> names = ParameterNames(function);
  std::vector<std::pair<std::string_view, const json*>> matched;
  if (arguments.is_array()) {
    if (arguments.size() != names.size())
      throw ErroDeUso("args: são " + std::to_string(names.size()) + ": " +
                      std::string(function.parameters));
    for (std::size_t i = 0; i < names.size(); ++i) matched.emplace_back(names[i], &arguments[i]);
    return matched;
  }
  if (!arguments.is_object()) throw ErroDeUso("args: falta um objeto ou uma lista");
  std::set<std::string_view> known;
  for (const std::string_view name : names) {
    auto found = arguments.find(name);
    if (name == "dValor" && arguments.contains(kCents)) {
      if (found != arguments.end()) throw ErroDeUso("dValor e centavos: falta escolher um só");
      found = arguments.find(kCents);
    }
    if (found == arguments.end()) throw ErroDeUso("Falta o argumento " + std::string(name));
    matched.emplace_back(name == "dValor" ? std::string_view(found.key()) : name, &*found);
    known.insert(matched.back().first);
  }
  for (const auto& [name, value] : arguments.items())
    if (!known.contains(name)) throw ErroDeUso("Argumento desconhecido: " + Quoted(name));
  return matched;
}

Reply Serve(const caixora_pdv::Biblioteca& library, const json& request) {
  static const json kNone = json::object();
  for (const auto& [key, value] : request.items())
    if (key != "id" && key != "funcao" && key != "args")
      throw ErroDeUso("Chave desconhecida: " + Quoted(key));
  const auto name = request.find("funcao");
  if (name == request.end() || !name->is_string())
    throw ErroDeUso("funcao: falta o nome de uma função");
  const Function* const function = FindFunction(name->get_ref<const std::string&>());
  if (function == nullptr)
    throw ErroDeUso("funcao: não há " + Quoted(name->get_ref<const std::string&>()));
  const auto arguments = request.find("args");
  std::vector<std::string_view> names;
  std::vector<Value> values;
  for (const auto& [given, value] :
       MatchArguments(*function, arguments == request.end() ? kNone : *arguments)) {
    names.push_back(given);
    values.push_back(ReadValue(*function, function->types[values.size()], given, *value));
  }
  if (const std::string wrong = WrongValues(*function, names, values); !wrong.empty())
    throw ErroDeUso(wrong);
  return CallFunction(*function, AddressOf(library, *function), values);
}

// An "erro" always means that nothing was called. Any other failure, of memory for a result, say,
// ends the bridge: its caller then knows that it does not know.
nlohmann::ordered_json Answer(const caixora_pdv::Biblioteca& library, const Line& line) {
  json id;
  try {
    const json request = Parse(line);
    if (!request.is_object()) throw ErroDeUso("O pedido não é um objeto");
    id = request.value("id", json());
    return ToJson(id, Serve(library, request));
  } catch (const ErroDeUso& error) {
    return ErrorToJson(id, error.what());
  }
}

}  // namespace

bool RunBridge(const caixora_pdv::Biblioteca& library, const JsonOutput& output) {
  LineReader input(::GetStdHandle(STD_INPUT_HANDLE));
  while (const std::optional<Line> line = input.Next())
    if (!output.Write(Answer(library, *line))) return false;
  return true;
}

}  // namespace caixora
