#include "simulators/certification.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "simulators/certification_event.h"

namespace caixora::certification {
namespace {

using Test = Condition::Test;

const Part kUsual;  // approved, or for an outcome nothing at all

const Part& Refusal() {
  static const Part part = [] {
    Part refusal;
    refusal.approved = false;
    refusal.message = "FORA DO ROTEIRO";
    return refusal;
  }();
  return part;
}

}  // namespace

Certification::Certification(Script script, const Mode& mode, Stage& stage)
    : script_(std::move(script)), mode_(mode), stage_(stage), results_(script_.steps.size()) {}

Verdict Certification::Overall() const {
  const auto all = [&](Verdict verdict) {
    return std::ranges::count(results_, verdict, &StepResult::verdict);
  };
  if (all(Verdict::kFailed) > 0) return Verdict::kFailed;
  return all(Verdict::kPassed) == std::ssize(results_) ? Verdict::kPassed : Verdict::kNotRun;
}

std::size_t Certification::Current() const { return std::min(step_, results_.size() - 1); }

// ---- The course of the steps ----

void Certification::Start(Moment now) { Begin(0, now); }

void Certification::Begin(std::size_t step, Moment now, bool arrived) {
  for (step_ = step; step_ < script_.steps.size(); ++step_) {
    const std::string obstacle = WhyNotApplicable(script_.steps[step_]);
    if (obstacle.empty()) break;
    results_[step_].verdict = Verdict::kSkipped;
    results_[step_].reasons.push_back(obstacle);
    stage_.Say("Passo " + std::to_string(step_ + 1) + " pulado: " + obstacle);
  }
  awaited_ = 0;
  if (step_ == script_.steps.size()) {
    ending_ = true;
    deadline_ = now + script_.closing;
    stage_.Say("Fim dos passos. Aguardando o que ainda chegue.");
    return;
  }
  const Step& current = script_.steps[step_];
  if (arrived && current.gp_closed) {
    Remark(step_, "o pedido chegou antes de o GP ser fechado");
  } else if (current.gp_closed) {
    stage_.CloseGp();
  } else {
    stage_.OpenGp();
  }
  if (current.HasFlow()) stage_.SetScenario(current.scenario);
  Announce(current);
  Touch(now);
  AskOrGoOn(now);
}

std::string Certification::WhyNotApplicable(const Step& step) const {
  if (step.HasFlow() && !mode_.has_companion) return "não há companheiro instalado";
  std::vector<std::string_view> own;
  const auto lacks = [&](std::string_view name) {
    return !named_.contains(name) && std::ranges::find(own, name) == own.end();
  };
  for (const Expectation& expectation : step.expectations) {
    if (!expectation.of.empty() && lacks(expectation.of))
      return "depende da venda \"" + expectation.of + "\", que não foi aprovada";
    for (const Condition& condition : expectation.conditions) {
      if (!condition.value.starts_with('$')) continue;
      const auto name = std::string_view(condition.value).substr(1, condition.value.find('.') - 1);
      if (lacks(name)) return "depende de \"" + std::string(name) + "\", que não foi aprovada";
    }
    if (!expectation.name.empty()) own.push_back(expectation.name);
  }
  return {};
}

void Certification::Announce(const Step& step) {
  stage_.Say("");
  stage_.Say("Passo " + std::to_string(step_ + 1) + " de " + std::to_string(script_.steps.size()) +
             ": " + step.title);
  for (const std::string& line : step.instructions) stage_.Say("  " + line);
}

void Certification::Touch(Moment now) {
  const Span usual = script_.steps[step_].limit.value_or(script_.limit);
  deadline_ = now + mode_.limit.value_or(usual);
}

const Expectation* Certification::Awaited() const {
  return ending_ ? nullptr : &script_.steps[step_].expectations[awaited_];
}

// The awaited event is over, well or not.
void Certification::MeetLast(Moment now) {
  ++awaited_;
  Touch(now);
  AskOrGoOn(now);
}

void Certification::AskOrGoOn(Moment now) {
  StepResult& result = results_[step_];
  const std::vector<Expectation>& expectations = script_.steps[step_].expectations;
  while (awaited_ < expectations.size() && expectations[awaited_].kind == Kind::kQuestion) {
    const std::string& question = expectations[awaited_].text;
    if (!mode_.automatic) return stage_.Say("  Pergunta: " + question + " (s/n)");
    Remark(step_, "não perguntado: " + question);
    ++awaited_;
  }
  if (awaited_ < expectations.size()) return;
  if (result.verdict == Verdict::kNotRun) {
    result.verdict = Verdict::kPassed;
    stage_.Say("  PASSOU");
  }
  Begin(step_ + 1, now);
}

// The awaited event will not come: nor what depends on it.
void Certification::Drop(Moment now) {
  const std::vector<Expectation>& expectations = script_.steps[step_].expectations;
  const Kind kind = expectations[awaited_].kind;
  const auto depends = [&](const Expectation& e) {
    if (kind == Kind::kSale) return IsOutcome(e.kind) || e.kind == Kind::kQuestion;
    return IsFlow(kind) && (IsFlow(e.kind) || e.kind == Kind::kQuestion);
  };
  while (awaited_ + 1 < expectations.size() && depends(expectations[awaited_ + 1])) ++awaited_;
  MeetLast(now);
}

void Certification::Finish() {
  for (Operation& operation : operations_)
    if (!ending_ && operation.step == step_)
      operation.blamed = true;  // an interrupted step is not judged
    else
      Blame(operation, nullptr);
  done_ = true;
  stage_.CloseGp();
}

void Certification::OnTick(Moment now) {
  if (done_) return;
  if (gp_dies_ && now >= *gp_dies_) {
    gp_dies_.reset();
    if (request_lies_) stage_.DropRequest();
    request_lies_ = false;
    stage_.CloseGp();
  }
  if (closes_when_taken_ && stage_.AnswerWasTaken()) {
    closes_when_taken_ = false;
    stage_.CloseGp();
  }
  if (now < deadline_) return;
  if (ending_) return Finish();
  if (const Expectation* awaited = Awaited()) {
    const std::string reason = Unmet(*awaited);
    if (!reason.empty()) Fail(step_, reason + " no tempo dado");
    Drop(now);
  }
}

void Certification::OnKey(char key, Moment now) {
  if (done_) return;
  const Expectation* awaited = Awaited();
  if (key == 'q') {
    stage_.Say("Roteiro interrompido.");
    return Finish();
  }
  if (awaited == nullptr) return;
  const bool asked = awaited->kind == Kind::kQuestion;
  StepResult& result = results_[step_];
  if (asked && (key == 's' || key == 'c')) {
    Remark(step_, "o operador respondeu sim: " + awaited->text);
    MeetLast(now);
  } else if (asked && key == 'n') {
    Fail(step_, "o operador respondeu não: " + awaited->text);
    MeetLast(now);
  } else if (key == 'p' || key == 'f') {
    for (Operation& operation : operations_)
      if (operation.step == step_) operation.blamed = true;
    if (key == 'f') {
      Fail(step_, "reprovado pelo operador");
    } else if (result.verdict != Verdict::kFailed) {
      result.verdict = Verdict::kSkipped;
      result.reasons.emplace_back("pulado pelo operador");
      stage_.Say("  PULADO");
    }
    Begin(step_ + 1, now);
  } else if (key == 'v') {
    const std::size_t again = awaited_ == 0 && step_ > 0 && result.seen.empty() ? step_ - 1 : step_;
    for (Operation& operation : operations_)
      if (operation.step == again) operation.blamed = true;
    results_[again] = {};
    Remark(again, "repetido a pedido do operador");
    Begin(again, now);
  }
}

// ---- What arrives ----

const Part& Certification::OnRequest(const Request& request, Moment now) {
  if (done_) return kUsual;
  if (request.IsSettlement()) return OnOutcome(request, now);
  if (IsSale(request))
    for (Operation& operation : operations_) Blame(operation, &request);
  if (MoveTo(request, now)) return Accept(request, now);
  if (IsHarmless(request)) {
    Record(Current(), request);
    return kUsual;
  }
  const std::size_t last = Current();
  for (std::size_t step : {last, last - std::min<std::size_t>(last, 1)})
    if (IsSecondTry(request, step)) {
      Record(step, request);
      CheckCoupon(request, step);
      Add(request, step, false, kUsual);
      return kUsual;
    }
  if (const std::optional<std::size_t> step = StepBehind(request)) return Repel(request, *step);
  return Reject(request, now);
}

// Brings the list to where this request is awaited: later in the step, or first in the next one, or
// first in a later one that it fits like no other. What was awaited before it did not come.
bool Certification::MoveTo(const Request& request, Moment now) {
  if (ending_) return false;
  const std::vector<Expectation>& expectations = script_.steps[step_].expectations;
  // Of a flow nothing can be left out.
  const std::size_t end = request.Header() == "FLUXO" ? awaited_ + 1 : expectations.size();
  for (std::size_t i = awaited_; i < end; ++i) {
    if (!Matches(expectations[i], request)) continue;
    for (; awaited_ < i; ++awaited_)
      if (const std::string reason = Unmet(expectations[awaited_]); !reason.empty())
        Fail(step_, reason);
    return true;
  }
  const auto applies = [&](const Step& step) { return WhyNotApplicable(step).empty(); };
  std::size_t next = step_ + 1;
  while (next < script_.steps.size() && !applies(script_.steps[next])) ++next;
  const std::size_t nearest = next;
  const auto begins = [&](const Step& step) {
    const Expectation& first = step.expectations.front();
    const bool distinct = !IsHarmless(request) &&
                          std::ranges::find(first.conditions, Test::kEqual, &Condition::test) !=
                              first.conditions.end();
    return applies(step) && (next == nearest || distinct) && Matches(first, request);
  };
  while (next < script_.steps.size() && !begins(script_.steps[next])) ++next;
  if (next == script_.steps.size()) return false;
  while (step_ < next) {
    for (; awaited_ < script_.steps[step_].expectations.size(); ++awaited_)
      if (const std::string reason = Unmet(script_.steps[step_].expectations[awaited_]);
          !reason.empty())
        Fail(step_, reason);
    Begin(step_ + 1, now, true);
  }
  return true;
}

const Part& Certification::Accept(const Request& request, Moment now) {
  const Expectation& expectation = *Awaited();
  const Part& part = expectation.part;
  Record(step_, request);
  CheckCoupon(request, step_);
  if (request.Has("001-000") && !IsHarmless(request)) {
    Add(request, step_, true, part);
    if (!expectation.name.empty()) named_operations_[expectation.name] = operations_.size() - 1;
  }
  if (part.action != gp::Action::kAnswer) gp_dies_ = now + part.delay;
  request_lies_ = part.action == gp::Action::kNeverTake;
  MeetLast(now);
  deadline_ += part.delay;
  return part;
}

const Part& Certification::Reject(const Request& request, Moment now) {
  const std::size_t step = Current();
  if (IsAlteredSecondTry(request)) {
    const Expectation& first = script_.steps[step - 1].expectations.front();
    Fail(step - 1, "repetiu a venda desfeita: " + Mismatch(first, request));
    return Repel(request, step - 1);
  }
  Record(step, request);
  CheckCoupon(request, step);
  if (request.Has("001-000")) Add(request, step, false, Refusal());
  const Expectation* awaited = Awaited();
  if (awaited != nullptr && IsOf(awaited->kind, request)) {
    Fail(step, Mismatch(*awaited, request));
    Drop(now);
  } else if (!IsSale(request) || awaited == nullptr || !IsOutcome(awaited->kind)) {
    Fail(step, "chegou " + Describe(request) + ", que o passo não pede");
  }
  return Refusal();
}

// What a step behind asked for, once more or too late. The list stays where it is.
const Part& Certification::Repel(const Request& request, std::size_t step) {
  Record(step, request);
  CheckCoupon(request, step);
  const bool is_sale = IsSale(request);
  for (const Operation& operation : operations_) {
    if (operation.step != step || operation.is_sale != is_sale) continue;
    if (is_sale && operation.amount != request.Value("003-000")) continue;
    if (operation.state == State::kConfirmed || (!is_sale && operation.state == State::kApproved)) {
      Fail(step,
           "chegou outra vez " + Describe(request) + ": o cupom " + operation.coupon + " já valia");
      break;
    }
  }
  stage_.Say("  Recusado, porque é do passo " + std::to_string(step + 1) + ": " +
             Describe(request));
  Add(request, step, false, Refusal());
  return Refusal();
}

const Part& Certification::OnOutcome(const Request& request, Moment now) {
  const bool confirms = request.Header() == "CNF";
  const std::string coupon(request.Value("001-000"));
  const std::string verb = confirms ? "confirmou" : "desfez";
  Operation* operation = Find(coupon);
  const std::size_t current = Current();
  Record(operation != nullptr ? operation->step : current, request);
  if (operation == nullptr) {
    Fail(current, verb + " o cupom " + coupon + ", que não é de nenhuma venda do roteiro");
    return kUsual;
  }
  const std::size_t step = operation->step;
  const Expectation* awaited = Awaited();
  if (awaited != nullptr && (!IsOutcome(awaited->kind) || OperationOf(*awaited) != operation))
    awaited = nullptr;
  const bool other = awaited != nullptr && !IsOf(awaited->kind, request);
  const std::string what = operation->is_sale ? "uma venda recusada" : "uma operação recusada";
  const bool may_repeat = script_.steps[step].may_repeat_outcome;
  switch (operation->state) {
    case State::kRefused:
      if (confirms)
        Fail(step, "confirmou " + what + " (cupom " + coupon + ')');
      else
        Remark(step, "desfez " + what + " (cupom " + coupon + "), o que não é preciso");
      return kUsual;
    case State::kConfirmed:
      if (!confirms)
        Fail(step, "desfez o cupom " + coupon + " depois de o confirmar");
      else if (!may_repeat)
        Fail(step, "confirmou duas vezes o cupom " + coupon);
      return kUsual;
    case State::kUndone:
      if (confirms)
        Fail(step, "confirmou o cupom " + coupon + " depois de o desfazer");
      else if (!may_repeat)
        Fail(step, "desfez duas vezes o cupom " + coupon);
      return kUsual;
    case State::kAwaiting:
    case State::kUncertain:
      if (confirms) Fail(step, "confirmou o cupom " + coupon + ", que ficou sem resposta do GP");
      break;
    case State::kApproved:
      if (other) {
        std::string reason =
            verb + " o cupom " + coupon + " em vez de o " + (confirms ? "desfazer" : "confirmar");
        if (!awaited->reason.empty()) reason += ": " + awaited->reason;
        Fail(step, reason);
      }
      break;
  }
  operation->state = confirms ? State::kConfirmed : State::kUndone;
  if (awaited != nullptr) MeetLast(now);
  return kUsual;
}

void Certification::OnAnswered(const Request& request, const Request& answer, Moment) {
  if (last_seen_)
    results_[last_seen_->first].seen[last_seen_->second].answer = answer.Value("030-000");
  if (!unanswered_ || operations_[*unanswered_].coupon != request.Value("001-000")) return;
  Operation& operation = operations_[*unanswered_];
  const bool approved = answer.Value("009-000") == "0";
  if (operation.state == State::kAwaiting)
    operation.state = approved ? State::kApproved : State::kRefused;
  if (approved)
    for (const auto& [name, index] : named_operations_)
      if (index == *unanswered_) named_.insert_or_assign(name, Event{request, answer});
  closes_when_taken_ = operation.confirmation_refused;
  unanswered_.reset();
}

void Certification::OnGpStarted() {
  if (done_) return;
  const std::size_t step = Current();
  results_[step].seen.push_back({stage_.TimeOfDay(), "a biblioteca iniciou o GP", {}, {}});
}

void Certification::OnFlow(const Request& event, Moment now) {
  if (done_) return;
  if (MoveTo(event, now)) {
    Record(step_, event);
    return MeetLast(now);
  }
  const std::size_t step = Current();
  Record(step, event);
  if (IsHarmless(event) || ending_) return;
  const std::vector<Expectation>& expectations = script_.steps[step_].expectations;
  const Expectation& awaited = expectations[awaited_];
  // A start is tried again when the companion did not come up, a cancel also without a flow.
  const bool started = awaited_ > 0 && expectations[awaited_ - 1].kind == Kind::kFlowStart;
  if (started && IsOf(Kind::kFlowStart, event)) return;
  if (awaited.kind == Kind::kFlowStart && IsOf(Kind::kFlowEnd, event)) return;
  if (IsOf(awaited.kind, event)) {
    Fail(step, Mismatch(awaited, event));
  } else if (IsFlow(awaited.kind)) {
    Fail(step, "esperava-se " + Describe(awaited) + ", e chegou " + Describe(event));
  } else {
    return Fail(step, "chegou " + Describe(event) + ", que o passo não pede");
  }
  Drop(now);
}

void Certification::Record(std::size_t step, const Request& request) {
  Seen seen{stage_.TimeOfDay(), Describe(request), {}, {}};
  for (const auto& [key, value] : request.fields())
    if (key != "999-999") seen.fields.emplace_back(key, Shortened(value));
  if (request.Header() == "FLUXO") stage_.Say(seen.time + ' ' + seen.text);
  results_[step].seen.push_back(std::move(seen));
  last_seen_ = {step, results_[step].seen.size() - 1};
}

// ---- What was awaited ----

std::optional<std::string> Certification::Wanted(const Condition& condition) const {
  if (!condition.value.starts_with('$')) return condition.value;
  const std::size_t point = condition.value.find('.');
  const auto event = named_.find(std::string_view(condition.value).substr(1, point - 1));
  if (event == named_.end()) return std::nullopt;
  const std::string_view key = std::string_view(condition.value).substr(point + 1);
  return std::string(event->second.answer.Value(key, event->second.request.Value(key)));
}

std::string Certification::Mismatch(const Expectation& expectation, const Request& request) const {
  for (const Condition& condition : expectation.conditions) {
    const std::string& key = condition.key;
    const std::string_view value = request.Value(key);
    const std::string wanted = Wanted(condition).value_or("");
    const std::string name = Named(key);
    if (!request.Has(key)) {
      if (condition.test == Test::kEqualIfPresent || condition.test == Test::kDifferent) continue;
      return "sem o campo " + key + (NameOf(key).empty() ? "" : " (" + name + ')');
    }
    if (condition.test == Test::kPresent) {
      if (value.empty()) return name + " vazio";
      continue;
    }
    if (condition.test == Test::kDifferent) {
      if (value == wanted) return name + " igual a " + Readable(key, wanted);
      continue;
    }
    if (value == wanted) continue;
    std::string reason = name + ' ' + Readable(key, value) + " em vez de " + Readable(key, wanted);
    if (key != "003-000") return reason;
    const std::optional<long long> came = Cents(value);
    if (came && *came < INT64_MAX && Cents(wanted) == *came + 1)
      reason += ": truncou em vez de arredondar";
    return reason;
  }
  return {};
}

bool Certification::Matches(const Expectation& expectation, const Request& request) const {
  return IsOf(expectation.kind, request) && Mismatch(expectation, request).empty();
}

Certification::Operation* Certification::Find(std::string_view coupon) {
  Operation* last = nullptr;
  for (auto operation = operations_.rbegin(); operation != operations_.rend(); ++operation) {
    if (operation->coupon != coupon) continue;
    if (operation->is_sale && operation->state == State::kApproved) return &*operation;
    if (last == nullptr) last = &*operation;
  }
  return last;
}

Certification::Operation* Certification::OperationOf(const Expectation& expectation) {
  if (!expectation.of.empty()) {
    const auto found = named_operations_.find(expectation.of);
    return found == named_operations_.end() ? nullptr : &operations_[found->second];
  }
  for (auto operation = operations_.rbegin(); operation != operations_.rend(); ++operation)
    if (operation->step == step_ && operation->is_sale && operation->expected) return &*operation;
  return nullptr;
}

// Why the step fails that did not see it; empty when that was said.
std::string Certification::Unmet(const Expectation& expectation) {
  if (expectation.kind == Kind::kQuestion) {
    const bool counts = !mode_.automatic && results_[step_].verdict != Verdict::kFailed;
    return counts ? "o operador não respondeu: " + expectation.text : "";
  }
  if (!IsOutcome(expectation.kind)) return "não chegou " + Describe(expectation);
  Operation* operation = OperationOf(expectation);
  if (operation == nullptr || operation->blamed) return {};
  operation->blamed = true;
  if (operation->state == State::kUncertain || operation->state == State::kAwaiting)
    return "não desfez o cupom " + operation->coupon + ", que ficou sem resposta do GP";
  if (expectation.kind == Kind::kUndo) {
    const std::string why = expectation.reason.empty() ? "" : ": " + expectation.reason;
    return "não desfez o cupom " + operation->coupon + why;
  }
  if (operation->confirmation_refused)
    return "não repetiu a confirmação recusada do cupom " + operation->coupon;
  return "não confirmou nem desfez o cupom " + operation->coupon;
}

void Certification::CheckCoupon(const Request& request, std::size_t step) {
  if (!IsSale(request)) return;
  const std::string_view coupon = request.Value("001-000");
  for (const Operation& operation : operations_)
    if (operation.is_sale && operation.coupon == coupon && !operation.never_taken) {
      Fail(step, "reutilizou o cupom " + std::string(coupon) + ", do passo \"" +
                     script_.steps[operation.step].title + '"');
      break;
    }
}

void Certification::Blame(Operation& operation, const Request* next) {
  const bool open = operation.state == State::kApproved || operation.state == State::kUncertain ||
                    (operation.state == State::kAwaiting && next != nullptr);
  if (!operation.is_sale || !open || operation.blamed) return;
  operation.blamed = true;
  const std::string coupon = "cupom " + operation.coupon;
  const bool uncertain = operation.state != State::kApproved;
  std::string reason;
  if (next != nullptr && next->Value("003-000") == operation.amount) {
    reason = "repetiu a venda sem desfazer o " + coupon;
  } else if (next != nullptr && operation.confirmation_refused) {
    reason = "fez outra venda sem repetir a confirmação recusada do " + coupon +
             ": a resposta que recebeu é local, e não uma aprovação";
  } else if (uncertain) {
    reason = "não desfez o " + coupon;
  } else {
    reason = "não confirmou nem desfez o " + coupon;
  }
  if (uncertain) reason += ", que ficou sem resposta do GP";
  Fail(operation.step, reason);
}

// After the undo of a sale whose outcome was uncertain, it may be made again under a new coupon,
// until it is through.
bool Certification::MaySellAgain(std::size_t step) const {
  bool undone = false;
  for (const Operation& operation : operations_) {
    if (operation.step != step) continue;
    if (operation.state == State::kApproved || operation.state == State::kConfirmed) return false;
    undone = undone || (operation.expected && operation.state == State::kUndone);
  }
  return undone && script_.steps[step].may_sell_again;
}

bool Certification::IsSecondTry(const Request& request, std::size_t step) const {
  return MaySellAgain(step) && Matches(script_.steps[step].expectations.front(), request);
}

// A sale that no step asks for is a second try when its amount is nearer to that one.
bool Certification::IsAlteredSecondTry(const Request& request) const {
  if (!IsSale(request) || ending_ || step_ == 0 || !MaySellAgain(step_ - 1)) return false;
  const auto distance = [&](const Expectation& expectation) {
    const Condition* wanted = AmountOf(expectation);
    const std::optional<long long> cents = wanted ? Cents(wanted->value) : std::nullopt;
    const std::optional<long long> came = Cents(request.Value("003-000"));
    return cents && came ? std::abs(static_cast<double>(*cents) - static_cast<double>(*came))
                         : HUGE_VAL;
  };
  return distance(script_.steps[step_ - 1].expectations.front()) <
         distance(script_.steps[step_].expectations[awaited_]);
}

// The last step so far that asked for this, be it done or not.
std::optional<std::size_t> Certification::StepBehind(const Request& request) const {
  for (std::size_t step = Current() + 1; step-- > 0;) {
    const std::vector<Expectation>& all = script_.steps[step].expectations;
    const std::size_t end = step < step_ ? all.size() : awaited_;
    for (std::size_t i = 0; i < end; ++i)
      if (IsMeantFor(all[i], request)) return step;
  }
  return std::nullopt;
}

void Certification::Add(const Request& request, std::size_t step, bool expected, const Part& part) {
  const bool answers = part.action == gp::Action::kAnswer;
  unanswered_.reset();
  if (answers) unanswered_ = operations_.size();
  Operation& operation = operations_.emplace_back();
  operation.coupon = request.Value("001-000");
  operation.step = step;
  operation.is_sale = IsSale(request);
  operation.expected = expected;
  operation.confirmation_refused = part.closes;
  operation.amount = request.Value("003-000");
  operation.never_taken = part.action == gp::Action::kNeverTake;
  operation.state = answers ? State::kAwaiting : State::kUncertain;
}

void Certification::Fail(std::size_t step, const std::string& reason) {
  StepResult& result = results_[step];
  const std::string late = result.verdict == Verdict::kPassed ? " depois de ter passado" : "";
  result.verdict = Verdict::kFailed;
  if (std::ranges::find(result.reasons, reason) != result.reasons.end()) return;
  result.reasons.push_back(reason);
  stage_.Say("  FALHOU" + late + " (passo " + std::to_string(step + 1) + "): " + reason);
}

void Certification::Remark(std::size_t step, const std::string& remark) {
  std::vector<std::string>& remarks = results_[step].remarks;
  if (std::ranges::find(remarks, remark) == remarks.end()) remarks.push_back(remark);
}

}  // namespace caixora::certification
