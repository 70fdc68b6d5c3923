// Text files as the C runtime's text mode reads and writes them, told once: the exchange with the
// GP depends on it, and doing it here keeps the host's own runtime settings out of it.
#pragma once

#include <string>
#include <string_view>

namespace caixora {

class File;

// Every line feed as carriage return and line feed.
std::string EncodeTextMode(std::string_view text);

// Carriage returns before a line feed are dropped, others stay; byte 0x1A ends the text.
void DecodeTextMode(std::string& bytes);

// Appends the rest of the file, as it is. Throws FileError or std::bad_alloc; `bytes` then holds
// what came before.
void ReadAll(File& file, std::string& bytes);

// The first line without its end (a line feed, or carriage return and line feed), whatever other
// bytes it holds: here 0x1A ends nothing. Throws as ReadAll does.
std::string ReadFirstLine(File& file);

}  // namespace caixora
