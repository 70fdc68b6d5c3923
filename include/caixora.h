/*
 * Caixora.dll: card and electronic payments (TEF) for a point-of-sale program.
 * C11 and C++20, 64-bit Windows.
 *
 * Conventions that hold for every function:
 *
 * 1. Texts going in are zero-terminated Windows-1252 bytes. They are read during the call and never
 *    kept. A null pointer counts as an empty text.
 * 2. Amounts (dValor) are in reais: 12.5 is R$ 12,50. ROUND TO CENTS BEFORE CALLING. Digits after
 *    the cents are cut, not rounded: 10.999 is sent as R$ 10,99. Worse, a sum such as
 *    9.999999999999998 is sent as R$ 1,00: of its print with six decimals (10.000000) as many
 *    digits are kept as its whole part (9) has, and two more. An amount that is negative, not
 *    finite or of 2147483648 and more is refused.
 * 3. A CaixoraTexto is a BSTR that holds Windows-1252 BYTES, not UTF-16. It is never null. Read its
 *    bytes through (const char *)texto and their count with SysStringByteLen, then give it back
 *    with SysFreeString. The library keeps no reference to it.
 * 4. Every call blocks its thread until it has ended; while the GP's answer is awaited there is no
 *    time limit. A GP that does not take its request for some five minutes is killed and started,
 *    also under the mark of a developer's machine (C:\OrvaneAutomacao.txt), which turns off only
 *    the checks that it runs. The library's state is process-wide and unguarded: one call at a
 *    time.
 * 5. No call raises an error or exception. One thing ends the host: a log file that cannot be
 *    opened for reading and appending prints a message on the standard output and exits with
 *    status 1. A call that finds no memory at all for its result waits at its start until there is
 *    some.
 * 6. Confirmar and Desfazimento leave a pending confirmation, which the next answer read forgets. A
 *    call of theirs that is refused, or that finds the GP not running, leaves it in force, and the
 *    next payment call is then answered as if it were the confirmation. REPEAT THE REFUSED CALL
 *    before any other, also after "S;0;FALHA INTERNA, VERIFIQUE...", with which it is forgotten.
 *    Teste, Cancelar and RecargaCelular forget it, and the sale stays without its outcome.
 * 7. Every approved sale has one outcome: Confirmar or Desfazimento, with the same iCupom. A coupon
 *    number is never used for a second sale, not even after a refusal. Each call begins by removing
 *    a request that the GP has not taken yet, an outcome too.
 *
 * Result of a payment function (payment functions return CaixoraTexto unless stated otherwise):
 *
 *    S;0;<message>                                  refused, failed or uncertain (below)
 *    S;1;<message>\r\nC;<15 fields>\r\nI;<line>...  approved, a receipt announced
 *    S;2;<message>\r\nC;<15 fields>                 approved, no receipt announced
 *    S;2;COMANDO COM SUCESSO, no NSU                the library's own reply: the success of
 *                                                   Confirmar and Desfazimento, and NEVER the
 *                                                   approval of a sale
 *
 * A sale is uncertain, and is to be undone, with that reply of the library's own, with "S;0;GP NAO
 * ATIVO", with "S;0;FALHA INTERNA, VERIFIQUE..." and with "S;0;GP N\xC3O ATIVO" of a call that took
 * 1250 ms or more. Before that time nothing was written.
 *
 * The fifteen fields after "C;", separated by ";": 1 coupon, 2 amount in cents, 3 card institution,
 * 4 network, 5 authorisation, 6 NSU, 7 transaction type, 8 instalments, 9 field 800-007 (control),
 * 10 field 170-000, 11 network code, 12 to 14 fields 740-000, 741-000 and 742-000, 15 field
 * 031-000. Each "I;" line is one line of the receipt; they are the lines that the GP sent, whatever
 * number it announced.
 *
 * Arguments that keep their meaning everywhere:
 *
 *    sCNPJCliente   the merchant's CNPJ, 14 digits, with or without ".", "-" and "/"; always
 *                   checked, but not sent by links, fleet sales, document requests, Atv and
 *                   ManutencaoLinkPagamento
 *    sCNPJParceiro  the CNPJ of the maker of the point-of-sale program
 *    iCupom         the caller's receipt number; it identifies the transaction towards the GP
 *    iLeitor        the reader (terminal) number
 *    iParcelas      number of instalments, at least 1
 */
#ifndef CAIXORA_H
#define CAIXORA_H

#include <stddef.h>
#include <stdint.h>

