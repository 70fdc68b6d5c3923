// The report as a program of its own, for where the library does not run.
#include <iostream>

#include "tools/report_command.h"

int main(int count, char** arguments) {
  const std::vector<std::string> texts(arguments + 1, arguments + count);
  return caixora::RunReport(texts, std::cout, std::cerr);
}
