#include "exchange/chama_tef.h"

#include <exception>

#include "exchange/answer.h"
#include "exchange/exchange_cycle.h"
#include "exchange/gp_location.h"
#include "exchange/request_record.h"
#include "support/files.h"
#include "support/log.h"
#include "support/prepare_to_throw.h"
#include "support/state.h"
#include "support/text_mode.h"
#include "support/version.h"

namespace caixora {
namespace {

constexpr std::string_view kFailedBefore = "S;0;FALHA INTERNA, A OPERACAO NAO FOI ENVIADA AO GP";
constexpr std::string_view kFailedAfter =
    "S;0;FALHA INTERNA, VERIFIQUE NO GP SE A OPERACAO FOI REALIZADA";

// Tells the host, through the text that it gets, whether the GP may have seen the request.
struct Progress {
  bool request_written = false;
};

void LogVersions() {
  WriteLog({"VERSAO SISTEMA PARCEIRO: ", ToNarrow(HostVersion())});
  // The label says log file and the value is the GP's folder, under which the log lies.
  WriteLog({"CAMINHO DO ARQUIVO LOG: ", ClientFolder});
}

Refusal BuildRequest(std::int32_t code, const TefArguments& arguments, std::string& record) {
  const Operation* operation = FindOperation(code);
  if (operation == nullptr) return std::nullopt;
  LogOperation(*operation, arguments);
  if (operation->extra == Extra::kLiveness) ExpectLivenessAnswer();
  if (Refusal refusal = BuildRecord(*operation, arguments, record)) return refusal;
  if (operation->extra == Extra::kLogsRecord) {
    WriteLog({"****IntPos****"});
    WriteLog({record}, Detail::kDetailed);
  }
  return std::nullopt;
}

// Reads the answer and closes the exchange. The result exists, as the host will get it, before the
// answer file is removed: no failure in between can lose what the GP said.
ResultString ReadAnswer(std::optional<File> file) {
  WriteLog({"LEU ARQUIVO NA PASTA RESP, RECUPERANDO DADOS"});
  std::string bytes;
  ReadAll(*file, bytes);
  const std::string text = ComposeResult(ParseAnswer(bytes));
  const std::string path = AnswerPath();
  ResultString result = MakeResult({text});
  if (result == nullptr) throw std::bad_alloc();

  file.reset();
  UnreturnedAnswer = {path, std::move(bytes)};
  WriteLog({"PROCESSOU ARQUIVO"});
  WriteLog({"REMOVENDO ARQUIVO"});
  WriteLog({"Antes de Remover Arquivo - ", path});
  RemoveFile(path);
  WriteLog({"Antes de Gerar o Retorno"}, Detail::kDetailed);
  PendingConfirmation.clear();
  WriteLog({"RETORNO: ", text});
  UnreturnedAnswer = {};
  return result;
}

ResultString Exchange(const TefCall& call, Progress& progress) {
  const auto refused = [](const Refusal& refusal) { return MakeResult({*refusal}); };

  TefArguments arguments(call);
  RecordLibraryVersion();
  WriteLog({"ENTROU - ChamaTef"}, Detail::kDetailed);
  AnswerIsLiveness = false;
  bool check_liveness = true;
  if (const Refusal refusal = LocateGp(check_liveness)) return refused(refusal);
  LogVersions();

  WriteLog({"VALIDANDO DADOS"});
  if (const Refusal refusal = ValidateArguments(arguments)) return refused(refusal);
  WriteLog({"VALIDOU DADOS"});

  if (const Refusal refusal = CleanAndCheckGp(check_liveness)) return refused(refusal);

  WriteLog({"ENVIANDO COMANDO"});
  std::string record;
  if (const Refusal refusal = BuildRequest(call.codigo, arguments, record)) return refused(refusal);
  if (const Refusal refusal = WriteRequest(record)) return refused(refusal);
  progress.request_written = true;

  if (const Refusal refusal = HandOver(arguments.iCupom)) return refused(refusal);
  std::optional<File> answer;
  if (const Refusal refusal = AwaitAnswer(check_liveness, answer)) return refused(refusal);
  return ReadAnswer(std::move(answer));
}

}  // namespace

ResultString ChamaTef(const TefCall& call) noexcept {
  PrepareToThrow();
  // Held from the start, so that running out of memory later cannot leave the host without a text.
  ResultString spare = MakeResultForSure({kFailedAfter});
  Progress progress;
  try {
    if (ResultString result = Exchange(call, progress)) return result;
    WriteLog({"FALHA INTERNA: ", "memoria insuficiente para o retorno"});
  } catch (const std::exception& failure) {
    WriteLog({"FALHA INTERNA: ", failure.what()});
  } catch (...) {
    WriteLog({"FALHA INTERNA: ", "excecao desconhecida"});
  }
  if (!progress.request_written)
    if (ResultString text = MakeResult({kFailedBefore})) return text;
  return spare;
}

}  // namespace caixora
