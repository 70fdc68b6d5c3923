#include "support/clock.h"

#include "support/windows.h"

namespace caixora {

LogTime Now() noexcept {
  SYSTEMTIME now;
  ::GetLocalTime(&now);
  return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

}  // namespace caixora
