// Pieces of HTML on their way to a page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "tools/shortened.h"

namespace caixora {

class Html {
 public:
  // With `whole`, nothing of the log is shortened.
  Html(std::ostream& page, bool whole) : page_(page), whole_(whole) {}
  ~Html() { page_ << buffer_; }
  Html(const Html&) = delete;
  Html& operator=(const Html&) = delete;

  // Markup of ours.
  Html& operator<<(std::string_view markup) {
    buffer_.append(markup);
    if (buffer_.size() > kFlush) {
      page_ << buffer_;
      buffer_.clear();
    }
    return *this;
  }
  Html& operator<<(std::int64_t number) { return *this << std::to_string(number); }
  Html& operator<<(std::size_t number) { return *this << std::to_string(number); }

  // A text that may hold anything, as it stands.
  Html& Text(std::string_view text) {
    AppendHtml(text, buffer_);
    return *this << "";
  }

  // One of the log.
  Html& Logged(std::string_view text, std::span<const std::string_view> kept = {}) {
    return whole_ ? Text(text) : Text(Shortened(text, kept));
  }

 private:
  static constexpr std::size_t kFlush = 1 << 18;
  std::ostream& page_;
  bool whole_;
  std::string buffer_;
};

}  // namespace caixora
