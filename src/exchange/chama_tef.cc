#include "exchange/chama_tef.h"

#include "exchange/answer_file.h"
#include "exchange/exchange_cycle.h"
#include "exchange/gp_location.h"
#include "exchange/request_record.h"
#include "exchange/validation.h"
#include "support/boundary.h"
#include "support/log.h"
#include "support/state.h"
#include "system/version.h"
#include "system/wide_text.h"

namespace caixora {
namespace {

Refusal LogVersions(Exchange&) {
  WriteLog({"VERSAO SISTEMA PARCEIRO: ", ToNarrow(HostVersion())});
  // The label says log file and the value is the GP's folder, under which the log lies.
  WriteLog({"CAMINHO DO ARQUIVO LOG: ", state.ClientFolder});
  return std::nullopt;
}

// The routine, in order; the first refusal ends it.
constexpr Phase kPhases[] = {
    LocateGp,           // and its exchange folder
    LogVersions,        // in the folder just found
    ValidateArguments,  // before any file is touched
    CleanFolders,       // of what an earlier call left
    CheckGp,            // starts a GP that does not run, and ends the call
    BuildRequest,       // may refuse the items
    WriteRequest,       // from here on the GP may see it
    HandOver,           // until the GP has taken it; confirmations are answered here
    AwaitAnswer,        // as long as the GP lives
    ReadAnswer,         // makes the result
};

ResultString Run(const TefCall& call, Exchange& exchange) {
  exchange.arguments = TefArguments(call);
  RecordLibraryVersion();
  WriteLog({"ENTROU - ChamaTef"}, Detail::kDetailed);
  state.AnswerIsLiveness = false;
  for (const Phase phase : kPhases)
    if (const Refusal refusal = phase(exchange)) {
      ResultString result = MakeResult({*refusal});
      if (result == nullptr) WriteLog({"FALHA INTERNA: memoria insuficiente para o retorno"});
      return result;
    }
  return std::move(exchange.result);
}

}  // namespace

ResultString ChamaTef(const TefCall& call) noexcept {
  // Held from the start, so that running out of memory later cannot leave the host without a text.
  ResultString spare = MakeResultForSure({kFailedSince});
  Exchange exchange;
  ResultString result = Guarded([&] { return Run(call, exchange); },
                                []() -> ResultString {
                                  WriteLog({"FALHA INTERNA: std::bad_alloc"});
                                  return nullptr;
                                });
  if (result == nullptr && !exchange.request_written) result = MakeResult({kFailedBefore});
  if (result != nullptr) return result;
  // As after every answer: a confirmation that is still pending would answer the next sale.
  state.PendingConfirmation = Pending::kNothing;
  return spare;
}

}  // namespace caixora
