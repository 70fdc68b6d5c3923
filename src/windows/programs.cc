#include "system/programs.h"

#include <cstdio>
#include <cstdlib>
#include <cwctype>
#include <string_view>

#include "system/wide_text.h"
#include "windows/code_page.h"
#include "windows/handle.h"
// After windows.h, which they need.
#include <shellapi.h>
#include <tlhelp32.h>

namespace caixora {
namespace {

// Byte by byte on the name's side: image names are compared without any code page.
bool SameImage(std::string_view name, std::wstring_view image) {
  if (name.size() != image.size()) return false;
  for (std::size_t i = 0; i < name.size(); ++i)
    if (std::towupper(static_cast<unsigned char>(name[i])) != std::towupper(image[i])) return false;
  return true;
}

void Execute(const char* verb, const std::string& program, const std::string& arguments,
             const std::string& folder, int show) {
  if (NarrowCallsTakeUtf8()) {
    const std::wstring wide_verb(verb, verb + std::char_traits<char>::length(verb));
    ::ShellExecuteW(nullptr, wide_verb.empty() ? nullptr : wide_verb.c_str(),
                    ToWide(program).c_str(), ToWide(arguments).c_str(), ToWide(folder).c_str(),
                    show);
  } else {
    ::ShellExecuteA(nullptr, *verb == '\0' ? nullptr : verb, program.c_str(), arguments.c_str(),
                    folder.c_str(), show);
  }
}

}  // namespace

bool ImageRuns(const std::string& name) noexcept {
  const Handle snapshot = Own(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  if (!snapshot) return false;
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = ::Process32FirstW(snapshot.get(), &entry); more;
       more = ::Process32NextW(snapshot.get(), &entry))
    if (SameImage(name, entry.szExeFile)) return true;
  return false;
}

void ShellOpen(const std::string& program, const std::string& arguments) {
  // The working folder is no folder at all, and stays so: the programs find their own.
  Execute("open", program, arguments, "C:\"", SW_SHOWDEFAULT);
}

void ShellOpenDefault(const std::string& program, const std::string& arguments,
                      const std::string& folder) {
  Execute("", program, arguments, folder, SW_SHOWNORMAL);
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

void StopHost(std::string_view message) noexcept {
  std::fwrite(message.data(), 1, message.size(), stdout);
  std::exit(1);
}

}  // namespace caixora
