#include "exchange/validation.h"

#include "exchange/amount.h"
#include "support/ansi.h"
#include "support/cnpj.h"
#include "support/log.h"
#include "support/logged_text.h"

namespace caixora {
namespace {

Refusal Refuse(std::string_view text) { return std::string(text); }

Refusal Check(TefArguments& arguments) {
  std::string& merchant = arguments.sCNPJCliente;
  std::string& partner = arguments.sCNPJParceiro;
  merchant = SomenteNumerosStr(merchant);
  partner = SomenteNumerosStr(partner);

  // Only the merchant's CNPJ is appended to its log lines; the other lines end at their colon.
  if (merchant.size() < kCnpjLength) {
    WriteLog({u8"CNPJ do cliente inválido(L): "_ansi, merchant});
    return Refuse(u8"S;0;CNPJ DO CLIENTE INVÁLIDO"_ansi);
  }
  // The digits were tested with their punctuation; this second guard tests what is sent.
  if (!ValidarCNPJ(merchant)) {
    WriteLog({u8"CNPJ do cliente inválido: "_ansi, merchant});
    return Refuse(u8"S;0;CNPJ DO CLIENTE INVÁLIDO"_ansi);
  }
  if (partner.size() < kCnpjLength) {
    WriteLog({u8"CNPJ do parceiro inválido(L): "_ansi});
    return Refuse(u8"S;0;CNPJ DO PARCEIRO INVÁLIDO"_ansi);
  }
  if (!ValidarCNPJ(partner)) {
    WriteLog({u8"CNPJ do parceiro inválido: "_ansi});
    return Refuse(u8"S;0;CNPJ DO PARCEIRO INVÁLIDO"_ansi);
  }
  if (arguments.iParcelas < 1) {
    WriteLog({u8"Parcela inválida: "_ansi});
    return Refuse(u8"S;0;PARCELA INVÁLIDA"_ansi);
  }
  if (!IsSendableAmount(arguments.dValor)) {
    WriteLog({u8"Valor inválido: "_ansi});
    return Refuse(u8"S;0;VALOR INVÁLIDO"_ansi);
  }
  return std::nullopt;
}

}  // namespace

Refusal ValidateArguments(Exchange& exchange) {
  WriteLog({"VALIDANDO DADOS"});
  if (Refusal refusal = Check(exchange.arguments)) return refusal;
  WriteLog({"VALIDOU DADOS"});
  return std::nullopt;
}

}  // namespace caixora
