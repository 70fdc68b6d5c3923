#include "support/text_mode.h"

#include <algorithm>
#include <array>

#include "support/file.h"

namespace caixora {
namespace {

constexpr char kEndOfText = '\x1A';

using Chunk = std::array<char, 16384>;

}  // namespace

std::string EncodeTextMode(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
  for (const char c : text) {
    if (c == '\n') bytes.push_back('\r');
    bytes.push_back(c);
  }
  return bytes;
}

void DecodeTextMode(std::string& bytes) {
  bytes.resize(std::min(bytes.find(kEndOfText), bytes.size()));
  std::size_t kept = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const bool before_line_feed = i + 1 < bytes.size() && bytes[i + 1] == '\n';
    if (bytes[i] != '\r' || !before_line_feed) bytes[kept++] = bytes[i];
  }
  bytes.resize(kept);
}

void ReadAll(File& file, std::string& bytes) {
  Chunk chunk;
  while (const std::size_t size = file.Read(chunk.data(), chunk.size()))
    bytes.append(chunk.data(), size);
}

std::string ReadFirstLine(File& file) {
  std::string line;
  Chunk chunk;
  while (const std::size_t size = file.Read(chunk.data(), chunk.size())) {
    const std::string_view bytes(chunk.data(), size);
    const std::size_t end = bytes.find('\n');
    line.append(bytes.substr(0, end));
    if (end == bytes.npos) continue;
    if (line.ends_with('\r')) line.pop_back();
    break;
  }
  return line;
}

}  // namespace caixora
