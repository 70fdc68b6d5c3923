#include "support/file_helpers.h"

#include <array>

#include "support/ansi.h"
#include "support/boundary.h"
#include "support/log.h"

namespace caixora {
namespace {

using Chunk = std::array<char, 16384>;

}  // namespace

void RemoveFile(const std::string& path) noexcept {
  WriteLog({"Caminho Remover Arquivo: ", path}, Detail::kDetailed);
  Guarded(
      [&] {
        if (!OpensForReading(path)) return;
        WriteLog({u8"Exclusão: "_ansi, path}, Detail::kDetailed);
        static_cast<void>(DeleteFileAt(path));
      },
      [&] {
        WriteLog({"Erro ao Remover Arquivo: ", path});
      });
}

bool FileExists(const std::wstring& path) noexcept {
  bool is_folder = false;
  return QueryPath(path, is_folder) != SystemError::kFileNotFound;
}

bool OpensForReading(const std::string& path) {
  return File().Open(path, File::Use::kRead) == SystemError::kNone;
}

std::int32_t FileSizeMB(const std::string& path) {
  File file;
  std::int64_t size = 0;
  if (file.Open(path, File::Use::kRead) != SystemError::kNone ||
      file.SeekToEnd(size) != SystemError::kNone)
    return 0;
  // The position is a signed 32-bit number, which wraps from 2 GiB on.
  return static_cast<std::int32_t>(size) / 1048576;
}

SystemError ReadAll(File& file, std::string& bytes) {
  Chunk chunk;
  for (std::size_t size = 0;;) {
    const SystemError error = file.Read(chunk.data(), chunk.size(), size);
    if (error != SystemError::kNone || size == 0) return error;
    bytes.append(chunk.data(), size);
  }
}

SystemError ReadFirstLine(File& file, std::string& line) {
  Chunk chunk;
  for (std::size_t size = 0;;) {
    const SystemError error = file.Read(chunk.data(), chunk.size(), size);
    if (error != SystemError::kNone || size == 0) return error;
    const std::string_view bytes(chunk.data(), size);
    const std::size_t end = bytes.find('\n');
    line.append(bytes.substr(0, end));
    if (end == bytes.npos) continue;
    if (line.ends_with('\r')) line.pop_back();
    return error;
  }
}

}  // namespace caixora
