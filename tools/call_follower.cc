#include "tools/call_follower.h"

#include <algorithm>
#include <span>
#include <tuple>
#include <unordered_map>

#include "exchange/tef_call.h"
#include "support/text.h"
#include "tools/known_lines.h"
#include "tools/logged_values.h"

namespace caixora {
namespace {

using Index = std::uint32_t;

// Of the clock's two whole seconds and the waits that were counted: the waits where the clock does
// not contradict them.
std::int64_t Estimate(LogTime begin, LogTime end, std::int64_t waits_ms) {
  const std::int64_t clock_ms = std::max<std::int64_t>(end - begin, 0) * 1000;
  const bool agrees = waits_ms > clock_ms - 1000 && waits_ms < clock_ms + 1000;
  return agrees ? waits_ms : clock_ms;
}

// A call while its lines come in.
struct Progress {
  Index call = 0;
  bool ended = false;
  Step step = kNoStep;
  LogTime touched = kNoTime;
  std::uint64_t order = 0;  // of the last line
  // When steps were reached, and what was counted meanwhile.
  LogTime handed_over = kNoTime, taken = kNoTime, answered = kNoTime;
  std::int64_t pickup_polls = 0, answer_polls = 0;
  bool entry_elsewhere = false;  // begins where its log was found: the line before is another log's
  std::uint16_t file = 0;
  std::string_view last_message;  // that is always written
  FlowFunction function = FlowFunction::kNone;
  LogTime companion = kNoTime;  // a flow's companion was started
  bool closed = false;          // a flow to which no function is added any more

  // The seconds without a line after which the call is taken to be dead. The GP is asked after five
  // times a second; until it takes the request there may be minutes without an ordinary line.
  LogTime Patience() const {
    if (step == kHandedOver) return 400;
    return step == kAwaiting ? 3 : 10;
  }

  // So long after its last line that this one is of another call, whose beginning was cut off.
  bool IsOver(LogTime time) const {
    constexpr LogTime kSlowMachine = 60;
    return function == FlowFunction::kNone && time - touched > Patience() + kSlowMachine;
  }
};

class Follower {
 public:
  Follower(std::vector<LogLine>& lines, std::vector<Call>& calls) : lines_(lines), calls_(calls) {}

  void FollowAll() {
    for (Index i = 0; i < lines_.size(); ++i)
      if (lines_[i].time != kNoTime) Follow(i);
    for (const LogLine& line : lines_) {
      if (line.call == kNone) continue;
      last_of_version_[line.Version()] = line.call;
      last_of_file_[line.file] = line.call;
    }
    for (Progress& progress : progress_) Conclude(progress);
  }

 private:
  void Follow(Index index) {
    const std::string_view message = lines_[index].BareMessage();
    if (const FlowEntry* const entry = FindFlowEntry(message)) return EnterFlow(index, *entry);
    if (const KnownLine* const known = FindPaymentLine(message))
      return FollowPayment(index, *known, message);
    if (Progress* const progress = LastTouched(lines_[index])) Touch(*progress, index, message);
  }

  Progress& Begin(Index index, CallKind kind) {
    Call& call = calls_.emplace_back();
    call.kind = kind;
    call.begin = lines_[index].time;
    call.version = lines_[index].Version();
    Progress& progress = progress_.emplace_back();
    progress.call = static_cast<Index>(calls_.size() - 1);
    progress.file = lines_[index].file;
    return progress;
  }

  void Take(Progress& progress, Index index) {
    Call& call = calls_[progress.call];
    lines_[index].call = progress.call;
    call.lines.push_back(index);
    call.end = std::max(call.end, lines_[index].time);
    progress.touched = lines_[index].time;
    progress.order = ++order_;
  }

  // Lines that do not tell their step, nor whether they are a payment's or a flow's, belong to the
  // program that wrote last.
  Progress* LastTouched(const LogLine& line) {
    const std::string_view version = line.Version();
    Progress* last = nullptr;
    for (Progress& progress : Recent())
      if (calls_[progress.call].version == version &&
          (last == nullptr || progress.order > last->order))
        last = &progress;
    if (last == nullptr) return nullptr;
    const bool fresh = line.time - last->touched <= last->Patience();
    return fresh || (!last->ended && !last->IsOver(line.time)) ? last : nullptr;
  }

  // Only the latest calls can still get lines.
  std::span<Progress> Recent() {
    constexpr std::size_t kRecent = 16;
    return std::span(progress_).last(std::min(progress_.size(), kRecent));
  }

