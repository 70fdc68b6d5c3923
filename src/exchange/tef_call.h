// One payment call: its arguments, under the names that the host and the log know, and what the
// phases of the routine find on its way.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "system/file.h"
#include "system/result_string.h"

namespace caixora {

// As an export passes them on. What an operation does not have keeps the value given here; a null
// text counts as an empty one.
struct TefCall {
  std::int32_t codigo = 0;
  const char* sCNPJCliente = nullptr;
  const char* sCNPJParceiro = nullptr;
  std::int32_t iParcelas = 1;
  double dValor = 0.0;
  std::int32_t iCupom = 0;
  std::int32_t iLeitor = 0;
  const char* sControle = nullptr;
  const char* sNSU = nullptr;
  const char* sCampo011 = nullptr;
  const char* sCampo012 = nullptr;
  const char* sKM = nullptr;
  const char* sPlaca = nullptr;
  const char* sMatricula = nullptr;
  std::int32_t iQtdeItens = 0;
  const char* sItens = nullptr;
  const char* data = nullptr;
};

// The call's own copy of them. The two CNPJs lose their punctuation when they are validated.
struct TefArguments {
  TefArguments() = default;
  explicit TefArguments(const TefCall& call);

  std::int32_t codigo = 0;
  std::string sCNPJCliente, sCNPJParceiro;
  std::int32_t iParcelas = 1;
  double dValor = 0.0;
  std::int32_t iCupom = 0, iLeitor = 0;
  std::string sControle, sNSU, sCampo011, sCampo012, sKM, sPlaca, sMatricula;
  std::int32_t iQtdeItens = 0;
  std::string sItens, data;
};

// The "S;0;" text that ends a call, or nothing: the call goes on.
using Refusal = std::optional<std::string>;

// Results of a call that broke off without a text of its own: before the GP could see the request,
// and since it can.
inline constexpr std::string_view kFailedBefore =
    "S;0;FALHA INTERNA, A OPERACAO NAO FOI ENVIADA AO GP";
inline constexpr std::string_view kFailedSince =
    "S;0;FALHA INTERNA, VERIFIQUE NO GP SE A OPERACAO FOI REALIZADA";

// The record of one call. Each phase takes from it what it needs and adds what it finds.
struct Exchange {
  TefArguments arguments;
  bool gp_is_watched = true;  // false on a developer's machine: the GP runs under a debugger there
  std::string request;        // the record, lines ended by line feeds
  bool request_written = false;
  File answer;          // open from when it was found until it was read
  ResultString result;  // the last phase's
};

// A step of the routine: nothing, or the text that ends the call.
using Phase = Refusal (*)(Exchange&);

}  // namespace caixora