#if UINTPTR_MAX < 0xFFFFFFFFFFFFFFFF
#error "Caixora.dll is for 64-bit hosts; others start caixora_host --ponte and talk to that"
#endif

/* 64-bit Windows has one calling convention. It is written out for compilers that can be told to
 * prefer another. */
#ifdef _WIN32
#define CAIXORA_CALL __cdecl
#else
#define CAIXORA_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A BSTR (see convention 3); this header does without <oleauto.h>. */
typedef wchar_t* CaixoraTexto;

/* ---- Sales ---- */

/* Credit sale; the GP asks how it is to be paid. */
CaixoraTexto CAIXORA_CALL VendeCredito(const char* sCNPJCliente, const char* sCNPJParceiro,
                                       double dValor, int32_t iCupom, int32_t iLeitor);

/* Credit sale in a single payment. */
CaixoraTexto CAIXORA_CALL VendeCreditoVista(const char* sCNPJCliente, const char* sCNPJParceiro,
                                            double dValor, int32_t iCupom, int32_t iLeitor);

/* Credit sale in instalments financed by the shop. iParcelas below 1 is refused. */
CaixoraTexto CAIXORA_CALL VendeCreditoParcLoja(const char* sCNPJCliente, const char* sCNPJParceiro,
                                               int32_t iParcelas, double dValor, int32_t iCupom,
                                               int32_t iLeitor);

/* Credit sale in instalments financed by the card issuer. iParcelas below 1 is refused. */
CaixoraTexto CAIXORA_CALL VendeCreditoParcAdm(const char* sCNPJCliente, const char* sCNPJParceiro,
                                              int32_t iParcelas, double dValor, int32_t iCupom,
                                              int32_t iLeitor);

/* Debit sale; the GP asks how it is to be paid. */
CaixoraTexto CAIXORA_CALL VendeDebito(const char* sCNPJCliente, const char* sCNPJParceiro,
                                      double dValor, int32_t iCupom, int32_t iLeitor);

/* Debit sale in a single payment. */
CaixoraTexto CAIXORA_CALL VendeDebitoAVista(const char* sCNPJCliente, const char* sCNPJParceiro,
                                            double dValor, int32_t iCupom, int32_t iLeitor);

/* Sale through the GP's private-label menu. */
CaixoraTexto CAIXORA_CALL MenuPrivate(const char* sCNPJCliente, const char* sCNPJParceiro,
                                      double dValor, int32_t iCupom, int32_t iLeitor);

/* Sale with a digital wallet or Pix. */
CaixoraTexto CAIXORA_CALL VendeCarteiraDigitalPix(const char* sCNPJCliente,
                                                  const char* sCNPJParceiro, double dValor,
                                                  int32_t iCupom, int32_t iLeitor);

/* Sale in the ParceleMais programme. */
CaixoraTexto CAIXORA_CALL ParceleMais(const char* sCNPJCliente, const char* sCNPJParceiro,
                                      double dValor, int32_t iCupom, int32_t iLeitor);

/*
 * Fleet sale. sKM is the odometer, sPlaca the licence plate, sMatricula the driver's registration;
 * each is left out of the request when empty. sItens holds iQtdeItens items separated by "|", each
 * of six fields separated by "-" (missing ones are sent empty). A count that differs from the
 * items sent is refused. With a count below 1 or an empty text no items are sent.
 */
CaixoraTexto CAIXORA_CALL VendeFrotaCompleto(const char* sCNPJCliente, const char* sCNPJParceiro,
                                             double dValor, const char* sKM, const char* sPlaca,
                                             const char* sMatricula, int32_t iQtdeItens,
                                             const char* sItens, int32_t iCupom, int32_t iLeitor);

/* ---- Payment links ---- */

/*
 * Creates a payment link. sItens holds iQtdeItens items separated by "|", each of exactly six
 * fields separated by the byte 0xAC (the not sign): two free texts, the quantity (a whole number)
 * and three numbers with "." or "," as decimal mark. Refused are: fewer items, another number of
 * fields, a quantity with a "." or ",", and values far from a number ("1.2.3" passes). Further
 * items are not sent, and with a count below 1 or an empty text none is. sCampo011 and sCampo012
 * are sent as they stand, even when empty; iLeitor is not sent.
 */
CaixoraTexto CAIXORA_CALL LinkPagamento(const char* sCNPJCliente, const char* sCNPJParceiro,
                                        int32_t iParcelas, double dValor, int32_t iCupom,
                                        int32_t iQtdeItens, const char* sItens,
                                        const char* sCampo011, const char* sCampo012,
                                        int32_t iLeitor);

