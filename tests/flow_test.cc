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
  EXPECT_EQ(FinishFlow(call), FlowCode::kDone);
  EXPECT_EQ(machine.started.back(), "open|C:\\T\\Email.exe|TRDT|20210325||20210325||True|11222333000181|LOAD|009|652");
  EXPECT_EQ(machine.waited, 50u + 150u + 500u + 1000u + 800u);
  EXPECT_TRUE(Logged("Finalizou Envio da Transacao - FinalizaQJInterativo"));
  EXPECT_EQ(machine[kQuestion] + machine[kAnswer], "oldold");
  call.sCampo6 = "a*b";
  machine.files.erase("c:\\t\\email.exe");
  EXPECT_EQ(FinishFlow(call), FlowCode::kDone);
}

TEST_F(Flow, WaitReportsQuestionsAndReturns) {
  ASSERT_EQ(StartClient(call), FlowCode::kDone);
  const std::string gone(u8"[ERROABORTAR]#Trevix não está em execução"_ansi);
  const struct { const char* name; bool running; const char* file; std::string text; bool kept; } rows[] = {
      {"no question", true, nullptr, "", false},
      {"first line alone", true, "PERGUNTA\r\nresto", "PERGUNTA", false},
      {"empty", true, "", "", false},
      {"any bytes", true, "a\x1A%n\r\r\n", "a\x1A%n\r", false},
      {"companion gone", false, nullptr, gone, false},
      {"companion gone with a question", false, "PERGUNTA", gone, true},
      {"return", false, "x[RETORNO]y\n", "x[RETORNO]y", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    machine.images.clear();
    if (row.running) machine.images.insert("trevix.exe");
    machine.files.erase("c:\\t\\req\\req001.txt");
    if (row.file != nullptr) machine[kQuestion] = row.file;
    EXPECT_EQ(TextOf(AwaitQuestion()), row.text);
    EXPECT_EQ(machine.Has(kQuestion), row.kept);
  }
  EXPECT_TRUE(Logged("Excluindo o arquivo : C:\\T\\Req\\Req001.txt"));
}

TEST_F(Flow, ContinueStagesTheAnswer) {
  ASSERT_EQ(StartClient(call), FlowCode::kDone);
  EXPECT_EQ(AnswerQuestion("1"), FlowCode::kDone);
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
  EXPECT_EQ(CancelFlow(), FlowCode::kDone);
  EXPECT_EQ(machine.started.back(), std::string(u8"open|C:\\T\\Trevix.exe|800¬¬¬¬¬¬¬1¬¬¬1¬0"_ansi));
  EXPECT_EQ(ReqFolder, "CAMINHO=C:\\T\\Req");
  EXPECT_EQ(LogBaseFolder, "C:\\T") << "no log could be opened under the raw line";
  machine.images.clear();
  machine["ConfigQJ.ini"] = "C:\\T\r\nCAMINHO=C:\\X";
  machine[kQuestion] = "old";
  EXPECT_EQ(CancelFlow(), FlowCode::kDone);
  EXPECT_EQ(RespFolder, "C:\\T\\Resp");
  EXPECT_FALSE(machine.Has(kQuestion));
  machine.images = {"trevix.exe"};
  EXPECT_EQ(CancelFlow(), FlowCode::kStillRunning);
  machine.elevated = false;
  const std::size_t before = machine.started.size();
  EXPECT_EQ(CancelFlow(), FlowCode::kNotElevated);
  EXPECT_EQ(machine.started.size(), before);
  EXPECT_TRUE(Logged("Entrou - CancelaFluxoQJInterativo()"));
}

}  // namespace
}  // namespace caixora
