#include "support/hard_stop.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/ansi.h"

namespace caixora {

void StopHost() noexcept {
  constexpr std::string_view kMessage = u8"não foi possível criar o log!"_ansi;
  std::fwrite(kMessage.data(), 1, kMessage.size(), stdout);
  std::exit(1);
}

}  // namespace caixora
