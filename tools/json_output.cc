#include "tools/json_output.h"

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace caixora {

JsonOutput::JsonOutput() {
  // Programs that the library starts must not hold the pipes open when this one has ended.
  for (const DWORD stream : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE})
    ::SetHandleInformation(::GetStdHandle(stream), HANDLE_FLAG_INHERIT, 0);
  const HANDLE self = ::GetCurrentProcess();
  HANDLE copy = nullptr;
  ::DuplicateHandle(self, ::GetStdHandle(STD_OUTPUT_HANDLE), self, &copy, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
  stream_ = Own(copy);
  const int out = ::_fileno(stdout);
  if (::_dup2(::_fileno(stderr), out) != 0)  // a host without a window has no standard error
    ::_dup2(::_open("NUL", _O_WRONLY), out);
  ::SetStdHandle(STD_OUTPUT_HANDLE, ::GetStdHandle(STD_ERROR_HANDLE));
}

bool JsonOutput::Write(const nlohmann::ordered_json& json) const {
  const std::string line = json.dump() + "\n";
  DWORD done = 0;
  for (std::string_view rest = line; !rest.empty(); rest.remove_prefix(done)) {
    const auto size = static_cast<DWORD>(std::min<std::size_t>(rest.size(), 1 << 16));
    if (!::WriteFile(stream_.get(), rest.data(), size, &done, nullptr)) return false;
  }
  return true;
}

}  // namespace caixora
