// The console host as a program, over a library whose answers follow from the coupon.
#include <gtest/gtest.h>

#include "windows_world.h"

using namespace world;

namespace {

const fs::path kCalls = "C:\\caixa\\chamadas.txt";

std::wstring Command(const std::wstring& arguments) {
  return LR"(C:\caixa\caixora_host.exe --dll Caixora_falsa.dll )" + arguments;
}

class Console : public testing::Test {
 protected:
  void SetUp() override {
    Clean();
    for (const char* file : {"caixora_host.exe", "Caixora_falsa.dll"})
      Install(file, fs::path("C:\\caixa") / file);
  }
};

#define FLOW L"Fluxo 20 11 3 x 12,05 6 7 8 9 10 y"

TEST_F(Console, ShowsEachResultOnceAndEndsWithItsStatus) {
  const struct {
    const wchar_t* arguments;
    const char* input;
    DWORD status;
    const char *output, *error, *calls;  // a part of each; "" for nothing at all
  } rows[] = {
      {L"VENDECREDITO 11 22 12,50 1 1", "", 0,
       "S;1)\n  Mensagem: APROVADA\n  Cupom: 1\n  Valor: R$ 12,50", "", "12.5,1,1"},
      {L"VendeCredito 11 22 12,50 5 1", "", 4, "RESPOSTA LOCAL", "", "VendeCredito"},
      {L"VendeCredito 11 22 12,50 6 1", "", 1, "Mensagem: GP NÃO ATIVO\n  O GP não estava", "",
       "VendeCredito"},
      {L"VendeCredito 11 22 12,50 8 1", "", 1, "RESULTADO INCERTO (S;0)", "", "VendeCredito"},
      {L"Confirmar 11 22 1 + VendeCredito 11 22 1,00 10 1 + Teste", "", 1, "== Teste: OK", "",
       "Teste"},
      {L"Confirmar 11 22 1", "", 0, "(resposta local) (S;2)\n  Mensagem", "", "Confirmar"},
      {L"Teste + VendeCredito 11 22 1.000 1 1", "", 2, "", "dValor: \"1.000\" tem três casas", ""},
      {L"VendeCredito 11 22 1,00 0 1", "", 2, "", "iCupom: \"0\"", ""},
      {L"--json VendeCredito 11 22 1 1", "", 2, "\"erro\":\"VendeCredito: argumentos a menos",
       "menos", ""},
      {L"VendaCredito 11 22 1,00 1 1", "", 2, "", "Você quis dizer VendeCredito ou", ""},
      {L"--jsn Teste", "", 2, "", "--json?", ""},
      {L"--dll nada.dll Teste", "", 2, "", "repetida", ""},
      {L"ajuda vendecredito", "", 0, "caixora_host VendeCredito 12.345", "", ""},
      {L"VendeCredito /?", "", 0, "Devolve:", "", ""},
      {L"--versao", "", 0, "caixora_host " CAIXORA_VERSION "\nCaixora_falsa.dll sem versão", "",
       ""},
      {L"--lista", "", 0, "Fluxo ", "", ""},
      {L"ConfiguraIntTefInterativo", "", 6, "", "encerrou este processo", ""},
      {FLOW, "\xEF\xBB\xBFpão\r\n", 0, "Resposta: pão", "", "Continua(\"p\\xE3o\")\nFinaliza"},
      {FLOW, "p\xE3o\n1\n", 5, "== Cancelar", "UTF-8", "CancelarFluxo()\n"},
      {FLOW, "", 5, "== Cancelar", "", "CancelarFluxo()\n"},
      {FLOW L" cancelar", "", 5, "== Cancelar", "", "CancelarFluxo()\n"},
      {L"--funcao-fim 20 " FLOW, "", 2, "", "uFuncao: 20 é a função de encerramento", ""},
      {L"--funcao-fim 21 " FLOW L" 1", "", 0, "", "", "FinalizaFuncaoQJInterativo(21"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(fs::path(row.arguments).string());
    fs::remove(kCalls);
    Write("entrada", row.input);
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const auto open = [&](const wchar_t* name, DWORD access, DWORD how) {
      return Handle(CreateFileW(name, access, FILE_SHARE_READ, &inherited, how, 0, nullptr));
    };
    {
      const Handle input = open(L"entrada", GENERIC_READ, OPEN_EXISTING),
                   output = open(L"saida", GENERIC_WRITE, CREATE_ALWAYS),
                   error = open(L"erros", GENERIC_WRITE, CREATE_ALWAYS);
      EXPECT_EQ(ExitCodeOf(
                    Start(Command(row.arguments), nullptr, output.get(), input.get(), error.get())),
                row.status);
    }
    const std::pair<const char*, const char*> files[] = {
        {"saida", row.output}, {"erros", row.error}, {"chamadas.txt", row.calls}};
    for (const auto& [file, part] : files) {
      const std::string text = Read(file);
      EXPECT_NE(text.find(part), text.npos) << file << ": " << text;
    }
    EXPECT_EQ(Read("erros").empty(), *row.error == '\0') << Read("erros");
    EXPECT_EQ(Read(kCalls).empty(), *row.calls == '\0') << Read(kCalls);
    const std::string shown = Read("saida");
    EXPECT_EQ(shown.find("APROVADA"), shown.rfind("APROVADA")) << shown;
  }
}

}  // namespace
