// File helpers of every operation, on top of file.h.
#pragma once

#include <cstdint>
#include <string>

namespace caixora {

// Deletes the file if it opens for reading; a missing or locked one is no error. Logs what it does;
// nothing in it can fail otherwise, so there is no log line for that.
void RemoveFile(const std::string& path) noexcept;

// False only when the system says just "file not found": a path in a missing folder, or without
// rights, counts as there. The update marker and the companion's programs are judged this way.
bool FileExists(const std::wstring& path) noexcept;

// True when the file opens for reading.
bool OpensForReading(const std::string& path) noexcept;

// Size in whole mebibytes; 0 when the file cannot be opened.
std::int32_t FileSizeMB(const std::string& path) noexcept;

}  // namespace caixora
