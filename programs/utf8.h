// Windows-1252, the texts of exchange files and of the library, as the UTF-8 that people read.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace caixora {

// The five bytes that Windows-1252 leaves open stand for the controls of their number, as in
// Windows.
inline std::string Utf8(std::string_view ansi) {
  static constexpr std::array<char16_t, 32> k80To9F = {
      0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
  std::string text;
  text.reserve(ansi.size());
  for (const char byte : ansi) {
    unsigned code = static_cast<unsigned char>(byte);
    if (code < 0x80) {
      text += byte;
      continue;
    }
    if (code < 0xA0) code = k80To9F[code - 0x80];
    if (code >= 0x800) text += static_cast<char>(0xE0 | code >> 12);
    text += static_cast<char>(code >= 0x800 ? 0x80 | (code >> 6 & 0x3F) : 0xC0 | code >> 6);
    text += static_cast<char>(0x80 | (code & 0x3F));
  }
  return text;
}

}  // namespace caixora
