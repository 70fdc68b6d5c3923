// Lines of a pipe or file.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "windows/win32.h"

namespace caixora {

inline constexpr std::size_t kLineLimit = 1 << 20;

struct Line {
  std::string text;       // without the line feed
  bool too_long = false;  // its text is not kept
  bool ended = false;     // by a line feed
};

class LineReader {
 public:
  // `await` is called before each read, and ends the input where it returns false.
  explicit LineReader(
      HANDLE stream, std::function<bool()> await = [] { return true; })
      : stream_(stream), await_(std::move(await)) {}

  // Nothing at the end of the input.
  std::optional<Line> Next() {
    Line line;
    bool any = false;
    while (!line.ended && (begin_ < end_ || Fill())) {
      any = true;
      const std::string_view ready(buffer_ + begin_, end_ - begin_);
      const std::size_t size = std::min(ready.find('\n'), ready.size());
      line.ended = size < ready.size();
      line.too_long = line.too_long || line.text.size() + size > kLineLimit;
      if (line.too_long)
        line.text.clear();
      else
        line.text += ready.substr(0, size);
      begin_ += size + (line.ended ? 1 : 0);
    }
    return any ? std::optional(std::move(line)) : std::nullopt;
  }

 private:
  bool Fill() {
    DWORD got = 0;
    if (!await_() || !::ReadFile(stream_, buffer_, sizeof buffer_, &got, nullptr)) return false;
    begin_ = 0;
    end_ = got;
    return got > 0;
  }

  HANDLE stream_;
  std::function<bool()> await_;
  char buffer_[1 << 16] = {};
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace caixora
