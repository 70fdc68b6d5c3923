// The library ends its process where it cannot open its log, with the status of a refusal. Whoever
// started this tool is to tell the two apart.
#pragma once

namespace caixora {

// From now on the process ends with kLibraryEnded, and says so, when it ends within a call of this
// thread.
void WatchForProcessEnd();

// Around a call of the library.
class InLibrary {
 public:
  InLibrary();
  ~InLibrary();
  InLibrary(const InLibrary&) = delete;
  InLibrary& operator=(const InLibrary&) = delete;
};

}  // namespace caixora
