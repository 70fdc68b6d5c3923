// "ConfigQJ.ini": lines KEY=value that tell the interactive flow where its companion lies.
//
// Nothing is trimmed, keys are case-sensitive, a value ends at a second "=", and lines without "="
// are ignored. A line that ends in its first "=" holds no value and is ignored as well.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/state.h"
#include "system/file.h"

namespace caixora {

// What the file means, without a line in the log.

// Reads the text of the open file; false, and the lines read so far, when it cannot be read whole.
bool ReadConfigText(File& file, std::string& text) noexcept;

// The pair of a line with these pieces between its "=", which are moved from; nothing when it holds
// none.
std::optional<ConfigPair> PairOf(std::vector<std::string>& pieces);

// The last pair with this key, or two empty texts.
ConfigPair LastPair(const std::vector<ConfigPair>& pairs, std::string_view key);

// Looked for in the host's current directory.
inline constexpr char kConfigFile[] = "ConfigQJ.ini";

// Reads the file into ConfigList. False when it cannot be opened, which leaves the list as it is,
// or cannot be read to its end, which leaves the pairs read so far.
bool LerArquivoConfigQJ(const std::string& path);

// As LastPair, in ConfigList.
ConfigPair FindConfigQJ(std::string_view key);

}  // namespace caixora