  // ---- Payments ----

  void FollowPayment(Index index, const KnownLine& known, std::string_view message) {
    Progress* progress = FindPayment(index, known);
    if (progress == nullptr) {
      progress = &Begin(index, CallKind::kPayment);
      // The first call of a process finds its log while it is under way.
      progress->entry_elsewhere = known.step == kLocated;
      calls_[progress->call].begins_in_log = known.step <= kLocated;
    }
    if (known.step > progress->step) Reach(*progress, known.step, lines_[index].time);
    if (known.pattern == "Sleep 100") ++progress->pickup_polls;
    if (known.pattern == "Arquivo NULL") ++progress->answer_polls;
    lines_[index].waits = (known.traits & kWaits) != 0;
    Touch(*progress, index, message);
  }

  Progress* FindPayment(Index index, const KnownLine& known) {
    const LogLine& line = lines_[index];
    if (known.step == kEntered) return nullptr;
    const std::string_view version = line.Version();
    std::vector<Progress*> fitting;
    for (Progress& progress : Recent()) {
      const Call& call = calls_[progress.call];
      if (call.kind == CallKind::kFlow || progress.ended || call.version != version) continue;
      if (progress.IsOver(line.time)) continue;
      if (known.step == kLocating && progress.entry_elsewhere && progress.file != line.file &&
          progress.touched == line.time)
        return progress.entry_elsewhere = false, &progress;
      const bool repeats = (known.traits & kRepeats) != 0 && progress.step == known.step;
      if (!repeats && progress.step >= known.step) continue;
      // These follow at once; anything else is another call.
      if (known.step <= kLocated && progress.step != known.step - 1) continue;
      fitting.push_back(&progress);
    }
    if (fitting.empty()) return nullptr;
    std::optional<std::int32_t> coupon;
    if (fitting.size() > 1 && known.step >= kFound) coupon = CouponAhead(index);
    const auto rank = [&](const Progress* progress) {
      const Call& call = calls_[progress->call];
      const bool late = line.time - progress->touched > progress->Patience();
      const bool other = coupon && call.coupon && *coupon != *call.coupon;
      const auto order = static_cast<std::int64_t>(progress->order);
      const bool bursts = (known.traits & kBursts) != 0;
      return std::tuple(late, other, known.step - progress->step, bursts ? order : -order);
    };
    return *std::ranges::min_element(fitting, {}, rank);
  }

  // The coupon of the answer that is being read around this line.
  std::optional<std::int32_t> CouponAhead(Index index) const {
    constexpr Index kReadingLines = 24;
    const std::string_view version = lines_[index].Version();
    for (Index i = index; i < lines_.size() && i < index + kReadingLines; ++i) {
      if (lines_[i].time == kNoTime || lines_[i].Version() != version) continue;
      const std::string_view message = lines_[i].BareMessage();
      if (const std::string_view said = Behind("LINHA001: 001-000 = ", message); !said.empty())
        return LeadingNumber(said);
      if (message.starts_with(kReturn)) return WholeNumber<std::int32_t>(RecordFields(message)[0]);
    }
    return std::nullopt;
  }

  void Reach(Progress& progress, Step step, LogTime time) {
    if (progress.step < kHandedOver && step >= kHandedOver) progress.handed_over = time;
    if (progress.step < kAwaiting && step >= kAwaiting) progress.taken = time;
    if (progress.step < kFound && step >= kFound) progress.answered = time;
    progress.step = step;
    if (step >= kWritten) calls_[progress.call].request_written = true;
  }

  // ---- Flows ----

  void EnterFlow(Index index, const FlowEntry& entry) {
    const std::string_view version = lines_[index].Version();
    Progress* flow = nullptr;
    if (entry.function != FlowFunction::kStart)
      for (Progress& progress : Recent())
        if (calls_[progress.call].kind == CallKind::kFlow && !progress.closed &&
            calls_[progress.call].version == version)
          flow = &progress;
    if (flow == nullptr) {
      flow = &Begin(index, CallKind::kFlow);
      calls_[flow->call].operation = entry.name;
      calls_[flow->call].begins_in_log =
          entry.function == FlowFunction::kStart || entry.function == FlowFunction::kCancel;
    }
    if (entry.function == FlowFunction::kStart)
      for (Progress& progress : Recent())
        if (&progress != flow && calls_[progress.call].version == version) progress.closed = true;
    flow->function = entry.function;
    flow->ended = false;
    lines_[index].waits = entry.function == FlowFunction::kWait;
    if (entry.function == FlowFunction::kCancel) {
      flow->closed = true;
      EndFlow(*flow, "cancelado");
    }
    Take(*flow, index);
  }

