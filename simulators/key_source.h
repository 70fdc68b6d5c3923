// The keys of a console, or of a pipe that stands in for one.
#pragma once

#include <memory>
#include <optional>

namespace caixora::gp {

class KeySource {
 public:
  // `keys`: reads the standard input. `ends`: Ctrl-C, or the closing of the window, becomes an Esc.
  KeySource(bool keys, bool ends);

  // A key in lower case, if one was pressed.
  std::optional<char> Next() const;

 private:
  class Pipe;

  bool console_ = false;
  std::shared_ptr<Pipe> pipe_;
};

}  // namespace caixora::gp
