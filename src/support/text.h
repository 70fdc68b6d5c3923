// Plain routines over the library's texts: bytes in Windows-1252, never converted.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace caixora {

// A copy of a host's text; a null pointer counts as an empty text.
std::string CopyOf(const char* text);

// The text without its ".", "-" and "/".
std::string WithoutPunctuation(std::string_view text);

// Without the blanks, tabs and line ends at its left, at both ends.
std::string_view TrimLeft(std::string_view text);
std::string_view Trim(std::string_view text);

// Takes the piece up to the next separator off the front of `rest`. False when `rest` is empty: so
// a separator at the very end is followed by no empty piece, while two in a row hold one. "a;;b;"
// gives "a", "" and "b".
bool TakePiece(std::string_view& rest, char separator, std::string_view& piece);

// Appends all pieces of the text.
void SplitInto(std::vector<std::string>& pieces, std::string_view text, char separator);

// The number at the start of the text, as C's atoi reads it: blanks, a sign, digits; 0 when there
// is none. A number out of range becomes the nearest in range, so that it never turns into 0.
std::int32_t LeadingNumber(std::string_view text);

}  // namespace caixora
