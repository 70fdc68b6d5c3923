#include "tools/names.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace caixora {
namespace {

constexpr std::size_t kMostSuggested = 3;

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
  return lower;
}

// How many characters are to be put in, taken out, replaced, or swapped with their neighbour.
std::size_t Distance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> before, last, row(to.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 1; i <= from.size(); ++i) {
    before = std::exchange(last, row);
    row[0] = i;
    for (std::size_t j = 1; j <= to.size(); ++j) {
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (from[i - 1] != to[j - 1])});
      if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
        row[j] = std::min(row[j], before[j - 2] + 1);
    }
  }
  return row.back();
}

}  // namespace

std::vector<std::string_view> FindName(std::string_view word,
                                       std::span<const std::string_view> names) {
  if (std::ranges::find(names, word) != names.end()) return {word};
  std::vector<std::string_view> found;
  std::ranges::copy_if(names, std::back_inserter(found),
                       [&](std::string_view name) { return LowerCase(name) == LowerCase(word); });
  return found;
}

std::string Suggestion(std::string_view word, std::span<const std::string_view> names) {
  constexpr std::size_t kShortestPart = 3;
  const std::string lower = LowerCase(word);
  const std::size_t limit = std::max<std::size_t>(1, word.size() / 3);
  std::vector<std::pair<std::size_t, std::string_view>> near;
  for (const std::string_view name : names) {
    const std::string other = LowerCase(name);
    const std::size_t distance = Distance(lower, other);
    const bool part = lower.size() >= kShortestPart && other.find(lower) != std::string::npos;
    if (part || distance <= limit) near.emplace_back(distance, name);
  }
  if (near.empty()) return {};
  std::ranges::stable_sort(near, {}, &std::pair<std::size_t, std::string_view>::first);
  near.resize(std::min(near.size(), kMostSuggested));
  std::string text = " Você quis dizer ";
  for (const auto& [distance, name] : near)
    text.append(name == near.front().second  ? ""
                : name == near.back().second ? " ou "
                                             : ", ")
        .append(name);
  return text + "?";
}

}  // namespace caixora
