#include "system/wide_text.h"

#include <cwchar>

#include "windows/code_page.h"

namespace caixora {

std::wstring ToWide(const std::string& text) {
  const UINT page = TextCodePage();
  const int size = ::MultiByteToWideChar(page, 0, text.c_str(), -1, nullptr, 0);
  if (size <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  ::MultiByteToWideChar(page, 0, text.c_str(), -1, wide.data(), size);
  wide.resize(std::wcslen(wide.c_str()));
  return wide;
}

std::string ToNarrow(const std::wstring& text) {
  const UINT page = TextCodePage();
  const int size = ::WideCharToMultiByte(page, 0, text.c_str(), -1, nullptr, 0, nullptr, nullptr);
  if (size <= 0) return {};
  std::string narrow(static_cast<std::size_t>(size), '\0');
  ::WideCharToMultiByte(page, 0, text.c_str(), -1, narrow.data(), size, nullptr, nullptr);
  narrow.resize(narrow.size() - 1);
  return narrow;
}

}  // namespace caixora
