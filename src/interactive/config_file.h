// "ConfigQJ.ini": lines KEY=value that tell the interactive flow where its companion lies.
//
// Nothing is trimmed, keys are case-sensitive, a value ends at a second "=", and lines without "="
// are ignored. A line that ends in its first "=" holds no value and is ignored as well.
#pragma once

#include <string>
#include <string_view>

#include "support/state.h"

namespace caixora {

// Looked for in the host's current directory.
inline constexpr char kConfigFile[] = "ConfigQJ.ini";

// Reads the file into ConfigList. False when it cannot be opened, which leaves the list as it is,
// or cannot be read to its end, which leaves the pairs read so far.
bool LerArquivoConfigQJ(const std::string& path);

// The last pair with this key, or two empty texts.
ConfigPair FindConfigQJ(std::string_view key);

}  // namespace caixora
