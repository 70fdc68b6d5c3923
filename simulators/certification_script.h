// The list of steps of a certification, as its file tells it.
#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "simulators/gp_outcomes.h"

namespace caixora::certification {

using Span = std::chrono::milliseconds;

// What a field must be like. A value "$name.key" stands for that field of the named event.
struct Condition {
  enum class Test { kPresent, kEqual, kEqualIfPresent, kDifferent };
  std::string key;
  Test test = Test::kPresent;
  std::string value;
};

enum class Kind {
  kSale,
  kConfirmation,
  kUndo,
  kOutcome,  // either of the two
  kCancellation,
  kReprint,
  kRequest,  // any; its conditions tell
  kFlowStart,
  kFlowAnswer,
  kFlowReturn,
  kFlowFinish,
  kFlowCancel,
  kFlowEnd,  // finish or cancel
  kQuestion,
};

// What the GP does with an awaited request.
struct Part {
  gp::Action action = gp::Action::kAnswer;
  bool approved = true;
  bool receipt = true;
  bool long_receipt = false;
  bool closes = false;  // once its answer was read
  Span delay{};         // before it answers or dies
  std::string message;  // in the bytes of an answer; empty: the usual one
};

struct Expectation {
  Kind kind = Kind::kSale;
  std::vector<Condition> conditions;
  std::string name;    // for later references to this event and its answer
  std::string of;      // the sale that an outcome belongs to; empty: the step's last one
  std::string reason;  // why the other outcome would be wrong
  std::string text;    // of a question
  Part part;
};

struct Step {
  std::string id;
  std::string title;
  std::vector<std::string> instructions;
  std::optional<Span> limit;
  bool gp_closed = false;
  bool may_repeat_outcome = false;  // a restarted program may not know that it was through
  bool may_sell_again = false;      // under a new coupon, after the undo
  std::string scenario;             // of the interactive flow
  std::vector<Expectation> expectations;

  bool HasFlow() const;
};

struct Script {
  std::string title;
  Span limit = std::chrono::minutes(5);    // between two events of a step that names no other
  Span closing = std::chrono::seconds(5);  // what comes late, after the last step
  std::vector<Step> steps;
};

// what() is Portuguese and begins with the line's number, where one is to blame.
struct ScriptError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

Script ReadScript(std::string_view utf8);

// "90s", "500ms", "2min"; nothing for any other text.
std::optional<Span> ReadSpan(std::string_view text);

bool IsFlow(Kind kind);
bool IsOutcome(Kind kind);

// The key of a field's name ("valor": "003-000"); other texts stand for themselves.
std::string KeyOf(std::string_view name);
// The name of a key; empty without one.
std::string_view NameOf(std::string_view key);

}  // namespace caixora::certification
