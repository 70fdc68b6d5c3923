// The texts that exports return: BSTRs that hold Windows-1252 bytes.
#pragma once

#include <initializer_list>
#include <memory>
#include <string_view>

namespace caixora {

struct ResultStringFreer {
  void operator()(wchar_t* text) const noexcept;
};

// Owns a BSTR until release() hands it to the host.
using ResultString = std::unique_ptr<wchar_t, ResultStringFreer>;

// The pieces joined; null when the system has no memory for it.
ResultString MakeResult(std::initializer_list<std::string_view> pieces) noexcept;

}  // namespace caixora
