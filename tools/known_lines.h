// What the library says in its log, in its order.
#pragma once

#include <cstdint>
#include <string_view>

namespace caixora {

enum Traits : std::uint8_t {
  kOnce = 0,
  kRepeats = 1,  // may come again at its step
  kWaits = 2,    // one of the lines of a wait
  kBursts = 4,   // the first line behind a pause: lines of another call may stand before it
};

// Steps of a payment; only a line that is always written has one of its own.
enum Step : std::int8_t {
  kNoStep = -1,
  kEntered = 0,
  kLocating,
  kLocated,
  kFolders,
  kVersions,
  kLogPath,
  kValidating,
  kValidated,
  kCleaning,
  kChecking,
  kSending,
  kNamed,
  kWriting,
  kWritten,
  kHandedOver,
  kAwaiting,
  kFound,
  kReading,
  kProcessed,
  kRemoving,
  kReturned,
};

struct KnownLine {
  std::string_view pattern;
  Step step = kNoStep;  // none: said at several
  int traits = kOnce;
};

// The functions of the flow, by their first lines.
enum class FlowFunction : std::uint8_t { kNone, kStart, kWait, kContinue, kFinish, kCancel };
struct FlowEntry {
  std::string_view line;
  FlowFunction function;
  std::string_view name;
};

// Null when the message, without the mark of detailed lines, is none of theirs.
const KnownLine* FindPaymentLine(std::string_view message);
const FlowEntry* FindFlowEntry(std::string_view message);

// Of the lines of waits that are said at several steps.
bool IsOtherWait(std::string_view message);

}  // namespace caixora
