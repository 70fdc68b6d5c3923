#include "support/text_mode.h"

#include <algorithm>

namespace caixora {
namespace {

constexpr char kEndOfText = '\x1A';

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

}  // namespace caixora
