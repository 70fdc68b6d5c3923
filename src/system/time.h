// Waits and the clock. Whatever waits in the library, waits in Pause.
#pragma once

#include <cstdint>

namespace caixora {

void Pause(std::uint32_t milliseconds) noexcept;

// The year in full, the others counted as people do.
struct LocalTime {
  int year, month, day, hour, minute, second;
};
LocalTime Now() noexcept;

}  // namespace caixora
