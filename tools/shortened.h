// Texts of a log for a page that is passed on.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace caixora {

// CNPJs, CPFs, card numbers, telephones and every other run of ten digits or more, with or without
// punctuation, by their last digits: "…0195". Runs that are one of `kept` stay.
std::string Shortened(std::string_view utf8, std::span<const std::string_view> kept = {});

// As text of an HTML element or quoted attribute: nothing in it is markup or a script. Characters
// that have no look of their own, or change that of others, are named: NUL as "␀", U+202E as
// "\u202E".
void AppendHtml(std::string_view utf8, std::string& html);

}  // namespace caixora
