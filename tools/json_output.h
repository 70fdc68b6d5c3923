// Standard output as a stream of JSON lines, which nothing else gets into.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "windows/handle.h"

namespace caixora {

// From its creation on, what anything else in the process writes to its standard output, such as
// the library's last words, goes to the standard error. Made before the library is loaded: a
// library with a C runtime of its own takes the handles over then.
class JsonOutput {
 public:
  JsonOutput();

  // One line in UTF-8. False when nobody reads any more.
  bool Write(const nlohmann::ordered_json& json) const;

 private:
  Handle stream_;
};

}  // namespace caixora
