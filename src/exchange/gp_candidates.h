// Where the GP and its exchange folder may lie: fixed drives and paths, there is no configuration
// for it. Nothing here logs or keeps anything.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace caixora {

// Five passes: the letters' terminating NUL is one of them, and support staff count five lines in
// the log. A path that begins with it is an empty C string and names no file, and its log line ends
// where the path would begin.
inline constexpr char kDrives[] = "CDEF";

// Where a GP may be installed; the folder ends in a backslash.
struct GpPlace {
  std::string folder;
  std::string_view exe;
  std::string Path() const { return std::string(folder).append(exe); }
};

// All places, in the order of preference: the first program that opens for reading is the GP.
extern const std::size_t kGpPlaces;
GpPlace GpPlaceAt(std::size_t index);

// A developer's machine is one where this file opens for reading. It has its GP here, unasked.
inline constexpr char kDeveloperMark[] = "C:\\OrvaneAutomacao.txt";
inline constexpr char kDeveloperFolder[] =
    "D:\\Programas\\Cartao - Vetra\\Projeto com skin - Talvi\\";
inline constexpr char kDeveloperExe[] = "Pavolin.exe";

// A drive has an exchange folder when the program that lies in it opens for reading.
std::string ExchangeProgramOn(char drive);
std::string ExchangeFolderOn(char drive);

}  // namespace caixora
