#include "support/process.h"

#include "support/log.h"
#include "support/state.h"
#include "support/system_process.h"

namespace caixora {

bool IsProcessRunning() noexcept {
  WriteLog({"Verificacao Execucao do Processo: ", ClientExeName}, Detail::kDetailed);
  if (ImageRuns(ClientExeName)) return true;
  WriteLog({"Fim Verificacao Execucao do Processo: ", ClientExeName}, Detail::kDetailed);
  return false;
}

void ExecuteCommand(const std::string& program, const std::string& arguments) noexcept {
  // Logged as the script that once ran it; the program is started by the shell itself.
  WriteLog({"Comando executado no CMD: \"", program, "\" \"", arguments, "\"\nexit"},
           Detail::kDetailed);
  ShellOpen(program, arguments);
}

}  // namespace caixora
