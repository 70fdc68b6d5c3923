// Exports that report a lack of memory do it through an exception, and the first exception of a
// thread needs memory of its own: the runtime ends the process when it gets none. Every export that
// can throw inside calls this first, while memory is most likely there.
#pragma once

#include <exception>

namespace caixora {

inline void PrepareToThrow() noexcept {
  // Asking for the number of exceptions in flight makes the thread's record of them.
  static_cast<void>(std::uncaught_exceptions());
}

}  // namespace caixora
