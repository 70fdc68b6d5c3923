// "relatorio" as a verb of the tool.
#pragma once

#include <span>
#include <string>

namespace caixora {

int PrintReport(std::span<const std::string> arguments);

}  // namespace caixora
