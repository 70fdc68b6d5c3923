// What every operation does with files, on top of the system's calls.
#pragma once

#include <cstdint>
#include <string>

#include "system/file.h"

namespace caixora {

// Deletes the file if it opens for reading; a missing or locked one is no error, and what comes of
// the deletion is not reported. Logs what it does.
void RemoveFile(const std::string& path) noexcept;

// False only when the system says just "file not found": a path in a missing folder, or without
// rights, counts as there. The log's switch file, the update marker and the companion's programs
// are judged this way.
bool FileExists(const std::wstring& path) noexcept;

// True when a deletion leaves no file behind: done, or there was none.
constexpr bool IsGone(SystemError deletion) {
  return deletion == SystemError::kNone || deletion == SystemError::kFileNotFound ||
         deletion == SystemError::kPathNotFound;
}

// True when the file opens for reading.
bool OpensForReading(const std::string& path);

// Size in whole mebibytes; 0 when the file cannot be opened.
std::int32_t FileSizeMB(const std::string& path);

// Appends the rest of the file, as it is. On an error `bytes` holds what came before.
SystemError ReadAll(File& file, std::string& bytes);

// Takes the first line without its end (a line feed, or carriage return and line feed), whatever
// other bytes it holds: the companion's questions may hold a 0x1A, which ends other text files.
SystemError ReadFirstLine(File& file, std::string& line);

}  // namespace caixora
