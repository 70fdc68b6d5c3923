// Files and folders.
//
// Paths are C strings, which end at their first NUL: Windows-1252 bytes, or wide texts made of
// them. Contents are raw bytes. No call shows a dialog, whatever the drive says.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "system/system_error.h"

namespace caixora {

// One file, open or not. Others may read and write it meanwhile, but not delete it.
class File {
 public:
  enum class Use : std::uint8_t {
    kRead,           // must exist
    kReplace,        // created, or emptied
    kAppend,         // created when missing; writes go to the end
    kReadAndAppend,  // as kAppend, and refused where reading is
  };

  File() noexcept = default;
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { Close(); }

  // Closes what was open before.
  SystemError Open(const std::string& path, Use use);
  void Close() noexcept;
  explicit operator bool() const noexcept { return handle_ != nullptr; }

  // The rest is for an open file alone.

  // Takes the next bytes, at most `size`; `taken` is 0 at the end.
  SystemError Read(char* buffer, std::size_t size, std::size_t& taken) noexcept;

  // Writes all bytes in one piece.
  SystemError Write(std::string_view bytes) noexcept;

  // Size in bytes, found by seeking to the end.
  SystemError SeekToEnd(std::int64_t& size) noexcept;

 private:
  void* handle_ = nullptr;
};

// kFileNotFound only when the system says just that; a missing folder on the way and missing rights
// are other errors.
SystemError QueryPath(const std::wstring& path, bool& is_folder) noexcept;

SystemError DeleteFileAt(const std::string& path);
SystemError RenameFile(const std::string& from, const std::string& to);
SystemError CreateFolder(const std::wstring& path) noexcept;

}  // namespace caixora
