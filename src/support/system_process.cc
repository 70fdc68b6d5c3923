#include "support/system_process.h"

#include <cwctype>
#include <memory>
#include <string_view>

#include "support/windows.h"
// After windows.h, which they need.
#include <shellapi.h>
#include <tlhelp32.h>

namespace caixora {
namespace {

struct HandleCloser {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const noexcept { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<HANDLE, HandleCloser>;

// Byte by byte on the name's side: image names are compared without any code page.
bool SameImage(std::string_view name, std::wstring_view image) {
  if (name.size() != image.size()) return false;
  for (std::size_t i = 0; i < name.size(); ++i)
    if (std::towupper(static_cast<unsigned char>(name[i])) != std::towupper(image[i])) return false;
  return true;
}

}  // namespace

bool ImageRuns(const std::string& name) noexcept {
  const HANDLE opened = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (opened == INVALID_HANDLE_VALUE) return false;
  const Handle snapshot(opened);
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = ::Process32FirstW(snapshot.get(), &entry); more;
       more = ::Process32NextW(snapshot.get(), &entry))
    if (SameImage(name, entry.szExeFile)) return true;
  return false;
}

void ShellOpen(const std::string& program, const std::string& arguments) noexcept {
  // The working folder is no folder at all, and stays so: the programs find their own.
  ::ShellExecuteA(nullptr, "open", program.c_str(), arguments.c_str(), "C:\"", SW_SHOWDEFAULT);
}

void ShellOpenDefault(const char* program, const char* arguments, const char* folder) noexcept {
  ::ShellExecuteA(nullptr, nullptr, program, arguments, folder, SW_SHOWNORMAL);
}

void ShellRunElevated(const wchar_t* program, const wchar_t* arguments) noexcept {
  ::ShellExecuteW(nullptr, L"runas", program, arguments, nullptr, SW_HIDE);
}

void RunHidden(const char* command) noexcept { ::WinExec(command, SW_HIDE); }

bool IsElevated() noexcept {
  HANDLE opened = nullptr;
  if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &opened)) return false;
  const Handle token(opened);
  TOKEN_ELEVATION elevation{};
  DWORD size = 0;
  return ::GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof elevation, &size) &&
         elevation.TokenIsElevated != 0;
}

}  // namespace caixora
