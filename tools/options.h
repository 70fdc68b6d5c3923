// The command line.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tools/exit_status.h"
#include "tools/verbs.h"

namespace caixora {

struct Options {
  bool list = false;
  bool version = false;
  bool bridge = false;
  bool json = false;
  bool raw = false;
  std::uint32_t finish = 99;  // the companion's function that ends a flow
  std::string library;
  std::vector<std::string> commands;
  std::string help;  // to be shown in place of anything else
  ExitStatus help_status = kDone;
  const Verb* verb = nullptr;  // one that runs without the library, in place of the commands
  std::vector<std::string> verb_arguments;
};

// An ErroDeUso when they make no sense; what was read before stands in the options then.
void ParseOptions(std::span<const std::string> arguments, Options& options);

}  // namespace caixora
