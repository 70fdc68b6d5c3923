// A point-of-sale program, right and then wrong, goes through a certification: the real DLL, GP
// simulator and companion. Nothing is awaited by the clock.
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <tuple>
#include <vector>

#include "caixora.hpp"
#include "windows_world.h"

using namespace world;
using caixora_pdv::Caixora;
using caixora_pdv::Centavos;
using caixora_pdv::Resultado;
using caixora_pdv::Venda;

namespace {

constexpr char kSteps[] = R"(roteiro Teste
prazo 30min
encerramento 500ms
passo abertura
titulo Abertura
faca Venda R$ 10,10.
gp fechado
espera venda valor=10,10
espera confirmacao
passo recusa
titulo Recusa
faca Venda R$ 14,20.
espera venda valor=14,20
responde recusa mensagem NÃO
espera venda valor=14,30
espera confirmacao
passo gp_morre
titulo Queda do GP
faca Venda R$ 17,80.
espera venda valor=17,80
responde morre
espera desfazimento
passo centavos
titulo Centavos
faca Venda R$ 11,00.
espera venda valor=11,00
espera confirmacao
passo confirmacao_recusada
titulo Confirmação recusada
faca Venda R$ 23,40.
espera venda valor=23,40
responde aprova fecha
espera confirmacao
passo fluxo
titulo Fluxo
faca Fluxo de R$ 30,00.
fluxo recusa
espera fluxo_inicio fluxo_valor=30,00
espera fluxo_resposta
espera fluxo_retorno fluxo_status=5
espera fluxo_fim
passo fluxo_cancelado
titulo Fluxo cancelado
faca Fluxo de R$ 30,10.
espera fluxo_inicio fluxo_valor=30,10
espera fluxo_cancelamento
)";

using Findings = std::map<std::string, std::vector<std::string>>;

// What failed, with its reasons; the exit code of the certification under "".
Findings Certify(bool right) {
  Kill("clientorvane.exe");
  Clean();
  Install(kGpExe, fs::path("C:\\Lumetra") / kGpExe);
  for (const char* program : {"Trevix.exe", "Email.exe"})
    Install(program, fs::path("C:\\Trevix") / program);
  Write("C:\\caixa\\ConfigQJ.ini", "C:\\Trevix\r\nCAMINHO=C:\\Trevix\r\n");
  // The flows, which take their time, once.
  const std::string_view steps = kSteps;
  Write("C:\\caixa\\passos.txt", steps.substr(0, right ? steps.npos : steps.find("passo fluxo\n")));

  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  const Handle output(CreateFileA("C:\\caixa\\saida.txt", GENERIC_WRITE,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, CREATE_ALWAYS, 0,
                                  nullptr));
  const Handle run = Start(
      LR"(C:\Lumetra\clientorvane_simulador.exe --roteiro --auto --passos C:\caixa\passos.txt)"
      LR"( --resultado C:\caixa\resultado --programa "PDV de teste")",
      nullptr, output.get(), nullptr, output.get());
  EXPECT_TRUE(
      Eventually([] { return Read("C:\\caixa\\saida.txt").find("Passo 1") != std::string::npos; }));

  Caixora caixora({.cnpj_cliente = "12.345.678/0001-95",
                   .cnpj_parceiro = "11.222.333/0001-81",
                   .dll = (OwnFolder() / "Caixora.dll").wstring(),
                   .diario = L"C:\\caixa\\diario.txt"});
  const auto sell = [&](long long cents, int coupon) {
    caixora.VenderEConfirmar({Centavos{cents}, coupon, &Caixora::VendeCreditoVista},
                             [](const Resultado&) {});
  };
  const auto flow = [&](long long cents, const std::function<std::optional<std::string>()>& ask) {
    // A request to end the companion that comes late would hit the next one.
    Write("C:\\taskkill_inerte.txt", "");
    std::ignore =
        caixora.Fluxo({.funcao = 20, .valor = Centavos{cents}, .campo3 = 1, .funcao_fim = 99},
                      [&](const std::string&) { return ask(); });
  };
  caixora.AguardarGp(100);
  sell(1010, 1);
  sell(1420, 2);
  if (!right) std::ignore = caixora.Confirmar(2);
  sell(1430, 3);
  if (!right) std::ignore = caixora.Confirmar(3);
  sell(1780, 4);
  sell(right ? 1100 : 1099, 5);
  sell(2340, 6);
  if (right) {
    flow(3000, [] { return "1"; });
    flow(3010, [] {
      fs::remove("C:\\taskkill_inerte.txt");
      return std::nullopt;
    });
    const Library dll(OwnFolder() / "Caixora.dll");
    const auto cancel = dll.Find(&CancelarFluxoQJInterativo, "CancelarFluxoQJInterativo");
    while (Read("C:\\Trevix\\Trevix_fluxos.txt").find("cancelamento") == std::string::npos)
      cancel();
  }

  WaitForSingleObject(run.get(), INFINITE);
  const nlohmann::json result = nlohmann::json::parse(Read("C:\\caixa\\resultado.json"));
  EXPECT_EQ(result["programa"], "PDV de teste");
  EXPECT_FALSE(fs::exists("C:\\Lumetra\\clientorvane.exe"));
  EXPECT_NE(Read("C:\\caixa\\resultado.html").find("</html>"), std::string::npos);
  Findings findings = {{"", {std::to_string(ExitCodeOf(run))}}};
  for (const nlohmann::json& step : result["passos"])
    if (step["resultado"] != "passou") findings[step["id"]] = step["motivos"];
  return findings;
}

TEST(CertificationUnderWindows, PassesWhatIsRight) {
  EXPECT_EQ(Certify(true), (Findings{{"", {"0"}}}));
}

TEST(CertificationUnderWindows, FailsWhatIsWrong) {
  EXPECT_EQ(
      Certify(false),
      (Findings{
          {"", {"6"}},
          {"recusa", {"confirmou uma venda recusada (cupom 2)", "confirmou duas vezes o cupom 3"}},
          {"centavos", {"valor 10,99 em vez de 11,00: truncou em vez de arredondar"}}}));
}

}  // namespace
