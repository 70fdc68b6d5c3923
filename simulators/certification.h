// A certification: leads through the steps of a script and judges what a point-of-sale program
// does in each of them.
//
// All texts are UTF-8, those of requests included. What the program does beside the expected, and
// harms no money, is let be: questions whether the GP lives, reports, documents, an undo of a sale
// that was refused.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulators/certification_script.h"
#include "simulators/gp_director.h"
#include "simulators/gp_request.h"

namespace caixora::certification {

using gp::Moment;
using gp::Request;

enum class Verdict { kNotRun, kPassed, kFailed, kSkipped };

// A request or another event, documents shortened.
struct Seen {
  std::string time;
  std::string text;
  std::vector<std::pair<std::string, std::string>> fields;
  std::string answer;
};

struct StepResult {
  Verdict verdict = Verdict::kNotRun;
  std::vector<std::string> reasons;  // of a failure or a skip
  std::vector<std::string> remarks;
  std::vector<Seen> seen;
};

// The surroundings of a certification.
class Stage {
 public:
  virtual ~Stage() = default;
  virtual void OpenGp() = 0;  // without effect while it is open
  virtual void CloseGp() = 0;
  virtual void DropRequest() = 0;  // the one that was left lying
  virtual bool AnswerWasTaken() = 0;
  virtual void SetScenario(const std::string& name) = 0;  // of the next interactive flow
  virtual std::string TimeOfDay() = 0;
  virtual void Say(std::string_view line) = 0;
};

struct Mode {
  bool automatic = false;  // nobody is asked
  bool has_companion = true;
  std::optional<Span> limit;  // instead of the script's
};

class Certification {
 public:
  Certification(Script script, const Mode& mode, Stage& stage);

  void Start(Moment now);
  // What the GP does with a request that it found.
  const Part& OnRequest(const Request& request, Moment now);
  void OnAnswered(const Request& request, const Request& answer, Moment now);
  void OnGpStarted();
  // A flow's event as a record: "000-000 = FLUXO", its kind under "fluxo_evento".
  void OnFlow(const Request& event, Moment now);
  void OnKey(char key, Moment now);
  void OnTick(Moment now);

  bool done() const { return done_; }
  const Script& script() const { return script_; }
  const std::vector<StepResult>& results() const { return results_; }
  // kPassed when every step did; kNotRun when none failed and some were skipped or not reached.
  Verdict Overall() const;

 private:
  enum class State { kAwaiting, kApproved, kRefused, kUncertain, kConfirmed, kUndone };

  // An operation of a coupon that may have an outcome.
  struct Operation {
    std::string coupon;
    std::size_t step = 0;
    bool is_sale = false;
    bool expected = false;  // else an outcome is wanted, whichever
    bool confirmation_refused = false;
    bool never_taken = false;  // its coupon is as good as unused
    std::string amount;
    State state = State::kAwaiting;
    bool blamed = false;  // for its missing outcome
  };

  struct Event {
    Request request;
    Request answer;
  };

  // With the step's first event there already, the GP stays as it is.
  void Begin(std::size_t step, Moment now, bool arrived = false);
  std::string WhyNotApplicable(const Step& step) const;
  void Announce(const Step& step);
  void Finish();
  void MeetLast(Moment now);
  void Drop(Moment now);
  void Touch(Moment now);
  void AskOrGoOn(Moment now);

  std::size_t Current() const;  // the last step while what comes late is awaited
  const Expectation* Awaited() const;
  bool Matches(const Expectation& expectation, const Request& request) const;
  std::string Mismatch(const Expectation& expectation, const Request& request) const;
  std::optional<std::string> Wanted(const Condition& condition) const;
  bool MoveTo(const Request& request, Moment now);
  const Part& Accept(const Request& request, Moment now);
  const Part& Reject(const Request& request, Moment now);
  const Part& Repel(const Request& request, std::size_t step);
  const Part& OnOutcome(const Request& request, Moment now);
  bool IsSecondTry(const Request& request, std::size_t step) const;
  bool IsAlteredSecondTry(const Request& request) const;
  bool MaySellAgain(std::size_t step) const;
  std::optional<std::size_t> StepBehind(const Request& request) const;
  void CheckCoupon(const Request& request, std::size_t step);
  void Blame(Operation& operation, const Request* next);
  void Record(std::size_t step, const Request& request);
  void Add(const Request& request, std::size_t step, bool expected, const Part& part);

  Operation* Find(std::string_view coupon);
  Operation* OperationOf(const Expectation& expectation);
  std::string Unmet(const Expectation& expectation);
  void Fail(std::size_t step, const std::string& reason);
  void Remark(std::size_t step, const std::string& remark);

  Script script_;
  Mode mode_;
  Stage& stage_;
  std::vector<StepResult> results_;
  std::size_t step_ = 0;
  std::size_t awaited_ = 0;
  Moment deadline_{};
  std::optional<Moment> gp_dies_;
  bool request_lies_ = false;
  bool closes_when_taken_ = false;
  bool ending_ = false;
  bool done_ = false;
  std::vector<Operation> operations_;
  std::optional<std::size_t> unanswered_;
  std::optional<std::pair<std::size_t, std::size_t>> last_seen_;  // step and place in it
  std::map<std::string, Event, std::less<>> named_;
  std::map<std::string, std::size_t, std::less<>> named_operations_;
};

}  // namespace caixora::certification
