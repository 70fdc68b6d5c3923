// The GP's answer record: which fields are kept, and the result text made of them.
//
//    answer = { line }                            line ends: LF or CR LF; 0x1A ends the record
//    line   = NNN-NNN " = " value                 three digits, a hyphen, three digits
//
// Read leniently, as GPs in the field need it. A line is looked at in pieces of 199 bytes, and each
// piece counts as a line of its own. It ends at a NUL. Its key may stand anywhere in it
// ("x 003-000 = 5" feeds the amount), so that one line can feed several fields; its value is what
// stands between the first "=" and the next one, without blanks ("030-000 = A=B" says "A"). A field
// that comes again replaces the one before, but for receipt lines ("029-..."), which add up.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace caixora {

inline constexpr std::size_t kAnswerFields = 21;

struct Answer {
  std::array<std::string, kAnswerFields> values;  // in the order of the table in answer.cc
  std::string receipt;                            // "I;" lines, joined by CR LF
  std::vector<std::string> lines_to_log;          // messages that the reading leaves in the log
};

// Reads the bytes of an answer file. Never fails on their content: lines that hold no known key
// feed nothing.
Answer ParseAnswer(std::string bytes);

// "S;0;", "S;1;" or "S;2;" with what belongs behind it.
std::string ComposeResult(Answer answer);

}  // namespace caixora
