#include "system/time.h"
#include "windows/win32.h"

namespace caixora {

LocalTime Now() noexcept {
  SYSTEMTIME now;
  ::GetLocalTime(&now);
  return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

}  // namespace caixora
