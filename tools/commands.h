// The commands of the command line: functions of the library, Pausa, Pasta and Fluxo.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "caixora.hpp"
#include "tools/exit_status.h"
#include "tools/json_output.h"

namespace caixora {

struct Format {
  bool raw = false;                  // the bytes of each result and a line end
  const JsonOutput* json = nullptr;  // or each result as a JSON line
  std::uint32_t finish = 0;          // the companion's function that ends a flow
};

// Runs commands separated by "+", in UTF-8, after checking all of them: an ErroDeUso that can be
// seen beforehand is thrown before anything is called.
ExitStatus RunCommands(const caixora_pdv::Biblioteca& library, Format format,
                       const std::vector<std::string>& arguments);

}  // namespace caixora
