// The payment operations as hosts call them: each passes its arguments on under its code. Five also
// set or forget the pending confirmation; no other operation touches it, so that a confirmation
// whose exchange broke off is carried over to the next call.
#include "caixora.h"
#include "exchange/chama_tef.h"
#include "support/state.h"

namespace {

using caixora::PendingConfirmation;

CaixoraTexto Run(const caixora::TefCall& call) noexcept {
  return caixora::ChamaTef(call).release();
}

}  // namespace

CaixoraTexto VendeCredito(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                          int32_t iCupom, int32_t iLeitor) {
  return Run({.codigo = 0,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto VendeCreditoVista(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                               int32_t iCupom, int32_t iLeitor) {
  return Run({.codigo = 1,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto VendeCreditoParcLoja(const char* sCNPJCliente, const char* sCNPJParceiro,
                                  int32_t iParcelas, double dValor, int32_t iCupom,
                                  int32_t iLeitor) {
  return Run({.codigo = 2,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iParcelas = iParcelas,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto VendeCreditoParcAdm(const char* sCNPJCliente, const char* sCNPJParceiro,
                                 int32_t iParcelas, double dValor, int32_t iCupom,
                                 int32_t iLeitor) {
  return Run({.codigo = 3,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iParcelas = iParcelas,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto VendeDebito(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                         int32_t iCupom, int32_t iLeitor) {
  return Run({.codigo = 4,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto Cancelar(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                      int32_t iCupom, const char* sControle, int32_t iLeitor) {
  PendingConfirmation.clear();
  return Run({.codigo = 5,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor,
              .sControle = sControle});
}

CaixoraTexto Reimpressao(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iLeitor) {
  return Run({.codigo = 6,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iLeitor = iLeitor});
}

CaixoraTexto Adm(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor, int32_t iCupom,
                 int32_t iLeitor) {
  return Run({.codigo = 11,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto Relatorio(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iCupom,
                       int32_t iLeitor) {
  return Run({.codigo = 12,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto MenuPrivate(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                         int32_t iCupom, int32_t iLeitor) {
  return Run({.codigo = 14,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto SolicitarCPF(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iCupom) {
  return Run({.codigo = 15,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iCupom = iCupom});
}

CaixoraTexto VendeDebitoAVista(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                               int32_t iCupom, int32_t iLeitor) {
  return Run({.codigo = 20,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto RecargaCelular(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iCupom,
                            int32_t iLeitor) {
  PendingConfirmation.clear();
  return Run({.codigo = 21,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto LinkPagamento(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iParcelas,
                           double dValor, int32_t iCupom, int32_t iQtdeItens, const char* sItens,
                           const char* sCampo011, const char* sCampo012, int32_t iLeitor) {
  return Run({.codigo = 22,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iParcelas = iParcelas,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor,
              .sCampo011 = sCampo011,
              .sCampo012 = sCampo012,
              .iQtdeItens = iQtdeItens,
              .sItens = sItens});
}

CaixoraTexto VendeCarteiraDigitalPix(const char* sCNPJCliente, const char* sCNPJParceiro,
                                     double dValor, int32_t iCupom, int32_t iLeitor) {
  return Run({.codigo = 23,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto ListarLinkPagamentoPago(const char* sCNPJCliente, const char* sCNPJParceiro,
                                     double dValor, int32_t iCupom, int32_t iLeitor) {
  return Run({.codigo = 24,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto VendeFrotaCompleto(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                                const char* sKM, const char* sPlaca, const char* sMatricula,
                                int32_t iQtdeItens, const char* sItens, int32_t iCupom,
                                int32_t iLeitor) {
  return Run({.codigo = 25,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor,
              .sKM = sKM,
              .sPlaca = sPlaca,
              .sMatricula = sMatricula,
              .iQtdeItens = iQtdeItens,
              .sItens = sItens});
}

CaixoraTexto ReimpressaoDireto(const char* sCNPJCliente, const char* sCNPJParceiro,
                               const char* sNSU, const char* data, int32_t iCupom,
                               int32_t iLeitor) {
  return Run({.codigo = 26,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iCupom = iCupom,
              .iLeitor = iLeitor,
              .sNSU = sNSU,
              .data = data});
}

CaixoraTexto SolicitarCNPJ(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iCupom) {
  return Run({.codigo = 27,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iCupom = iCupom});
}

CaixoraTexto SolicitarDocumento(const char* sCNPJCliente, const char* sCNPJParceiro,
                                int32_t iCupom) {
  return Run({.codigo = 28,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iCupom = iCupom});
}

CaixoraTexto ParceleMais(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                         int32_t iCupom, int32_t iLeitor) {
  return Run({.codigo = 29,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto ManutencaoLinkPagamento(const char* sCNPJCliente, const char* sCNPJParceiro,
                                     int32_t iLeitor) {
  return Run({.codigo = 30,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iLeitor = iLeitor});
}

CaixoraTexto Atv(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iCupom,
                 int32_t iLeitor) {
  return Run({.codigo = 97,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = 1.0,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto Confirmar(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iCupom) {
  PendingConfirmation = "CONFIRMAR";
  return Run({.codigo = 98,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iCupom = iCupom});
}

CaixoraTexto Desfazimento(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iCupom) {
  PendingConfirmation = "CANCELAR";
  return Run({.codigo = 99,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iCupom = iCupom});
}

const char* Teste(void) {
  PendingConfirmation.clear();
  return "OK";
}
