// The payment operations as hosts call them: each passes its arguments on under its code. Five also
// set or forget the pending confirmation; no other operation touches it, so that a confirmation
// whose exchange broke off is carried over to the next call.
#include "caixora.h"
#include "exchange/chama_tef.h"
#include "support/state.h"

namespace {

using caixora::Pending;

CaixoraTexto Run(const caixora::TefCall& call) noexcept {
  return caixora::ChamaTef(call).release();
}

// The two argument lists that most operations have.
CaixoraTexto RunWithAmount(int32_t codigo, const char* sCNPJCliente, const char* sCNPJParceiro,
                           double dValor, int32_t iCupom, int32_t iLeitor) noexcept {
  return Run({.codigo = codigo,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .dValor = dValor,
              .iCupom = iCupom,
              .iLeitor = iLeitor});
}

CaixoraTexto RunForCoupon(int32_t codigo, const char* sCNPJCliente, const char* sCNPJParceiro,
                          int32_t iCupom) noexcept {
  return Run({.codigo = codigo,
              .sCNPJCliente = sCNPJCliente,
              .sCNPJParceiro = sCNPJParceiro,
              .iCupom = iCupom});
}

}  // namespace

CaixoraTexto VendeCredito(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                          int32_t iCupom, int32_t iLeitor) {
  return RunWithAmount(0, sCNPJCliente, sCNPJParceiro, dValor, iCupom, iLeitor);
}

CaixoraTexto VendeCreditoVista(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                               int32_t iCupom, int32_t iLeitor) {
  return RunWithAmount(1, sCNPJCliente, sCNPJParceiro, dValor, iCupom, iLeitor);
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
  return RunWithAmount(4, sCNPJCliente, sCNPJParceiro, dValor, iCupom, iLeitor);
}

CaixoraTexto Cancelar(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                      int32_t iCupom, const char* sControle, int32_t iLeitor) {
  caixora::state.PendingConfirmation = Pending::kNothing;
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
  return RunWithAmount(11, sCNPJCliente, sCNPJParceiro, dValor, iCupom, iLeitor);
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
  return RunWithAmount(14, sCNPJCliente, sCNPJParceiro, dValor, iCupom, iLeitor);
}

CaixoraTexto SolicitarCPF(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iCupom) {
  return RunForCoupon(15, sCNPJCliente, sCNPJParceiro, iCupom);
}

CaixoraTexto VendeDebitoAVista(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                               int32_t iCupom, int32_t iLeitor) {
  return RunWithAmount(20, sCNPJCliente, sCNPJParceiro, dValor, iCupom, iLeitor);
}

CaixoraTexto RecargaCelular(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iCupom,
                            int32_t iLeitor) {
  caixora::state.PendingConfirmation = Pending::kNothing;
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
  return RunWithAmount(23, sCNPJCliente, sCNPJParceiro, dValor, iCupom, iLeitor);
}

CaixoraTexto ListarLinkPagamentoPago(const char* sCNPJCliente, const char* sCNPJParceiro,
                                     double dValor, int32_t iCupom, int32_t iLeitor) {
  return RunWithAmount(24, sCNPJCliente, sCNPJParceiro, dValor, iCupom, iLeitor);
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
  return RunForCoupon(27, sCNPJCliente, sCNPJParceiro, iCupom);
}

CaixoraTexto SolicitarDocumento(const char* sCNPJCliente, const char* sCNPJParceiro,
                                int32_t iCupom) {
  return RunForCoupon(28, sCNPJCliente, sCNPJParceiro, iCupom);
}

CaixoraTexto ParceleMais(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                         int32_t iCupom, int32_t iLeitor) {
  return RunWithAmount(29, sCNPJCliente, sCNPJParceiro, dValor, iCupom, iLeitor);
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
  caixora::state.PendingConfirmation = Pending::kConfirmation;
  return RunForCoupon(98, sCNPJCliente, sCNPJParceiro, iCupom);
}

CaixoraTexto Desfazimento(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iCupom) {
  caixora::state.PendingConfirmation = Pending::kUndo;
  return RunForCoupon(99, sCNPJCliente, sCNPJParceiro, iCupom);
}

const char* Teste(void) {
  caixora::state.PendingConfirmation = Pending::kNothing;
  return "OK";
}
