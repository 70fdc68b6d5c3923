#include "exchange/gp_location.h"

#include <string_view>

#include "exchange/gp_candidates.h"
#include "support/ansi.h"
#include "support/file_helpers.h"
#include "support/log.h"
#include "support/state.h"

namespace caixora {
namespace {

void TakeGp(const std::string& folder, std::string_view exe) {
  state.SetClientFolder(folder);
  state.ClientExeName = exe;
}

void FindGp(Exchange& exchange) {
  if (OpensForReading(kDeveloperMark)) {
    TakeGp(kDeveloperFolder, kDeveloperExe);
    exchange.gp_is_watched = false;
    return;
  }
  for (std::size_t i = 0; i < kGpPlaces; ++i) {
    const GpPlace place = GpPlaceAt(i);
    if (!OpensForReading(place.Path())) continue;
    TakeGp(place.folder, place.exe);
    return;
  }
}

// Returns how many drives hold an exchange folder; the last one found stays.
int FindExchangeFolder() {
  int count = 0;
  for (const char drive : kDrives) {
    WriteLog({"Validando a Pasta TEF_DIAL"}, Detail::kDetailed);
    const std::string program = ExchangeProgramOn(drive);
    WriteLog({"Caminho da Pasta Tef_dial: ", program});
    if (!OpensForReading(program)) continue;
    ++count;
    state.ExchangeFolder = ExchangeFolderOn(drive);
  }
  return count;
}

}  // namespace

Refusal LocateGp(Exchange& exchange) {
  WriteLog({u8"ENTROU - Verificação do caminho do EXE"_ansi});
  FindGp(exchange);
  WriteLog({u8"SAIU - Verificação do caminho do EXE"_ansi});

  WriteLog({"Validar Pasta TEF_DIAL"}, Detail::kDetailed);
  const int count = FindExchangeFolder();
  WriteLog({"Caminho da Pasta Tef_dial: ", state.ExchangeFolder}, Detail::kDetailed);
  if (count != 1) {
    WriteLog({"NUMEROS DE TEF_DIAL NO PC: ", std::to_string(count)});
    return count > 1 ? "S;0;DEVE HAVER SOMENTE UMA PASTA TEF_DIAL NO COMPUTADOR, VERIFIQUE"
                     : "S;0;PASTA TEF_DIAL NAO LOCALIZADA, VERIFIQUE";
  }
  if (state.ClientFolder.empty()) {
    WriteLog({"NAO FOI POSSIVEL LOCALIZAR O GP INSTALADO"});
    return "S;0;GP NAO INSTALADO";
  }
  return std::nullopt;
}

}  // namespace caixora
