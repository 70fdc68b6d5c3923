// Windows-1252, which the library's texts and files hold, as the UTF-8 that people are shown.
#pragma once

#include <string>
#include <string_view>

namespace caixora {

// Every byte is a character: the five that Windows-1252 leaves open are control characters.
inline std::string Utf8(std::string_view ansi) {
  // 0x80 to 0x9F; the others are Latin-1.
  constexpr char16_t kHigh[] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
  std::string text;
  text.reserve(ansi.size());
  for (const char c : ansi) {
    const auto byte = static_cast<unsigned char>(c);
    const unsigned code = byte >= 0x80 && byte < 0xA0 ? kHigh[byte - 0x80] : byte;
    if (code < 0x80) {
      text += c;
      continue;
    }
    if (code >= 0x800) text += static_cast<char>(0xE0 | code >> 12);
    text += static_cast<char>(code >= 0x800 ? 0x80 | (code >> 6 & 0x3F) : 0xC0 | code >> 6);
    text += static_cast<char>(0x80 | (code & 0x3F));
  }
  return text;
}

}  // namespace caixora
