#include "interactive/flow_call.h"

#include <algorithm>
#include <span>

#include "support/ansi.h"
#include "support/text.h"

namespace caixora {
namespace {

// The fields that no host fills.
constexpr std::string_view kField8 = "1";
constexpr std::string_view kField11 = "1";

std::string Join(std::initializer_list<std::string_view> fields) {
  std::string line;
  for (const std::string_view field : fields) line.append(field).push_back(kNotSign);
  line.pop_back();
  return line;
}

}  // namespace

FlowArguments::FlowArguments(const FlowCall& call)
    : uFuncao(call.uFuncao),
      sCNPJ(CopyOf(call.sCNPJ)),
      uCampo3(call.uCampo3),
      sCampo4(CopyOf(call.sCampo4)),
      sValor(CopyOf(call.sValor)),
      sCampo6(CopyOf(call.sCampo6)),
      sCampo7(CopyOf(call.sCampo7)),
      sCampo8(CopyOf(call.sCampo8)),
      sCampo9(CopyOf(call.sCampo9)),
      uCampo10(call.uCampo10) {}

bool IsValidAmount(std::string_view text) {
  const auto is_separator = [](char c) { return c == ',' || c == '.'; };
  return text.size() >= 4 && text[text.size() - 3] == ',' &&
         std::count_if(text.begin(), text.end(), is_separator) < 2;
}

std::string ParameterLine(const FlowArguments& arguments) {
  return Join({std::to_string(arguments.uFuncao), arguments.sCNPJ,
               std::to_string(arguments.uCampo3), arguments.sCampo4, arguments.sValor,
               arguments.sCampo6, arguments.sCampo7, kField8, arguments.sCampo8, arguments.sCampo9,
               kField11, std::to_string(arguments.uCampo10)});
}

std::string CancelLine() {
  return Join({"800", "", "", "", "", "", "", kField8, "", "", kField11, "0"});
}

std::string SendingRecord(const FlowArguments& arguments) {
  return "TRDT|" + arguments.sCampo7 + "||" + arguments.sCampo7 + "||True|" + arguments.sCNPJ +
         "|LOAD|" + arguments.sCampo8 + "|" + arguments.sCampo9;
}

}  // namespace caixora
