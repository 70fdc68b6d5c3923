// The bytes of a log as text.
#pragma once

#include <string>
#include <string_view>

namespace caixora {

// In UTF-8, with line feeds alone at line ends. The library writes Windows-1252; what is UTF-8
// already (an editor saved it) stays.
std::string DecodeLog(std::string_view bytes);

// The character at the start of a UTF-8 text, and its length; a byte that starts none counts as
// itself.
struct Character {
  char32_t code = 0;
  std::size_t size = 1;
};
Character FirstCharacter(std::string_view utf8);

void AppendUtf8(char32_t code, std::string& text);

}  // namespace caixora
