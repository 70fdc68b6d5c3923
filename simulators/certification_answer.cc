#include "simulators/certification_answer.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace caixora::certification {
namespace {

constexpr std::size_t kLines = 60;
constexpr std::size_t kEmptyLine = 5;
constexpr std::size_t kLongLines[] = {10, 20};  // longer than the library's buffer of 199 bytes
constexpr std::size_t kLongLength = 260;

std::string LongReceipt() {
  std::string text = "028-000 = " + std::to_string(kLines) + "\r\n";
  for (std::size_t i = 1; i <= kLines; ++i) {
    const std::string number = std::to_string(1000 + i).substr(1);
    std::string line = i == kLines ? "FIM DO COMPROVANTE" : "LINHA " + number;
    if (i == kEmptyLine) line.clear();
    if (std::ranges::find(kLongLines, i) != std::end(kLongLines))
      while (line.size() < kLongLength) line += " COMPRIDA";
    text += "029-" + number + " = " + line + "\r\n";
  }
  return text;
}

}  // namespace

std::string Dressed(std::string_view answer, const Part& part) {
  std::string dressed;
  while (!answer.empty()) {
    const std::size_t last = std::min(answer.find('\n'), answer.size() - 1);
    const std::string_view line = answer.substr(0, last + 1);
    answer.remove_prefix(line.size());
    if (line.starts_with("030-000") && !part.message.empty()) {
      dressed += "030-000 = " + part.message + "\r\n";
    } else if (line.starts_with("028-000") && part.long_receipt) {
      dressed += LongReceipt();
    } else if (!line.starts_with("029-") || !part.long_receipt) {
      dressed += line;
    }
  }
  return dressed;
}

}  // namespace caixora::certification
