// Other programs, and the one that this library runs in. Starts return at once and report nothing:
// whether a program runs is asked afterwards. Texts are Windows-1252 bytes.
#pragma once

#include <string>
#include <string_view>

namespace caixora {

// True when a process of this image name runs; upper and lower case alike, no path, no prefix.
bool ImageRuns(const std::string& name) noexcept;

// Through the shell: `program` is opened with `arguments`.
void ShellOpen(const std::string& program, const std::string& arguments);

// The shell's default verb instead of "open", with the window shown normally, in `folder`.
void ShellOpenDefault(const std::string& program, const std::string& arguments,
                      const std::string& folder);

// Through the shell with the verb that asks for administrator rights, hidden.
void ShellRunElevated(const wchar_t* program, const wchar_t* arguments) noexcept;

// A command line, hidden.
void RunHidden(const char* command) noexcept;

// True when the host runs with administrator rights.
bool IsElevated() noexcept;

// Prints the message and ends the host with status 1.
[[noreturn]] void StopHost(std::string_view message) noexcept;

}  // namespace caixora
