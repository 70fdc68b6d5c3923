// The help texts for functions and verbs.
#pragma once

#include <string>

#include "tools/functions.h"
#include "tools/verbs.h"

namespace caixora {

std::string FunctionHelp(const Function& function);
std::string VerbHelp(const Verb& verb);

// A command line that calls the function, with an argument of each kind.
std::string Example(const Function& function);

// Everything that can stand on the command line, its arguments beside it and its summary below.
std::string ListOfAll(std::span<const Verb> verbs);

}  // namespace caixora
