// Apart from the clock: test programs on a real system link a shorter wait in its place.
#include "system/time.h"
#include "windows/win32.h"

namespace caixora {

void Pause(std::uint32_t milliseconds) noexcept { ::Sleep(milliseconds); }

}  // namespace caixora
