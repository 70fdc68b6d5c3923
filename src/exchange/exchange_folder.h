// The files of the exchange folder. Windows does not care for the case of their names, but the log
// shows them: each use has its own spelling, and support searches for it.
#pragma once

#include <string>
#include <string_view>

namespace caixora {

inline constexpr std::string_view kRequest = "\\Req\\intpos.001";
inline constexpr std::string_view kAnswer = "\\Resp\\Intpos.001";
inline constexpr std::string_view kLivenessAnswer = "\\Resp\\Ativo.001";

// The library's own answer to a confirmation or undo.
inline constexpr std::string_view kLocalAnswer = "\\Resp\\intpos.001";

// What an earlier call may have left.
inline constexpr std::string_view kOldRequest = "\\Req\\Intpos.001";
inline constexpr std::string_view kOldAnswer = "\\Resp\\Intpos.001";
inline constexpr std::string_view kOldLivenessAnswer = "\\Resp\\ativo.001";

// The full path.
std::string InExchangeFolder(std::string_view name);

// Logs the path and removes the file; a missing one is no error.
void RemoveExchangeFile(const std::string& path);

}  // namespace caixora
