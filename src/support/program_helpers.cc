#include "support/program_helpers.h"

#include "support/log.h"
#include "support/state.h"
#include "system/programs.h"

namespace caixora {

bool IsProcessRunning() noexcept {
  WriteLog({"Verificacao Execucao do Processo: ", state.ClientExeName}, Detail::kDetailed);
  if (ImageRuns(state.ClientExeName)) return true;
  WriteLog({"Fim Verificacao Execucao do Processo: ", state.ClientExeName}, Detail::kDetailed);
  return false;
}

void ExecuteCommand(const std::string& program, const std::string& arguments) {
  // Shown as a script of the command interpreter, although the shell itself opens the program.
  WriteLog({"Comando executado no CMD: \"", program, "\" \"", arguments, "\"\nexit"},
           Detail::kDetailed);
  ShellOpen(program, arguments);
}

}  // namespace caixora
