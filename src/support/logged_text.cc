#include "support/logged_text.h"

#include "support/boundary.h"
#include "support/cnpj.h"
#include "support/log.h"
#include "support/text.h"

namespace caixora {

std::string RetornaNumeros(const std::string& text) {
  WriteLog({"RetornaNumeros: ", text}, Detail::kDetailed);
  std::string result = WithoutPunctuation(text);
  WriteLog({"Retorno - RetornaNumeros: ", result}, Detail::kDetailed);
  return result;
}

std::string SomenteNumerosStr(const std::string& text) {
  WriteLog({"SomenteNumerosStr: ", text}, Detail::kDetailed);
  if (!ValidarCNPJ(text)) return {};
  std::string result = WithoutPunctuation(text);
  WriteLog({"Retorno - SomenteNumerosStr: ", result}, Detail::kDetailed);
  return result;
}

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> pieces;
  Guarded([&] { SplitInto(pieces, text, separator); },
          [] { WriteLog({"Erro no split"}, Detail::kDetailed); });
  return pieces;
}

}  // namespace caixora
