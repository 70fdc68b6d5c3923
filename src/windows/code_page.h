// Which of the system's two kinds of calls takes the library's texts, Windows-1252 bytes.
//
// In most hosts the narrow calls do, in the host's ANSI code page, which in Brazil is 1252. A host
// whose manifest makes UTF-8 its ANSI code page would have them misread: there texts are widened
// with 1252 and go to the wide calls.
#pragma once

#include "windows/win32.h"

namespace caixora {

inline bool NarrowCallsTakeUtf8() noexcept { return ::GetACP() == CP_UTF8; }

inline UINT TextCodePage() noexcept { return NarrowCallsTakeUtf8() ? 1252 : CP_ACP; }

}  // namespace caixora
