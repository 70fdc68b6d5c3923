// Waits a hundredth as long, for tests on a real system that repeat whole calls.
#include "system/time.h"
#include "windows/win32.h"

namespace caixora {

void Pause(std::uint32_t milliseconds) noexcept { ::Sleep(milliseconds / 100); }

}  // namespace caixora
