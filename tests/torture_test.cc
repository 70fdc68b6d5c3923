// Torture: scripts again and again, each time with another fault. Every call that can be refused
// is, once; memory runs out for good at every allocation; the log is lost from every line on, which
// rightly ends the program: there in a process of its own.
#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include "machine.h"
#include "script.h"
#include "support/state.h"

namespace {

// Tells the library's memory from that of the tests, which stands behind the same operators.
constexpr std::size_t kHeader = alignof(std::max_align_t);
long blocks = 0;       // of the library, that live
long allocations = 0;  // of the library, so far
long memory = -1;      // allocations before there is no more; -1: no end

void* Allocate(std::size_t size) noexcept {
  const bool counts = machine.armed && inside_machine == 0;
  if (counts && (allocations++ == memory || machine.NextCallFails())) {
    if (memory >= 0) allocations = memory;  // nor ever again
    return nullptr;
  }
  char* block = static_cast<char*>(std::malloc(kHeader + size));
  *block = counts;
  blocks += counts;
  return block + kHeader;
}

void* AllocateOrThrow(std::size_t size) {
  if (void* pointer = Allocate(size)) return pointer;
  throw std::bad_alloc();
}

void Free(void* pointer) noexcept {
  if (pointer == nullptr) return;
  char* block = static_cast<char*>(pointer) - kHeader;
  blocks -= *block;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* pointer) noexcept { Free(pointer); }
void operator delete[](void* pointer) noexcept { Free(pointer); }
void operator delete(void* pointer, std::size_t) noexcept { Free(pointer); }
void operator delete[](void* pointer, std::size_t) noexcept { Free(pointer); }
void operator delete(void* pointer, const std::nothrow_t&) noexcept { Free(pointer); }
void operator delete[](void* pointer, const std::nothrow_t&) noexcept { Free(pointer); }

namespace {

constexpr long kManyLines = 1'000'000;

std::set<std::string> known_results;  // as notes
std::vector<Lines> healthy;           // notes of each line without a fault

void Expect(bool holds, const char* what) {
  if (holds) return;
  std::string shown = what;
  for (const std::string& line : Transcript()) shown += "\n" + line;
  ADD_FAILURE() << shown;
}

// A line that was logged before the version was known stands there with its stamp.
bool Noted(const std::string& note) {
  const auto ends_so = [&note](const std::string& each) { return each.ends_with(note); };
  return std::any_of(machine.notes.begin(), machine.notes.end(), ends_so);
}

bool OnDisk(const std::string& content) {
  const auto holds_it = [&content](const auto& file) { return file.second == content; };
  return std::any_of(machine.files.begin(), machine.files.end(), holds_it);
}

// True unless the GP answered, and its answer is neither in the result nor whole on disk or in the
// log.
bool AnswerIsKept(std::size_t line) {
  if (!Noted("* GP pega e responde") || OnDisk(machine.gp_answer)) return true;
  const auto tells = [](const std::string& note) {
    return (note.starts_with("= ") || note.starts_with("RETORNO: ")) && Noted(note);
  };
  return std::any_of(healthy[line].begin(), healthy[line].end(), tells);
}

void CheckLine(const std::string& text, std::size_t line) {
  const std::string& result = machine.notes.back();
  const auto calls = [&text](const char* name) { return text.find(name) != text.npos; };
  Expect(machine.open.empty() && machine.results.empty(), "something stayed open");
  // Of a local answer that the disk did not take whole, what there is counts.
  Expect(known_results.count(result) || (calls("Confirmar") && result.starts_with("= S;2;")) ||
             result.starts_with("= [ERROABORTAR]#Erro ao excluir o arquivo: "),
         "unknown result");
  Expect(result != "= 34" || memory >= 0 || Noted("Erro ao iniciar Trevix.exe"), "34 without log");
  Expect(AnswerIsKept(line), "the GP's answer was lost");
  const bool taken = Noted("* GP pega e responde") || Noted("* GP pega");
  Expect(!taken || result.find("NAO FOI ENVIADA") == result.npos, "said not sent, but it was");
  Expect(!calls("Aguarda") || result == "= [RETORNO]" || OnDisk("[RETORNO]"), "question lost");
  Expect(!calls("Continua") || result != "= 0" || OnDisk("RESPOSTA"), "host's answer lost");
  const bool pending = caixora::state.PendingConfirmation != caixora::Pending::kNothing;
  const bool unsure = result.find("VERIFIQUE NO GP") != result.npos;
  Expect(pending == (calls("Confirmar") && !machine.answer_opened && !unsure),
         "pending confirmation");
}

void Run(const Lines& script, long fail_at, long memory_until, long log_lines) {
  StartCase();
  allocations = 0;
  memory = memory_until;
  machine.fail_at = fail_at;
  machine.log_lines = log_lines;
  std::size_t line = 0;
  machine.on_host_stop = [&] { std::_Exit(log_lines < kManyLines && AnswerIsKept(line) ? 0 : 1); };
  for (; line < script.size(); ++line) {
    machine.answer_opened = false;
    RunLine(script[line]);
    if (line == healthy.size()) healthy.push_back(machine.notes);
    CheckLine(script[line], line);
  }
}

void Torture(const Lines& script) {
  healthy.clear();
  Run(script, -1, -1, kManyLines);
  const long steps = machine.steps, memory_steps = allocations;
  const long lines = kManyLines - machine.log_lines;
  const auto survives = [&](long fail_at, long memory_until) {
    SCOPED_TRACE(script[0] + ": fault " + std::to_string(std::max(fail_at, memory_until)));
    Run(script, fail_at, memory_until, kManyLines);
    ResetMachine();
    Expect(blocks == 0, "memory leaked");
    return !testing::Test::HasFailure();
  };
  for (long n = 0; n < steps && survives(n, -1);) ++n;
  for (long n = 0; n < memory_steps && survives(-1, n);) ++n;
  for (long n = 0; n < lines && !testing::Test::HasFailure(); ++n)
    EXPECT_EXIT(Run(script, -1, -1, n), testing::ExitedWithCode(0), "") << "line " << n;
  std::printf("%s: %ld refusals, %ld ends of memory, %ld of the log\n", script[0].c_str(), steps,
              memory_steps, lines);
}

TEST(Torture, LosesNothing) {
  ReadCommon();
  known_results = {"= 34"};
  for (const char* file :
       {"operacoes.txt", "recusas.txt", "localizacao.txt", "troca.txt", "fluxo.txt"})
    for (const Case& script : ReadCases(kTranscripts / file)) {
      StartCase();
      for (const std::string& line : script.lines)
        if (!IsTranscript(line) && RunLine(line)) known_results.insert(machine.notes.back());
    }
  Torture({"VendeCredito $VENDA"});
  Torture({"arquivo LD.txt = NADA; VendeCredito $VENDA"});
  Torture({"LinkPagamento $C $P 4 12.5 17 2 a¬b¬1¬1¬1¬1|c¬d¬1¬1¬1¬1 A B 3"});
  Torture({"Confirmar $C $P 17"});
  Torture({"IniciaFuncaoQJInterativo $FLUXO", "arquivo $Q = [RETORNO]; AguardaFuncaoQJInterativo",
           "ContinuaFuncaoQJInterativo RESPOSTA",
           "solta Trevix.exe; arquivo $Q = [RETORNO]; AguardaFuncaoQJInterativo",
           "quando 3x +50: solta Trevix.exe; FinalizaFuncaoQJInterativo $FLUXO",
           "CancelarFluxoQJInterativo"});
}

}  // namespace
