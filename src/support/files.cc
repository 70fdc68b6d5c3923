#include "support/files.h"

#include "support/ansi.h"
#include "support/file.h"
#include "support/log.h"

namespace caixora {

void RemoveFile(const std::string& path) noexcept {
  WriteLog({"Caminho Remover Arquivo: ", path}, Detail::kDetailed);
  if (!OpensForReading(path)) return;
  WriteLog({u8"Exclusão: "_ansi, path}, Detail::kDetailed);
  DeleteFileAt(path);
}

bool FileExists(const std::wstring& path) noexcept {
  return QueryPath(path) != PathState::kNotFound;
}

bool OpensForReading(const std::string& path) noexcept {
  return File::Open(path, File::Use::kRead).has_value();
}

std::int32_t FileSizeMB(const std::string& path) noexcept {
  auto file = File::Open(path, File::Use::kRead);
  // The position is a signed 32-bit number, as it always was: it wraps from 2 GiB on.
  return file ? static_cast<std::int32_t>(file->SeekToEnd()) / 1048576 : 0;
}

}  // namespace caixora
