// Small routines for the library's texts: bytes in the ANSI code page, never converted.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace caixora {

// A copy of a host's text; a null pointer counts as an empty text.
std::string CopyOf(const char* text);

// Removes every ".", "-" and "/" and nothing else: letters and blanks stay. Logs both texts.
std::string RetornaNumeros(const std::string& text);

// As RetornaNumeros for a text that passes ValidarCNPJ, else empty. Logs its input, and its result
// when there is one.
std::string SomenteNumerosStr(const std::string& text);

// Without the blanks, tabs and line ends at its left, at both ends.
std::string_view TrimLeft(std::string_view text);
std::string_view Trim(std::string_view text);

// Takes the piece up to the next separator off the front of `rest`. False when `rest` is empty: so
// a separator at the very end is followed by no empty piece, while two in a row hold one.
bool TakePiece(std::string_view& rest, char separator, std::string_view& piece);

// All pieces of the text, as TakePiece finds them. When memory runs out: the pieces so far, and a
// log line.
std::vector<std::string> Split(std::string_view text, char separator);

// The number at the start of the text, as C's atoi reads it: blanks, a sign, digits; 0 when there
// is none. A number out of range becomes the nearest in range, so that it never turns into 0.
std::int32_t LeadingNumber(std::string_view text);

}  // namespace caixora
