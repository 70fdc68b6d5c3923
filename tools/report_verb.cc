#include "tools/report_verb.h"

#include <sstream>

#include "programs/console.h"
#include "tools/report_command.h"

namespace caixora {

int PrintReport(std::span<const std::string> arguments) {
  std::ostringstream out;
  std::ostringstream errors;
  const int status = RunReport(arguments, out, errors);
  Print(out.str());
  Print(errors.str(), STD_ERROR_HANDLE);
  return status;
}

}  // namespace caixora
