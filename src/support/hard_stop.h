// The end of the host when the log cannot be opened. Tests link an end of their own.
#pragma once

namespace caixora {

// Prints that the log could not be created and ends the process with status 1.
[[noreturn]] void StopHost() noexcept;

}  // namespace caixora
