// The bridge: a program of any language and width starts this one as a child and calls the library
// through it, a JSON object a line in each direction.
#pragma once

#include "caixora.hpp"
#include "tools/json_output.h"

namespace caixora {

// Serves requests until the input ends. False when nobody reads the replies any more: what was
// asked for next is then not called, since nobody would know of it.
bool RunBridge(const caixora_pdv::Biblioteca& library, const JsonOutput& output);

}  // namespace caixora
