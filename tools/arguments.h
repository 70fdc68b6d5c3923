// Numbers as a person types them. What is not sure to mean one number alone is refused.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace caixora {

// The number, or why the text is none.
using ParsedNumber = std::variant<std::int64_t, std::string>;

ParsedNumber ParseWhole(std::string_view text, std::int64_t least, std::int64_t most);

// An amount in reais ("12,50", "12.50" or "12"), in cents.
ParsedNumber ParseAmount(std::string_view text);

}  // namespace caixora
