#include "tools/failures.h"

#include <algorithm>
#include <array>

#include "support/text.h"
#include "tools/embedded.h"

namespace caixora {
namespace {

constexpr std::string_view kAlternative = " | ";
constexpr std::string_view kLast = "fim: ";

void ReadPatterns(std::string_view cell, Failure& failure) {
  while (!cell.empty()) {
    const std::size_t end = std::min(cell.find(kAlternative), cell.size());
    std::string_view pattern = cell.substr(0, end);
    cell.remove_prefix(std::min(end + kAlternative.size(), cell.size()));
    const bool last = pattern.starts_with(kLast);
    if (last) pattern.remove_prefix(kLast.size());
    (last ? failure.last_lines : failure.log_lines).push_back(pattern);
  }
}

std::vector<Failure> ReadTable(std::string_view table) {
  std::vector<Failure> failures;
  std::string_view line;
  TakePiece(table, '\n', line);  // the titles
  while (TakePiece(table, '\n', line)) {
    std::array<std::string_view, 4> cells;
    for (std::string_view& cell : cells) TakePiece(line, '\t', cell);
    Failure failure = {cells[0], {}, {}, cells[2], cells[3]};
    ReadPatterns(cells[1], failure);
    failures.push_back(std::move(failure));
  }
  return failures;
}

}  // namespace

FailurePlace Failure::Place() const {
  if (result.starts_with("S;")) return FailurePlace::kPayment;
  if (result.starts_with("[")) return FailurePlace::kWait;
  const bool is_code = result.find_first_not_of("0123456789") == result.npos;
  return is_code ? FailurePlace::kFlow : FailurePlace::kProcess;
}

std::span<const Failure> Failures() {
  static const std::vector<Failure> failures = ReadTable(kFailureTable);
  return failures;
}

bool Matches(std::string_view pattern, std::string_view text) {
  if (!pattern.ends_with('*')) return pattern == text;
  return text.starts_with(pattern.substr(0, pattern.size() - 1));
}

const Failure* FindByResult(std::string_view result) {
  const Failure* best = nullptr;
  for (const Failure& failure : Failures())
    if (Matches(failure.result, result) &&
        (best == nullptr || failure.result.size() > best->result.size()))
      best = &failure;
  return best;
}

std::vector<const Failure*> FindByLogLine(FailurePlace place, std::string_view message,
                                          bool is_last) {
  std::vector<const Failure*> found;
  std::size_t longest = 1;
  for (const Failure& failure : Failures()) {
    if (failure.Place() != place) continue;
    for (const std::string_view pattern : is_last ? failure.last_lines : failure.log_lines) {
      if (pattern.size() < longest || !Matches(pattern, message)) continue;
      if (pattern.size() > longest) found.clear();
      longest = pattern.size();
      found.push_back(&failure);
    }
  }
  return found;
}

}  // namespace caixora
