#include "support/text.h"

#include <charconv>
#include <limits>
#include <new>

#include "support/cnpj.h"
#include "support/log.h"

namespace caixora {
namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

}  // namespace

std::string CopyOf(const char* text) { return text == nullptr ? std::string() : text; }

std::string RetornaNumeros(const std::string& text) {
  WriteLog({"RetornaNumeros: ", text}, Detail::kDetailed);
  std::string result = WithoutPunctuation(text);
  WriteLog({"Retorno - RetornaNumeros: ", result}, Detail::kDetailed);
  return result;
}

std::string SomenteNumerosStr(const std::string& text) {
  WriteLog({"SomenteNumerosStr: ", text}, Detail::kDetailed);
  if (!ValidarCNPJ(text)) return {};
  std::string result = WithoutPunctuation(text);
  WriteLog({"Retorno - SomenteNumerosStr: ", result}, Detail::kDetailed);
  return result;
}

std::string_view TrimLeft(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == text.npos ? std::string_view{} : text.substr(first);
}

std::string_view Trim(std::string_view text) {
  return TrimLeft(text.substr(0, text.find_last_not_of(kBlanks) + 1));
}

bool TakePiece(std::string_view& rest, char separator, std::string_view& piece) {
  if (rest.empty()) return false;
  const std::size_t end = rest.find(separator);
  piece = rest.substr(0, end);
  rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
  return true;
}

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> pieces;
  try {
    for (std::string_view piece; TakePiece(text, separator, piece);) pieces.emplace_back(piece);
  } catch (const std::bad_alloc&) {
    WriteLog({"Erro no split"}, Detail::kDetailed);
  }
  return pieces;
}

std::int32_t LeadingNumber(std::string_view text) {
  text = TrimLeft(text);
  const bool negative = text.starts_with('-');
  if (text.starts_with('+')) text.remove_prefix(1);
  if (text.starts_with("-") && !negative) return 0;  // "+-1": from_chars would take the "-1"
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc::result_out_of_range) return number;
  using Limits = std::numeric_limits<std::int32_t>;
  return negative ? Limits::min() : Limits::max();
}

}  // namespace caixora
