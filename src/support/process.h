// Process helpers of every operation, on top of system_process.h.
#pragma once

#include <string>

namespace caixora {

// True when a process named ClientExeName runs.
bool IsProcessRunning() noexcept;

// Starts the program with this argument line and does not wait for it. Logs the command.
void ExecuteCommand(const std::string& program, const std::string& arguments) noexcept;

}  // namespace caixora
