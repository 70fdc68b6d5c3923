#include "exchange/exchange_folder.h"

#include "support/file_helpers.h"
#include "support/log.h"
#include "support/state.h"

namespace caixora {

std::string InExchangeFolder(std::string_view name) {
  return std::string(state.ExchangeFolder).append(name);
}

void RemoveExchangeFile(const std::string& path) {
  WriteLog({"Antes de Remover Arquivo - ", path});
  RemoveFile(path);
}

}  // namespace caixora
