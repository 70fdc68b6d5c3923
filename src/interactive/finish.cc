#include "interactive/finish.h"

#include "interactive/launcher.h"
#include "support/ansi.h"
#include "support/file.h"
#include "support/files.h"
#include "support/log.h"
#include "support/prepare_to_throw.h"
#include "support/process.h"
#include "support/state.h"
#include "support/wait.h"

namespace caixora {
namespace {

// Milliseconds.
constexpr std::uint32_t kBeforeRun = 500;
constexpr std::uint32_t kCompanionPoll = 50;
constexpr std::uint32_t kAfterSending = 800;

// An argument 6 that holds this sends nothing.
constexpr char kDoNotSend = '*';

// The files of the last exchange stay: the companion takes its answer from them.
void KeepExchangeFiles() {
  WriteLog({u8"Não Removeu Arquivos da pasta Req e Resp para obter resposta do Trevix.exe"_ansi});
  Pause(kBeforeRun);
}

constexpr RunVariant kFinish{
    .entry = "ENTROU -  FinalizaFuncaoQJInterativo()",
    .companion_missing = "Trevix nao Encontrado! - ",
    .ready_exchange_files = KeepExchangeFiles,
    .starting = "Iniciando Trevix - FinalizaQJInterativo",
    .not_running = u8"Trevix.exe nao está em execucao"_ansi,
};

void AwaitCompanionEnd() {
  for (bool running = true; running;) {
    WriteLog({u8"Aguardando Execução do Trevix.exe"_ansi}, Detail::kDetailed);
    running = IsProcessRunning();
    if (running) Pause(kCompanionPoll);
  }
}

FlowCode Send(const std::string& parameter_line, const std::string& record) {
  WriteLog({"Caminho Email.exe - ", ClientFolder}, Detail::kDetailed);
  const std::string path = ClientFolder + "\\Email.exe";
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

FlowCode FinishFlow(const FlowCall& call) noexcept {
  PrepareToThrow();
  try {
    FlowArguments arguments(call);
    if (const FlowCode code = RunCompanion(kFinish, arguments); code != FlowCode::kDone)
      return code;
    // Made before the wait: the companion's run may take memory that sending would miss.
    const std::string line = ParameterLine(arguments);
    const std::string record = SendingRecord(arguments);
    AwaitCompanionEnd();
    if (arguments.sCampo6.find(kDoNotSend) != std::string::npos) {
      WriteLog({u8"Email.exe não será executado"_ansi}, Detail::kDetailed);
      return FlowCode::kDone;
    }
    return Send(line, record);
  } catch (...) {
    return RefuseStartFailed();
  }
}

}  // namespace caixora
