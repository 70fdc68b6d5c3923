// The one way in which the system refuses something: the code that it gives for it. Every call of
// this folder that can be refused returns one; nothing throws but std::bad_alloc.
#pragma once

#include <cstdint>

namespace caixora {

// The system's own codes; named are those that decisions rest on.
enum class [[nodiscard]] SystemError : std::uint32_t{
    kNone = 0,
    kFileNotFound = 2,
    kPathNotFound = 3,
};

}  // namespace caixora
