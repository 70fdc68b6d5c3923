// What the diagnosis asks of the machine beside src/system. Nothing of it changes anything: what a
// try has made is gone again when it returns, whatever came of it.
//
// Paths and names are Windows-1252 bytes; "." is the current folder.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "system/system_error.h"

namespace caixora {

// Absolute, without a backslash at the end but for a drive's own.
std::string CurrentFolder();
std::string ProgramFolder();

// A new file with a few bytes in it, a new folder.
SystemError TryToWriteIn(const std::string& folder);
SystemError TryToMakeFolderIn(const std::string& folder);

// Asks for the right to delete the file, and lets it be.
SystemError TryToDelete(const std::string& path);

// Loads the library and lets it go.
SystemError TryToLoad(const std::string& path);

enum class DriveKind : std::uint8_t { kNone, kFixed, kRemovable, kNetwork, kOptical };
DriveKind KindOfDrive(char letter);

struct ListedFile {
  std::string name;
  std::uint64_t size = 0;
};

// The files of the folder whose names begin so, by name. Empty also when there is no folder.
std::vector<ListedFile> ListFiles(const std::string& folder, const std::string& prefix);

// The programs that have the file open, as far as the system tells.
std::vector<std::string> UsersOf(const std::string& path);

// The code page of texts in programs that ask for none.
unsigned AnsiCodePage();

}  // namespace caixora
