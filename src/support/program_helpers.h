// What every operation does with programs, on top of the system's calls.
#pragma once

#include <string>

namespace caixora {

// True when a process named ClientExeName runs.
bool IsProcessRunning() noexcept;

// Starts the program with this argument line and does not wait for it. Logs the command.
void ExecuteCommand(const std::string& program, const std::string& arguments);

}  // namespace caixora
