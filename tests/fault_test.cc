// Torture: one sale, one confirmation and one interactive flow, again and again, with the n-th call
// that can fail failing (files, processes, result strings, every allocation), for every n until none
// fails. Each run has a process of its own, since a lost log rightly ends it.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

#include "exchange/chama_tef.h"
#include "fake_machine.h"
#include "interactive/finish.h"
#include "interactive/launcher.h"
#include "interactive/session.h"
#include "support/state.h"

static bool armed = false;

void* operator new(std::size_t size) {
  if (armed && InMachine::depth == 0 && NextCallFails()) throw std::bad_alloc();
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace caixora {
namespace {

constexpr int kGood = 42;
constexpr char kResp[] = "C:\\Tef_dial\\Resp\\Intpos.001";
constexpr char kGpAnswer[] = "001-000 = 7\r\n009-000 = 0\r\n012-000 = 998877\r\n030-000 = OK\r\n";
constexpr char kResult[] = "S;2;OK\r\nC;7;;;;;998877;;1;;;;;;;";

[[noreturn]] void Fault(const std::string& what) {
  std::fprintf(stderr, "failing call %ld: %s\n", machine.fail_at, what.c_str());
  std::_Exit(kGood + 1);
}

// True when what the GP answered is in the result, whole on disk or whole in the log.
bool IsKept(const std::string& result) {
  const std::string& log = machine["C:\\Pavolin TEF\\Log\\Caixora.log"];
  return result == kResult || machine[kResp] == kGpAnswer ||
         log.find("RETORNO: S;2;OK \r\nC;7;;;;;998877;;1;;;;;;;") != log.npos;
}

void Sale(std::int32_t code, const char* log_switch) {
  static bool taken, answered;  // static: a hard stop asks for them
  taken = answered = false;
  machine.folders = {"c:", "c:\\tef_dial", "c:\\tef_dial\\req", "c:\\tef_dial\\resp", "c:\\pavolin tef"};
  machine["C:\\Tef_Dial\\Tef_Dial.exe"];
  machine["C:\\Pavolin TEF\\Pavolin.exe"];
  machine["LD.txt"] = log_switch;
  machine.images = {"pavolin.exe"};
  machine.on_pause = [code] {
    // Without its local answer a confirmation waits as long as the GP lives; here, an hour.
    if (machine.waited > 3600 * 1000) machine.images.clear();
    if (machine.files.erase("c:\\tef_dial\\req\\intpos.001") == 0) return;
    taken = true;
    answered = code != 98;
    if (answered) machine[kResp] = kGpAnswer;
  };
  machine.on_hard_stop = [] {
    if (answered && !IsKept("")) Fault("the answer was lost with the log");
  };
  if (code == 98) PendingConfirmation = "CONFIRMAR";
  armed = true;
  const ResultString result = ChamaTef({.codigo = code, .sCNPJCliente = "11222333000181", .sCNPJParceiro = "11222333000181", .dValor = 1, .iCupom = 7});
  armed = false;
  const std::string text = TextOf(result);
  if (answered && !IsKept(text)) Fault("the answer was lost; result: " + text);
  const bool known = text == kResult || text == "S;2;COMANDO COM SUCESSO\r\nC;7;;;;;;;1;;;;;;;" || text.starts_with("S;0;GP N") ||
                     text.starts_with("S;0;ERRO AO CRIAR ARQUIVO TEF") || text.starts_with("S;0;PASTA TEF_DIAL NAO LOCALIZADA") ||
                     text.starts_with("S;0;GP NAO INSTALADO") || text.starts_with("S;0;FALHA INTERNA, ") ||
                     // A local answer that the disk did not take whole.
                     (code == 98 && text.starts_with("S;2;"));
  if (!known) Fault("unknown result: " + text);
  if (text.find("NAO FOI ENVIADA") != text.npos && taken) Fault("said not sent, but the GP has it");
}

void Interactive() {
  machine.folders = {"c:", "c:\\t", "c:\\t\\req", "c:\\t\\resp", "log", "c:\\tlog"};
  machine["ConfigQJ.ini"] = "CAMINHO=C:\\T\r\n";
  machine["LD.txt"] = "DETALHADO";
  machine["C:\\T\\Trevix.exe"];
  machine["C:\\T\\Email.exe"];
  machine.on_start = [] {
    machine.images.clear();
    if (machine.started.back().starts_with("open|C:\\T\\Trevix.exe")) machine.images = {"trevix.exe"};
  };
  const FlowCall call{20, "11222333000181", 1, "a", "1,00", "b", "c", "d", "e", 7};
  const auto in = [](FlowCode code, std::initializer_list<int> codes) {
    for (const int c : codes)
      if (static_cast<int>(code) == c) return;
    Fault("code " + std::to_string(static_cast<int>(code)));
  };
  machine.on_hard_stop = [] {};
  armed = true;
  in(StartClient(call), {0, 30, 32, 33, 34, 37, 41, 42});
  armed = false;
  ReqFolder = "C:\\T\\Req";
  RespFolder = "C:\\T\\Resp";
  SetClientFolder("C:\\T");
  machine["C:\\T\\Req\\Req001.txt"] = "PERGUNTA";
  armed = true;
  const ResultString question = AwaitQuestion();
  armed = false;
  const std::string text = TextOf(question);
  if (text != "PERGUNTA" && machine["C:\\T\\Req\\Req001.txt"] != "PERGUNTA") Fault("the question was lost: " + text);
  if (text != "PERGUNTA" && !text.empty() && !text.starts_with("[ERROABORTAR]#")) Fault("unknown text: " + text);
  armed = true;
  const FlowCode answered = AnswerQuestion("1");
  armed = false;
  in(answered, {0, 35, 36});
  if (answered == FlowCode::kDone && machine["C:\\T\\Resp\\Resp001.txt"] + machine["C:\\T\\Resp\\Resp001_Temp.txt"] != "1") Fault("the answer was lost");
  machine.on_pause = [] { machine.images.clear(); };
  armed = true;
  in(FinishFlow(call), {0, 30, 32, 33, 34, 37, 39, 41, 42});
  in(CancelFlow(), {0, 42, 43});
  armed = false;
}

// Runs the scenario with every call failing once, or with the log lost from every line on; returns
// how many runs that took.
long Torture(const std::function<void()>& scenario, long Machine::*what = &Machine::fail_at) {
  for (long n = 0;; ++n) {
    const pid_t child = fork();
    if (child == 0) {
      ResetMachine();
      machine.*what = n;
      scenario();
      if (machine.open_files != 0) Fault("a file stayed open");
      const bool reached = what == &Machine::fail_at ? machine.steps > n : machine.log_lines == 0;
      std::_Exit(reached ? kGood : kGood + 2);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (code == kGood + 2) {
      std::printf("%ld faults, one at a time\n", n);
      return n;
    }
    EXPECT_TRUE(code == kGood || code == 1) << "fault " << n << " ended with " << code;
    if (testing::Test::HasFailure()) return n;
  }
}

TEST(Torture, Sale) { EXPECT_GT(Torture([] { Sale(1, "DETALHADO"); }), 200); }
TEST(Torture, SaleWithoutLog) { EXPECT_GT(Torture([] { Sale(1, "NADA"); }), 200); }
TEST(Torture, SaleLosesItsLog) { EXPECT_GT(Torture([] { Sale(1, "DETALHADO"); }, &Machine::log_lines), 50); }
TEST(Torture, Confirmation) { EXPECT_GT(Torture([] { Sale(98, "DETALHADO"); }), 200); }
TEST(Torture, InteractiveFlow) { EXPECT_GT(Torture(Interactive), 200); }

}  // namespace
}  // namespace caixora
