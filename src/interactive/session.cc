#include "interactive/session.h"

#include <new>

#include "interactive/config_file.h"
#include "interactive/launcher.h"
#include "support/ansi.h"
#include "support/file.h"
#include "support/log.h"
#include "support/prepare_to_throw.h"
#include "support/process.h"
#include "support/system_process.h"
#include "support/text.h"
#include "support/text_mode.h"
#include "support/version.h"
#include "support/wait.h"

namespace caixora {
namespace {

constexpr char kStagingFile[] = "\\Resp001_Temp.txt";

// Milliseconds.
constexpr std::uint32_t kFilePause = 50;  // around the companion's file accesses
constexpr std::uint32_t kAfterCancelLine = 150;

// The log has one word for every failure of a wait, whatever failed.
constexpr std::string_view kWaitFailed = "Erro ao excluir o arquivo: ";

ResultString Text(Pieces text) {
  ResultString result = MakeResult(text);
  if (result == nullptr) throw std::bad_alloc();
  return result;
}

// The companion runs: its question, if there is one. The file goes once the text for the host is
// made, so that no failure loses a question.
ResultString TakeQuestion(const std::string& path) {
  Pause(kFilePause);
  auto file = File::Open(path, File::Use::kRead);
  if (!file) return Text({});
  WriteLog({"Lendo o arquivo: ", path});
  const std::string line = ReadFirstLine(*file);
  ResultString result = Text({line});
  WriteLog({line});
  WriteLog({"Excluindo o arquivo : ", path});
  file.reset();
  DeleteFileAt(path);
  Pause(kFilePause);
  return result;
}

// The companion has ended: well if it left its return, else the flow is to be given up.
ResultString TakeReturn(const std::string& path) {
  WriteLog({u8"Trevix.exe não está em execução"_ansi});
  std::string line;
  if (auto file = File::Open(path, File::Use::kRead)) {
    WriteLog({"Lendo o arquivo: ", path});
    line = ReadFirstLine(*file);
    WriteLog({line});
  }
  if (line.find("[RETORNO]") == line.npos)
    return Text({u8"[ERROABORTAR]#Trevix não está em execução"_ansi});
  ResultString result = Text({line});
  WriteLog({"Excluindo o arquivo : ", path});
  DeleteFileAt(path);
  WriteLog({u8"Encontrou Retorno da Execução do Trevix.exe"_ansi});
  Pause(kFilePause);
  return result;
}

FlowCode WriteAnswer(const std::string& answer) {
  const std::string path = RespFolder + kAnswerFile;
  const std::string staging = RespFolder + kStagingFile;
  WriteLog({"Criando arquivo temporario: ", staging});
  auto file = File::Open(staging, File::Use::kAppend);
  if (!file) {
    WriteLog({u8"Não foi possível criar o arquivo: "_ansi, staging});
    return FlowCode::kNoStagingFile;
  }
  file->Write(answer);
  WriteLog({"Informacao gravada: ", answer});
  file.reset();

  WriteLog({"Excluindo o arquivo: ", path}, Detail::kDetailed);
  if (DeleteFileAt(path) == Deletion::kFailed) throw FileError("DeleteFile");
  Pause(kFilePause);
  WriteLog({"renomenando o arquivo temporario: ", staging}, Detail::kDetailed);
  RenameFile(staging, path);
  return FlowCode::kDone;
}

// Makes the first line of the configuration file, as it stands, the companion's folder and clears
// its exchange files. With the usual file the line begins with its key, so that nothing is found
// there and later waits look in vain until the next start; hosts that cancel rely on that silence.
void MoveToRawFolder() {
  auto file = File::Open(kConfigFile, File::Use::kRead);
  if (!file) return;
  ClientFolder = ReadFirstLine(*file);
  file.reset();
  SetExchangeFolders();
  // No log can be opened under a key, and without its log the library ends the host; so the log
  // moves along only to a folder that is there. A NUL would end the path before the log's name.
  const bool is_path = ClientFolder.find('\0') == std::string::npos;
  if (is_path && QueryPath(ToWide(ClientFolder)) == PathState::kFolder)
    LogBaseFolder = ClientFolder;
  RemoveExchangeFiles();
}

}  // namespace

ResultString AwaitQuestion() noexcept {
  PrepareToThrow();
  ResultString failed = MakeResult({"[ERROABORTAR]#", kWaitFailed, ReqFolder, kQuestionFile});
  if (failed == nullptr) failed = MakeResultForSure({"[ERROABORTAR]#", kWaitFailed});
  RecordLibraryVersion();
  WriteLog({"ENTROU -  AguardaFuncaoQJInterativo()"});
  try {
    const std::string path = ReqFolder + kQuestionFile;
    ClientExeName = kCompanionExe;
    return IsProcessRunning() ? TakeQuestion(path) : TakeReturn(path);
  } catch (...) {
    WriteLog({kWaitFailed, ReqFolder, kQuestionFile});
    return failed;
  }
}

FlowCode AnswerQuestion(const char* sInformacao) noexcept {
  PrepareToThrow();
  try {
    const std::string answer = CopyOf(sInformacao);
    RecordLibraryVersion();
    WriteLog({"ENTROU -  ContinuaFuncaoQJInterativo()"});
    WriteLog({"sInformacao: ", answer});
    return WriteAnswer(answer);
  } catch (...) {
    WriteLog({"Erro ao excluir, criar ou renomear os arquivos Resp"});
    return FlowCode::kAnswerFailed;
  }
}

FlowCode CancelFlow() noexcept {
  PrepareToThrow();
  try {
    RecordLibraryVersion();
    WriteLog({"Entrou - CancelaFluxoQJInterativo()"});
    ClientExeName = kCompanionExe;
    if (!IsElevated()) return RefuseNotElevated();
    StopClient();
    if (const FlowCode code = CheckStopped(); code != FlowCode::kDone) return code;
    RestartClient();
    Pause(kAfterCancelLine);
    MoveToRawFolder();
    return FlowCode::kDone;
  } catch (...) {
    return RefuseStillRunning();
  }
}

}  // namespace caixora
