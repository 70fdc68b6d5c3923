#include "tools/vocabulary.h"

#include <vector>

#include "caixora.hpp"
#include "tools/functions.h"
#include "tools/help.h"
#include "tools/names.h"
#include "tools/verbs.h"

namespace caixora {

using caixora_pdv::ErroDeUso;

std::string Resolve(std::string_view word) {
  if (word == "+") throw ErroDeUso("Falta uma função ao lado de \"+\"");
  std::vector<std::string_view> names;
  for (const Function& function : AllFunctions()) names.push_back(function.name);
  for (const Verb& verb : AllVerbs()) names.push_back(verb.name);
  const std::vector<std::string_view> found = FindName(word, names);
  if (found.size() == 1) return std::string(found.front());
  const std::string quoted = "\"" + std::string(word) + "\"";
  if (found.empty())
    throw ErroDeUso("Não há a função " + quoted + "." + Suggestion(word, names) +
                    " Todas: caixora_host --lista");
  throw ErroDeUso(quoted + " pode ser " + std::string(found.front()) + " ou " +
                  std::string(found.back()) + ": escreva como em caixora_host --lista");
}

std::string HelpFor(std::string_view word) {
  const std::string name = Resolve(word);
  const Function* const function = FindFunction(name);
  return function != nullptr ? FunctionHelp(*function) : VerbHelp(*FindVerb(name));
}

}  // namespace caixora
