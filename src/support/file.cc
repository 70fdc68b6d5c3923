#include "support/file.h"

#include <algorithm>
#include <cwchar>

#include "support/windows.h"

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

}  // namespace

std::optional<File> File::Open(const std::string& path, Use use) noexcept {
  const NoDialogs scope;
  DWORD access = GENERIC_READ;
  DWORD creation = OPEN_EXISTING;
  if (use == Use::kReplace) {
    access = GENERIC_WRITE;
    creation = CREATE_ALWAYS;
  } else if (use == Use::kAppend) {
    // Append access alone, so that two processes writing the same log never overwrite each other.
    access = FILE_APPEND_DATA | SYNCHRONIZE;
    creation = OPEN_ALWAYS;
  }
  // No security attributes: a program started meanwhile inherits none of our handles.
  const HANDLE handle = ::CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return std::nullopt;
  return File(handle);
}

File::~File() {
  if (handle_ != nullptr) ::CloseHandle(handle_);
}

std::size_t File::Read(char* buffer, std::size_t size) {
  DWORD taken = 0;
  const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(size, 1u << 30));
  if (!::ReadFile(handle_, buffer, wanted, &taken, nullptr)) throw FileError("ReadFile");
  return taken;
}

void File::Write(std::string_view bytes) {
  if (bytes.size() > MAXDWORD) throw FileError("WriteFile: too long");
  const DWORD size = static_cast<DWORD>(bytes.size());
  DWORD written = 0;
  if (!::WriteFile(handle_, bytes.data(), size, &written, nullptr) || written != size)
    throw FileError("WriteFile");
}

std::int64_t File::SeekToEnd() noexcept {
  LARGE_INTEGER end{};
  return ::SetFilePointerEx(handle_, LARGE_INTEGER{}, &end, FILE_END) ? end.QuadPart : 0;
}

PathState QueryPath(const std::wstring& path) noexcept {
  const NoDialogs scope;
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES)
    return ::GetLastError() == ERROR_FILE_NOT_FOUND ? PathState::kNotFound : PathState::kUnreadable;
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? PathState::kFolder : PathState::kFile;
}

Deletion DeleteFileAt(const std::string& path) noexcept {
  if (::DeleteFileA(path.c_str())) return Deletion::kDone;
  const DWORD error = ::GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? Deletion::kMissing
                                                                        : Deletion::kFailed;
}

void RenameFile(const std::string& from, const std::string& to) noexcept {
  ::MoveFileA(from.c_str(), to.c_str());
}

void CreateFolder(const std::wstring& path) noexcept { ::CreateDirectoryW(path.c_str(), nullptr); }

std::wstring ToWide(const std::string& text) {
  const int size = ::MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, nullptr, 0);
  if (size <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  ::MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, wide.data(), size);
  wide.resize(std::wcslen(wide.c_str()));
  return wide;
}

}  // namespace caixora
