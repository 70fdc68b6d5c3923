// The tool's own verbs, beside the functions of the library.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace caixora {

struct Verb {
  std::string_view name;
  std::string_view parameters;  // as the help shows them
  std::string_view summary;     // one line
  std::string_view help;        // what the summary leaves open, with a command to be pasted
  // Runs without the library and gives the exit status. Of a step among calls, which runs with the
  // library loaded, null.
  int (*run)(std::span<const std::string> arguments);
};

std::span<const Verb> AllVerbs();

// Null when there is no verb of that name.
const Verb* FindVerb(std::string_view name);

}  // namespace caixora
