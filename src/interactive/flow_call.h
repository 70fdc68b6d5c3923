// The arguments of a run of the companion, and the texts that are made of them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "caixora.h"

namespace caixora {

// Codes of the interactive operations, as the public header has them for hosts.
enum class FlowCode : std::int32_t {
  kDone = CAIXORA_QJ_SUCESSO,
  kNoPathEntry = CAIXORA_QJ_SEM_CAMINHO,
  kEmptyPath = CAIXORA_QJ_CAMINHO_VAZIO,
  kCompanionMissing = CAIXORA_QJ_TREVIX_AUSENTE,
  kCompanionNotRunning = CAIXORA_QJ_TREVIX_NAO_EXECUTA,
  kStartFailed = CAIXORA_QJ_ERRO_AO_INICIAR,
  kNoStagingFile = CAIXORA_QJ_SEM_ARQUIVO_RESP,
  kAnswerFailed = CAIXORA_QJ_ERRO_RESP,
  kNoConfigFile = CAIXORA_QJ_SEM_CONFIG,
  kBadAmount = CAIXORA_QJ_VALOR_INVALIDO,
  kSenderMissing = CAIXORA_QJ_EMAIL_AUSENTE,
  kBadCnpj = CAIXORA_QJ_CNPJ_INVALIDO,
  kBeingUpdated = CAIXORA_QJ_EM_ATUALIZACAO,
  kNotElevated = CAIXORA_QJ_SEM_ADMINISTRADOR,
  kStillRunning = CAIXORA_QJ_OUTRA_TRANSACAO,
};

// As the host passes them. Most fields have a meaning for the companion alone and go by their place
// in the host's argument list.
struct FlowCall {
  std::uint32_t uFuncao;
  const char* sCNPJ;
  std::uint32_t uCampo3;
  const char* sCampo4;
  const char* sValor;
  const char* sCampo6;
  const char* sCampo7;
  const char* sCampo8;
  const char* sCampo9;
  std::uint32_t uCampo10;
};

// The call's own copy of them; sCNPJ loses its punctuation when it is validated.
struct FlowArguments {
  explicit FlowArguments(const FlowCall& call);

  std::uint32_t uFuncao;
  std::string sCNPJ;
  std::uint32_t uCampo3;
  std::string sCampo4, sValor, sCampo6, sCampo7, sCampo8, sCampo9;
  std::uint32_t uCampo10;
};

// Four characters or more, a comma before the last two, no other separator. Digits are not looked
// at: what they are is the companion's to judge.
bool IsValidAmount(std::string_view text);

// The companion's twelve fields, joined by the not sign. Nothing is quoted.
std::string ParameterLine(const FlowArguments& arguments);

// The companion's line for giving up a flow.
std::string CancelLine();

// The sender's one line.
std::string SendingRecord(const FlowArguments& arguments);

}  // namespace caixora
