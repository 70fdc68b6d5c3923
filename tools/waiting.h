// What the person at the console sees, and may do, while something blocks.
#pragma once

#include <string>
#include <thread>

#include "windows/handle.h"

namespace caixora {

// From now on Ctrl-C, Ctrl-Break and a closed window do not end the process at once.
void TakeInterruptions();

// Whether one of them came.
bool Interrupted();

// False when it was cut short by one of them.
bool PauseFor(DWORD milliseconds);

// Waits until the object is signalled. False when that was cut short by one of them.
bool WaitFor(HANDLE object);

// Around something that blocks: a line says what is awaited and for how long, and is gone
// afterwards. Only where the standard error is a console.
class Waiting {
 public:
  // With a warning, what blocks cannot be given up: Ctrl-C shows it, and only a second one ends the
  // process, as kUncertain.
  explicit Waiting(std::string what, std::string warning = {});
  ~Waiting();
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

 private:
  std::string warning_;
  Handle stop_;
  std::thread line_;
};

}  // namespace caixora
