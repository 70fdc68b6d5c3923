// The answers to the companion's questions: given beforehand, typed, or read from a pipe.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "tools/line_reader.h"

namespace caixora {

class Answers {
 public:
  explicit Answers(std::span<const std::string> given);
  Answers(const Answers&) = delete;
  Answers& operator=(const Answers&) = delete;

  // The next one in UTF-8; nothing when there is none left, or the input was interrupted.
  std::optional<std::string> Next();

  // Whether the next one is typed: one that cannot be sent may then be typed again.
  bool Typed() const;

 private:
  std::span<const std::string> given_;
  HANDLE input_;
  LineReader lines_;
  bool first_ = true;
};

}  // namespace caixora
