// The operations that the GP knows, as one table: what each writes into its request record and how
// the log names it. A new operation is one row here.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

#include "exchange/items.h"

namespace caixora {

// An argument of the call, as a value of the record or of the log line.
enum class Value : std::uint8_t {
  kNone,
  kCliente,
  kParceiro,
  kParcelas,
  kValor,
  kCupom,
  kLeitor,
  kControle,
  kNSU,
  kCampo011,
  kCampo012,
  kKM,
  kPlaca,
  kMatricula,
  kQtdeItens,
  kItens,
  kData,
};

// Whether a line is written: always, in a call whose amount is above zero, or with a text of its
// own.
enum class When : std::uint8_t { kAlways, kWithAmount, kNotEmpty };

// One line of a record, "NNN-NNN = text": a fixed text, or the text of an argument. Or a block of
// item lines, which brings its own keys.
struct Line {
  constexpr Line() = default;
  constexpr Line(std::string_view line_key, std::string_view fixed) : key(line_key), text(fixed) {}
  constexpr Line(std::string_view line_key, Value argument, When condition = When::kAlways)
      : key(line_key), value(argument), when(condition) {}
  constexpr explicit Line(ItemBlock block) : items(block) {}

  std::string_view key;
  std::string_view text;
  Value value = Value::kNone;
  When when = When::kAlways;
  ItemBlock items = nullptr;
};

// The lines of one record, in writing order.
class Lines {
 public:
  constexpr Lines(std::initializer_list<Line> lines) : size_(lines.size()) {
    std::size_t i = 0;
    for (const Line& line : lines) lines_.at(i++) = line;
  }
  constexpr const Line* begin() const { return lines_.data(); }
  constexpr const Line* end() const { return lines_.data() + size_; }

 private:
  std::array<Line, 10> lines_{};
  std::size_t size_;
};

// A label of the log line with the argument behind it.
struct LogLabel {
  std::string_view label;
  Value value;
};

// What an operation does beside writing its record.
enum class Extra : std::uint8_t {
  kNone,
  kLiveness,    // has an answer file of its own, removed before the record is built
  kLogsRecord,  // shows its record in the log
};

struct Operation {
  std::int32_t first_code, last_code;
  std::string_view log_head;  // stands before the client's CNPJ; empty: no log line
  std::span<const LogLabel> log_tail;
  Lines record;
  Extra extra = Extra::kNone;
};

// The row of a code; null for a code without one, which sends an empty record and logs no line.
const Operation* FindOperation(std::int32_t code);

}  // namespace caixora
