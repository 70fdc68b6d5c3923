// What the library asks of the system about other programs. Tests link another implementation.
// Starts return at once and report nothing: whether a program runs is asked afterwards.
#pragma once

#include <string>

namespace caixora {

// True when a process of this image name runs; upper and lower case alike, no path, no prefix.
bool ImageRuns(const std::string& name) noexcept;

// Through the shell: `program` is opened with `arguments`.
void ShellOpen(const std::string& program, const std::string& arguments) noexcept;

// The shell's default verb instead of "open", with the window shown normally, in `folder`.
void ShellOpenDefault(const char* program, const char* arguments, const char* folder) noexcept;

// Through the shell with the verb that asks for administrator rights, hidden.
void ShellRunElevated(const wchar_t* program, const wchar_t* arguments) noexcept;

// A command line, hidden.
void RunHidden(const char* command) noexcept;

// True when this process runs with administrator rights.
bool IsElevated() noexcept;

}  // namespace caixora