/* Lists the payment links that have been paid. */
CaixoraTexto CAIXORA_CALL ListarLinkPagamentoPago(const char* sCNPJCliente,
                                                  const char* sCNPJParceiro, double dValor,
                                                  int32_t iCupom, int32_t iLeitor);

/* Opens the GP's maintenance of payment links. */
CaixoraTexto CAIXORA_CALL ManutencaoLinkPagamento(const char* sCNPJCliente,
                                                  const char* sCNPJParceiro, int32_t iLeitor);

/* ---- After a sale ---- */

/*
 * Confirms the transaction of iCupom. Writes the request and returns after its fixed waits, without
 * the GP's word: "S;2;COMANDO COM SUCESSO" and a record line. An exchange folder that takes the
 * request and not the library's own answer (no Resp in it, no rights there) makes it wait for as
 * long as the GP runs.
 */
CaixoraTexto CAIXORA_CALL Confirmar(const char* sCNPJCliente, const char* sCNPJParceiro,
                                    int32_t iCupom);

/* Undoes the transaction of iCupom; returns as Confirmar does. */
CaixoraTexto CAIXORA_CALL Desfazimento(const char* sCNPJCliente, const char* sCNPJParceiro,
                                       int32_t iCupom);

/*
 * Cancels a confirmed transaction. dValor is sent when above zero; sControle, the control text of
 * the transaction (record field 9), when not empty.
 */
CaixoraTexto CAIXORA_CALL Cancelar(const char* sCNPJCliente, const char* sCNPJParceiro,
                                   double dValor, int32_t iCupom, const char* sControle,
                                   int32_t iLeitor);

/* Reprints through the GP's own menu. */
CaixoraTexto CAIXORA_CALL Reimpressao(const char* sCNPJCliente, const char* sCNPJParceiro,
                                      int32_t iLeitor);

/* Reprints the transaction with this NSU and date ("25/03/2021"; ".", "-" and "/" are removed). */
CaixoraTexto CAIXORA_CALL ReimpressaoDireto(const char* sCNPJCliente, const char* sCNPJParceiro,
                                            const char* sNSU, const char* data, int32_t iCupom,
                                            int32_t iLeitor);

/* ---- Administration ---- */

/* Opens the GP's administrative menu. dValor is sent when above zero. */
CaixoraTexto CAIXORA_CALL Adm(const char* sCNPJCliente, const char* sCNPJParceiro, double dValor,
                              int32_t iCupom, int32_t iLeitor);

/* The GP's report of transactions. */
CaixoraTexto CAIXORA_CALL Relatorio(const char* sCNPJCliente, const char* sCNPJParceiro,
                                    int32_t iCupom, int32_t iLeitor);

/* Mobile phone top-up. */
CaixoraTexto CAIXORA_CALL RecargaCelular(const char* sCNPJCliente, const char* sCNPJParceiro,
                                         int32_t iCupom, int32_t iLeitor);

/*
 * Asks whether the GP is there. It answers, or the call ends as every payment call does with a GP
 * that is not running ("S;0;GP N\xC3O ATIVO", with the tilde) or does not take the request
 * ("S;0;GP NAO ATIVO", without it). A GP that runs and stays silent is waited for without a time
 * limit.
 */
CaixoraTexto CAIXORA_CALL Atv(const char* sCNPJCliente, const char* sCNPJParceiro, int32_t iCupom,
                              int32_t iLeitor);

/* Has the GP ask the customer for a CPF. */
CaixoraTexto CAIXORA_CALL SolicitarCPF(const char* sCNPJCliente, const char* sCNPJParceiro,
                                       int32_t iCupom);

/* Has the GP ask the customer for a CNPJ. */
CaixoraTexto CAIXORA_CALL SolicitarCNPJ(const char* sCNPJCliente, const char* sCNPJParceiro,
                                        int32_t iCupom);

/* Has the GP ask the customer for a CPF or a CNPJ. */
CaixoraTexto CAIXORA_CALL SolicitarDocumento(const char* sCNPJCliente, const char* sCNPJParceiro,
                                             int32_t iCupom);

/*
 * Returns "OK", a constant not to be freed, valid while the library is loaded. Touches no file;
 * forgets a pending confirmation.
 */
const char* CAIXORA_CALL Teste(void);

/* ---- Interactive flow: the companion program Trevix.exe asks, the host answers ---- */

/*
 * Codes of the interactive functions. The host must run as administrator, with ConfigQJ.ini (line
 * CAMINHO=<folder of Trevix.exe>, no trailing backslash) in its current directory.
 */
