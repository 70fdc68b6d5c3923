#include "exchange/answer.h"

#include <algorithm>

#include "support/ansi.h"
#include "support/log.h"
#include "support/text.h"
#include "support/text_mode.h"

namespace caixora {
namespace {

// Longest piece of a line that is looked at; what follows is a line of its own. Field values are
// short, and hosts have come to rely on where long receipt lines break.
constexpr std::size_t kPieceLength = 199;

// What a matching line does besides feeding its slot.
enum class Also : std::uint8_t { kNothing, kLogs, kLogsAndFolds, kReceipt };

struct Field {
  std::string_view key;
  Slot slot;
  Also also = Also::kNothing;
  std::string_view log_label = {};
};

// A line is tested against every key in this order, and a key counts wherever it stands in the
// line: one line can feed several slots.
constexpr Field kFields[] = {
    {"001-000", Slot::kCoupon, Also::kLogs, "LINHA001: "},
    {"003-000", Slot::kAmount},
    {"009-000", Slot::kStatus},
    {"010-000", Slot::kNetwork},
    {"010-001", Slot::k010_001},
    {"011-000", Slot::kType},
    {"012-000", Slot::kNSU},
    {"013-000", Slot::kAuthorisation},
    {"018-000", Slot::kInstalments},
    {"028-000", Slot::kReceiptLines},
    {"029-", Slot::kCount, Also::kReceipt},  // no slot: appended to the receipt
    {"030-000", Slot::kMessage, Also::kLogsAndFolds, "LINHA030: "},
    {"031-000", Slot::k031_000},
    {"040-000", Slot::kInstitution},
    {"170-000", Slot::k170_000},
    {"800-007", Slot::kControl},
    {"640-000", Slot::k640_000},
    {"504-001", Slot::k504_001},
    {"740-000", Slot::k740_000},
    {"741-000", Slot::k741_000},
    {"742-000", Slot::k742_000},
};

// The fifteen values of the record line. 010-001 stands for the network code, see ComposeResult.
constexpr Slot kRecord[] = {
    Slot::kCoupon,  Slot::kAmount,  Slot::kInstitution, Slot::kNetwork, Slot::kAuthorisation,
    Slot::kNSU,     Slot::kType,    Slot::kInstalments, Slot::kControl, Slot::k170_000,
    Slot::k010_001, Slot::k740_000, Slot::k741_000,     Slot::k742_000, Slot::k031_000,
};

constexpr std::string_view kAccented = u8"áéíóúãç"_ansi;
constexpr std::string_view kFolded = "aeiouac";

void FoldAccents(std::string& text) {
  for (char& c : text)
    if (const std::size_t i = kAccented.find(c); i != kAccented.npos) c = kFolded[i];
}

// The next piece, with its line feed, off the front of the text.
std::string_view TakeLinePiece(std::string_view& text) {
  const std::string_view window = text.substr(0, kPieceLength);
  const std::string_view piece = window.substr(0, window.find('\n') + 1);
  const std::size_t size = piece.empty() ? window.size() : piece.size();
  const std::string_view taken = text.substr(0, size);
  text.remove_prefix(size);
  return taken;
}

// What stands between the first "=" and the next one, without the blanks around it.
std::string_view ValueOf(std::string_view line) {
  std::string_view piece;
  std::string_view value;
  TakePiece(line, '=', piece);
  if (TakePiece(line, '=', piece)) value = piece;
  return Trim(value);
}

void ReadLine(std::string_view line, Answer& answer) {
  for (const Field& field : kFields) {
    if (line.find(field.key) == line.npos) continue;
    const std::string_view value = ValueOf(line);
    if (field.also == Also::kReceipt) {
      // An empty receipt line still leaves its "I;" behind, so the text tells the first line.
      if (!answer.receipt.empty()) answer.receipt.append("\r\n");
      answer.receipt.append("I;").append(value);
      continue;
    }
    answer[field.slot] = value;
    if (field.also != Also::kNothing) WriteLog({field.log_label, Trim(line)});
    if (field.also == Also::kLogsAndFolds) FoldAccents(answer[field.slot]);
  }
}

}  // namespace

Answer ParseAnswer(std::string bytes) {
  DecodeTextMode(bytes);
  Answer answer;
  std::string_view text = bytes;
  while (!text.empty()) {
    std::string line(TakeLinePiece(text));
    line.resize(std::min(line.find('\0'), line.size()));  // a C string, as it always was
    std::replace(line.begin(), line.end(), '\n', ' ');
    std::replace(line.begin(), line.end(), '\r', ' ');
    ReadLine(line, answer);
  }
  return answer;
}

std::string ComposeResult(Answer answer) {
  const auto number = [&answer](Slot slot) { return LeadingNumber(answer[slot]); };

  // A missing status is a success: GPs leave it out of some answers.
  if (number(Slot::kStatus) != 0) return "S;0;" + answer[Slot::kMessage];

  if (number(Slot::kInstalments) == 0) answer[Slot::kInstalments] = "1";
  if (number(Slot::k010_001) < 1) answer[Slot::k010_001] = answer[Slot::k640_000];
  // A replacement network pushes the network into the institution's place; in this order.
  if (!answer[Slot::k504_001].empty() && !answer[Slot::kInstitution].empty()) {
    answer[Slot::kInstitution] = answer[Slot::kNetwork];
    answer[Slot::kNetwork] = answer[Slot::k504_001];
  }

  // The announced number of receipt lines decides, not the number of lines that came.
  std::string result = number(Slot::kReceiptLines) >= 1 ? "S;1;" : "S;2;";
  result.append(answer[Slot::kMessage]).append("\r\nC");
  for (const Slot slot : kRecord) result.append(";").append(answer[slot]);
  if (!answer.receipt.empty()) result.append("\r\n").append(answer.receipt);
  return result;
}

}  // namespace caixora
