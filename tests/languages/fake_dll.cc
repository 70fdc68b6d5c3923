// A Caixora.dll whose answers follow from the coupon. It adds a line a call to chamadas.txt, with
// the journal as the call found it, and says there when two calls are inside at once.
#include <windows.h>
// After windows.h, which it needs.
#include <oleauto.h>

#include <atomic>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>

#include "caixora.h"

namespace {

std::atomic<int> inside = 0;
std::map<std::string, int> turns;  // by function and coupon
bool forgotten = false;            // by Teste, and nothing was called since
uint32_t flow = 0;
int polls = 0;

// Atv of coupons 40, 41... puts each in the place of the journal.
constexpr std::string_view journals[] = {
    "",
    "caixora-diario 2\n",
    "caixora-diario 1",
    "caixora-diario 1\n\n",
    "caixora-diario 1\n19;1250;pronta\n",
    "caixora-diario 1\n19;1250;iniciada",
    "caixora-diario 1\n0;1250;iniciada\n",
    "caixora-diario 1\n19;0;iniciada\n",
    "caixora-diario 1\n19;214748364800;iniciada\n",
    "caixora-diario 1\n2147483648;1250;iniciada\n",
    "caixora-diario 1\n19;1;iniciada\n19;1;iniciada\n",
    "caixora-diario 1\r\n20;1250;aprovada\r\n21;1;desfazer\r\n",
    "caixora-diario 1\n15;1250;confirmar\n19;1250;aprovada\n",
};

template <class Number>
std::string Show(Number number) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}
std::string Show(const char* text) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string shown = "\"";
  for (; text != nullptr && *text != '\0'; ++text) {
    const auto byte = static_cast<unsigned char>(*text);
    if (byte >= 0x20 && byte < 0x7F)
      shown += *text;
    else
      shown.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 15]);
  }
  return shown + '"';
}

std::string Journal() {
  std::ifstream file("diario.txt", std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), {}}, shown;
  if (text.starts_with("caixora-diario 1\n")) text.erase(0, 17);
  for (const char c : text) shown += c == '\n' ? '|' : c == '\r' ? '^' : c;
  return shown.empty() ? "" : " " + shown;
}

class Call {
 public:
  template <class... A>
  explicit Call(std::string line, A... arguments) {
    const bool alone = inside++ == 0;
    std::string list;
    ((list += (list.empty() ? "" : ",") + Show(arguments)), ...);
    line += "(" + list + ")" + (alone ? "" : " AO MESMO TEMPO") + Journal() + "\n";
    std::ofstream("chamadas.txt", std::ios::binary | std::ios::app) << line;
  }
  ~Call() { --inside; }
};

std::string Answer(const std::string& name, int coupon, double amount) {
  const std::string number = std::to_string(coupon);
  const int turn = ++turns[name + number];
  const std::string local = "S;2;COMANDO COM SUCESSO\r\nC;" + number + ";;;;;;;1;;;;;;;";
  const auto approve = [](const std::string& fields, const std::string& message = "APROVADA") {
    const std::string last_line = message.size() == 256 ? message.substr(128) : "LINHA 2";
    return "S;1;" + message + "\r\nC;" + fields +
           ";BANDEIRA;REDE;1;2;3;1;CONTROLE;;;;;;\r\nI;LINHA 1\r\nI;" + last_line;
  };
  if (name == "Confirmar" || name == "Desfazimento") {
    const bool confirm = name == "Confirmar";
    if (coupon == 18) ::RemoveDirectoryA("diario.txt.tmp");
    const bool refused = confirm ? (coupon == 14 && turn <= 2) || (coupon == 15 && !forgotten)
                                 : coupon == 17 && turn <= 3;
    return refused ? "S;0;RECUSADA" : local;
  }
  if (name == "Atv" && coupon >= 40)
    std::ofstream("diario.txt", std::ios::binary) << journals[coupon - 40];
  if (name == "Atv" && coupon == 1 && turn < 3) return turn == 1 ? "S;0;GP N\xC3O ATIVO" : local;
  if (coupon == 7) ::Sleep(1300);
  if (coupon == 18) ::CreateDirectoryA("diario.txt.tmp", nullptr);  // the journal stays as it is
  if (coupon == 25) ::Sleep(300);
  if (coupon == 26) ::Sleep(INFINITE);
  if (coupon == 27) ::Sleep(6000);
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  const std::map<int, std::string> answers = {
      {2, approve("2;1000")},
      {3, approve("3;")},
      {4, approve("5;1250")},
      {5, local},
      {6, "S;0;GP N\xC3O ATIVO"},
      {7, "S;0;GP N\xC3O ATIVO"},
      {8, "S;0;GP NAO ATIVO"},
      {9, "S;0;FALHA INTERNA, VERIFIQUE NO GP SE A OPERACAO FOI REALIZADA"},
      {10, "S;0;"},
      {11, "X"},
      {12, ""},
      {13, approve("13;1250", bytes)},
  };
  const auto answer = answers.find(coupon);
  return answer != answers.end()
             ? answer->second
             : approve(number + ";" + std::to_string(std::llround(amount * 100)));
}

