#include "tools/log_reader.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <iterator>
#include <span>
#include <tuple>
#include <unordered_map>

#include "exchange/operations.h"
#include "exchange/tef_call.h"
#include "support/text.h"
#include "tools/log_text.h"

namespace caixora {
namespace {

using Index = std::uint32_t;

// ---- One line ----

struct Stamp {
  LogTime time = kNoTime;
  std::uint32_t message = 0;
};

constexpr std::string_view kShape = "00/00/0000 00:00:00 ::";

// What is left of a stamp where the log was cut.
bool BeginsAsStamp(std::string_view text) {
  const auto fits = [](char c, char shape) {
    return shape == '0' ? c >= '0' && c <= '9' : c == shape;
  };
  const std::size_t size = std::min(text.size(), kShape.size());
  return std::ranges::equal(text.substr(0, size), kShape.substr(0, size), fits);
}

// "07/03/2024 09:15:05 ::1.0.0.0:: " at the start of the text; no time when there is none.
Stamp ReadStamp(std::string_view text) {
  if (text.size() < kShape.size()) return {};
  std::array<int, 6> numbers{};
  std::size_t number = 0;
  for (std::size_t i = 0; i < kShape.size(); ++i) {
    if (kShape[i] == '0') {
      if (text[i] < '0' || text[i] > '9') return {};
      numbers[number] = numbers[number] * 10 + (text[i] - '0');
    } else {
      if (text[i] != kShape[i]) return {};
      if (number + 1 < numbers.size()) ++number;
    }
  }
  const auto [day, month, year, hour, minute, second] = numbers;
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok() || hour > 23 || minute > 59 || second > 60) return {};
  const std::string_view rest = text.substr(kShape.size(), 64);
  const std::size_t end = rest.find(":: ");
  if (end == rest.npos || rest.find('\n') < end) return {};
  const LogTime days = std::chrono::sys_days(date).time_since_epoch().count();
  return {.time = days * 86400 + hour * 3600 + minute * 60 + second,
          .message = static_cast<std::uint32_t>(kShape.size() + end + 3)};
}

std::string_view VersionOf(const LogLine& line) {
  constexpr std::size_t kBegin = 22;
  return line.text.substr(kBegin, line.message - 3 - kBegin);
}

// The message without the mark of detailed lines.
std::string_view MessageOf(const LogLine& line) {
  constexpr std::string_view kDetailed = " (f)";
  std::string_view message = line.Message();
  if (message.ends_with(kDetailed)) message.remove_suffix(kDetailed.size());
  return message;
}

// ---- What the library says, in its order ----

enum class Family : std::uint8_t { kPayment, kFlow };

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

constexpr KnownLine kPaymentLines[] = {
    {"Sleep 200", kAwaiting, kRepeats | kWaits | kBursts},
    {"Abrindo Intpos.001*", kHandedOver, kRepeats | kWaits},
    {"Abrindo *", kAwaiting, kRepeats | kWaits},
    {"Arquivo NULL", kAwaiting, kRepeats | kWaits | kBursts},
    {"Sleep 100", kHandedOver, kRepeats | kWaits | kBursts},
    {"Verificando GP", kHandedOver, kRepeats | kWaits},
    {"ENTROU - ChamaTef", kEntered},
    {"ENTROU - Verificação do caminho do EXE", kLocating},
    {"SAIU - Verificação do caminho do EXE", kLocated},
    {"Validar Pasta TEF_DIAL", kFolders, kRepeats},
    {"Validando a Pasta TEF_DIAL", kFolders, kRepeats},
    {"Caminho da Pasta Tef_dial: *", kFolders, kRepeats},
    {"VERSAO SISTEMA PARCEIRO: *", kVersions},
    {"CAMINHO DO ARQUIVO LOG: *", kLogPath},
    {"VALIDANDO DADOS", kValidating},
    {"VALIDOU DADOS", kValidated},
    {"LIMPANDO PASTAS TEF", kCleaning},
    {"ENTROU - Sleep 1000", kCleaning, kRepeats},
    {"Verificando CLIENT EM EXECUCAO", kChecking},
    {"ENVIANDO COMANDO", kSending},
    {"[METODO] *", kNamed},
    {"****IntPos****", kNamed, kRepeats},
    {"Gerando Arquivo Intpos.001", kWriting},
    {"Gerou Arquivo Intpos.001", kWritten},
    {"VERIFICANDO SE O CLIENT PROCESSOU O INTPOS DA PASTA REQ", kHandedOver},
    {"CONFIRMACAO/DESFAZIMENTO: *", kHandedOver},
    {"Taskkill no GP, *", kHandedOver, kRepeats},
    {"AGUARDANDO INTPOS NA PASTA RESP", kAwaiting},
    {"LOCALIZOU ARQUIVO NA PASTA RESP", kFound, kBursts},
    {"LEU ARQUIVO NA PASTA RESP, RECUPERANDO DADOS", kReading},
    {"LINHA001: *", kReading, kRepeats},
    {"LINHA030: *", kReading, kRepeats},
    {"PROCESSOU ARQUIVO", kProcessed},
    {"REMOVENDO ARQUIVO", kRemoving},
    {"Antes de Gerar o Retorno", kRemoving, kRepeats},
    {"RETORNO: *", kReturned},
};

// The functions of the flow, by their first lines.
enum class FlowFunction : std::uint8_t { kNone, kStart, kWait, kContinue, kFinish, kCancel };
struct FlowEntry {
  std::string_view line;
  FlowFunction function;
  std::string_view name;
};
constexpr FlowEntry kFlowEntries[] = {
    {"ENTROU -  AguardaFuncaoQJInterativo()", FlowFunction::kWait, "AguardaFuncaoQJInterativo"},
    {"ENTROU -  ContinuaFuncaoQJInterativo()", FlowFunction::kContinue,
     "ContinuaFuncaoQJInterativo"},
    {"ENTROU -  IniciaFuncaoQJInterativo()", FlowFunction::kStart, "Fluxo interativo"},
    {"ENTROU -  FinalizaFuncaoQJInterativo()", FlowFunction::kFinish, "FinalizaFuncaoQJInterativo"},
    {"Entrou - CancelaFluxoQJInterativo()", FlowFunction::kCancel, "CancelarFluxoQJInterativo"},
};

// Lines of waits that are said at several steps.
constexpr std::string_view kOtherWaits[] = {
    "Verificacao Execucao do Processo: *",
    "Fim Verificacao Execucao do Processo: *",
    "Aguardando Execução do Trevix.exe",
};

const KnownLine* FindPaymentLine(std::string_view message) {
  for (const KnownLine& known : kPaymentLines)
    if (Matches(known.pattern, message)) return &known;
  return nullptr;
}

const FlowEntry* FindFlowEntry(std::string_view message) {
  for (const FlowEntry& entry : kFlowEntries)
    if (entry.line == message) return &entry;
  return nullptr;
}

std::string_view Behind(std::string_view label, std::string_view message) {
  return message.starts_with(label) ? message.substr(label.size()) : std::string_view{};
}

// ---- Numbers ----

template <typename Number>
std::optional<Number> WholeNumber(std::string_view text) {
  Number number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// "12.500000" or "12,50" in cents, to the nearest.
std::optional<std::int64_t> Cents(std::string_view text) {
  const std::size_t mark = text.find_first_of(".,");
  const auto whole = WholeNumber<std::int64_t>(text.substr(0, mark));
  if (!whole || *whole < 0 || *whole > 1'000'000'000'000) return std::nullopt;
  std::int64_t thousandths = 0;
  std::int64_t unit = 100;
  for (const char c : mark == text.npos ? std::string_view{} : text.substr(mark + 1)) {
    if (c < '0' || c > '9') return std::nullopt;
    thousandths += unit * (c - '0');
    unit /= 10;
  }
  return *whole * 100 + (thousandths + 5) / 10;
}

// ---- Operations ----

struct NamedOperation {
  const Operation* operation;
  std::string_view name;
};

const std::vector<NamedOperation>& NamedOperations() {
  static const std::vector<NamedOperation> named = [] {
    constexpr std::string_view kLabel = "[METODO] ";
    std::vector<NamedOperation> operations;
    for (std::int32_t code = 0; code < 100; ++code) {
      const Operation* const operation = FindOperation(code);
      if (operation == nullptr || operation->code != code) continue;
      const std::string_view line = Behind(kLabel, operation->log_line.text());
      if (!line.empty()) operations.push_back({operation, line.substr(0, line.find(':'))});
    }
    return operations;
  }();
  return named;
}

CallKind KindOf(const Operation& operation) {
  constexpr std::int32_t kListsLinks = 24;  // has the header of a sale and sells nothing
  constexpr std::int32_t kConfirms = 98;
  constexpr std::int32_t kUndoes = 99;
  if (operation.code == kConfirms) return CallKind::kConfirmation;
  if (operation.code == kUndoes) return CallKind::kUndo;
  const bool sells = operation.request.text().starts_with("000-000 = CRT|");
  return sells && operation.code != kListsLinks ? CallKind::kSale : CallKind::kPayment;
}

void TakeArgument(Value value, std::string_view text, Call& call) {
  if (value == Value::kCupom) call.coupon = WholeNumber<std::int32_t>(text);
  if (value != Value::kValor) return;
  call.amount = text;
  call.cents = Cents(text);
}

// True when the message is this operation's line; its arguments are taken then.
bool ReadArguments(const Operation& operation, std::string_view message, Call& call) {
  Value value = Value::kNone;
  bool first = true;
  for (const Part& part : operation.log_line.parts()) {
    const std::size_t end = first ? 0 : message.find(part.before);
    if (end == message.npos || !message.substr(end).starts_with(part.before)) return false;
    TakeArgument(value, message.substr(0, end), call);
    message.remove_prefix(end + part.before.size());
    value = part.value;
    first = false;
  }
  TakeArgument(value, message, call);
  return true;
}

void ReadOperation(std::string_view message, Call& call) {
  const std::string_view line = Behind("[METODO] ", message);
  call.operation = line.substr(0, line.find(':'));
  for (const auto& [operation, name] : NamedOperations()) {
    if (name != call.operation) continue;
    call.kind = KindOf(*operation);
    ReadArguments(*operation, message, call);
    return;
  }
}

// ---- Results ----

constexpr std::string_view kReturn = "RETORNO: ";
constexpr std::string_view kLocalAnswer = "S;2;COMANDO COM SUCESSO\nC;";

// As the host got it, but for its line ends: the log shows each carriage return as a blank.
std::string ResultText(std::string_view logged) {
  std::string text;
  for (std::string_view line; TakePiece(logged, '\n', line);) {
    if (!logged.empty() && line.ends_with(' ')) line.remove_suffix(1);
    text.append(text.empty() ? "" : "\n").append(line);
  }
  return text;
}

// The fields behind "C;" of a logged result; empty ones where it ends early.
std::array<std::string_view, 15> RecordFields(std::string_view logged) {
  std::array<std::string_view, 15> fields{};
  const std::size_t begin = logged.find("\nC;");
  if (begin == logged.npos) return fields;
  std::string_view line = logged.substr(begin + 3);
  line = line.substr(0, line.find('\n'));
  for (std::string_view& field : fields) TakePiece(line, ';', field);
  return fields;
}

// The library's own answer has a coupon and nothing else.
bool IsLocalAnswer(std::string_view result) {
  constexpr std::string_view kRest = ";;;;;;;1;;;;;;;";
  if (!result.starts_with(kLocalAnswer) || !result.ends_with(kRest)) return false;
  result.remove_prefix(kLocalAnswer.size());
  return result.find_first_of(";\n") == result.size() - kRest.size();
}

// A log that ends within its last line may leave open whose answer this is.
bool IsCut(std::string_view result) {
  if (result.starts_with("S;0;") || result.starts_with("S;1;")) return false;
  constexpr std::ptrdiff_t kSeparators = 14;
  const std::size_t record = result.find("\nC;");
  if (!result.starts_with("S;2;") || record == result.npos) return true;
  const std::string_view line = result.substr(record + 3);
  return std::ranges::count(line.substr(0, line.find('\n')), ';') < kSeparators;
}

// ---- Calls ----

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
      last_of_version_[VersionOf(line)] = line.call;
      last_of_file_[line.file] = line.call;
    }
    for (Progress& progress : progress_) Conclude(progress);
  }

 private:
  void Follow(Index index) {
    const std::string_view message = MessageOf(lines_[index]);
    if (const FlowEntry* const entry = FindFlowEntry(message)) return EnterFlow(index, *entry);
    if (const KnownLine* const known = FindPaymentLine(message))
      return FollowPayment(index, *known, message);
    if (Progress* const progress = LastTouched(lines_[index])) Touch(*progress, index, message);
  }

  Progress& Begin(Index index, CallKind kind) {
    Call& call = calls_.emplace_back();
    call.kind = kind;
    call.begin = lines_[index].time;
    call.version = VersionOf(lines_[index]);
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
    const std::string_view version = VersionOf(line);
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
    const std::string_view version = VersionOf(line);
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
    const std::string_view version = VersionOf(lines_[index]);
    for (Index i = index; i < lines_.size() && i < index + kReadingLines; ++i) {
      if (lines_[i].time == kNoTime || VersionOf(lines_[i]) != version) continue;
      const std::string_view message = MessageOf(lines_[i]);
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
    const std::string_view version = VersionOf(lines_[index]);
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
    const auto waits = [message](std::string_view pattern) { return Matches(pattern, message); };
    if (progress.step == kHandedOver || progress.step == kAwaiting || call.kind == CallKind::kFlow)
      lines_[index].waits |= std::ranges::any_of(kOtherWaits, waits);
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

std::string TwoDigits(LogTime number) {
  return std::string(number < 10 ? "0" : "").append(std::to_string(number));
}

}  // namespace

std::string DateText(LogTime time) {
  const std::chrono::sys_seconds seconds{std::chrono::seconds(time)};
  const std::chrono::year_month_day date{std::chrono::floor<std::chrono::days>(seconds)};
  return TwoDigits(static_cast<unsigned>(date.day())) + "/" +
         TwoDigits(static_cast<unsigned>(date.month())) + "/" +
         std::to_string(static_cast<int>(date.year()));
}

std::string ClockText(LogTime time) {
  std::string text;
  const LogTime second = ((time % 86400) + 86400) % 86400;
  for (const LogTime part : {second / 3600, second / 60 % 60, second % 60})
    text.append(text.empty() ? "" : ":").append(TwoDigits(part));
  return text;
}

std::string_view OutcomeName(Outcome outcome) {
  constexpr std::string_view kNames[] = {"aprovada",       "recusada",     "falha local",
                                         "resposta local", "sem desfecho", "concluída"};
  static_assert(std::size(kNames) == kOutcomes);
  return kNames[static_cast<std::size_t>(outcome)];
}

std::string_view PhaseName(CallPhase phase) {
  constexpr std::string_view kNames[] = {"limpeza e preparo", "retirada do pedido", "GP",
                                         "resposta local"};
  static_assert(std::size(kNames) == kCallPhases);
  return kNames[static_cast<std::size_t>(phase)];
}

std::int64_t Call::TotalMs() const {
  std::int64_t total = 0;
  for (const std::int64_t ms : phase_ms) total += ms;
  return total;
}

bool Log::Add(std::string name, std::string_view bytes) {
  const std::string_view text = texts_.emplace_back(DecodeLog(bytes));
  LogFile file = {.name = std::move(name), .bytes = bytes.size()};
  const std::size_t first = lines_.size();
  const auto number = static_cast<std::uint16_t>(files_.size());
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const std::string_view line = text.substr(begin, end - begin);
    const Stamp stamp = ReadStamp(line);
    if (stamp.time != kNoTime) {
      lines_.push_back(
          {.text = line, .time = stamp.time, .message = stamp.message, .file = number});
      ++file.lines;
    } else if (lines_.size() > first && !(end == text.size() && BeginsAsStamp(line))) {
      // A further line of the message before it; line ends at the end of all belong to none.
      std::string_view& message = lines_.back().text;
      if (!line.empty())
        message = {message.data(), static_cast<std::size_t>(&text[end - 1] + 1 - message.data())};
    } else if (!line.empty()) {
      lines_.push_back({.text = line, .file = number});
    }
    begin = end + 1;
  }
  files_.push_back(std::move(file));
  return files_.back().lines > 0;
}

