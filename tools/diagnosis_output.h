// A diagnosis for people and for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/diagnosis.h"

namespace caixora {

// A line an item; in the last line whether a sale and whether an interactive flow could work.
std::string DiagnosisText(const Diagnosis& diagnosis);

nlohmann::ordered_json DiagnosisJson(const Diagnosis& diagnosis);

}  // namespace caixora
