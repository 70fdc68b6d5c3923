// The operations that the GP knows, as one table: the line by which the log names each, and the
// record that it sends. A new operation is one row here.
#pragma once

#include <cstdint>

#include "exchange/template.h"

namespace caixora {

// What an operation does beside writing its record.
enum class Extra : std::uint8_t {
  kNone,
  kLiveness,    // has an answer file of its own, removed before the record is built
  kLogsRecord,  // shows its record in the log
};

struct Operation {
  std::int32_t code;
  Template log_line;  // empty: none
  Template request;
  Extra extra = Extra::kNone;
};

// The row of a code; null for a code without one, which sends an empty record and logs no line.
const Operation* FindOperation(std::int32_t code);

}  // namespace caixora
