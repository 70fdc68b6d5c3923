// What a failure means and what to do: the rows of falhas.tsv, the one source of the report, the
// diagnosis and the guide.
//
//    resultado  what the host gets: a text ("S;0;GP NAO INSTALADO"), an interactive code ("33")
//    log        the line by which the log shows it; several with " | " between them; behind "fim: "
//               one that shows it by being the last of its call
//    significado, providencia
//
// A "*" at the end of a text stands for any further text.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace caixora {

// What ends with the failure: a payment call, a function of the interactive flow with a code, its
// wait with a text, or the host itself.
enum class FailurePlace : std::uint8_t { kPayment, kFlow, kWait, kProcess };

struct Failure {
  std::string_view result;
  std::vector<std::string_view> log_lines;
  std::vector<std::string_view> last_lines;
  std::string_view meaning, remedy;

  FailurePlace Place() const;
};

std::span<const Failure> Failures();

// True when the text is the pattern, or begins as one that ends in "*".
bool Matches(std::string_view pattern, std::string_view text);

// By what the host got, in UTF-8; the row that says most. Null: no failure that is known.
const Failure* FindByResult(std::string_view result);

// By the message of a line, in UTF-8 and without " (f)". `is_last`: it ended its call. Several: the
// line does not say which.
std::vector<const Failure*> FindByLogLine(FailurePlace place, std::string_view message,
                                          bool is_last = false);

}  // namespace caixora
