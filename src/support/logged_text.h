// The text routines that leave lines in the log.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace caixora {

// As WithoutPunctuation, for what its name does not say: letters and blanks stay. Logs both texts.
std::string RetornaNumeros(const std::string& text);

// As RetornaNumeros for a text that passes ValidarCNPJ, else empty. Logs its input, and its result
// when there is one.
std::string SomenteNumerosStr(const std::string& text);

// All pieces of the text, as SplitInto has them. When memory runs out: the pieces so far, and a
// log line.
std::vector<std::string> Split(std::string_view text, char separator);

}  // namespace caixora
