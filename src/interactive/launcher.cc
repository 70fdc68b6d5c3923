#include "interactive/launcher.h"

#include "interactive/config_file.h"
#include "support/ansi.h"
#include "support/cnpj.h"
#include "support/file.h"
#include "support/files.h"
#include "support/log.h"
#include "support/prepare_to_throw.h"
#include "support/process.h"
#include "support/system_process.h"
#include "support/text.h"
#include "support/version.h"
#include "support/wait.h"

namespace caixora {
namespace {

// Milliseconds.
constexpr std::uint32_t kAfterClearing = 1000;
constexpr std::uint32_t kAfterFirstRequest = 50;
constexpr std::uint32_t kAfterLastRequest = 150;

constexpr char kPathKey[] = "CAMINHO";

std::string CompanionPath() { return ClientFolder + "\\" + kCompanionExe; }

// Clears the way for a new flow: no question and no answer of an earlier one.
void ClearExchange() {
  SetExchangeFolders();
  // The line names the wrong folder and always has; the file removed is the question's.
  WriteLog({"Antes de Remover Arquivo - ", RespFolder, kQuestionFile}, Detail::kDetailed);
  RemoveExchangeFiles();
  Pause(kAfterClearing);
}

constexpr RunVariant kStart{
    .entry = "ENTROU -  IniciaFuncaoQJInterativo()",
    .companion_missing = u8"Trevix não Encontrado! - "_ansi,
    .ready_exchange_files = ClearExchange,
    .starting = "Iniciando Trevix - IniciaQJInterativo",
    .not_running = u8"Trevix.exe não está em execução"_ansi,
};

// The CNPJ is judged first although the amount is looked at first; hosts see the CNPJ's code.
FlowCode CheckArguments(FlowArguments& arguments) {
  const bool amount_ok = IsValidAmount(arguments.sValor);
  arguments.sCNPJ = SomenteNumerosStr(arguments.sCNPJ);
  // The check-digit rule lets short texts pass, which no companion can use.
  if (arguments.sCNPJ.size() < kCnpjLength) {
    WriteLog(
        {"CNPJ Invalido ou no formato incorreto - Utilize no seguinte formato: "
         "12345678000100"});
    return FlowCode::kBadCnpj;
  }
  if (!amount_ok) {
    WriteLog({"Valor com formato incorreto - Utilize virgula como separador 00,00"});
    return FlowCode::kBadAmount;
  }
  return FlowCode::kDone;
}

FlowCode FindCompanionFolder() {
  WriteLog({"Chamando LerArquivoConfigQJ(", kConfigFile, ")"}, Detail::kDetailed);
  // Read twice, and the second reading counts: the log of every start shows both.
  LerArquivoConfigQJ(kConfigFile);
  if (!LerArquivoConfigQJ(kConfigFile)) {
    WriteLog({"Erro na leitura do Arquivo ConfigQJ.ini"});
    return FlowCode::kNoConfigFile;
  }
  WriteLog({"Chamando FindConfigQJ"}, Detail::kDetailed);
  const ConfigPair path = FindConfigQJ(kPathKey);
  WriteLog({"Retorno FindConfigQJ: ", path.key, ", ", path.value}, Detail::kDetailed);
  if (path.key.empty() && path.value.empty()) {
    WriteLog({u8"Erro - Não foi encontrado o caminho para o Trevix.exe"_ansi});
    return FlowCode::kNoPathEntry;
  }
  SetClientFolder(path.value);
  return FlowCode::kDone;
}

FlowCode CheckCompanion(std::string_view missing) {
  if (ClientFolder.empty()) {
    WriteLog({"ConfigQJ.ini vazio."});
    return FlowCode::kEmptyPath;
  }
  const std::string path = CompanionPath();
  WriteLog({"Verificacao caminho Trevix - ", path}, Detail::kDetailed);
  if (!FileExists(ToWide(path)) || !OpensForReading(path)) {
    WriteLog({missing, path});
    return FlowCode::kCompanionMissing;
  }
  WriteLog({"Teste se existe o arquivo do Trevix"}, Detail::kDetailed);
  // The companion's updater puts this mark there while it replaces the program.
  if (FileExists(ToWide(ClientFolder + "\\IniciandoAtualizacao.txt"))) {
    WriteLog({"Trevix.exe em Atualizacao"});
    return FlowCode::kBeingUpdated;
  }
  return FlowCode::kDone;
}

FlowCode Launch(const RunVariant& variant, const std::string& line) {
  try {
    const std::string path = CompanionPath();
    WriteLog({variant.starting});
    WriteLog({"EXE - ", path}, Detail::kDetailed);
    WriteLog({"PARAMETROS - ", line}, Detail::kDetailed);
    ExecuteCommand(path, line);
  } catch (...) {
    const FlowCode code = RefuseStartFailed();
    WriteLog({"Parametros: ", line}, Detail::kDetailed);
    return code;
  }
  if (IsProcessRunning()) return FlowCode::kDone;
  WriteLog({variant.not_running});
  return FlowCode::kCompanionNotRunning;
}

}  // namespace

FlowCode StartClient(const FlowCall& call) noexcept {
  PrepareToThrow();
  try {
    FlowArguments arguments(call);
    return RunCompanion(kStart, arguments);
  } catch (...) {
    return RefuseStartFailed();
  }
}

FlowCode RunCompanion(const RunVariant& variant, FlowArguments& arguments) {
  RecordLibraryVersion();
  ClientExeName = kCompanionExe;
  WriteLog({variant.entry});
  if (!IsElevated()) return RefuseNotElevated();
  if (const FlowCode code = CheckArguments(arguments); code != FlowCode::kDone) return code;
  if (const FlowCode code = FindCompanionFolder(); code != FlowCode::kDone) return code;

  WriteLog({u8"Taskkill no Trevix para não ter outra instância em execução."_ansi});
  StopClient();
  if (const FlowCode code = CheckStopped(); code != FlowCode::kDone) return code;
  if (const FlowCode code = CheckCompanion(variant.companion_missing); code != FlowCode::kDone)
    return code;

  variant.ready_exchange_files();
  return Launch(variant, ParameterLine(arguments));
}

void SetExchangeFolders() {
  ReqFolder = ClientFolder + "\\Req";
  RespFolder = ClientFolder + "\\Resp";
}

void RemoveExchangeFiles() {
  RemoveFile(ReqFolder + kQuestionFile);
  RemoveFile(RespFolder + kAnswerFile);
}

void StopClient() {
  // Three times: the first request can miss a companion that is just being started.
  const auto request = [] { ShellRunElevated(L"taskkill", L"/F /T /IM Trevix.exe"); };
  request();
  Pause(kAfterFirstRequest);
  request();
  request();
  Pause(kAfterLastRequest);
}

void RestartClient() {
  SetClientFolder(FindConfigQJ(kPathKey).value);
  const std::string path = CompanionPath();
  const std::string line = CancelLine();
  WriteLog({"EXE - ", path}, Detail::kDetailed);
  WriteLog({"PARAMETROS - ", line}, Detail::kDetailed);
  ExecuteCommand(path, line);
}

FlowCode RefuseNotElevated() noexcept {
  WriteLog({u8"A automação deve ser executada no modo administrador"_ansi});
  return FlowCode::kNotElevated;
}

FlowCode RefuseStartFailed() noexcept {
  WriteLog({"Erro ao iniciar Trevix.exe"});
  return FlowCode::kStartFailed;
}

FlowCode RefuseStillRunning() noexcept {
  WriteLog({u8"Trevix.exe está em execução devido ao outra transacao"_ansi});
  return FlowCode::kStillRunning;
}

FlowCode CheckStopped() { return IsProcessRunning() ? RefuseStillRunning() : FlowCode::kDone; }

}  // namespace caixora
