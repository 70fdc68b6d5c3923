#include "simulators/gp_manager.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "programs/console.h"
#include "simulators/gp_answer.h"
#include "simulators/now.h"

namespace caixora::gp {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPoll{20};

void Log(const std::string& text) { Print(Now("%H:%M:%S ") + text + "\n"); }

}  // namespace

Manager::Manager(std::string folder, std::vector<Director*> directors,
                 std::function<std::optional<char>()> next_key)
    : folder_(std::move(folder)), directors_(std::move(directors)), next_key_(std::move(next_key)) {
  ::CreateDirectoryA((folder_ + "\\Req").c_str(), nullptr);
  ::CreateDirectoryA((folder_ + "\\Resp").c_str(), nullptr);
  Log("Aguardando pedidos em " + Utf8(folder_));
}

int Manager::Run() {
  for (;; Pause()) {
    PassKeysOn();
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

void Manager::PassKeysOn() {
  while (const std::optional<char> key = next_key_())
    for (Director* director : directors_)
      if (director->Key(*key)) break;
}

void Manager::Pause() const {
  auto pause = kPoll;
  if (waiting_)
    pause =
        std::min(pause, std::chrono::ceil<std::chrono::milliseconds>(waiting_->due - Clock::now()));
  ::Sleep(static_cast<DWORD>(std::max(pause, pause.zero()).count()));
}

const Outcome& Manager::Decide(const Request& request) const {
  for (Director* director : directors_)
    if (const Outcome* outcome = director->Decide(request)) return *outcome;
  return FindOutcome(request);
}

bool Manager::TakeRequest() {
  if (!std::ranges::all_of(directors_, &Director::TakesRequests)) return true;
  const std::optional<std::string> record = ReadWhole(request_);
  if (!record || record == left_alone_) {
    if (!record) left_alone_.reset();
    return true;
  }
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

void Manager::Prepare(const Request& request, const Outcome& outcome) {
  std::string answer = Compose(request, FindOperation(request), outcome);
  for (Director* director : directors_) director->Revise(request, answer);
  waiting_ = Waiting{request, std::move(answer), Clock::now() + outcome.delay};
  if (outcome.delay == outcome.delay.zero()) Answer();
}

void Manager::Answer() {
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

}  // namespace caixora::gp
