#include "tools/shortened.h"

#include <algorithm>

#include "tools/log_text.h"

namespace caixora {
namespace {

// "9" is a digit, "s" at most one of the separators, "-" a hyphen, ")" what stands behind an area
// code. Longer ones first: they may begin as a shorter one.
constexpr std::string_view kNumbers[] = {
    "9999s9999s9999s9999s999",  // cards
    "9999s9999s9999s9999",
    "9999s999999s99999",
    "99s999s999s9999s99",  // CNPJ
    "999s999s999s99",      // CPF
    "99s999s999s9",        // RG
    "99)99999s9999",       // telephones
    "99)9999s9999",
    "99999-9999",
    "9999-9999",
};
constexpr std::size_t kLongRun = 10;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsSeparator(char c) { return c == ' ' || c == '.' || c == '-' || c == '/'; }

// The length of the number of this form at the start of the text, 0 without one.
std::size_t MatchNumber(std::string_view form, std::string_view text) {
  std::size_t at = 0;
  const auto now = [&] { return at < text.size() ? text[at] : '\0'; };
  for (const char c : form) {
    if (c == '9') {
      if (!IsDigit(now())) return 0;
      ++at;
    } else if (c == '-') {
      if (now() != '-') return 0;
      ++at;
    } else {
      if (c == ')' && now() == ')') ++at;
      if (IsSeparator(now())) ++at;
    }
  }
  return IsDigit(now()) ? 0 : at;
}

std::size_t NumberLength(std::string_view text, std::span<const std::string_view> kept) {
  const auto run = static_cast<std::size_t>(std::ranges::find_if_not(text, IsDigit) - text.begin());
  if (std::ranges::find(kept, text.substr(0, run)) != kept.end()) return 0;
  for (const std::string_view form : kNumbers)
    if (const std::size_t length = MatchNumber(form, text)) return length;
  return run >= kLongRun ? run : 0;
}

void AppendShortened(std::string_view number, std::string& text) {
  constexpr std::ptrdiff_t kPersonal = 11;  // digits of a CPF or telephone
  const bool personal = std::ranges::count_if(number, IsDigit) <= kPersonal;
  std::string digits;
  std::ranges::copy_if(number, std::back_inserter(digits), IsDigit);
  text.append("…").append(digits.substr(digits.size() - (personal ? 2 : 4)));
}

// What a page shows in the place of a character; empty: itself.
std::string_view Markup(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    default:
      return {};
  }
}

bool IsPlain(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte >= ' ' && byte < 0x7F && Markup(c).empty()) || c == '\n' || c == '\t';
}

bool IsInvisible(char32_t code) {
  return (code >= 0x80 && code < 0xA0) || code == 0xAD || code == 0x61C ||
         (code >= 0x200B && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
         (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF || (code & 0xFFFE) == 0xFFFE;
}

void AppendName(char32_t code, std::string& html) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  html.append(code < 0x100 ? "\\x" : "\\u");
  for (int shift = code < 0x100 ? 4 : code < 0x10000 ? 12 : 20; shift >= 0; shift -= 4)
    html.push_back(kHex[(code >> shift) & 0xF]);
}

}  // namespace

std::string Shortened(std::string_view utf8, std::span<const std::string_view> kept) {
  std::string text;
  text.reserve(utf8.size());
  while (!utf8.empty()) {
    const auto plain = static_cast<std::size_t>(std::ranges::find_if(utf8, IsDigit) - utf8.begin());
    text.append(utf8.substr(0, plain));
    utf8.remove_prefix(plain);
    if (utf8.empty()) break;
    std::size_t length = NumberLength(utf8, kept);
    if (length != 0) {
      AppendShortened(utf8.substr(0, length), text);
    } else {
      length = static_cast<std::size_t>(std::ranges::find_if_not(utf8, IsDigit) - utf8.begin());
      text.append(utf8.substr(0, length));
    }
    utf8.remove_prefix(length);
  }
  return text;
}

void AppendHtml(std::string_view utf8, std::string& html) {
  constexpr char32_t kPictures = 0x2400;
  while (!utf8.empty()) {
    const auto plain =
        static_cast<std::size_t>(std::ranges::find_if_not(utf8, IsPlain) - utf8.begin());
    html.append(utf8.substr(0, plain));
    utf8.remove_prefix(plain);
    if (utf8.empty()) return;
    const Character character = FirstCharacter(utf8);
    if (const std::string_view markup = Markup(utf8.front()); !markup.empty())
      html.append(markup);
    else if (character.code < ' ')
      AppendUtf8(kPictures + character.code, html);
    else if (character.code == 0x7F)
      html.append("␡");
    else if (IsInvisible(character.code) || (character.size == 1 && character.code >= 0x80))
      AppendName(character.code, html);
    else
      html.append(utf8.substr(0, character.size));
    utf8.remove_prefix(character.size);
  }
}

}  // namespace caixora
