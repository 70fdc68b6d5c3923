#include "interactive/launcher.h"

#include "interactive/config_file.h"
#include "support/ansi.h"
#include "support/boundary.h"
#include "support/cnpj.h"
#include "support/file_helpers.h"
#include "support/log.h"
#include "support/logged_text.h"
#include "support/program_helpers.h"
#include "support/state.h"
#include "system/programs.h"
#include "system/time.h"
#include "system/wide_text.h"

namespace caixora {
namespace {

// Milliseconds.
constexpr std::uint32_t kAfterClearing = 1000;
constexpr std::uint32_t kBeforeFinish = 500;
constexpr std::uint32_t kAfterFirstRequest = 50;
constexpr std::uint32_t kAfterLastRequest = 150;

// Clears the way for a new flow: no question and no answer of an earlier one.
void ClearExchange() {
  SetExchangeFolders();
  // The line names the answer's folder; the file removed is the question's, in its own.
  WriteLog({"Antes de Remover Arquivo - ", state.RespFolder, kQuestionFile}, Detail::kDetailed);
  RemoveQuestionAndAnswer();
  Pause(kAfterClearing);
}

// The files of the last exchange stay: the companion takes its answer from them.
void KeepExchange() {
  WriteLog({u8"Não Removeu Arquivos da pasta Req e Resp para obter resposta do Trevix.exe"_ansi});
  Pause(kBeforeFinish);
}

struct RunVariant {
  std::string_view entry;
  std::string_view companion_missing;
  void (*ready_exchange)();
  std::string_view starting;
  std::string_view not_running;
};

// In the order of Run. Spellings differ between the two, accents included.
constexpr RunVariant kVariants[] = {
    {
        .entry = "ENTROU -  IniciaFuncaoQJInterativo()",
        .companion_missing = u8"Trevix não Encontrado! - "_ansi,
        .ready_exchange = ClearExchange,
        .starting = "Iniciando Trevix - IniciaQJInterativo",
        .not_running = u8"Trevix.exe não está em execução"_ansi,
    },
    {
        .entry = "ENTROU -  FinalizaFuncaoQJInterativo()",
        .companion_missing = "Trevix nao Encontrado! - ",
        .ready_exchange = KeepExchange,
        .starting = "Iniciando Trevix - FinalizaQJInterativo",
        .not_running = u8"Trevix.exe nao está em execucao"_ansi,
    },
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
  state.SetClientFolder(path.value);
  return FlowCode::kDone;
}

FlowCode CheckCompanion(std::string_view missing) {
  if (state.ClientFolder.empty()) {
    WriteLog({"ConfigQJ.ini vazio."});
    return FlowCode::kEmptyPath;
  }
  const std::string path = CompanionUnder(state.ClientFolder);
  WriteLog({"Verificacao caminho Trevix - ", path}, Detail::kDetailed);
  if (!FileExists(ToWide(path)) || !OpensForReading(path)) {
    WriteLog({missing, path});
    return FlowCode::kCompanionMissing;
  }
  WriteLog({"Teste se existe o arquivo do Trevix"}, Detail::kDetailed);
  if (FileExists(ToWide(UpdateMarkUnder(state.ClientFolder)))) {
    WriteLog({"Trevix.exe em Atualizacao"});
    return FlowCode::kBeingUpdated;
  }
  return FlowCode::kDone;
}

FlowCode Launch(const RunVariant& variant, const std::string& line) {
  const auto launch = [&] {
    const std::string path = CompanionUnder(state.ClientFolder);
    WriteLog({variant.starting});
    WriteLog({"EXE - ", path}, Detail::kDetailed);
    WriteLog({"PARAMETROS - ", line}, Detail::kDetailed);
    ExecuteCommand(path, line);
    return FlowCode::kDone;
  };
  const auto not_launched = [&] {
    const FlowCode code = RefuseStartFailed();
    WriteLog({"Parametros: ", line}, Detail::kDetailed);
    return code;
  };
  if (const FlowCode code = Guarded(launch, not_launched); code != FlowCode::kDone) return code;
  if (IsProcessRunning()) return FlowCode::kDone;
  WriteLog({variant.not_running});
  return FlowCode::kCompanionNotRunning;
}

}  // namespace

FlowCode RunCompanion(Run run, FlowArguments& arguments) {
  const RunVariant& variant = kVariants[static_cast<std::size_t>(run)];
  RecordLibraryVersion();
  state.ClientExeName = kCompanionExe;
  WriteLog({variant.entry});
  if (!IsElevated()) return RefuseNotElevated();
  if (const FlowCode code = CheckArguments(arguments); code != FlowCode::kDone) return code;
  if (const FlowCode code = FindCompanionFolder(); code != FlowCode::kDone) return code;

  WriteLog({u8"Taskkill no Trevix para não ter outra instância em execução."_ansi});
  StopClient();
  if (const FlowCode code = CheckStopped(); code != FlowCode::kDone) return code;
  if (const FlowCode code = CheckCompanion(variant.companion_missing); code != FlowCode::kDone)
    return code;

  variant.ready_exchange();
  return Launch(variant, ParameterLine(arguments));
}

FlowCode StartClient(const FlowCall& call) noexcept {
  return Guarded(
      [&] {
        FlowArguments arguments(call);
        return RunCompanion(Run::kStart, arguments);
      },
      RefuseStartFailed);
}

std::string CompanionUnder(const std::string& folder) { return folder + "\\" + kCompanionExe; }

std::string UpdateMarkUnder(const std::string& folder) {
  return folder + "\\IniciandoAtualizacao.txt";
}

void SetExchangeFolders() {
  state.ReqFolder = state.ClientFolder + kQuestionFolder;
  state.RespFolder = state.ClientFolder + kAnswerFolder;
}

void RemoveQuestionAndAnswer() {
  RemoveFile(state.ReqFolder + kQuestionFile);
  RemoveFile(state.RespFolder + kAnswerFile);
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
  state.SetClientFolder(FindConfigQJ(kPathKey).value);
  const std::string path = CompanionUnder(state.ClientFolder);
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
