#include "exchange/tef_call.h"

#include "support/text.h"

namespace caixora {

TefArguments::TefArguments(const TefCall& call)
    : codigo(call.codigo),
      sCNPJCliente(CopyOf(call.sCNPJCliente)),
      sCNPJParceiro(CopyOf(call.sCNPJParceiro)),
      iParcelas(call.iParcelas),
      dValor(call.dValor),
      iCupom(call.iCupom),
      iLeitor(call.iLeitor),
      sControle(CopyOf(call.sControle)),
      sNSU(CopyOf(call.sNSU)),
      sCampo011(CopyOf(call.sCampo011)),
      sCampo012(CopyOf(call.sCampo012)),
      sKM(CopyOf(call.sKM)),
      sPlaca(CopyOf(call.sPlaca)),
      sMatricula(CopyOf(call.sMatricula)),
      iQtdeItens(call.iQtdeItens),
      sItens(CopyOf(call.sItens)),
      data(CopyOf(call.data)) {}

}  // namespace caixora
