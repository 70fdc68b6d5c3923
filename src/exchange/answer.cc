#include "exchange/answer.h"

#include <algorithm>
#include <bitset>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "support/ansi.h"
#include "support/text.h"
#include "support/text_mode.h"

namespace caixora {
namespace {

constexpr std::size_t kPieceLength = 199;
constexpr std::size_t kDigits = 3;  // of a key, before its hyphen

// What a matching line does besides feeding its field.
enum class Also : std::uint8_t {
  kNothing,
  kLogs,          // is logged, behind the label of its row
  kLogsAndFolds,  // and its value loses the accents of small letters
  kReceipt,       // is one line more of the receipt, and feeds no field
};

struct Field {
  std::string_view key;
  int place = 0;  // of the record line's fifteen; 0: not in it
  Also also = Also::kNothing;
  std::string_view log_label = {};
};

// A line is tested against every key, in this order.
constexpr Field kFields[] = {
    {"001-000", 1, Also::kLogs, "LINHA001: "},          // coupon
    {"003-000", 2},                                     // amount in cents
    {"009-000"},                                        // status
    {"010-000", 4},                                     // network
    {"010-001", 11},                                    // network code
    {"011-000", 7},                                     // type of transaction
    {"012-000", 6},                                     // NSU
    {"013-000", 5},                                     // authorisation
    {"018-000", 8},                                     // instalments
    {"028-000"},                                        // number of receipt lines
    {"029-", 0, Also::kReceipt},                        // a receipt line
    {"030-000", 0, Also::kLogsAndFolds, "LINHA030: "},  // message
    {"031-000", 15},                                    // this and others: the GP's own
    {"040-000", 3},                                     // card institution
    {"170-000", 10},                                    //
    {"800-007", 9},                                     // control text
    {"640-000"},                                        // network code where 010-001 has none
    {"504-001"},                                        // replacement of the network
    {"740-000", 12},                                    //
    {"741-000", 13},                                    //
    {"742-000", 14},                                    //
};
static_assert(std::size(kFields) == kAnswerFields);
static_assert(std::all_of(std::begin(kFields), std::end(kFields),
                          [](const Field& field) { return field.key[kDigits] == '-'; }));

consteval std::size_t IndexOf(std::string_view key) {
  for (std::size_t i = 0; i < std::size(kFields); ++i)
    if (kFields[i].key == key) return i;
  throw "no such field";
}

// The fields of the record line, by their places from 1 to 15; each place has one field.
constexpr auto kRecord = [] {
  std::array<std::size_t, 15> record{};
  for (std::size_t place = 1; place <= record.size(); ++place) {
    const auto at_place = [place](const Field& f) { return f.place == static_cast<int>(place); };
    if (std::count_if(std::begin(kFields), std::end(kFields), at_place) != 1) throw "bad place";
    record[place - 1] = static_cast<std::size_t>(
        std::find_if(std::begin(kFields), std::end(kFields), at_place) - std::begin(kFields));
  }
  return record;
}();

constexpr std::string_view kAccented = u8"áéíóúãç"_ansi;
constexpr std::string_view kFolded = "aeiouac";

void FoldAccents(std::string& text) {
  for (char& c : text)
    if (const std::size_t i = kAccented.find(c); i != kAccented.npos) c = kFolded[i];
}

// The next piece, with its line feed, off the front of the text.
std::string_view TakeLinePiece(std::string_view& text) {
  const std::string_view window = text.substr(0, kPieceLength);
  const std::size_t end = window.find('\n');
  const std::string_view piece = window.substr(0, end == window.npos ? end : end + 1);
  text.remove_prefix(piece.size());
  return piece;
}

// What stands between the first "=" and the next one, without the blanks around it.
std::string_view ValueOf(std::string_view line) {
  std::string_view piece;
  std::string_view value;
  TakePiece(line, '=', piece);
  if (TakePiece(line, '=', piece)) value = piece;
  return Trim(value);
}

// The fields whose keys stand anywhere in the line.
std::bitset<kAnswerFields> FieldsIn(std::string_view line) {
  std::bitset<kAnswerFields> found;
  for (std::size_t hyphen = line.find('-', kDigits); hyphen != line.npos;
       hyphen = line.find('-', hyphen + 1)) {
    const std::string_view rest = line.substr(hyphen - kDigits);
    for (std::size_t i = 0; i < kAnswerFields; ++i)
      if (rest[0] == kFields[i].key[0] && rest.starts_with(kFields[i].key)) found.set(i);
  }
  return found;
}

void ReadLine(std::string_view line, Answer& answer) {
  const std::bitset<kAnswerFields> found = FieldsIn(line);
  if (found.none()) return;
  const std::string_view value = ValueOf(line);
  for (std::size_t i = 0; i < kAnswerFields; ++i) {
    if (!found[i]) continue;
    const Field& field = kFields[i];
    if (field.also == Also::kReceipt) {
      // An empty receipt line still leaves its "I;" behind, so the text tells the first line.
      if (!answer.receipt.empty()) answer.receipt.append("\r\n");
      answer.receipt.append("I;").append(value);
      continue;
    }
    answer.values[i] = value;
    if (field.also != Also::kNothing)
      answer.lines_to_log.emplace_back(field.log_label).append(Trim(line));
    if (field.also == Also::kLogsAndFolds) FoldAccents(answer.values[i]);
  }
}

}  // namespace

Answer ParseAnswer(std::string bytes) {
  DecodeTextMode(bytes);
  Answer answer;
  // Line ends within a line count as blanks, and a line feed stands in none but at its end.
  std::replace(bytes.begin(), bytes.end(), '\r', ' ');
  std::string_view text = bytes;
  while (!text.empty()) {
    const std::string_view line = TakeLinePiece(text);
    ReadLine(line.substr(0, line.find('\0')), answer);
  }
  return answer;
}

std::string ComposeResult(Answer answer) {
  std::string& institution = answer.values[IndexOf("040-000")];
  std::string& network = answer.values[IndexOf("010-000")];
  std::string& network_code = answer.values[IndexOf("010-001")];
  std::string& instalments = answer.values[IndexOf("018-000")];
  const std::string& replacement = answer.values[IndexOf("504-001")];
  const std::string& message = answer.values[IndexOf("030-000")];

  // A missing status is a success: GPs leave it out of some answers.
  if (LeadingNumber(answer.values[IndexOf("009-000")]) != 0) return "S;0;" + message;

  if (LeadingNumber(instalments) == 0) instalments = "1";
  if (LeadingNumber(network_code) < 1) network_code = answer.values[IndexOf("640-000")];
  // A replacement pushes the network into the institution's place; in this order.
  if (!replacement.empty() && !institution.empty()) {
    institution = network;
    network = replacement;
  }

  // The announced number of receipt lines decides, not the number of lines that came.
  const bool receipt_announced = LeadingNumber(answer.values[IndexOf("028-000")]) >= 1;
  std::string result = receipt_announced ? "S;1;" : "S;2;";
  result.append(message).append("\r\nC");
  for (const std::size_t field : kRecord) result.append(";").append(answer.values[field]);
  if (!answer.receipt.empty()) result.append("\r\n").append(answer.receipt);
  return result;
}

}  // namespace caixora
