// Caixora.log as calls: what support staff would piece together line by line.
//
//    Log log;
//    log.Add("Caixora_20240307091505.log", bytes);  // any number of files, in any order
//    log.Add("Caixora.log", bytes);
//    log.Read();
//
// Lines of several files are put in the order of their times. Lines of several programs in one file
// are told apart by version and by what each call can say next; where both could have said a line,
// it goes to the likelier. Nothing is thrown away: every line of the input is in `lines()`, in a
// call or in none. Texts are UTF-8, as views of what `Add` has kept.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/failures.h"
#include "tools/log_time.h"

namespace caixora {

struct LogLine {
  static constexpr std::uint32_t kNoCall = std::numeric_limits<std::uint32_t>::max();

  std::string_view text;      // as it stands; the further lines of its message behind line feeds
  LogTime time = kNoTime;     // none: not a line of the library
  std::uint32_t message = 0;  // where in the text the message begins
  std::uint32_t call = kNoCall;
  std::uint16_t file = 0;
  bool waits = false;  // one of the many of a wait

  std::string_view Message() const { return text.substr(message); }  // "(f)" included
  std::string_view BareMessage() const;                              // without it
  std::string_view Version() const;
};

enum class Outcome : std::uint8_t {
  kApproved,      // by the GP
  kRefused,       // by the GP
  kLocalFailure,  // the library ended the call
  kLocalReply,    // the library answered in the GP's place
  kUnfinished,    // the log does not say how it ended
  kOther,         // a flow that ran to its end, or was cancelled
};
inline constexpr std::size_t kOutcomes = 6;
std::string_view OutcomeName(Outcome outcome);  // "aprovada"

// What the time of a call went into. A flow has a preparation (its start) and the companion's time.
enum class CallPhase : std::uint8_t { kPreparation, kPickup, kGp, kLocalReply };
inline constexpr std::size_t kCallPhases = 4;
std::string_view PhaseName(CallPhase phase);

enum class CallKind : std::uint8_t {
  kPayment,  // any payment function that is none of the next three, or one that the log has no name
             // of
  kSale,
  kConfirmation,
  kUndo,
  kFlow,  // from IniciaFuncaoQJInterativo to its finish or cancel
};

struct Call {
  CallKind kind = CallKind::kPayment;
  std::string_view operation;  // by its name in the log; empty when it ended before its name
  std::optional<std::int32_t> coupon;
  std::string_view amount;                       // as the log shows it: "12.500000"
  std::optional<std::int64_t> cents;             // the same, to the nearest cent
  std::optional<std::int64_t> answered_cents;    // what the GP's answer says
  std::string_view nsu, authorisation, network;  // of the answer

  Outcome outcome = Outcome::kUnfinished;
  // What the host got: "S;1;APROVADA", or an interactive code ("33"), a text of the companion. For
  // a call that the library ended it is concluded from the lines, "…" for what they leave open.
  // Empty: unknown.
  std::string result;
  std::vector<const Failure*> failures;  // what did not go well; several: one of them

  bool begins_in_log = true;     // its first lines are there
  bool ends_in_log = false;      // as far as the log tells
  bool request_written = false;  // the GP could see it
  // Answered as the confirmation ("CONFIRMAR") or undo ("CANCELAR") that was pending; empty: not
  std::string_view local_reply;

  LogTime begin = kNoTime, end = kNoTime;
  std::array<std::int64_t, kCallPhases> phase_ms{};  // to a second, better where waits were counted
  std::string_view version;
  std::vector<std::uint32_t> lines;  // indices

  std::int64_t TotalMs() const;
  // A reply of the library to anything but a confirmation or undo: neither approved nor refused.
  bool IsMistakenReply() const {
    return !local_reply.empty() && !operation.empty() && kind != CallKind::kConfirmation &&
           kind != CallKind::kUndo;
  }
};

// A sale without a confirmation or undo of its coupon behind it in the log; each of those closes
// one.
struct OpenSale {
  enum class Why : std::uint8_t {
    kApproved,       // by the GP
    kUncertain,      // the GP could see the request; what became of it is not known
    kMistakenReply,  // a local reply came in the place of the GP's
  };
  std::uint32_t call = 0;
  Why why = Why::kApproved;
};

struct LogFile {
  std::string name;
  std::size_t bytes = 0;
  std::size_t lines = 0;  // of the library
};

class Log {
 public:
  // False when none of it is a line of the library; its lines are kept all the same.
  bool Add(std::string name, std::string_view bytes);
  // Once, behind the last Add.
  void Read();

  const std::vector<LogFile>& files() const { return files_; }
  const std::vector<LogLine>& lines() const { return lines_; }
  const std::vector<Call>& calls() const { return calls_; }  // by their beginning

  std::vector<OpenSale> OpenSales() const;

 private:
  void SortLines();

  std::deque<std::string> texts_;
  std::vector<LogFile> files_;
  std::vector<LogLine> lines_;
  std::vector<Call> calls_;
};

}  // namespace caixora
