// The interactive flow on a machine in memory: codes, files, log, waits.
#include <gtest/gtest.h>

#include "fake_machine.h"
#include "interactive/finish.h"
#include "interactive/launcher.h"
#include "interactive/session.h"
#include "support/ansi.h"
#include "support/state.h"

namespace caixora {
namespace {

constexpr char kQuestion[] = "C:\\T\\Req\\Req001.txt";
constexpr char kAnswer[] = "C:\\T\\Resp\\Resp001.txt";
constexpr char kStaging[] = "C:\\T\\Resp\\Resp001_Temp.txt";
const std::string kLine(u8"20¬11222333000181¬1¬999¬1,00¬000545¬20210325¬1¬009¬652¬1¬7"_ansi);

class Flow : public testing::Test {
 protected:
  void SetUp() override {
    ResetMachine();
    machine.folders = {"c:", "c:\\t", "c:\\t\\req", "c:\\t\\resp", "log"};
    machine["ConfigQJ.ini"] = "CAMINHO=C:\\T\r\n";
    machine["C:\\T\\Trevix.exe"];
    machine["C:\\T\\Email.exe"];
    machine[kQuestion] = "old";
    machine[kAnswer] = "old";
    call = {20, "11.222.333/0001-81", 1, "999", "1,00", "000545", "20210325", "009", "652", 7};
    machine.on_start = [] {
      const std::string& last = machine.started.back();
      if (last.starts_with("open|C:\\T\\Trevix.exe")) machine.images.insert("trevix.exe");
    };
  }
  void TearDown() override { EXPECT_EQ(machine.open_files, 0); }
  bool Logged(std::string_view message) const {
    return (machine.Log("") + machine.Log("C:\\T") + "\n").find("\n" + std::string(message) + "\n") != std::string::npos;
  }
  // What `work` adds to the companion's log, detailed lines included but for the process checks.
  template <class Work>
  static std::string LogOf(Work work) {
    machine["LD.txt"] = "DETALHADO";
    machine["C:\\TLog\\Caixora.log"].clear();
    work();
    machine["LD.txt"].clear();
    std::string log = machine.Log("C:\\T");
    for (const char* check : {"\nVerificacao Execucao do Processo: Trevix.exe (f)", "\nFim Verificacao Execucao do Processo: Trevix.exe (f)"})
      for (std::size_t at; (at = log.find(check)) != log.npos;) log.erase(at, std::string(check).size());
    return log;
  }
  FlowCall call;
};

TEST_F(Flow, StartStopsClearsAndLaunches) {
  machine["LD.txt"] = "DETALHADO";
  machine.folders.insert("c:\\tlog");
  EXPECT_EQ(StartClient(call), FlowCode::kDone);
  EXPECT_EQ(machine.started, (std::vector<std::string>{"runas|taskkill|/F /T /IM Trevix.exe", "runas|taskkill|/F /T /IM Trevix.exe",
                                                       "runas|taskkill|/F /T /IM Trevix.exe", "open|C:\\T\\Trevix.exe|" + kLine}));
  EXPECT_EQ(machine.waited, 50u + 150u + 1000u);
  EXPECT_FALSE(machine.Has(kAnswer));
  const std::string read = "\nENTROU - LerArquivoConfigQJ (f)\nTamanho do Arquivo ConfigQJ.ini: 0 (f)\nArquivo Aberto - ConfigQJ.ini (f)\nLINHA DO ARQUIVO: CAMINHO=C:\\T (f)";
  EXPECT_EQ(machine.Log(""), "\nENTROU -  IniciaFuncaoQJInterativo()\nSomenteNumerosStr: 11.222.333/0001-81 (f)\nRetorno - SomenteNumerosStr: 11222333000181 (f)"
            "\nChamando LerArquivoConfigQJ(ConfigQJ.ini) (f)" + read + read + "\nChamando FindConfigQJ (f)\nENTROU - FindConfigQJ (f)"
            "\nRetornando elemento: CAMINHO, C:\\T (f)\nRetorno FindConfigQJ: CAMINHO, C:\\T (f)");
  const std::string check = "\nVerificacao Execucao do Processo: Trevix.exe (f)";
  const auto removed = [](const std::string& path) { return "\nCaminho Remover Arquivo: " + path + " (f)" + std::string(u8"\nExclusão: "_ansi) + path + " (f)"; };
  EXPECT_EQ(machine.Log("C:\\T"), std::string(u8"\nTaskkill no Trevix para não ter outra instância em execução."_ansi) + check +
            "\nFim Verificacao Execucao do Processo: Trevix.exe (f)\nVerificacao caminho Trevix - C:\\T\\Trevix.exe (f)\nTeste se existe o arquivo do Trevix (f)"
            "\nAntes de Remover Arquivo - C:\\T\\Resp\\Req001.txt (f)" + removed(kQuestion) + removed(kAnswer) +
            "\nIniciando Trevix - IniciaQJInterativo\nEXE - C:\\T\\Trevix.exe (f)\nPARAMETROS - " + kLine + " (f)"
            "\nComando executado no CMD: \"C:\\T\\Trevix.exe\" \"" + kLine + "\"\r\nexit (f)" + check);
}

TEST_F(Flow, FinishWaitsThenSends) {
  machine.on_pause = [] { if (machine.waited >= 1700) machine.images.clear(); };
  const std::string record = "TRDT|20210325||20210325||True|11222333000181|LOAD|009|652";
  const std::string log = LogOf([&] { EXPECT_EQ(FinishFlow(call), FlowCode::kDone); });
  std::string waits;
  for (int poll = 0; poll <= 20; ++poll) waits += u8"\nAguardando Execução do Trevix.exe (f)"_ansi;
  EXPECT_EQ(log.substr(log.find("\nN\xE3o Removeu")), std::string(u8"\nNão Removeu Arquivos da pasta Req e Resp para obter resposta do Trevix.exe"_ansi) +
            "\nIniciando Trevix - FinalizaQJInterativo\nEXE - C:\\T\\Trevix.exe (f)\nPARAMETROS - " + kLine + " (f)"
            "\nComando executado no CMD: \"C:\\T\\Trevix.exe\" \"" + kLine + "\"\r\nexit (f)" + waits +
            "\nCaminho Email.exe - C:\\T (f)\nIniciando Envio da Transacao - FinalizaQJInterativo\nEXE - C:\\T\\Email.exe (f)\nPARAMETROS - " + kLine +
            " (f)\nChamando Email.exe - C:\\T\\Email.exe\nComando executado no CMD: \"C:\\T\\Email.exe\" \"" + record +
            "\"\r\nexit (f)\nPARAMETROS - " + record + " (f)\nFinalizou Envio da Transacao - FinalizaQJInterativo");
  EXPECT_EQ(machine.started.back(), "open|C:\\T\\Email.exe|TRDT|20210325||20210325||True|11222333000181|LOAD|009|652");
  EXPECT_EQ(machine.waited, 50u + 150u + 500u + 1000u + 800u);
  EXPECT_EQ(machine[kQuestion] + machine[kAnswer], "oldold");
  call.sCampo6 = "a*b";
  machine.files.erase("c:\\t\\email.exe");
  EXPECT_TRUE(LogOf([&] { EXPECT_EQ(FinishFlow(call), FlowCode::kDone); }).ends_with(std::string(u8"\nEmail.exe não será executado (f)"_ansi)));
}

TEST_F(Flow, WaitReportsQuestionsAndReturns) {
  ASSERT_EQ(StartClient(call), FlowCode::kDone);
  const std::string gone(u8"[ERROABORTAR]#Trevix não está em execução"_ansi);
  const std::string read = "\nLendo o arquivo: C:\\T\\Req\\Req001.txt\n", removed = "\nExcluindo o arquivo : C:\\T\\Req\\Req001.txt";
  const std::string stopped(u8"\nTrevix.exe não está em execução"_ansi), found(u8"\nEncontrou Retorno da Execução do Trevix.exe"_ansi);
  const struct { const char* name; bool running; const char* file; std::string text; bool kept; std::string log; unsigned waited; } rows[] = {
      {"no question", true, nullptr, "", false, "", 50},
      {"first line alone", true, "PERGUNTA\r\nresto", "PERGUNTA", false, read + "PERGUNTA" + removed, 100},
      {"empty", true, "", "", false, read + removed, 100},
      {"any bytes", true, "a\x1A%n\r\r\n", "a\x1A%n\r", false, read + "a\x1A%n " + removed, 100},
      {"companion gone", false, nullptr, gone, false, stopped, 0},
      {"companion gone with a question", false, "PERGUNTA", gone, true, stopped + read + "PERGUNTA", 0},
      {"return", false, "x[RETORNO]y\n", "x[RETORNO]y", false, stopped + read + "x[RETORNO]y" + removed + found, 50},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    machine.images.clear();
    if (row.running) machine.images.insert("trevix.exe");
    machine.files.erase("c:\\t\\req\\req001.txt");
    if (row.file != nullptr) machine[kQuestion] = row.file;
    machine.waited = 0;
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(TextOf(AwaitQuestion()), row.text); }), "\nENTROU -  AguardaFuncaoQJInterativo()" + row.log);
    EXPECT_EQ(machine.Has(kQuestion), row.kept);
    EXPECT_EQ(machine.waited, row.waited);
  }
}

