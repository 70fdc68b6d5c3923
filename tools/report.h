// The log as one HTML page: open sales, the day's calls as bars, a table to be filtered, the lines.
#pragma once

#include <ostream>
#include <string>

#include "tools/log_reader.h"

namespace caixora {

struct ReportOptions {
  bool whole = false;  // CNPJs, documents, cards and telephones are not shortened
};

void WriteReport(const Log& log, const ReportOptions& options, std::ostream& page);

// What the page holds, in two lines.
std::string ReportSummary(const Log& log);

}  // namespace caixora
