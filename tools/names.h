// Names as a person types them.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace caixora {

// Those of the names that the word may mean: the one equal to it, or else all that differ in the
// case of their letters alone.
std::vector<std::string_view> FindName(std::string_view word,
                                       std::span<const std::string_view> names);

// " Você quis dizer ...?" with the names nearest to the word; empty when none is near.
std::string Suggestion(std::string_view word, std::span<const std::string_view> names);

}  // namespace caixora
