// Text files as the C runtime's text mode reads and writes them, told once: the exchange with the
// GP depends on it, and doing it here keeps the host's own runtime settings out of it.
#pragma once

#include <string>
#include <string_view>

namespace caixora {

// Every line feed as carriage return and line feed.
std::string EncodeTextMode(std::string_view text);

// Carriage returns before a line feed are dropped, others stay; byte 0x1A ends the text.
void DecodeTextMode(std::string& bytes);

}  // namespace caixora
