// What a certification found, as people and programs read it. Everything is UTF-8.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "simulators/certification.h"

namespace caixora::certification {

// Where and with what it ran. What is not known stays empty.
struct Circumstances {
  std::string program;          // under test, with its version
  std::string program_version;  // as the library read it from the program's file
  std::string library_version;
  std::string machine;
  std::string started;
  std::string ended;
};

std::string Text(const Certification& certification, const Circumstances& circumstances);
nlohmann::ordered_json Json(const Certification& certification, const Circumstances& circumstances);
std::string Page(const Certification& certification, const Circumstances& circumstances);

}  // namespace caixora::certification
