// The library's only diagnostic channel: one text file, "Caixora.log", under LogBaseFolder +
// "Log\". Nothing is kept between calls: the switch file "LD.txt" is read and the log opened,
// written and closed for every line, so that both can be changed, moved and read while the host
// runs.
#pragma once

#include <string>

#include "support/log_line.h"

namespace caixora {

// Writes one line, if the switch file asks for lines of this detail. Never fails towards its caller
// (a line that memory does not suffice for, or that the disk does not take, is dropped), but ends
// the process when the log cannot be opened for reading and appending: the library refuses to take
// payments without its log.
void WriteLog(Pieces message, Detail detail = Detail::kOrdinary) noexcept;

// What decides over the lines, and where they go; neither logs. A switch file that cannot be opened
// asks for ordinary lines; one that opens but cannot be read, for none.
inline constexpr char kSwitchFile[] = "LD.txt";
LogMode ReadLogSwitch();
inline constexpr char kLogFile[] = "Caixora.log";
std::string LogFolderUnder(const std::string& base);

// Reads this library's version, which the lines carry, anew; every exported call does so before its
// first line. When memory runs out the version stays as it was.
void RecordLibraryVersion() noexcept;

}  // namespace caixora