  void EndFlow(Progress& flow, std::string_view result) {
    Call& call = calls_[flow.call];
    call.ends_in_log = true;
    if (!call.failures.empty()) return;
    call.outcome = Outcome::kOther;
    if (call.result.empty()) call.result = result;
  }

  void ReadFlowLine(Progress& flow, std::string_view message) {
    Call& call = calls_[flow.call];
    if (flow.function == FlowFunction::kWait && message.find("[RETORNO]") != message.npos) {
      // The companion ends before its return is read, and so the line of its end stands before.
      call.failures.clear();
      call.outcome = Outcome::kUnfinished;
      call.result = message;
    }
    if (message == "Iniciando Trevix - IniciaQJInterativo")
      flow.companion = lines_[call.lines.back()].time;
    if (message == "Iniciando Trevix - FinalizaQJInterativo") {
      flow.closed = true;
      EndFlow(flow, "finalizado");
    }
    const std::string_view line = Behind("PARAMETROS - ", message);
    if (line.empty() || !call.amount.empty()) return;
    constexpr std::string_view kNotSign = "\xC2\xAC";
    std::string_view rest = line;
    for (int field = 1; field < 5; ++field) {
      const std::size_t end = rest.find(kNotSign);
      if (end == rest.npos) return;
      rest.remove_prefix(end + kNotSign.size());
    }
    call.amount = rest.substr(0, rest.find(kNotSign));
    call.cents = Cents(call.amount);
  }

  // ---- Both ----

  void Touch(Progress& progress, Index index, std::string_view message) {
    Take(progress, index);
    Call& call = calls_[progress.call];
    if (progress.step == kHandedOver || progress.step == kAwaiting || call.kind == CallKind::kFlow)
      lines_[index].waits |= IsOtherWait(message);
    if (lines_[index].waits) return;
    if (!lines_[index].text.ends_with(" (f)")) progress.last_message = message;
    if (call.kind == CallKind::kFlow)
      ReadFlowLine(progress, message);
    else
      ReadPaymentLine(progress, message);
    TakeFailure(progress, message);
  }

  void ReadPaymentLine(Progress& progress, std::string_view message) {
    Call& call = calls_[progress.call];
    if (message.starts_with("[METODO] ")) ReadOperation(message, call);
    if (const auto reply = Behind("CONFIRMACAO/DESFAZIMENTO: ", message); !reply.empty())
      call.local_reply = reply;
    if (!message.starts_with(kReturn)) return;
    const std::string_view logged = message.substr(kReturn.size());
    const auto fields = RecordFields(logged);
    call.result = ResultText(logged);
    if (!call.coupon) call.coupon = WholeNumber<std::int32_t>(fields[0]);
    call.answered_cents = WholeNumber<std::int64_t>(fields[1]);
    call.network = fields[3];
    call.authorisation = fields[4];
    call.nsu = fields[5];
    if (IsCut(call.result)) {
      constexpr std::size_t kStatus = 4;  // "S;2;"
      if (call.result.size() > kStatus)
        call.result.append("…");
      else
        call.result.clear();
      return;
    }
    progress.ended = call.ends_in_log = true;
    if (call.result.starts_with("S;0;")) {
      call.outcome = Outcome::kRefused;
      call.failures = {FindByResult("S;0;")};
    } else if (IsLocalAnswer(call.result)) {
      call.outcome = Outcome::kLocalReply;
      if (call.local_reply.empty()) call.local_reply = "?";
      if (call.IsMistakenReply()) call.failures = {FindByResult(call.result)};
    } else {
      call.outcome = Outcome::kApproved;
    }
  }

  void TakeFailure(Progress& progress, std::string_view message) {
    Call& call = calls_[progress.call];
    const bool in_flow = call.kind == CallKind::kFlow;
    // Memory may run out while a refusal is made into a result.
    if (progress.ended && !message.starts_with("FALHA INTERNA: ")) return;
    const FailurePlace place = !in_flow                                   ? FailurePlace::kPayment
                               : progress.function == FlowFunction::kWait ? FailurePlace::kWait
                                                                          : FailurePlace::kFlow;
    auto found = FindByLogLine(place, message);
    // Where the GP could see the request, the host is not told to repeat it.
    if (call.request_written)
      std::erase_if(found, [](const Failure* one) { return one->result == kFailedBefore; });
    if (found.empty()) return;
    call.failures = std::move(found);
    call.outcome = Outcome::kLocalFailure;
    call.ends_in_log = true;
    progress.ended = !in_flow;
    if (progress.function == FlowFunction::kStart) progress.closed = true;
    call.result.clear();
    if (call.failures.size() > 1) return;
    call.result = call.failures.front()->result;
    if (call.result.ends_with('*')) call.result.replace(call.result.size() - 1, 1, "…");
  }

