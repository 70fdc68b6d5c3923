#include "system/version.h"

#include <array>
#include <cstring>
#include <cwchar>
#include <string_view>
#include <vector>

#include "windows/win32.h"

namespace caixora {
namespace {

// `width` upper-case hexadecimal digits.
std::wstring Hex(unsigned number, int width) {
  std::wstring digits(static_cast<std::size_t>(width), L'0');
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, number >>= 4)
    *digit = L"0123456789ABCDEF"[number & 0xF];
  return digits;
}

// Path of the file version string in the language that the version block names, or in the user's
// own when it names none. Language and code page together spell eight digits.
std::wstring FileVersionPath(const void* block) {
  void* value = nullptr;
  UINT size = 0;
  std::wstring table = Hex(::GetUserDefaultLangID(), 4) + L"04B0";
  if (::VerQueryValueW(block, L"\\VarFileInfo\\Translation", &value, &size) && size == 4) {
    std::array<WORD, 2> translation;  // language, code page
    std::memcpy(translation.data(), value, sizeof translation);
    table = Hex(translation[0], 4) + Hex(translation[1], 4);
  }
  return L"\\StringFileInfo\\" + table + L"\\FileVersion";
}

}  // namespace

std::wstring LibraryVersion(const char* file_name) {
  DWORD ignored = 0;
  const DWORD size = ::GetFileVersionInfoSizeA(file_name, &ignored);
  if (size == 0) return L"1";
  std::vector<char> information(size);
  if (!::GetFileVersionInfoA(file_name, 0, size, information.data())) return L"2";
  void* value = nullptr;
  UINT length = 0;
  if (!::VerQueryValueA(information.data(), "\\", &value, &length) ||
      length < sizeof(VS_FIXEDFILEINFO))
    return {};
  VS_FIXEDFILEINFO fixed;
  std::memcpy(&fixed, value, sizeof fixed);
  // The first number is the product's, the others are the file's: support staff compare these texts
  // with those of older releases, whose two versions differ.
  const std::array<unsigned, 4> numbers{
      HIWORD(fixed.dwProductVersionMS), LOWORD(fixed.dwFileVersionMS),
      HIWORD(fixed.dwFileVersionLS), LOWORD(fixed.dwFileVersionLS)};
  std::string text;
  for (const unsigned number : numbers)
    text.append(text.empty() ? "" : ".").append(std::to_string(number));
  return {text.begin(), text.end()};
}

std::wstring HostVersion() {
  const HRSRC found = ::FindResourceW(nullptr, MAKEINTRESOURCEW(VS_VERSION_INFO),
                                      MAKEINTRESOURCEW(16));  // RT_VERSION
  if (found == nullptr) return {};
  const HGLOBAL loaded = ::LoadResource(nullptr, found);
  const void* block = loaded == nullptr ? nullptr : ::LockResource(loaded);
  if (block == nullptr) return {};
  void* value = nullptr;
  UINT length = 0;
  if (!::VerQueryValueW(block, FileVersionPath(block).c_str(), &value, &length)) return {};
  const auto* text = static_cast<const wchar_t*>(value);
  return {text, ::wcsnlen(text, length)};
}

}  // namespace caixora
