// One coverage-guided target per property check: compiled with -DCHECK=CheckAnswer and so on. A
// broken property ends the run with its exception and the input that broke it.
#include <cstddef>
#include <cstdint>

#include "properties.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CHECK({reinterpret_cast<const char*>(data), size});
  return 0;
}
