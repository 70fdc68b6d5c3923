// What the exit status of the tool says.
#pragma once

#include <string>

#include "tools/functions.h"

namespace caixora {

// Of several calls the highest counts.
enum ExitStatus {
  kDone = 0,
  kRefused = 1,
  kUsage = 2,
  kNoLibrary = 3,
  kLocalReply = 4,
  kCancelled = 5,
  kLibraryEnded = 6,
  kUncertain = 7,
};

// Of a call that returned: whether it succeeded, and whether its reply came from the library.
ExitStatus StatusOf(Kind kind, bool succeeded, bool local);

// A line each, for the help.
std::string ExitStatusHelp();

}  // namespace caixora