void Log::Read() {
  SortLines();
  Follower(lines_, calls_).FollowAll();
}

// By time, and the lines of a file in their order, whatever its clock did. Of files that have the
// same second, the one that begins earlier comes first, or else the one that ends earlier.
void Log::SortLines() {
  std::vector<std::pair<LogTime, LogTime>> spans(files_.size(), {kNoTime, kNoTime});
  for (const LogLine& line : lines_) {
    auto& [first, last] = spans[line.file];
    if (first == kNoTime) first = line.time;
    last = std::max(last, line.time);
  }
  using Place = std::tuple<LogTime, std::pair<LogTime, LogTime>, Index>;
  std::vector<LogTime> latest(files_.size(), kNoTime);
  std::vector<Place> places;
  places.reserve(lines_.size());
  for (Index i = 0; i < lines_.size(); ++i) {
    const std::uint16_t file = lines_[i].file;
    latest[file] = std::max({latest[file], lines_[i].time, spans[file].first});
    places.emplace_back(latest[file], spans[file], i);
  }
  if (std::ranges::is_sorted(places)) return;
  std::ranges::sort(places);
  std::vector<LogLine> sorted;
  sorted.reserve(lines_.size());
  for (const Place& place : places) sorted.push_back(lines_[std::get<Index>(place)]);
  lines_ = std::move(sorted);
}

