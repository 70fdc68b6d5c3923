// The one way in which the system says why it refused a file or folder: the code that it gives for
// it. Questions of this folder are answered by yes or no, starts of programs not at all. Nothing in
// it throws but std::bad_alloc.
#pragma once

#include <cstdint>

namespace caixora {

// The system's own codes; named are those that decisions rest on.
// clang-format off
enum class [[nodiscard]] SystemError : std::uint32_t {
  kNone = 0,
  kFileNotFound = 2,
  kPathNotFound = 3,
};
// clang-format on

}  // namespace caixora