  void Conclude(Progress& progress) {
    Call& call = calls_[progress.call];
    if (call.kind == CallKind::kFlow) return ConcludeFlow(progress);
    if (!call.ends_in_log) ConcludeUnfinished(progress);
    const LogTime end = call.end;
    const LogTime handed_over = progress.handed_over == kNoTime ? end : progress.handed_over;
    const LogTime taken = progress.taken == kNoTime ? end : progress.taken;
    const LogTime answered = progress.answered == kNoTime ? end : progress.answered;
    const auto set = [&](CallPhase phase, std::int64_t ms) {
      call.phase_ms[static_cast<std::size_t>(phase)] += ms;
    };
    const bool cleaned = call.begins_in_log && progress.step >= kChecking;
    set(CallPhase::kPreparation,
        Estimate(call.begin, handed_over, cleaned ? 1000 : 0) + Estimate(answered, end, 0));
    if (progress.handed_over == kNoTime) return;
    if (!call.local_reply.empty()) {
      const std::int64_t reply = progress.answered == kNoTime ? 1000 : 1200;
      return set(CallPhase::kLocalReply, Estimate(handed_over, answered, reply));
    }
    const std::int64_t polls = std::max<std::int64_t>(progress.pickup_polls, 1);
    set(CallPhase::kPickup, Estimate(handed_over, taken, polls * 100));
    if (progress.taken != kNoTime)
      set(CallPhase::kGp, Estimate(taken, answered, (progress.answer_polls + 1) * 200));
  }

  void ConcludeFlow(Progress& flow) {
    Call& call = calls_[flow.call];
    const LogTime companion = flow.companion == kNoTime ? call.begin : flow.companion;
    call.phase_ms[static_cast<std::size_t>(CallPhase::kPreparation)] =
        Estimate(call.begin, companion, 0);
    call.phase_ms[static_cast<std::size_t>(CallPhase::kGp)] = Estimate(companion, call.end, 0);
    if (!call.ends_in_log) call.failures = {FindByResult(IsCutOff(call) ? "(fim do log)" : "")};
    std::erase(call.failures, nullptr);
  }

  // What a call means whose lines just stop.
  void ConcludeUnfinished(Progress& progress) {
    Call& call = calls_[progress.call];
    if (IsCutOff(call)) {
      call.failures = {FindByResult("(fim do log)")};
      return;
    }
    call.failures = FindByLogLine(FailurePlace::kPayment, progress.last_message, true);
    if (!call.failures.empty()) {
      call.outcome = Outcome::kLocalFailure;
      call.ends_in_log = true;
      return;
    }
    call.failures = {FindByResult(call.request_written ? "(sem retorno, depois do pedido)"
                                                       : "(sem retorno, antes do pedido)")};
  }

  // Its lines stop where those of its version or file do, or before a call without its beginning:
  // the log was cut there, and nothing is known of what followed.
  bool IsCutOff(const Call& call) const {
    const auto index = static_cast<Index>(&call - calls_.data());
    if (last_of_version_.at(call.version) == index) return true;
    if (last_of_file_.at(lines_[call.lines.back()].file) == index) return true;
    const Index next = index + 1;
    return next < calls_.size() && calls_[next].version == call.version &&
           calls_[next].kind != CallKind::kFlow && !calls_[next].begins_in_log;
  }

  static constexpr Index kNone = LogLine::kNoCall;
  std::vector<LogLine>& lines_;
  std::vector<Call>& calls_;
  std::vector<Progress> progress_;  // one for each call
  // The call of the last line.
  std::unordered_map<std::string_view, Index> last_of_version_;
  std::unordered_map<std::uint16_t, Index> last_of_file_;
  std::uint64_t order_ = 0;
};

}  // namespace

void FollowCalls(std::vector<LogLine>& lines, std::vector<Call>& calls) {
  Follower(lines, calls).FollowAll();
}

}  // namespace caixora