TEST_F(Flow, ContinueStagesTheAnswer) {
  ASSERT_EQ(StartClient(call), FlowCode::kDone);
  EXPECT_EQ(LogOf([] { EXPECT_EQ(AnswerQuestion("1"), FlowCode::kDone); }),
            "\nENTROU -  ContinuaFuncaoQJInterativo()\nsInformacao: 1\nCriando arquivo temporario: C:\\T\\Resp\\Resp001_Temp.txt\nInformacao gravada: 1"
            "\nExcluindo o arquivo: C:\\T\\Resp\\Resp001.txt (f)\nrenomenando o arquivo temporario: C:\\T\\Resp\\Resp001_Temp.txt (f)");
  EXPECT_EQ(machine[kAnswer], "1");
  machine[kStaging] = "X";
  EXPECT_EQ(AnswerQuestion("1"), FlowCode::kDone);
  EXPECT_EQ(machine[kAnswer], "X1");
  EXPECT_FALSE(machine.Has(kStaging));
  machine.locked = {"c:\\t\\resp\\resp001.txt"};
  EXPECT_EQ(AnswerQuestion("2"), FlowCode::kAnswerFailed);
  EXPECT_TRUE(Logged("Erro ao excluir, criar ou renomear os arquivos Resp"));
  machine.folders.erase("c:\\t\\resp");
  EXPECT_EQ(AnswerQuestion(nullptr), FlowCode::kNoStagingFile);
  EXPECT_TRUE(Logged(u8"Não foi possível criar o arquivo: C:\\T\\Resp\\Resp001_Temp.txt"_ansi));
}

