// Files of this folder that the programs carry with them; cmake/embed.cmake makes the texts.
#pragma once

#include <string_view>

namespace caixora {

extern const std::string_view kFailureTable;  // falhas.tsv
extern const std::string_view kReportPage;    // report_page.html

}  // namespace caixora
