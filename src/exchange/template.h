// A text with arguments in it, as the tables of the operations show it:
//
//    {iCupom}                         the argument of that name
//    |                                a line end
//    <800-007 = {sControle}|>         left out when its argument is empty, or an amount not above 0
//    {*link} {*frota}                 the item lines of a payment link, of a fleet sale
//
// Read at compile time; a text that is no template does not compile.
#pragma once

#include <array>
#include <cstdint>
#include <iterator>
#include <span>
#include <string_view>
#include <utility>

namespace caixora {

// An argument of the call, or a block of item lines.
enum class Value : std::uint8_t {
  kNone,
  kCNPJCliente,
  kCNPJParceiro,
  kParcelas,
  kValor,
  kCupom,
  kLeitor,
  kControle,
  kNSU,
  kCampo011,
  kCampo012,
  kKM,
  kPlaca,
  kMatricula,
  kQtdeItens,
  kItens,
  kData,
  kLinkItems,
  kFleetItems,
};

// Text, then the argument's, then more text; an optional part is left out with its argument.
struct Part {
  std::string_view before;
  Value value = Value::kNone;
  std::string_view after;
  bool optional = false;
};

class Template {
 public:
  consteval Template() = default;
  // Not explicit: rows of a table hold plain texts. NOLINTNEXTLINE(google-explicit-constructor)
  consteval Template(const char* text) : text_(text) {
    for (std::string_view rest = text; !rest.empty();) {
      if (size_ == parts_.size()) throw "too many arguments";
      parts_[size_++] = TakePart(rest);
    }
  }

  constexpr std::string_view text() const { return text_; }
  constexpr std::span<const Part> parts() const { return {parts_.data(), size_}; }

 private:
  static constexpr Value ValueOf(std::string_view name) {
    constexpr std::pair<std::string_view, Value> kNames[] = {
        {"sCNPJCliente", Value::kCNPJCliente},
        {"sCNPJParceiro", Value::kCNPJParceiro},
        {"iParcelas", Value::kParcelas},
        {"dValor", Value::kValor},
        {"iCupom", Value::kCupom},
        {"iLeitor", Value::kLeitor},
        {"sControle", Value::kControle},
        {"sNSU", Value::kNSU},
        {"sCampo011", Value::kCampo011},
        {"sCampo012", Value::kCampo012},
        {"sKM", Value::kKM},
        {"sPlaca", Value::kPlaca},
        {"sMatricula", Value::kMatricula},
        {"iQtdeItens", Value::kQtdeItens},
        {"sItens", Value::kItens},
        {"data", Value::kData},
        {"*link", Value::kLinkItems},
        {"*frota", Value::kFleetItems},
    };
    for (const auto& [known, value] : kNames)
      if (known == name) return value;
    throw "no argument of this name";
  }

  // Up to the end of a "<...>", of an argument, or of the text before a "<".
  static constexpr Part TakePart(std::string_view& rest) {
    Part part;
    part.optional = rest.starts_with('<');
    if (part.optional) rest.remove_prefix(1);
    const std::size_t stop = rest.find_first_of("{<");
    part.before = rest.substr(0, stop);
    rest.remove_prefix(part.before.size());
    if (rest.starts_with('{')) {
      const std::size_t end = rest.find('}');
      part.value = ValueOf(rest.substr(1, end - 1));
      rest.remove_prefix(end + 1);
    }
    if (!part.optional) return part;
    const std::size_t end = rest.find('>');
    if (end == rest.npos || part.value == Value::kNone) throw "an optional part needs its argument";
    part.after = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    return part;
  }

  std::string_view text_;
  std::array<Part, 12> parts_{};
  std::size_t size_ = 0;
};

}  // namespace caixora
