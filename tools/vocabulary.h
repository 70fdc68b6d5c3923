// The names that can stand on the command line: functions of the library and the tool's own verbs.
#pragma once

#include <string>
#include <string_view>

namespace caixora {

// The name that the word stands for, whatever the case of its letters; an ErroDeUso, with what may
// have been meant, when there is none or more than one.
std::string Resolve(std::string_view word);

// Of a word that names a function or verb.
std::string HelpFor(std::string_view word);

}  // namespace caixora
