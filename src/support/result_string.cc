#include "support/result_string.h"

#include <cstdint>

#include "support/windows.h"
// After windows.h, which it needs.
#include <oleauto.h>

namespace caixora {

void ResultStringFreer::operator()(wchar_t* text) const noexcept { ::SysFreeString(text); }

ResultString MakeResult(Pieces text) noexcept {
  std::size_t size = 0;
  for (const std::string_view piece : text) size += piece.size();
  if (size > INT32_MAX) return nullptr;
  ResultString result(::SysAllocStringByteLen(nullptr, static_cast<UINT>(size)));
  if (result == nullptr) return nullptr;
  char* end = reinterpret_cast<char*>(result.get());
  for (const std::string_view piece : text) end += piece.copy(end, piece.size());
  return result;
}

}  // namespace caixora
