// The arguments of a run of the companion, and the texts that are made of them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace caixora {

// Codes of the interactive operations; the public header documents each for hosts.
enum class FlowCode : std::int32_t {
  kDone = 0,
  kNoPathEntry = 30,
  kEmptyPath = 31,
  kCompanionMissing = 32,
  kCompanionNotRunning = 33,
  kStartFailed = 34,
  kNoStagingFile = 35,
  kAnswerFailed = 36,
  kNoConfigFile = 37,
  kBadAmount = 38,
  kSenderMissing = 39,
  kBadCnpj = 40,
  kBeingUpdated = 41,
  kNotElevated = 42,
  kStillRunning = 43,
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