TEST_F(Flow, CancelTakesTheRawFirstLine) {
  ASSERT_EQ(StartClient(call), FlowCode::kDone);
  machine.images.clear();
  machine.waited = 0;
  const std::string line(u8"800¬¬¬¬¬¬¬1¬¬¬1¬0"_ansi);
  EXPECT_EQ(LogOf([] { EXPECT_EQ(CancelFlow(), FlowCode::kDone); }),
            "\nEntrou - CancelaFluxoQJInterativo()\nENTROU - FindConfigQJ (f)\nRetornando elemento: CAMINHO, C:\\T (f)\nEXE - C:\\T\\Trevix.exe (f)\nPARAMETROS - " + line +
            " (f)\nComando executado no CMD: \"C:\\T\\Trevix.exe\" \"" + line + "\"\r\nexit (f)\nCaminho Remover Arquivo: CAMINHO=C:\\T\\Req\\Req001.txt (f)"
            "\nCaminho Remover Arquivo: CAMINHO=C:\\T\\Resp\\Resp001.txt (f)");
  EXPECT_EQ(machine.waited, 50u + 150u + 150u);
  EXPECT_EQ(machine.started.back(), "open|C:\\T\\Trevix.exe|" + line);
  EXPECT_EQ(ReqFolder, "CAMINHO=C:\\T\\Req");
  EXPECT_EQ(LogBaseFolder, "C:\\T") << "no log could be opened under the raw line";
  machine.images.clear();
  machine["ConfigQJ.ini"] = "C:\\T\r\nCAMINHO=C:\\X";
  machine[kQuestion] = "old";
  EXPECT_EQ(CancelFlow(), FlowCode::kDone);
  EXPECT_EQ(RespFolder, "C:\\T\\Resp");
  EXPECT_FALSE(machine.Has(kQuestion));
}

}  // namespace
}  // namespace caixora
