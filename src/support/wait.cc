#include "support/wait.h"

#include "support/windows.h"

namespace caixora {

void Pause(std::uint32_t milliseconds) noexcept { ::Sleep(milliseconds); }

}  // namespace caixora