enum {
  CAIXORA_QJ_SUCESSO = 0,
  CAIXORA_QJ_SEM_CAMINHO = 30,        /* no CAMINHO line in ConfigQJ.ini */
  CAIXORA_QJ_CAMINHO_VAZIO = 31,      /* CAMINHO with an empty folder ("CAMINHO=" alone is 30) */
  CAIXORA_QJ_TREVIX_AUSENTE = 32,     /* no readable Trevix.exe in that folder */
  CAIXORA_QJ_TREVIX_NAO_EXECUTA = 33, /* started, but not running right afterwards */
  CAIXORA_QJ_ERRO_AO_INICIAR = 34,    /* failure while starting */
  CAIXORA_QJ_SEM_ARQUIVO_RESP = 35,   /* the answer file could not be created */
  CAIXORA_QJ_ERRO_RESP = 36,          /* failure while writing or replacing the answer file */
  CAIXORA_QJ_SEM_CONFIG = 37,         /* ConfigQJ.ini could not be read */
  CAIXORA_QJ_VALOR_INVALIDO = 38,     /* the amount is not in the form 0,00 */
  CAIXORA_QJ_EMAIL_AUSENTE = 39,      /* no Email.exe in the companion's folder */
  CAIXORA_QJ_CNPJ_INVALIDO = 40,
  CAIXORA_QJ_EM_ATUALIZACAO = 41,    /* the companion is being updated */
  CAIXORA_QJ_SEM_ADMINISTRADOR = 42, /* the host does not run elevated */
  CAIXORA_QJ_OUTRA_TRANSACAO = 43    /* a running companion could not be stopped */
};

/*
 * Starts the companion with the function `uFuncao`. The arguments go to it in this order; what they
 * mean beyond their names here is the companion's business:
 *
 *    uFuncao    function number            sCampo6..9  texts (6: "*" anywhere keeps the finish from
 *    sCNPJ      the merchant's CNPJ                    sending; 7 to 9 also go to the sender)
 *    uCampo3    number                     uCampo10    number
 *    sCampo4    text                       sCampo11    accepted and not used
 *    sValor     amount in the form "12,50": a comma and two more characters at its end
 *
 * No text may hold the byte 0xAC, which separates the fields. Stops a companion that still runs and
 * removes what an earlier flow left in the exchange files. Returns 0, or 30 to 34, 37, 38, 40 to
 * 43.
 */
int32_t CAIXORA_CALL IniciaFuncaoQJInterativo(uint32_t uFuncao, const char* sCNPJ, uint32_t uCampo3,
                                              const char* sCampo4, const char* sValor,
                                              const char* sCampo6, const char* sCampo7,
                                              const char* sCampo8, const char* sCampo9,
                                              uint32_t uCampo10, const char* sCampo11);

/*
 * One poll for the companion's next text: a question to answer, a text holding "[RETORNO]" (the
 * result: the flow is over), a text beginning with "[ERROABORTAR]#" (abandon the flow), or an empty
 * text: nothing yet, poll again. Pause between polls: each writes to the log.
 */
CaixoraTexto CAIXORA_CALL AguardaFuncaoQJInterativo(void);

/*
 * Answers the last question. Returns 0, 35 or 36. After a 36 the answer may lie ready already: what
 * is given then goes behind it, and the companion gets both. Cancel the flow rather than try again.
 */
int32_t CAIXORA_CALL ContinuaFuncaoQJInterativo(const char* sInformacao);

/*
 * Finishes the flow, with the arguments of its start and the companion's function number for a
 * finish: runs the companion once more, waits for it to end without a time limit and, unless
 * sCampo6 holds a "*", has Email.exe send the transaction.
 * Returns what the start returns, or 39.
 */
int32_t CAIXORA_CALL FinalizaFuncaoQJInterativo(uint32_t uFuncao, const char* sCNPJ,
                                                uint32_t uCampo3, const char* sCampo4,
                                                const char* sValor, const char* sCampo6,
                                                const char* sCampo7, const char* sCampo8,
                                                const char* sCampo9, uint32_t uCampo10,
                                                const char* sCampo11);

/*
 * Abandons the flow: stops the companion and starts it with its cancel line. Returns 0, 42 or 43.
 */
int32_t CAIXORA_CALL CancelarFluxoQJInterativo(void);

/* Developer aid: opens the companion from a fixed folder with a fixed line. Returns 0. */
int32_t CAIXORA_CALL ConfiguraIntTefInterativo(void);

#ifdef __cplusplus
}
#endif

#endif /* CAIXORA_H */
