// Simulated GP: takes each request from the exchange folder and answers it. What the request asks
// for chooses the row of operations, a director or the cents of its amount the outcome.
#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "programs/console.h"
#include "simulators/gp_answer.h"
#include "simulators/gp_director.h"
#include "simulators/now.h"

namespace caixora::gp {
namespace {

constexpr DWORD kPollMs = 20;
constexpr DWORD kExitDelayMs = 500;  // long enough for the library to notice that it was taken

enum ExitCode { kUsage = 1, kNoFolder = 2, kAlreadyRuns = 3, kExitAsked = 4 };

class Manager {
 public:
  // The first director that decides does.
  Manager(std::string folder, std::vector<Director*> directors)
      : folder_(std::move(folder)), directors_(std::move(directors)) {
    ::CreateDirectoryA((folder_ + "\\Req").c_str(), nullptr);
    ::CreateDirectoryA((folder_ + "\\Resp").c_str(), nullptr);
    Log("Aguardando pedidos em " + Utf8(folder_));
  }

  // Serves requests until one of them, or a director, asks for the end. Returns the exit code.
  int Run() {
    for (;; Pause()) {
      for (Director* director : directors_)
        if (const std::optional<int> code = director->Tick(Clock::now())) return *code;
      if (waiting_) {
        if (Clock::now() >= waiting_->due) Answer();
      } else if (!TakeRequest()) {
        Log("Encerrando sem responder, como pedido.");
        return kExitAsked;
      }
    }
  }

 private:
  using Clock = std::chrono::steady_clock;

  struct Waiting {
    Request request;
    std::string answer;
    Moment due;
  };

  static void Log(const std::string& text) { Print(Now("%H:%M:%S ") + text + "\n"); }

  void Pause() const {
    auto pause = std::chrono::milliseconds(kPollMs);
    if (waiting_)
      pause = std::min(pause,
                       std::chrono::ceil<std::chrono::milliseconds>(waiting_->due - Clock::now()));
    ::Sleep(static_cast<DWORD>(std::max(pause.count(), pause.zero().count())));
  }

  const Outcome& Decide(const Request& request) const {
    for (Director* director : directors_)
      if (const Outcome* outcome = director->Decide(request)) return *outcome;
    return FindOutcome(request);
  }

  // False: the request that was taken asks for the end.
  bool TakeRequest() {
    const std::optional<std::string> record = ReadWhole(request_);
    if (!record || record == left_alone_) return true;
    left_alone_.reset();
    const Request request(*record);
    const Outcome& outcome = Decide(request);
    const std::string name = Utf8(request.Header()) + " cupom " +
                             Utf8(request.Value("001-000", "-")) + " valor " +
                             Utf8(ReadableAmount(request.Value("003-000", "-")));
    if (outcome.action == Action::kNeverTake) {
      Log("Ignorado: " + name);
      left_alone_ = record;
    } else if (::DeleteFileA(request_.c_str())) {
      Log("Recebido: " + name);
      AppendLine(OwnFolder() + "\\Pedidos.txt", "==== " + Now("%H:%M:%S") + "\r\n" + *record);
    } else {
      return true;  // held open: next time
    }
    for (Director* director : directors_) director->Received(request, outcome, Clock::now());
    if (outcome.action == Action::kAnswer && !request.IsSettlement()) Prepare(request, outcome);
    if (outcome.action == Action::kStaySilent) Log("Sem resposta, como pedido.");
    return outcome.action != Action::kExit;
  }

  void Prepare(const Request& request, const Outcome& outcome) {
    std::string answer = Compose(request, FindOperation(request), outcome);
    for (Director* director : directors_) director->Revise(request, answer);
    waiting_ = Waiting{request, std::move(answer), Clock::now() + outcome.delay};
    if (outcome.delay == outcome.delay.zero()) Answer();
  }

  void Answer() {
    const auto [request, text, due] = std::move(*waiting_);
    waiting_.reset();
    const std::string path =
        folder_ + (request.Header() == "ATV" ? "\\Resp\\Ativo.001" : "\\Resp\\Intpos.001");
    if (!Publish(folder_ + "\\Resp\\intpos.tmp", path, text))
      return Log("Resposta não gravada em " + Utf8(path));
    const Request answer(text);
    Log("Respondido: " + Utf8(answer.Value("030-000")));
    for (Director* director : directors_) director->Answered(request, answer, Clock::now());
  }

  std::string folder_;
  std::vector<Director*> directors_;
  std::string request_ = folder_ + "\\Req\\intpos.001";
  std::optional<std::string> left_alone_;
  std::optional<Waiting> waiting_;
};

// The only drive that holds the exchange folder; empty when there is none or more than one.
std::string FindExchangeFolder() {
  ::SetErrorMode(SEM_FAILCRITICALERRORS);  // a drive without a disk asks nothing
  std::string found;
  for (const char drive : std::string_view("CDEF")) {
    const std::string folder = std::string(1, drive) + ":\\Tef_Dial";
    if (!OpenFile(folder + "\\Tef_Dial.exe", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING))
      continue;
    if (!found.empty()) return {};
    found = folder;
  }
  return found;
}

int Start(int argc, char** argv) {
  bool quiet = false;
  std::string folder;
  for (int i = 1; i < argc; ++i) {
    if (::_stricmp(argv[i], "STARTAUTO") == 0) {
      quiet = true;
    } else if (std::string_view(argv[i]) == "--pasta" && i + 1 < argc) {
      folder = argv[++i];
    } else {
      Print("Uso: clientorvane_simulador [STARTAUTO] [--pasta <pasta de troca>]\n");
      return kUsage;
    }
  }
  const Handle lock(::CreateMutexA(nullptr, FALSE, "CaixoraGpSimulado"));
  if (::GetLastError() == ERROR_ALREADY_EXISTS) {
    Print("O GP simulado já está em execução.\n");
    return kAlreadyRuns;
  }
  if (folder.empty()) folder = FindExchangeFolder();
  if (folder.empty()) {
    Print("É preciso exatamente uma pasta Tef_Dial com Tef_Dial.exe nas unidades C: a F:\n");
    return kNoFolder;
  }
  if (!quiet) {
    Print("GP simulado. Os centavos do valor escolhem o desfecho:\n");
    for (const Outcome& row : Outcomes())
      Print("  " + std::string(row.cents.empty() ? "outros" : row.cents) + ": " +
            std::string(row.description) + "\n");
  }
  const int code = Manager(folder, {}).Run();
  ::Sleep(kExitDelayMs);
  return code;
}

}  // namespace
}  // namespace caixora::gp

int main(int argc, char** argv) { return caixora::gp::Start(argc, argv); }
