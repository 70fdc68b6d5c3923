#include "interactive/finish.h"

#include "interactive/launcher.h"
#include "support/ansi.h"
#include "support/boundary.h"
#include "support/file_helpers.h"
#include "support/log.h"
#include "support/program_helpers.h"
#include "support/state.h"
#include "system/time.h"
#include "system/wide_text.h"

namespace caixora {
namespace {

// Milliseconds.
constexpr std::uint32_t kCompanionPoll = 50;
constexpr std::uint32_t kAfterSending = 800;

// An argument 6 that holds this sends nothing.
constexpr char kDoNotSend = '*';

void AwaitCompanionEnd() {
  for (bool running = true; running;) {
    WriteLog({u8"Aguardando Execução do Trevix.exe"_ansi}, Detail::kDetailed);
    running = IsProcessRunning();
    if (running) Pause(kCompanionPoll);
  }
}

FlowCode Send(const std::string& parameter_line, const std::string& record) {
  WriteLog({"Caminho Email.exe - ", state.ClientFolder}, Detail::kDetailed);
  const std::string path = SenderUnder(state.ClientFolder);
  if (!FileExists(ToWide(path))) {
    WriteLog({"Exe nao Encontrado! - ", path});
    return FlowCode::kSenderMissing;
  }
  WriteLog({"Iniciando Envio da Transacao - FinalizaQJInterativo"});
  WriteLog({"EXE - ", path}, Detail::kDetailed);
  // The companion's line, although the sender gets the record; the record follows its start.
  WriteLog({"PARAMETROS - ", parameter_line}, Detail::kDetailed);
  WriteLog({"Chamando Email.exe - ", path});
  ExecuteCommand(path, record);
  WriteLog({"PARAMETROS - ", record}, Detail::kDetailed);
  Pause(kAfterSending);
  WriteLog({"Finalizou Envio da Transacao - FinalizaQJInterativo"});
  return FlowCode::kDone;
}

}  // namespace

std::string SenderUnder(const std::string& folder) { return folder + "\\Email.exe"; }

FlowCode FinishFlow(const FlowCall& call) noexcept {
  return Guarded(
      [&] {
        FlowArguments arguments(call);
        const FlowCode code = RunCompanion(Run::kFinish, arguments);
        if (code != FlowCode::kDone) return code;
        // Made before the wait: the companion's run may take memory that sending would miss.
        const std::string line = ParameterLine(arguments);
        const std::string record = SendingRecord(arguments);
        AwaitCompanionEnd();
        if (arguments.sCampo6.find(kDoNotSend) == std::string::npos) return Send(line, record);
        WriteLog({u8"Email.exe não será executado"_ansi}, Detail::kDetailed);
        return FlowCode::kDone;
      },
      RefuseStartFailed);
}

}  // namespace caixora
