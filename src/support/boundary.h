// What keeps failures inside. Whatever the system refuses is a value; memory is the one thing whose
// lack is thrown, and this is the one place where that ends.
#pragma once

#include "system/result_string.h"
#include "system/time.h"

namespace caixora {

// Does the work; when memory runs out in it, `otherwise` says what comes of it instead, and must
// not fail for want of memory (WriteLog does not: it drops its line).
template <class Work, class Otherwise>
auto Guarded(Work work, Otherwise otherwise) noexcept -> decltype(work()) {
  try {
    return work();
  } catch (...) {
  }
  return otherwise();
}

// As MakeResult, but waits until there is memory. For the start of a call, when nothing is at stake
// yet: an export that holds such a text can always return one.
inline ResultString MakeResultForSure(std::initializer_list<std::string_view> pieces) noexcept {
  ResultString result = MakeResult(pieces);
  for (; result == nullptr; result = MakeResult(pieces)) Pause(100);
  return result;
}

}  // namespace caixora
