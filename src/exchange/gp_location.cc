#include "exchange/gp_location.h"

#include <string_view>

#include "support/ansi.h"
#include "support/file_helpers.h"
#include "support/log.h"
#include "support/state.h"

namespace caixora {
namespace {

// Five passes: the letters' terminating NUL is one of them, and support staff count five lines in
// the log. A path that begins with it is an empty C string and names no file, and its log line ends
// where the path would begin.
constexpr char kDrives[] = "CDEF";

constexpr char kDeveloperMark[] = "C:\\OrvaneAutomacao.txt";
constexpr char kDeveloperFolder[] = "D:\\Programas\\Cartao - Vetra\\Projeto com skin - Talvi\\";
constexpr char kDeveloperExe[] = "Pavolin.exe";

// Where GPs are installed on a drive, in the order of preference: simulators before the normal
// build. The last rows differ in case alone, which Windows ignores; each is still probed.
struct Candidate {
  std::string_view folder, exe;
};
constexpr Candidate kCandidates[] = {
    {":\\Pavolin TEF\\", "Pavolin.exe"},
    {":\\Orvane Lumetra\\", "clientorvane.exe"},
    {":\\Orvane Lumetra\\", "clientorvane_simulador.exe"},
    {":\\Lumetra\\", "clientorvane_simulador.exe"},
    {":\\Nerol TEF\\", "Nerol.exe"},
    {":\\LUMETRA\\", "clientorvane.exe"},
    {":\\Lumetra\\", "ClientOrvane.exe"},
};

std::string OnDrive(char drive, std::string_view path) {
  return std::string(1, drive).append(path);
}

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
  for (const char drive : kDrives) {
    for (const Candidate& candidate : kCandidates) {
      const std::string folder = OnDrive(drive, candidate.folder);
      if (!OpensForReading(std::string(folder).append(candidate.exe))) continue;
      TakeGp(folder, candidate.exe);
      return;
    }
  }
}

// Returns how many drives hold an exchange folder; the last one found stays.
int FindExchangeFolder() {
  int count = 0;
  for (const char drive : kDrives) {
    WriteLog({"Validando a Pasta TEF_DIAL"}, Detail::kDetailed);
    // The folder is there when the program that lies in it is.
    const std::string program = OnDrive(drive, ":\\Tef_Dial\\Tef_Dial.exe");
    WriteLog({"Caminho da Pasta Tef_dial: ", program});
    if (!OpensForReading(program)) continue;
    ++count;
    state.ExchangeFolder = OnDrive(drive, ":\\Tef_dial");
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
