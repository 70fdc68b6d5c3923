// The arguments of one payment operation, under the names that the host and the log know.
#pragma once

#include <cstdint>
#include <string>

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
  explicit TefArguments(const TefCall& call);

  std::string sCNPJCliente, sCNPJParceiro;
  std::int32_t iParcelas;
  double dValor;
  std::int32_t iCupom, iLeitor;
  std::string sControle, sNSU, sCampo011, sCampo012, sKM, sPlaca, sMatricula;
  std::int32_t iQtdeItens;
  std::string sItens, data;
};

}  // namespace caixora
