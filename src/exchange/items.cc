#include "exchange/items.h"

#include <array>

#include "support/ansi.h"
#include "support/log.h"
#include "support/text.h"

namespace caixora {
namespace {

constexpr char kItemSeparator = '|';
constexpr std::size_t kFieldCount = 6;
using Fields = std::array<std::string_view, kFieldCount>;

constexpr std::string_view kWrongSeparator =
    "S;0;Verifique a string de itens, o caractere de separacao nao esta correto";
constexpr std::string_view kWrongFields =
    "S;0;Verifique a string de itens, os parametros nao estao no formato correto";
constexpr std::string_view kWrongQuantity =
    "S;0;Informe a quantidade do produto utilizando numeros inteiros";
constexpr std::string_view kWrongValues =
    "S;0;Verifique os valores enviados, os mesmos nao estao no formato correto";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool HasItems(const TefArguments& arguments) {
  return arguments.iQtdeItens >= 1 && !arguments.sItens.empty();
}

std::size_t CountPieces(std::string_view text, char separator) {
  std::size_t count = 0;
  for (std::string_view piece; TakePiece(text, separator, piece);) ++count;
  return count;
}

// The item's first six fields, missing ones empty.
Fields FirstFields(std::string_view item, char separator) {
  Fields fields;
  for (std::string_view& field : fields)
    if (!TakePiece(item, separator, field)) field = {};
  return fields;
}

// Room for all item lines at once: a record that grows by copying would cost more per item the more
// items there are. 18 covers a line's key, equals sign and line end.
void ReserveItems(std::string& record, const TefArguments& arguments) {
  const auto lines = static_cast<std::size_t>(arguments.iQtdeItens) * kFieldCount + 1;
  record.reserve(record.size() + arguments.sItens.size() + lines * 18);
}

void AppendItem(std::string& record, std::string_view key, const Fields& fields) {
  for (std::size_t i = 0; i < fields.size(); ++i) {
    record.append(key).push_back(static_cast<char>('1' + i));
    record.append(" = ").append(fields[i]).push_back('\n');
  }
}

// Faults are collected over all items before the first in this order is reported.
Refusal CheckLinkItems(const TefArguments& arguments) {
  std::string_view items = arguments.sItens;
  const auto declared = static_cast<std::size_t>(arguments.iQtdeItens);
  const std::size_t sent = CountPieces(items, kItemSeparator);
  // Too many fields in a single item mean several items with something else than "|" between them.
  if (sent == 1) {
    const std::size_t fields = CountPieces(items.substr(0, items.find(kItemSeparator)), kNotSign);
    if (fields > kFieldCount) return std::string(kWrongSeparator);
    if (fields < kFieldCount) return std::string(kWrongFields);
  }

  bool quantity_ok = true;
  bool six_fields_ok = sent >= declared;
  bool values_ok = true;
  std::string_view item;
  for (std::size_t i = 1; i <= declared && TakePiece(items, kItemSeparator, item); ++i) {
    if (CountPieces(item, kNotSign) != kFieldCount) {
      six_fields_ok = false;
      continue;
    }
    const Fields fields = FirstFields(item, kNotSign);
    if (fields[2].find_first_of(",.") != item.npos) quantity_ok = false;
    if (!NumeroValido(fields[3]) || !NumeroValido(fields[4]) || !NumeroValido(fields[5]))
      values_ok = false;
  }
  if (!quantity_ok) return std::string(kWrongQuantity);
  if (!six_fields_ok) return std::string(kWrongFields);
  if (!values_ok) return std::string(kWrongValues);
  return std::nullopt;
}

}  // namespace

Refusal AppendLinkItems(const TefArguments& arguments, std::string& record) {
  if (!HasItems(arguments)) return std::nullopt;
  if (Refusal refusal = CheckLinkItems(arguments)) return refusal;

  ReserveItems(record, arguments);
  record.append("261-000 = ").append(std::to_string(arguments.iQtdeItens)).push_back('\n');
  std::string_view items = arguments.sItens;
  std::string_view item;
  for (std::int32_t i = 1; i <= arguments.iQtdeItens; ++i) {
    TakePiece(items, kItemSeparator, item);
    // Two digits up to item 9, then as many as it has: 261-011, 261-121.
    const std::string number = (i <= 9 ? "0" : "") + std::to_string(i);
    AppendItem(record, "261-" + number, FirstFields(item, kNotSign));
  }
  return std::nullopt;
}

Refusal AppendFleetItems(const TefArguments& arguments, std::string& record) {
  if (!HasItems(arguments)) return std::nullopt;
  const std::string declared = std::to_string(arguments.iQtdeItens);
  const std::size_t count = CountPieces(arguments.sItens, kItemSeparator);
  if (count != static_cast<std::size_t>(arguments.iQtdeItens)) {
    const std::string sent = std::to_string(count);
    // The log and the result have their blanks in different places; both are fixed.
    WriteLog({"Quantidade de Itens diverge dos itens enviados. iQtdeItens: ", declared,
              " - ItensEnviados: ", sent});
    return "S;0;Quantidade de Itens diverge dos itens enviados.iQtdeItens: " + declared +
           " - ItensEnviados : " + sent;
  }

  ReserveItems(record, arguments);
  record.append("261-000 = ").append(declared).push_back('\n');
  std::string_view items = arguments.sItens;
  std::string_view item;
  // The "0" stands before every number, unlike in a link: 261-011, 261-0101.
  for (std::int32_t i = 1; TakePiece(items, kItemSeparator, item); ++i)
    AppendItem(record, "261-0" + std::to_string(i), FirstFields(item, '-'));
  return std::nullopt;
}

bool NumeroValido(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == text.npos) return false;
  text = text.substr(first, text.find_last_not_of(' ') - first + 1);

  if (text.size() == 1) return IsDigit(text[0]);
  if (!IsDigit(text[0]) && std::string_view(".+-").find(text[0]) == text.npos) return false;
  bool after_exponent = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '.' || c == ',') {
      const bool digit_follows = i + 1 < text.size() && IsDigit(text[i + 1]);
      if (after_exponent || !digit_follows) return false;
    } else if (c == 'e') {
      if (i == 0 || !IsDigit(text[i - 1])) return false;
      after_exponent = true;
    } else if (!IsDigit(c) && c != '+' && c != '-') {
      return false;
    }
  }
  return true;
}

}  // namespace caixora
