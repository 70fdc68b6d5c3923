// Which call each line of a log belongs to, and how each call went.
#pragma once

#include <vector>

#include "tools/log_reader.h"

namespace caixora {

// Takes the lines in the order of their times, gives each its call and appends the calls, by their
// beginning.
void FollowCalls(std::vector<LogLine>& lines, std::vector<Call>& calls);

}  // namespace caixora
