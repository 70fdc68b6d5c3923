// What watches the simulated GP, and may steer it, beside the cents of the amount: its keys, its
// books, a certification. All calls come from one thread.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "simulators/gp_outcomes.h"
#include "simulators/gp_request.h"

namespace caixora::gp {

using Moment = std::chrono::steady_clock::time_point;

class Director {
 public:
  virtual ~Director() = default;

  // False: the GP counts as closed, and requests stay where they are.
  virtual bool TakesRequests() { return true; }

  // The outcome of this request, which must live until it was answered. Null leaves the choice to
  // the next director, in the end to the cents. Asked again for a request that could not be taken
  // yet.
  virtual const Outcome* Decide(const Request&) { return nullptr; }

  // The request was taken; with Action::kNeverTake it was seen, and stays where it is.
  virtual void Received(const Request&, const Outcome&, Moment) {}

  // The answer about to be written: a director may change it.
  virtual void Revise(const Request&, std::string& /*answer*/) {}

  // The answer was written. Not called for requests that get none.
  virtual void Answered(const Request&, const Request& /*answer*/, Moment) {}

  // A key in lower case. True: it was meant for this director, the next ones do not see it.
  virtual bool Key(char) { return false; }

  // Every 20 ms, also while an answer waits for its time. A value ends the GP, as its exit code.
  virtual std::optional<int> Tick(Moment) { return std::nullopt; }
};

}  // namespace caixora::gp
