// Accented literals as Windows-1252 bytes: u8"NÃO"_ansi.
//
// Every text that leaves the library is Windows-1252, while the sources are UTF-8. The conversion
// happens at compile time from a u8 literal, so no execution-charset flag can change the bytes.
// A character that Latin-1 does not share with Windows-1252 does not compile. A NUL stands behind
// the text, so that its data() is a C string.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace caixora {

// The "¬" that separates the fields of an item and of the companion's parameter line.
inline constexpr char kNotSign = '\xAC';

// A compiler that took this file for anything but UTF-8 would turn accents into other bytes.
static_assert(sizeof(u8"\u00E3") == sizeof(u8"ã") && u8"ã"[0] == 0xC3 && u8"ã"[1] == 0xA3);

namespace ansi_detail {

template <std::size_t N>
struct Utf8Text {
  char8_t units[N];
  // Not explicit: the literal operator converts. NOLINTNEXTLINE(google-explicit-constructor)
  consteval Utf8Text(const char8_t (&text)[N]) { std::copy_n(text, N, units); }

  // Bytes left once every two-unit sequence has become one byte, without the final NUL.
  consteval std::size_t AnsiSize() const {
    std::size_t size = 0;
    for (std::size_t i = 0; i + 1 < N; ++i)
      if ((units[i] & 0xC0) != 0x80) ++size;
    return size;
  }
};

template <Utf8Text kText>
consteval auto Encode() {
  std::array<char, kText.AnsiSize() + 1> bytes{};
  std::size_t from = 0;
  for (std::size_t to = 0; to + 1 < bytes.size(); ++to) {
    unsigned code = kText.units[from++];
    if (code >= 0x80) {
      if (code != 0xC2 && code != 0xC3) throw "character outside U+0080..U+00FF";
      code = (code & 0x03u) << 6 | (kText.units[from++] & 0x3Fu);
      if (code < 0xA0) throw "U+0080..U+009F mean something else in Windows-1252";
    }
    bytes[to] = static_cast<char>(code);
  }
  return bytes;
}

template <Utf8Text kText>
inline constexpr auto kBytes = Encode<kText>();

}  // namespace ansi_detail

template <ansi_detail::Utf8Text kText>
consteval std::string_view operator""_ansi() {
  return {ansi_detail::kBytes<kText>.data(), ansi_detail::kBytes<kText>.size() - 1};
}

}  // namespace caixora
