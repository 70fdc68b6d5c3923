#include "support/text.h"

#include <charconv>
#include <limits>

namespace caixora {
namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

}  // namespace

std::string CopyOf(const char* text) { return text == nullptr ? std::string() : text; }

std::string WithoutPunctuation(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text)
    if (c != '.' && c != '-' && c != '/') result.push_back(c);
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

void SplitInto(std::vector<std::string>& pieces, std::string_view text, char separator) {
  for (std::string_view piece; TakePiece(text, separator, piece);) pieces.emplace_back(piece);
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
