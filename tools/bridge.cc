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

#include "tools/functions.h"

namespace caixora {
namespace {

using caixora_pdv::Centavos;
using caixora_pdv::ErroDeUso;
using nlohmann::json;

constexpr std::size_t kLineLimit = 1 << 20;
constexpr int kDepthLimit = 16;
constexpr std::string_view kCents = "centavos";  // may stand for dValor

// ---- Lines ----

struct Line {
  std::string text;
  bool too_long = false;  // its text is not kept
  bool ended = false;     // by a line end
};

class LineReader {
 public:
  explicit LineReader(HANDLE stream) : stream_(stream) {}

  // Nothing at the end of the input.
  std::optional<Line> Next() {
    Line line;
    bool any = false;
    while (!line.ended && (begin_ < end_ || Fill())) {
      any = true;
      const std::string_view ready(buffer_ + begin_, end_ - begin_);
      const std::size_t size = std::min(ready.find('\n'), ready.size());
      line.ended = size < ready.size();
      line.too_long = line.too_long || line.text.size() + size > kLineLimit;
      if (line.too_long)
        line.text.clear();
      else
        line.text += ready.substr(0, size);
      begin_ += size + (line.ended ? 1 : 0);
    }
    return any ? std::optional(std::move(line)) : std::nullopt;
  }

 private:
  bool Fill() {
    DWORD got = 0;
    if (!::ReadFile(stream_, buffer_, sizeof buffer_, &got, nullptr)) return false;
    begin_ = 0;
    end_ = got;
    return got > 0;
  }

  HANDLE stream_;
  char buffer_[1 << 16] = {};
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

// ---- Requests ----

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

Centavos ReadAmount(std::string_view name, const json& value) {
  if (name == kCents) return Centavos(ReadNumber<std::int64_t>(name, value, 0, Centavos::maximo));
  // Without its comma or point a text may well be meant in cents.
  const bool marked =
      value.is_string() && value.get<std::string>().find_first_of(",.") != std::string::npos;
  const auto amount = marked ? Centavos::DoTexto(value.get<std::string>()) : std::nullopt;
  if (!amount)
    throw ErroDeUso(std::string(name) +
                    ": falta um texto como \"12,50\", de até 2147483647,99, com no máximo duas "
                    "casas (ou, no lugar dele, \"centavos\": 1250)");
  return *amount;
}

Value ReadValue(const Function& function, Type type, std::string_view name, const json& value) {
  // A sale and its outcome are found by their coupon.
  const bool counted = function.kind == Kind::kSale || function.kind == Kind::kOutcome;
  switch (type) {
    case Type::kInteger:
      return ReadNumber<std::int32_t>(name, value, counted && name == "iCupom" ? 1 : INT32_MIN,
                                      INT32_MAX);
    case Type::kNatural:
      return ReadNumber<std::uint32_t>(name, value, 0, UINT32_MAX);
    case Type::kAmount: {
      const Centavos amount = ReadAmount(name, value);
      if (function.kind == Kind::kSale && amount.Valor() == 0)
        throw ErroDeUso(std::string(name) + ": uma venda é de ao menos um centavo");
      return amount.Reais();
    }
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

// The library ignores items beyond the count, and all of them without one, and says nothing.
void CheckItems(const std::vector<std::string_view>& names, const std::vector<Value>& values) {
  const auto count = std::ranges::find(names, "iQtdeItens") - names.begin();
  if (count == std::ssize(names)) return;
  const auto& items = std::get<std::string>(values[static_cast<std::size_t>(count) + 1]);
  const auto sent = items.empty() ? 0 : std::ranges::count(items, '|') + 1;
  if (std::get<std::int32_t>(values[static_cast<std::size_t>(count)]) != sent)
    throw ErroDeUso("iQtdeItens: sItens tem " + std::to_string(sent));
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
  std::vector<Value> values;
  for (const auto& [given, value] :
       MatchArguments(*function, arguments == request.end() ? kNone : *arguments))
    values.push_back(ReadValue(*function, function->types[values.size()], given, *value));
  CheckItems(ParameterNames(*function), values);
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
