// What can come of a request.
#pragma once

#include <chrono>
#include <span>
#include <string_view>

#include "simulators/gp_request.h"

namespace caixora::gp {

enum class Action { kAnswer, kStaySilent, kExit, kNeverTake };

struct Outcome {
  std::string_view cents;  // the amounts that choose it; empty: any
  Action action;
  bool approved;
  bool receipt;
  bool every_field;
  std::chrono::milliseconds delay;
  std::string_view refusal;
  std::string_view description;
};

// The last row stands for all amounts that no other row names.
std::span<const Outcome> Outcomes();

const Outcome& OutcomeOfCents(std::string_view cents);

// The outcome that the cents of its amount choose.
const Outcome& FindOutcome(const Request& request);

}  // namespace caixora::gp
