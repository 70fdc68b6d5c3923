#include "system/file.h"

#include <algorithm>
#include <utility>

#include "system/wide_text.h"
#include "windows/code_page.h"

namespace caixora {
namespace {

// While it lives, a drive without a disk is a file that does not open, and no dialog that stops the
// checkout: the search for the GP opens paths on every drive.
class NoDialogs {
 public:
  NoDialogs() noexcept {
    ::SetThreadErrorMode(::GetThreadErrorMode() | SEM_FAILCRITICALERRORS, &previous_);
  }
  ~NoDialogs() { ::SetThreadErrorMode(previous_, nullptr); }
  NoDialogs(const NoDialogs&) = delete;
  NoDialogs& operator=(const NoDialogs&) = delete;

 private:
  DWORD previous_ = 0;
};

SystemError LastError() noexcept {
  const DWORD code = ::GetLastError();
  // A refused call that gives no reason is still refused.
  return static_cast<SystemError>(code != 0 ? code : DWORD{ERROR_GEN_FAILURE});
}

SystemError ErrorOf(BOOL done) noexcept { return done ? SystemError::kNone : LastError(); }

struct Mode {
  DWORD access, creation;
};

// In the order of File::Use. Append access alone, so that two processes writing the same log never
// overwrite each other.
constexpr Mode kModes[] = {
    {GENERIC_READ, OPEN_EXISTING},
    {GENERIC_WRITE, CREATE_ALWAYS},
    {FILE_APPEND_DATA | SYNCHRONIZE, OPEN_ALWAYS},
    {FILE_APPEND_DATA | GENERIC_READ, OPEN_ALWAYS},
};

}  // namespace

SystemError File::Open(const std::string& path, Use use) {
  Close();
  const NoDialogs scope;
  const auto& [access, creation] = kModes[static_cast<std::size_t>(use)];
  constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE;
  const std::wstring wide = NarrowCallsTakeUtf8() ? ToWide(path) : std::wstring();
  // No security attributes: a program started meanwhile inherits none of our handles.
  const HANDLE handle = NarrowCallsTakeUtf8()
                            ? ::CreateFileW(wide.c_str(), access, kShare, nullptr, creation,
                                            FILE_ATTRIBUTE_NORMAL, nullptr)
                            : ::CreateFileA(path.c_str(), access, kShare, nullptr, creation,
                                            FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return LastError();
  handle_ = handle;
  return SystemError::kNone;
}

void File::Close() noexcept {
  if (const HANDLE handle = std::exchange(handle_, nullptr)) ::CloseHandle(handle);
}

SystemError File::Read(char* buffer, std::size_t size, std::size_t& taken) noexcept {
  const NoDialogs scope;
  DWORD done = 0;
  const auto wanted = static_cast<DWORD>(std::min<std::size_t>(size, 1u << 30));
  const SystemError error = ErrorOf(::ReadFile(handle_, buffer, wanted, &done, nullptr));
  taken = done;
  return error;
}

SystemError File::Write(std::string_view bytes) noexcept {
  if (bytes.size() > MAXDWORD) return static_cast<SystemError>(ERROR_FILE_TOO_LARGE);
  const NoDialogs scope;
  const auto size = static_cast<DWORD>(bytes.size());
  DWORD written = 0;
  const SystemError error = ErrorOf(::WriteFile(handle_, bytes.data(), size, &written, nullptr));
  if (error == SystemError::kNone && written != size)
    return static_cast<SystemError>(ERROR_DISK_FULL);
  return error;
}

SystemError File::SeekToEnd(std::int64_t& size) noexcept {
  const NoDialogs scope;
  LARGE_INTEGER end{};
  const SystemError error = ErrorOf(::SetFilePointerEx(handle_, LARGE_INTEGER{}, &end, FILE_END));
  size = end.QuadPart;
  return error;
}

SystemError QueryPath(const std::wstring& path, bool& is_folder) noexcept {
  const NoDialogs scope;
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  const bool found = attributes != INVALID_FILE_ATTRIBUTES;
  is_folder = found && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  return ErrorOf(found);
}

SystemError DeleteFileAt(const std::string& path) {
  const NoDialogs scope;
  return ErrorOf(NarrowCallsTakeUtf8() ? ::DeleteFileW(ToWide(path).c_str())
                                       : ::DeleteFileA(path.c_str()));
}

SystemError RenameFile(const std::string& from, const std::string& to) {
  const NoDialogs scope;
  return ErrorOf(NarrowCallsTakeUtf8() ? ::MoveFileW(ToWide(from).c_str(), ToWide(to).c_str())
                                       : ::MoveFileA(from.c_str(), to.c_str()));
}

SystemError CreateFolder(const std::wstring& path) noexcept {
  const NoDialogs scope;
  return ErrorOf(::CreateDirectoryW(path.c_str(), nullptr));
}

}  // namespace caixora
