// The library's texts as the system's wide texts and back, both up to their first NUL. The code
// page is the host's ANSI one; where that is UTF-8 it is Windows-1252, which the library's texts
// are.
#pragma once

#include <string>

namespace caixora {

std::wstring ToWide(const std::string& text);
std::string ToNarrow(const std::wstring& text);

}  // namespace caixora
