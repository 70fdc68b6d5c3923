// Every wait of the library. Tests link one that only counts.
#pragma once

#include <cstdint>

namespace caixora {

void Pause(std::uint32_t milliseconds) noexcept;

}  // namespace caixora
