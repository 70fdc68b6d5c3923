// The local time as a text of the format of strftime.
#pragma once

#include <ctime>
#include <string>

namespace caixora {

inline std::string Now(const char* format) {
  const std::time_t now = std::time(nullptr);
  char text[32];
  return {text, std::strftime(text, sizeof text, format, std::localtime(&now))};
}

}  // namespace caixora
