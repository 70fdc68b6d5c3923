#include "exchange/exchange_cycle.h"

#include <string>

#include "exchange/answer_file.h"
#include "exchange/exchange_folder.h"
#include "support/ansi.h"
#include "support/file_helpers.h"
#include "support/log.h"
#include "support/program_helpers.h"
#include "support/state.h"
#include "support/text_mode.h"
#include "system/programs.h"
#include "system/time.h"

namespace caixora {
namespace {

// Milliseconds.
constexpr std::uint32_t kSettle = 1000;
constexpr std::uint32_t kPickupPoll = 100;
constexpr std::uint32_t kAnswerPoll = 200;

// About five minutes; then the GP is taken to be hung.
constexpr int kPickupPolls = 3000;

// Every program that may hang on the exchange folder, whichever of them was found. Sent three
// times: a hung program may take its time to go.
constexpr const char* kKillCommands[] = {
    "cmd /c taskkill -f -im Pavolin.exe",
    "cmd /c taskkill -f -im ClientOrvane.exe",
    "cmd /c taskkill -f -im Trevix.exe",
};

// A GP that was not there and one that hung: hosts tell the two apart by the tilde.
constexpr std::string_view kGpInactive = u8"S;0;GP NÃO ATIVO"_ansi;
constexpr std::string_view kGpHung = "S;0;GP NAO ATIVO";

void StartGp() { ExecuteCommand(state.ClientFolder + state.ClientExeName, "STARTAUTO"); }

bool GpIsGone(const Exchange& exchange) { return exchange.gp_is_watched && !IsProcessRunning(); }

void RemoveLeftover(std::string_view name) {
  const std::string path = InExchangeFolder(name);
  RemoveExchangeFile(path);
  WriteLog({"Depois de Remover Arquivo - ", path}, Detail::kDetailed);
}

Refusal AwaitPickup() {
  WriteLog({"VERIFICANDO SE O CLIENT PROCESSOU O INTPOS DA PASTA REQ"});
  const std::string path = InExchangeFolder(kRequest);
  for (int poll = 0; poll < kPickupPolls; ++poll) {
    WriteLog({"Sleep 100"}, Detail::kDetailed);
    Pause(kPickupPoll);
    WriteLog({"Abrindo Intpos.001", path}, Detail::kDetailed);
    if (!OpensForReading(path)) return std::nullopt;
    WriteLog({"Verificando GP"}, Detail::kDetailed);
  }
  WriteLog({u8"Taskkill no GP, provavelmente está travado."_ansi});
  for (int round = 0; round < 3; ++round)
    for (const char* command : kKillCommands) RunHidden(command);
  Pause(kSettle);
  StartGp();
  return std::string(kGpHung);
}

void WriteLocalAnswer(std::int32_t coupon) {
  WriteLog({"CONFIRMACAO/DESFAZIMENTO: ", NameOf(state.PendingConfirmation)});
  const bool confirms = state.PendingConfirmation == Pending::kConfirmation;
  // Both headers have two blanks; nothing reads them but this library.
  const std::string record = std::string("000-000 =  ") + (confirms ? "CNF" : "NCN") +
                             "\n001-000 = " + std::to_string(coupon) +
                             "\n009-000 = 0\n028-000 = 0\n030-000 = COMANDO COM SUCESSO"
                             "\n999-999 = 0";
  // A failure is not reported: the wait for the answer shows whether there is one.
  File file;
  if (file.Open(InExchangeFolder(kLocalAnswer), File::Use::kReplace) == SystemError::kNone)
    static_cast<void>(file.Write(EncodeTextMode(record)));
  file.Close();
  Pause(kSettle);
}

// A full disk. The GP must not find part of a request: no file, or else an empty one.
void TakeBack(const std::string& path) {
  if (!IsGone(DeleteFileAt(path))) static_cast<void>(File().Open(path, File::Use::kReplace));
}

Refusal RefuseNotWritten() {
  return std::string(
             u8"S;0;ERRO AO CRIAR ARQUIVO TEF, VERIFIQUE AS PERMISSÕES no DIRETORIO "_ansi) +
         state.ExchangeFolder;
}

}  // namespace

Refusal CleanFolders(Exchange&) {
  WriteLog({"LIMPANDO PASTAS TEF"});
  RemoveLeftover(kOldRequest);
  RemoveLeftover(kOldAnswer);
  WriteLog({"ENTROU - Sleep 1000"}, Detail::kDetailed);
  Pause(kSettle);
  return std::nullopt;
}

Refusal CheckGp(Exchange& exchange) {
  WriteLog({"Verificando CLIENT EM EXECUCAO"});
  if (!GpIsGone(exchange)) return std::nullopt;
  WriteLog(
      {"GP INATIVO, enviando comando ", state.ClientFolder, state.ClientExeName, " STARTAUTO"});
  StartGp();
  return std::string(kGpInactive);
}

Refusal WriteRequest(Exchange& exchange) {
  WriteLog({"Gerando Arquivo Intpos.001"});
  const std::string path = InExchangeFolder(kRequest);
  const std::string bytes = EncodeTextMode(exchange.request);
  File file;
  if (file.Open(path, File::Use::kReplace) != SystemError::kNone) return RefuseNotWritten();
  exchange.request_written = true;  // until it is known to be gone again
  if (file.Write(bytes) != SystemError::kNone) {
    file.Close();
    TakeBack(path);
    exchange.request_written = false;
    return RefuseNotWritten();
  }
  file.Close();
  WriteLog({"Gerou Arquivo Intpos.001"}, Detail::kDetailed);
  return std::nullopt;
}

Refusal HandOver(Exchange& exchange) {
  if (state.PendingConfirmation == Pending::kNothing) return AwaitPickup();
  WriteLocalAnswer(exchange.arguments.iCupom);
  return std::nullopt;
}

Refusal AwaitAnswer(Exchange& exchange) {
  WriteLog({"AGUARDANDO INTPOS NA PASTA RESP"});
  const std::string path = AnswerPath();
  bool gp_gone = false;
  while (!exchange.answer && !gp_gone) {
    WriteLog({"Sleep 200"}, Detail::kDetailed);
    Pause(kAnswerPoll);
    WriteLog({"Abrindo ", path}, Detail::kDetailed);
    const bool found = exchange.answer.Open(path, File::Use::kRead) == SystemError::kNone;
    WriteLog({found ? "LOCALIZOU ARQUIVO NA PASTA RESP" : "Arquivo NULL"});
    // Asked after the file was looked for, and also when it was there: an answer that the GP wrote
    // before it went counts.
    gp_gone = GpIsGone(exchange);
    if (gp_gone) WriteLog({"CLIENT NAO ESTA EM EXECUCAO"});
  }
  if (exchange.answer) return std::nullopt;
  WriteLog({"GP NAO ATIVO, APOS AGUARDAR ARQUIVO NA PASTA RESP"});
  StartGp();
  return std::string(kGpInactive);
}

}  // namespace caixora
