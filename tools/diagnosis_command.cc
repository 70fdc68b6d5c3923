#include "tools/diagnosis_command.h"

#include <nlohmann/json.hpp>

#include "caixora.hpp"
#include "programs/console.h"
#include "tools/diagnosis_output.h"

namespace caixora {

int RunDiagnosis(std::span<const std::string> arguments) {
  using caixora_pdv::ErroDeUso;
  DiagnosisOptions options;
  bool json = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    const auto value = [&]() -> const std::string& {
      if (++i == arguments.size()) throw ErroDeUso(argument + ": falta o valor");
      return arguments[i];
    };
    if (argument == "--json") {
      json = true;
    } else if (argument == "--pasta") {
      const std::string& folder = value();
      if (!::SetCurrentDirectoryW(Widen(folder, CP_UTF8).c_str()))
        throw ErroDeUso("--pasta: a pasta não existe ou não abre: " + folder);
      options.folder_given = true;
    } else if (argument == "--dll") {
      options.library = caixora_pdv::ParaAnsi("--dll", value());
    } else {
      throw ErroDeUso("diagnostico: argumento desconhecido: " + argument);
    }
  }
  const Diagnosis diagnosis = Diagnose(options);
  Print(json ? DiagnosisJson(diagnosis).dump() + "\n" : DiagnosisText(diagnosis));
  return static_cast<int>(diagnosis.Worst());
}

}  // namespace caixora