CaixoraTexto Text(const std::string& bytes) {
  return ::SysAllocStringByteLen(bytes.data(), static_cast<UINT>(bytes.size()));
}

template <class... A>
CaixoraTexto Pay(const char* name, int coupon, double amount, A... arguments) {
  const Call call(name, arguments...);
  const CaixoraTexto answer = Text(Answer(name, coupon, amount));
  forgotten = false;
  return answer;
}

}  // namespace

// c and p are the CNPJs, v the amount, i the coupon, l the reader, n a count.
using T = const char*;
using N = int32_t;
using U = uint32_t;
#define WITH_AMOUNT(f) \
  CaixoraTexto f(T c, T p, double v, N i, N l) { return Pay(#f, i, v, c, p, v, i, l); }
#define WITH_PARCELS(f) \
  CaixoraTexto f(T c, T p, N n, double v, N i, N l) { return Pay(#f, i, v, c, p, n, v, i, l); }
#define WITH_COUPON(f) \
  CaixoraTexto f(T c, T p, N i, N l) { return Pay(#f, i, 0, c, p, i, l); }
#define WITH_NUMBER(f) \
  CaixoraTexto f(T c, T p, N i) { return Pay(#f, i, 0, c, p, i); }
#define WITH_FLOW(f)                                                     \
  N f(U n, T c, U c3, T c4, T v, T c6, T c7, T c8, T c9, U c10, T c11) { \
    const Call call(#f, n, c, c3, c4, v, c6, c7, c8, c9, c10, c11);      \
    if (n != 99) flow = n, polls = 0;                                    \
    return flow == (n == 99 ? 39 : 42) ? static_cast<N>(flow) : 0;       \
  }

WITH_AMOUNT(VendeCredito)
WITH_AMOUNT(VendeCreditoVista)
WITH_AMOUNT(VendeDebito)
WITH_AMOUNT(VendeDebitoAVista)
WITH_AMOUNT(MenuPrivate)
WITH_AMOUNT(VendeCarteiraDigitalPix)
WITH_AMOUNT(ParceleMais)
WITH_AMOUNT(ListarLinkPagamentoPago)
WITH_AMOUNT(Adm)
WITH_PARCELS(VendeCreditoParcLoja)
WITH_PARCELS(VendeCreditoParcAdm)
WITH_COUPON(Relatorio)
WITH_COUPON(RecargaCelular)
WITH_COUPON(Atv)
WITH_NUMBER(Confirmar)
WITH_NUMBER(Desfazimento)
WITH_NUMBER(Reimpressao)
WITH_NUMBER(ManutencaoLinkPagamento)
WITH_NUMBER(SolicitarCPF)
WITH_NUMBER(SolicitarCNPJ)
WITH_NUMBER(SolicitarDocumento)
WITH_FLOW(IniciaFuncaoQJInterativo)
WITH_FLOW(FinalizaFuncaoQJInterativo)

CaixoraTexto VendeFrotaCompleto(T c, T p, double v, T km, T plate, T id, N n, T items, N i, N l) {
  return Pay("VendeFrotaCompleto", i, v, c, p, v, km, plate, id, n, items, i, l);
}
CaixoraTexto LinkPagamento(T c, T p, N parcels, double v, N i, N n, T items, T f11, T f12, N l) {
  return Pay("LinkPagamento", i, v, c, p, parcels, v, i, n, items, f11, f12, l);
}
CaixoraTexto Cancelar(T c, T p, double v, N i, T control, N l) {
  return Pay("Cancelar", i, v, c, p, v, i, control, l);
}
CaixoraTexto ReimpressaoDireto(T c, T p, T nsu, T date, N i, N l) {
  return Pay("ReimpressaoDireto", i, 0, c, p, nsu, date, i, l);
}
T Teste() {
  const Call call("Teste");
  forgotten = true;
  return "OK";
}
CaixoraTexto AguardaFuncaoQJInterativo() {  // nothing yet, a question, the return
  if (++polls == 1 || flow == 22) return Text("");
  if (flow == 21) return Text("[ERROABORTAR]#MOTIVO");
  return Text(polls == 2 ? "Parcelas" : "[RETORNO]|STATUS:0|MENSAGEM:A\xC7\xC3O|");
}
N ContinuaFuncaoQJInterativo(T answer) {
  const Call call("Continua", answer);
  return flow == 36 ? 36 : 0;
}
N CancelarFluxoQJInterativo() {
  const Call call("CancelarFluxo");
  return 0;
}
// As the library does where it cannot open its log.
N ConfiguraIntTefInterativo() { std::exit(1); }
