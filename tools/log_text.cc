#include "tools/log_text.h"

#include <algorithm>
#include <array>

namespace caixora {
namespace {

// 0x80 to 0x9F; five of them are no characters, and stay control codes.
constexpr std::array<char16_t, 32> kHigh = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

bool IsAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

bool IsUtf8(std::string_view bytes) {
  while (true) {
    const auto high = std::ranges::find_if_not(bytes, IsAscii);
    bytes.remove_prefix(static_cast<std::size_t>(high - bytes.begin()));
    if (bytes.empty()) return true;
    const Character character = FirstCharacter(bytes);
    if (character.size == 1) return false;
    bytes.remove_prefix(character.size);
  }
}

}  // namespace

Character FirstCharacter(std::string_view utf8) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(utf8[i]); };
  const unsigned char lead = byte(0);
  const Character itself = {.code = lead, .size = 1};
  const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || utf8.size() < size) return itself;
  char32_t code = lead & (0xFFu >> (size + 1));
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return itself;
    code = code << 6 | (byte(i) & 0x3Fu);
  }
  const char32_t least = size == 2 ? 0x80 : size == 3 ? 0x800 : 0x10000;
  if (code < least || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return itself;
  return {.code = code, .size = size};
}

void AppendUtf8(char32_t code, std::string& text) {
  if (code < 0x80) return text.push_back(static_cast<char>(code));
  const int further = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  constexpr unsigned kLeads[] = {0xC0, 0xE0, 0xF0};
  text.push_back(static_cast<char>(kLeads[further - 1] | (code >> (6 * further))));
  for (int i = further - 1; i >= 0; --i)
    text.push_back(static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F)));
}

std::string DecodeLog(std::string_view bytes) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  const bool is_utf8 = IsUtf8(bytes);
  if (is_utf8 && bytes.starts_with(kMark)) bytes.remove_prefix(kMark.size());
  const bool has_feeds = bytes.find('\n') != bytes.npos;
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 16);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    // A log that was cut may end within its last line end.
    if (byte == '\r' && (i + 1 == bytes.size() || bytes[i + 1] == '\n')) continue;
    if (byte == '\r' && !has_feeds)
      text.push_back('\n');
    else if (byte < 0x80 || is_utf8)
      text.push_back(bytes[i]);
    else
      AppendUtf8(byte < 0xA0 ? kHigh[byte - 0x80] : byte, text);
  }
  return text;
}

}  // namespace caixora
