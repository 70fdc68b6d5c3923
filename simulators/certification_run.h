// A certification at this machine's exchange folder, GP and companion.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "simulators/certification.h"
#include "simulators/gp_director.h"

namespace caixora::certification {

inline constexpr int kBadScript = 1;
inline constexpr int kFailed = 6;
inline constexpr int kIncomplete = 7;
inline constexpr int kObstructed = 8;

struct RunOptions {
  std::string folder;   // of the exchange
  std::string steps;    // file; empty: the list that comes along
  std::string result;   // path of the result without its extension; empty: one with the date
  std::string program;  // under test, UTF-8
  std::string companion = "C:\\Trevix";
  std::optional<Span> limit;
  bool automatic = false;
};

// Returns the exit code: 0 when every step passed. `books` watches, `report` shows them.
int Run(const RunOptions& options, gp::Director& books, const std::function<void()>& report);

}  // namespace caixora::certification
