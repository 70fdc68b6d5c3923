#include "exchange/exchange_cycle.h"

#include <string>

#include "support/ansi.h"
#include "support/files.h"
#include "support/log.h"
#include "support/process.h"
#include "support/state.h"
#include "support/system_process.h"
#include "support/text_mode.h"
#include "support/wait.h"

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

void StartGp() { ExecuteCommand(ClientFolder + ClientExeName, "STARTAUTO"); }

void RemoveExchangeFile(std::string_view name) {
  const std::string path = ExchangeFolder + std::string(name);
  WriteLog({"Antes de Remover Arquivo - ", path});
  RemoveFile(path);
  WriteLog({"Depois de Remover Arquivo - ", path}, Detail::kDetailed);
}

Refusal AwaitPickup() {
  WriteLog({"VERIFICANDO SE O CLIENT PROCESSOU O INTPOS DA PASTA REQ"});
  const std::string path = ExchangeFolder + "\\Req\\intpos.001";
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
  WriteLog({"CONFIRMACAO/DESFAZIMENTO: ", PendingConfirmation});
  const bool confirms = PendingConfirmation.find("CONFIRMAR") != std::string::npos;
  // Both headers have two blanks; nothing reads them but this library.
  const std::string record = std::string("000-000 =  ") + (confirms ? "CNF" : "NCN") +
                             "\n001-000 = " + std::to_string(coupon) +
                             "\n009-000 = 0\n028-000 = 0\n030-000 = COMANDO COM SUCESSO"
                             "\n999-999 = 0";
  try {
    if (auto file = File::Open(ExchangeFolder + "\\Resp\\intpos.001", File::Use::kReplace))
      file->Write(EncodeTextMode(record));
  } catch (const FileError&) {
    // Not reported: the wait for the answer shows whether there is one.
  }
  Pause(kSettle);
}

}  // namespace

Refusal CleanAndCheckGp(bool check_liveness) {
  WriteLog({"LIMPANDO PASTAS TEF"});
  RemoveExchangeFile("\\Req\\Intpos.001");
  RemoveExchangeFile("\\Resp\\Intpos.001");
  WriteLog({"ENTROU - Sleep 1000"}, Detail::kDetailed);
  Pause(kSettle);

  WriteLog({"Verificando CLIENT EM EXECUCAO"});
  if (!check_liveness || IsProcessRunning()) return std::nullopt;
  WriteLog({"GP INATIVO, enviando comando ", ClientFolder, ClientExeName, " STARTAUTO"});
  StartGp();
  return std::string(kGpInactive);
}

void ExpectLivenessAnswer() {
  const std::string path = ExchangeFolder + "\\Resp\\ativo.001";
  WriteLog({"Antes de Remover Arquivo - ", path});
  RemoveFile(path);
  AnswerIsLiveness = true;
}

Refusal WriteRequest(std::string_view record) {
  WriteLog({"Gerando Arquivo Intpos.001"});
  const std::string path = ExchangeFolder + "\\Req\\intpos.001";
  const std::string bytes = EncodeTextMode(record);
  bool written = false;
  if (auto file = File::Open(path, File::Use::kReplace)) {
    try {
      file->Write(bytes);
      written = true;
    } catch (const FileError&) {
      // A full disk. The GP must not find part of a request: no file, or else an empty one.
      file.reset();
      if (DeleteFileAt(path) == Deletion::kFailed) File::Open(path, File::Use::kReplace);
    }
  }
  if (!written)
    return std::string(
               u8"S;0;ERRO AO CRIAR ARQUIVO TEF, VERIFIQUE AS PERMISSÕES no DIRETORIO "_ansi) +
           ExchangeFolder;
  WriteLog({"Gerou Arquivo Intpos.001"}, Detail::kDetailed);
  return std::nullopt;
}

Refusal HandOver(std::int32_t coupon) {
  if (PendingConfirmation.empty()) return AwaitPickup();
  WriteLocalAnswer(coupon);
  return std::nullopt;
}

Refusal AwaitAnswer(bool check_liveness, std::optional<File>& answer) {
  WriteLog({"AGUARDANDO INTPOS NA PASTA RESP"});
  const std::string path = AnswerPath();
  bool gp_gone = false;
  while (!answer && !gp_gone) {
    WriteLog({"Sleep 200"}, Detail::kDetailed);
    Pause(kAnswerPoll);
    WriteLog({"Abrindo ", path}, Detail::kDetailed);
    answer = File::Open(path, File::Use::kRead);
    WriteLog({answer ? "LOCALIZOU ARQUIVO NA PASTA RESP" : "Arquivo NULL"});
    // Asked after the file was looked for, and also when it was there: an answer that the GP wrote
    // before it went counts.
    gp_gone = check_liveness && !IsProcessRunning();
    if (gp_gone) WriteLog({"CLIENT NAO ESTA EM EXECUCAO"});
  }
  if (answer) return std::nullopt;
  WriteLog({"GP NAO ATIVO, APOS AGUARDAR ARQUIVO NA PASTA RESP"});
  StartGp();
  return std::string(kGpInactive);
}

std::string AnswerPath() {
  return ExchangeFolder + (AnswerIsLiveness ? "\\Resp\\Ativo.001" : "\\Resp\\Intpos.001");
}

}  // namespace caixora
