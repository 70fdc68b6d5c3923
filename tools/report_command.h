// "relatorio": the page of one or several logs, from the command line.
#pragma once

#include <ostream>
#include <span>
#include <string>
#include <vector>

namespace caixora {

// Arguments and names in UTF-8. Says the page's path and what it holds, or why there is none, and
// gives the exit status: 0, 1 for files that give no page, 2 for wrong use.
int RunReport(std::span<const std::string> arguments, std::ostream& out, std::ostream& errors);

}  // namespace caixora
