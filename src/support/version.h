// Version texts for the log, read from version resources.
#pragma once

#include <string>

namespace caixora {

// The version in the resource of this library's file: four decimal numbers joined by points. "1"
// when there is no version information, "2" when it cannot be read, empty without its fixed part.
std::wstring LibraryVersion(const char* file_name);

// The file version string of the program that loaded the library; empty when it has none.
std::wstring HostVersion();

// Wide text as bytes of the ANSI code page.
std::string ToNarrow(const std::wstring& text);

// The library's version as log lines carry it, read at the start of every exported call. When
// memory runs out the text stays as it was.
void RecordLibraryVersion() noexcept;

}  // namespace caixora
