// From what Windows gives to the UTF-8 that these sources work in.
#pragma once

#include <string>
#include <string_view>

#include "windows/win32.h"

namespace caixora {

// Half a surrogate pair becomes U+FFFD, which no text for the library may hold.
inline std::string Narrow(std::wstring_view wide) {
  std::string text(wide.size() * 3, '\0');
  const int used =
      ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), text.data(),
                            static_cast<int>(text.size()), nullptr, nullptr);
  text.resize(static_cast<std::size_t>(used));
  return text;
}

}  // namespace caixora
