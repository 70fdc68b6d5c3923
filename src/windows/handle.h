// The owner of a system handle, for the library and for the programs around it.
#pragma once

#include <memory>

#include "windows/win32.h"

namespace caixora {

struct HandleCloser {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const noexcept { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<HANDLE, HandleCloser>;

// Some calls fail with INVALID_HANDLE_VALUE, others with null; both become null here.
inline Handle Own(HANDLE handle) noexcept {
  return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

}  // namespace caixora
