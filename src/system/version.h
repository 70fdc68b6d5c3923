// Version texts, read from version resources.
#pragma once

#include <string>

namespace caixora {

// The version in the resource of this library's file: four decimal numbers joined by points. "1"
// when there is no version information, "2" when it cannot be read, empty without its fixed part.
std::wstring LibraryVersion(const char* file_name);

// The file version string of the program that loaded the library; empty when it has none.
std::wstring HostVersion();

}  // namespace caixora
