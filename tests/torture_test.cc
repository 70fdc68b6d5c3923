// Torture: scripts again and again, each time with another fault. Every call that can be refused
// is, once; memory runs out for good at every allocation; the log is lost from every line on, which
// rightly ends the process: those runs have one of their own.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <new>

#include "machine.h"
#include "script.h"
#include "support/state.h"

namespace {

// Tells the library's memory from that of the tests, which stands behind the same operators.
constexpr std::size_t kHeader = alignof(std::max_align_t);
long blocks = 0;        // of the library
long memory_left = -1;  // allocations; -1: no end

void* Allocate(std::size_t size) noexcept {
  const bool counts = machine.armed && inside_machine == 0;
  if (counts && memory_left == 0) return nullptr;
  if (counts && memory_left > 0) --memory_left;
  if (counts && machine.NextCallFails()) return nullptr;
  char* memory = static_cast<char*>(std::malloc(kHeader + size));
  *memory = counts;
  blocks += counts;
  return memory + kHeader;
}

void* AllocateOrThrow(std::size_t size) {
  if (void* memory = Allocate(size)) return memory;
  throw std::bad_alloc();
}

void Free(void* pointer) noexcept {
  if (pointer == nullptr) return;
  char* memory = static_cast<char*>(pointer) - kHeader;
  blocks -= *memory;
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { Free(memory); }

namespace {

enum Fault { kRefusedOnce, kMemoryGone, kLogLost };

std::set<std::string> known_results;  // as notes
std::vector<Lines> healthy;           // notes of each line without a fault

bool Has(const Lines& notes, const std::string& note) {
  return std::find(notes.begin(), notes.end(), note) != notes.end();
}

[[noreturn]] void Bad(const std::string& what) {
  std::string shown = what;
  for (const std::string& line : Transcript()) shown += "\n" + line;
  throw std::logic_error(shown);
}

// True when what the GP or the companion said is in the result, whole on disk or whole in the log.
bool IsKept(std::size_t line) {
  for (const std::string& note : healthy[line])
    if ((note.starts_with("= ") || note.starts_with("RETORNO: ")) && Has(machine.notes, note))
      return true;
  return machine.files["c:\\tef_dial\\resp\\intpos.001"] == machine.gp_answer;
}

bool OnDisk(const std::string& content) {
  return std::any_of(machine.files.begin(), machine.files.end(),
                     [&](const auto& file) { return file.second == content; });
}

void CheckLine(const std::string& text, std::size_t line) {
  const std::string& result = machine.notes.back();
  const auto calls = [&text](const char* name) { return text.find(name) != text.npos; };
  const bool answered = Has(machine.notes, "* GP pega e responde");
  if (!machine.open.empty() || !machine.results.empty()) Bad("something stayed open");
  // Of a local answer that the disk did not take whole, what there is counts.
  const bool known = known_results.count(result) ||
                     (calls("Confirmar") && result.starts_with("= S;2;")) ||
                     result.starts_with("= [ERROABORTAR]#Erro ao excluir o arquivo: ");
  if (!known) Bad("unknown result");
  if (answered && !IsKept(line)) Bad("the GP's answer was lost");
  if ((answered || Has(machine.notes, "* GP pega")) &&
      result.find("NAO FOI ENVIADA") != result.npos)
    Bad("said not sent, but the GP has it");
  if (calls("Aguarda") && result != "= PERGUNTA" && !OnDisk("PERGUNTA"))
    Bad("the question was lost");
  if (calls("Continua") && result == "= 0" && !OnDisk("RESPOSTA"))
    Bad("the host's answer was lost");
  const bool pending = caixora::state.PendingConfirmation != caixora::Pending::kNothing;
  if (pending != (calls("Confirmar") && !machine.answer_opened)) Bad("pending confirmation");
}

// False when the script ended before the fault came.
bool RunWith(Fault fault, long n, const Lines& script) {
  StartCase();
  memory_left = fault == kMemoryGone ? n : -1;
  machine.fail_at = fault == kRefusedOnce ? n : -1;
  machine.log_lines = fault == kLogLost ? n : -1;
  std::size_t line = 0;
  machine.on_host_stop = [&] {
    const bool kept = !Has(machine.notes, "* GP pega e responde") || IsKept(line);
    std::_Exit(fault == kLogLost && kept ? 0 : 1);
  };
  for (; line < script.size(); ++line) {
    machine.answer_opened = false;
    RunLine(script[line]);
    CheckLine(script[line], line);
  }
  const bool came = fault == kRefusedOnce ? machine.steps > n : memory_left == 0;
  ResetMachine();
  if (blocks != 0) Bad("memory leaked");
  return came;
}

bool LosesItsLog(long n, const Lines& script) {
  const pid_t child = fork();
  if (child == 0) {
    try {
      std::_Exit(RunWith(kLogLost, n, script) ? 1 : 2);
    } catch (...) {
      std::_Exit(1);
    }
  }
  int status = 0;
  waitpid(child, &status, 0);
  const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 1;
  if (code == 1) throw std::logic_error("lost with the log");
  return code == 0;
}

// How many faults the script takes.
long Torture(Fault fault, const Lines& script) {
  healthy.clear();
  memory_left = -1;
  StartCase();
  for (const std::string& line : script) {
    RunLine(line);
    healthy.push_back(machine.notes);
  }
  long n = 0;
  try {
    while (fault == kLogLost ? LosesItsLog(n, script) : RunWith(fault, n, script)) ++n;
  } catch (const std::exception& failure) {
    ADD_FAILURE() << "fault " << n << ": " << failure.what();
  }
  return n;
}

TEST(Torture, LosesNothing) {
  const std::string folder = CAIXORA_TRANSCRIPTS;
  ReadCommon(folder + "/comum.txt");
  for (const char* file :
       {"/operacoes.txt", "/recusas.txt", "/localizacao.txt", "/troca.txt", "/fluxo.txt"})
    for (const Case& script : ReadCases(folder + file)) {
      StartCase();
      for (const std::string& line : script.lines)
        if (!IsTranscript(line) && RunLine(line)) known_results.insert(machine.notes.back());
    }
  known_results.insert("= 34");

  const Lines scripts[] = {
      {"VendeCredito $VENDA"},
      {"arquivo LD.txt = NADA; VendeCredito $VENDA"},
      {"LinkPagamento $C $P 4 12.5 17 2 a¬b¬1¬1¬1¬1|c¬d¬1¬1¬1¬1 A B 3"},
      {"Confirmar $C $P 17"},
      {"IniciaFuncaoQJInterativo $FLUXO", "arquivo $Q = PERGUNTA; AguardaFuncaoQJInterativo",
       "ContinuaFuncaoQJInterativo RESPOSTA",
       "quando 3x +50: solta Trevix.exe; FinalizaFuncaoQJInterativo $FLUXO",
       "CancelarFluxoQJInterativo"}};
  for (const Lines& script : scripts)
    for (const Fault fault : {kRefusedOnce, kMemoryGone, kLogLost})
      std::printf("%s: %ld faults\n", script[0].c_str(), Torture(fault, script));
}

}  // namespace
