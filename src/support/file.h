// What the library asks of the file system. Tests link another implementation of this header.
//
// Paths are Windows-1252 bytes and C strings: they end at their first NUL. Contents are raw bytes;
// see text_mode.h for line ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace caixora {

// A file that opened but could not be read or written.
class FileError : public std::exception {
 public:
  explicit FileError(const char* operation) noexcept : operation_(operation) {}
  const char* what() const noexcept override { return operation_; }

 private:
  const char* operation_;
};

// Owner of one open file. Others may read and write the file meanwhile, but not delete it.
class File {
 public:
  enum class Use : std::uint8_t {
    kRead,     // must exist
    kReplace,  // created, or emptied
    kAppend,   // created when missing; writes go to the end
  };

  // Nothing when the file cannot be opened, whatever the reason: missing, locked, a folder.
  static std::optional<File> Open(const std::string& path, Use use) noexcept;

  File(File&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  File& operator=(File&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~File();

  // Takes the next bytes, at most `size`; 0 at the end. Throws FileError.
  std::size_t Read(char* buffer, std::size_t size);

  // Writes all bytes in one piece, or throws FileError.
  void Write(std::string_view bytes);

  // Size in bytes, found by seeking to the end.
  std::int64_t SeekToEnd() noexcept;

 private:
  explicit File(void* handle) noexcept : handle_(handle) {}
  void* handle_;
};

enum class PathState : std::uint8_t { kFile, kFolder, kNotFound, kUnreadable };

// kNotFound only when the system says just that (error 2); a missing folder on the way, missing
// rights and the rest are kUnreadable.
PathState QueryPath(const std::wstring& path) noexcept;

enum class Deletion : std::uint8_t { kDone, kMissing, kFailed };
Deletion DeleteFileAt(const std::string& path) noexcept;

// These report nothing: their callers go on whatever comes of them.
void RenameFile(const std::string& from, const std::string& to) noexcept;
void CreateFolder(const std::wstring& path) noexcept;

// The text in the ANSI code page as wide text, up to its first NUL.
std::wstring ToWide(const std::string& text);

}  // namespace caixora
