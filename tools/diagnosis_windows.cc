#include <algorithm>
#include <array>
#include <cwchar>
#include <iterator>

#include "system/wide_text.h"
#include "tools/diagnosis_machine.h"
#include "windows/handle.h"
// After windows.h, which it needs.
#include <restartmanager.h>

namespace caixora {
namespace {

// A drive without a disk and a damaged library are answers, not dialogs.
class NoDialogs {
 public:
  NoDialogs() { ::SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &previous_); }
  ~NoDialogs() { ::SetThreadErrorMode(previous_, nullptr); }
  NoDialogs(const NoDialogs&) = delete;
  NoDialogs& operator=(const NoDialogs&) = delete;

 private:
  DWORD previous_ = 0;
};

SystemError ErrorOf(BOOL done) {
  return done ? SystemError::kNone : static_cast<SystemError>(::GetLastError());
}

std::wstring FullPath(const std::string& path) {
  const std::wstring wide = ToWide(path);
  std::wstring full(::GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(
      ::GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full;
}

// Of this process and moment: nobody else has a file of this name.
std::wstring NewNameIn(const std::string& folder) {
  return FullPath(folder) + L"\\caixora_host_" + std::to_wstring(::GetCurrentProcessId()) + L"_" +
         std::to_wstring(::GetTickCount64()) + L".tmp";
}

}  // namespace

std::string CurrentFolder() { return ToNarrow(FullPath(".")); }

std::string ProgramFolder() {
  std::wstring path(32768, L'\0');
  path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return ToNarrow(path.substr(0, path.rfind(L'\\')));
}

SystemError TryToWriteIn(const std::string& folder) {
  const NoDialogs scope;
  // Goes with its handle, even if this process is ended meanwhile.
  const Handle file =
      Own(::CreateFileW(NewNameIn(folder).c_str(), GENERIC_WRITE | DELETE,
                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
  if (!file) return ErrorOf(FALSE);
  constexpr std::array<char, 4096> kBytes{};
  DWORD done = 0;
  return ErrorOf(::WriteFile(file.get(), kBytes.data(), DWORD{kBytes.size()}, &done, nullptr));
}

SystemError TryToMakeFolderIn(const std::string& folder) {
  const NoDialogs scope;
  const std::wstring path = NewNameIn(folder);
  if (!::CreateDirectoryW(path.c_str(), nullptr)) return ErrorOf(FALSE);
  for (int attempt = 0; attempt < 50 && !::RemoveDirectoryW(path.c_str()); ++attempt) ::Sleep(20);
  return SystemError::kNone;
}

SystemError TryToDelete(const std::string& path) {
  const NoDialogs scope;
  const std::wstring wide = ToWide(path);
  const DWORD attributes = ::GetFileAttributesW(wide.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0)
    return static_cast<SystemError>(ERROR_ACCESS_DENIED);
  const Handle file = Own(::CreateFileW(wide.c_str(), DELETE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  return ErrorOf(file != nullptr);
}

SystemError TryToLoad(const std::string& path) {
  const NoDialogs scope;
  const HMODULE library =
      ::LoadLibraryExW(FullPath(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  const SystemError error = ErrorOf(library != nullptr);
  if (library != nullptr) ::FreeLibrary(library);
  return error;
}

DriveKind KindOfDrive(char letter) {
  const NoDialogs scope;
  const std::wstring root = {static_cast<wchar_t>(letter), L':', L'\\'};
  switch (::GetDriveTypeW(root.c_str())) {
    case DRIVE_NO_ROOT_DIR:
      return DriveKind::kNone;
    case DRIVE_REMOVABLE:
      return DriveKind::kRemovable;
    case DRIVE_REMOTE:
      return DriveKind::kNetwork;
    case DRIVE_CDROM:
      return DriveKind::kOptical;
    default:
      return DriveKind::kFixed;
  }
}

std::vector<ListedFile> ListFiles(const std::string& folder, const std::string& prefix) {
  const NoDialogs scope;
  std::vector<ListedFile> files;
  WIN32_FIND_DATAW found;
  const std::wstring pattern = FullPath(folder) + L"\\" + ToWide(prefix) + L"*";
  const HANDLE search = ::FindFirstFileW(pattern.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return files;
  do {
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
      files.push_back({ToNarrow(found.cFileName),
                       std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow});
  } while (::FindNextFileW(search, &found));
  ::FindClose(search);
  std::sort(files.begin(), files.end(),
            [](const ListedFile& a, const ListedFile& b) { return a.name < b.name; });
  return files;
}

std::vector<std::string> UsersOf(const std::string& path) {
  std::vector<std::string> users;
  DWORD session = 0;
  std::array<wchar_t, CCH_RM_SESSION_KEY + 1> key{};
  if (::RmStartSession(&session, 0, key.data()) != ERROR_SUCCESS) return users;
  const std::wstring full = FullPath(path);
  LPCWSTR name = full.c_str();
  std::array<RM_PROCESS_INFO, 16> processes;
  UINT wanted = 0;
  UINT count = UINT{processes.size()};
  DWORD reasons = 0;
  if (::RmRegisterResources(session, 1, &name, 0, nullptr, 0, nullptr) == ERROR_SUCCESS &&
      ::RmGetList(session, &wanted, &count, processes.data(), &reasons) == ERROR_SUCCESS)
    for (UINT i = 0; i < count; ++i) users.push_back(ToNarrow(processes[i].strAppName));
  ::RmEndSession(session);
  return users;
}

unsigned AnsiCodePage() { return ::GetACP(); }

}  // namespace caixora