std::vector<OpenSale> Log::OpenSales() const {
  std::vector<OpenSale> open;
  for (Index i = 0; i < calls_.size(); ++i) {
    const Call& call = calls_[i];
    const bool concludes = call.kind == CallKind::kConfirmation || call.kind == CallKind::kUndo;
    if (concludes && call.outcome == Outcome::kLocalReply) {
      // Of several sales of a coupon, as when its numbers begin anew each day, the last.
      const auto is_its = [&](const OpenSale& sale) {
        return calls_[sale.call].coupon == call.coupon;
      };
      const auto last = std::find_if(open.rbegin(), open.rend(), is_its);
      if (last != open.rend()) open.erase(std::next(last).base());
    }
    // A call whose name is cut off may have been a sale; an answer with an amount looks like one.
    const bool unanswered =
        call.outcome == Outcome::kUnfinished || call.outcome == Outcome::kLocalFailure;
    const bool sells =
        call.kind == CallKind::kSale ||
        (call.kind == CallKind::kPayment && call.operation.empty() && call.local_reply.empty() &&
         (unanswered || call.answered_cents.value_or(0) > 0));
    if (!sells) continue;
    // The end of a sale whose beginning was not recognised as its own is no second sale.
    if (call.operation.empty() && call.coupon)
      std::erase_if(open, [&](const OpenSale& sale) {
        return sale.why == OpenSale::Why::kUncertain && calls_[sale.call].coupon == call.coupon;
      });
    if (call.outcome == Outcome::kApproved)
      open.push_back({i, OpenSale::Why::kApproved});
    else if (call.outcome == Outcome::kLocalReply)
      open.push_back({i, OpenSale::Why::kMistakenReply});
    else if (call.outcome != Outcome::kRefused && call.request_written)
      open.push_back({i, OpenSale::Why::kUncertain});
  }
  return open;
}

}  // namespace caixora
