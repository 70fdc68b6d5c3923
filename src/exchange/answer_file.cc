#include "exchange/answer_file.h"

#include <new>

#include "exchange/answer.h"
#include "exchange/exchange_folder.h"
#include "support/file_helpers.h"
#include "support/log.h"
#include "support/state.h"

namespace caixora {
namespace {

// Whatever comes of the reading: carried any further, the confirmation would swallow the next sale.
struct ForgetsConfirmation {
  ~ForgetsConfirmation() { state.PendingConfirmation = Pending::kNothing; }
};

}  // namespace

std::string AnswerPath() {
  return InExchangeFolder(state.AnswerIsLiveness ? kLivenessAnswer : kAnswer);
}

void ExpectLivenessAnswer() {
  RemoveExchangeFile(InExchangeFolder(kOldLivenessAnswer));
  state.AnswerIsLiveness = true;
}

Refusal ReadAnswer(Exchange& exchange) {
  const ForgetsConfirmation at_the_end;
  WriteLog({"LEU ARQUIVO NA PASTA RESP, RECUPERANDO DADOS"});
  const std::string path = AnswerPath();
  std::string bytes;
  if (const SystemError error = ReadAll(exchange.answer, bytes); error != SystemError::kNone) {
    const std::string code = std::to_string(static_cast<std::uint32_t>(error));
    WriteLog({"FALHA INTERNA: ReadFile ", path, ": erro ", code});
    return std::string(kFailedSince);
  }
  Answer answer = ParseAnswer(bytes);
  for (const std::string& line : answer.lines_to_log) WriteLog({line});
  const std::string text = ComposeResult(std::move(answer));
  // The result exists, as the host will get it, before the answer file is removed: no failure in
  // between can lose what the GP said.
  exchange.result = MakeResult({text});
  if (exchange.result == nullptr) throw std::bad_alloc();

  exchange.answer.Close();
  state.UnreturnedAnswer = {path, std::move(bytes)};
  WriteLog({"PROCESSOU ARQUIVO"});
  WriteLog({"REMOVENDO ARQUIVO"});
  RemoveExchangeFile(path);
  WriteLog({"Antes de Gerar o Retorno"}, Detail::kDetailed);
  WriteLog({"RETORNO: ", text});
  state.UnreturnedAnswer = {};
  return std::nullopt;
}

}  // namespace caixora
