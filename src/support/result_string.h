// The texts that exports return: BSTRs that hold Windows-1252 bytes. Tests link their own.
#pragma once

#include <memory>

#include "support/log_line.h"
#include "support/wait.h"

namespace caixora {

struct ResultStringFreer {
  void operator()(wchar_t* text) const noexcept;
};

// Owns a BSTR until release() hands it to the host; null only where an allocation failed.
using ResultString = std::unique_ptr<wchar_t, ResultStringFreer>;

// The pieces joined; null when memory runs out.
ResultString MakeResult(Pieces text) noexcept;

// As MakeResult, but waits until there is memory. For the start of a call, when nothing is at stake
// yet: an export that holds such a text can always return one.
inline ResultString MakeResultForSure(Pieces text) noexcept {
  ResultString result = MakeResult(text);
  for (; result == nullptr; result = MakeResult(text)) Pause(100);
  return result;
}

}  // namespace caixora
