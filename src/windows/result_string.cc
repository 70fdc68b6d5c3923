#include "system/result_string.h"

#include <cstdint>

#include "windows/win32.h"
// After windows.h, which it needs.
#include <oleauto.h>

namespace caixora {

void ResultStringFreer::operator()(wchar_t* text) const noexcept { ::SysFreeString(text); }

ResultString MakeResult(std::initializer_list<std::string_view> pieces) noexcept {
  std::size_t size = 0;
  for (const std::string_view piece : pieces) size += piece.size();
  if (size > INT32_MAX) return nullptr;
  ResultString result(::SysAllocStringByteLen(nullptr, static_cast<UINT>(size)));
  if (result == nullptr) return nullptr;
  char* end = reinterpret_cast<char*>(result.get());
  for (const std::string_view piece : pieces) end += piece.copy(end, piece.size());
  return result;
}

}  // namespace caixora
