#include "interactive/session.h"

#include <new>

#include "interactive/config_file.h"
#include "interactive/launcher.h"
#include "support/ansi.h"
#include "support/boundary.h"
#include "support/file_helpers.h"
#include "support/log.h"
#include "support/program_helpers.h"
#include "support/state.h"
#include "support/text.h"
#include "support/text_mode.h"
#include "system/programs.h"
#include "system/time.h"
#include "system/wide_text.h"

namespace caixora {
namespace {

// Milliseconds.
constexpr std::uint32_t kFilePause = 50;  // lets the companion finish with a file, or find one gone
constexpr std::uint32_t kAfterCancelLine = 150;

// The log has one word for every failure of a wait, whatever failed.
constexpr std::string_view kWaitFailed = "Erro ao excluir o arquivo: ";

ResultString Text(Pieces text) {
  ResultString result = MakeResult(text);
  if (result == nullptr) throw std::bad_alloc();
  return result;
}

// The companion runs: its question, if there is one. The file goes once the text for the host is
// made, so that no failure loses a question. Null when the file opens and cannot be read.
ResultString TakeQuestion(const std::string& path) {
  Pause(kFilePause);
  File file;
  if (file.Open(path, File::Use::kRead) != SystemError::kNone) return Text({});
  WriteLog({"Lendo o arquivo: ", path});
  std::string line;
  if (ReadFirstLine(file, line) != SystemError::kNone) return nullptr;
  ResultString result = Text({line});
  WriteLog({line});
  WriteLog({"Excluindo o arquivo : ", path});
  file.Close();
  static_cast<void>(DeleteFileAt(path));
  Pause(kFilePause);
  return result;
}

// The companion has ended: well if it left its return, else the flow is to be given up. Null as
// above.
ResultString TakeReturn(const std::string& path) {
  WriteLog({u8"Trevix.exe não está em execução"_ansi});
  std::string line;
  File file;
  if (file.Open(path, File::Use::kRead) == SystemError::kNone) {
    WriteLog({"Lendo o arquivo: ", path});
    if (ReadFirstLine(file, line) != SystemError::kNone) return nullptr;
    WriteLog({line});
    file.Close();
  }
  if (line.find("[RETORNO]") == line.npos)
    return Text({u8"[ERROABORTAR]#Trevix não está em execução"_ansi});
  ResultString result = Text({line});
  WriteLog({"Excluindo o arquivo : ", path});
  static_cast<void>(DeleteFileAt(path));
  WriteLog({u8"Encontrou Retorno da Execução do Trevix.exe"_ansi});
  Pause(kFilePause);
  return result;
}

FlowCode RefuseAnswerFailed() noexcept {
  WriteLog({"Erro ao excluir, criar ou renomear os arquivos Resp"});
  return FlowCode::kAnswerFailed;
}

FlowCode WriteAnswer(const std::string& answer) {
  const std::string path = state.RespFolder + kAnswerFile;
  const std::string staging = state.RespFolder + kStagingFile;
  WriteLog({"Criando arquivo temporario: ", staging});
  File file;
  if (file.Open(staging, File::Use::kAppend) != SystemError::kNone) {
    WriteLog({u8"Não foi possível criar o arquivo: "_ansi, staging});
    return FlowCode::kNoStagingFile;
  }
  if (file.Write(answer) != SystemError::kNone) return RefuseAnswerFailed();
  WriteLog({"Informacao gravada: ", answer});
  file.Close();

  WriteLog({"Excluindo o arquivo: ", path}, Detail::kDetailed);
  if (!IsGone(DeleteFileAt(path))) return RefuseAnswerFailed();
  Pause(kFilePause);
  WriteLog({"renomenando o arquivo temporario: ", staging}, Detail::kDetailed);
  // Not checked: an answer that stays under its first name goes in front of the next one.
  static_cast<void>(RenameFile(staging, path));
  return FlowCode::kDone;
}

void MoveToRawFolder() {
  std::string line;
  if (!ReadRawFolder(line)) return;
  state.ClientFolder = line;
  SetExchangeFolders();
  if (TakesLog(line)) state.LogBaseFolder = line;
  RemoveQuestionAndAnswer();
}

}  // namespace

bool ReadRawFolder(std::string& line) {
  File file;
  if (file.Open(kConfigFile, File::Use::kRead) != SystemError::kNone ||
      ReadFirstLine(file, line) != SystemError::kNone)
    return false;
  DecodeTextMode(line);
  return true;
}

bool TakesLog(const std::string& raw_folder) {
  const bool is_path = raw_folder.find('\0') == raw_folder.npos;
  bool is_folder = raw_folder.empty();
  if (is_path && !is_folder) static_cast<void>(QueryPath(ToWide(raw_folder), is_folder));
  return is_path && is_folder;
}

ResultString AwaitQuestion() noexcept {
  ResultString failed = MakeResult({"[ERROABORTAR]#", kWaitFailed, state.ReqFolder, kQuestionFile});
  if (failed == nullptr) failed = MakeResultForSure({"[ERROABORTAR]#", kWaitFailed});
  RecordLibraryVersion();
  WriteLog({"ENTROU -  AguardaFuncaoQJInterativo()"});
  ResultString result = Guarded(
      [] {
        const std::string path = state.ReqFolder + kQuestionFile;
        state.ClientExeName = kCompanionExe;
        return IsProcessRunning() ? TakeQuestion(path) : TakeReturn(path);
      },
      [] { return ResultString(); });
  if (result != nullptr) return result;
  WriteLog({kWaitFailed, state.ReqFolder, kQuestionFile});
  return failed;
}

FlowCode AnswerQuestion(const char* sInformacao) noexcept {
  return Guarded(
      [&] {
        const std::string answer = CopyOf(sInformacao);
        RecordLibraryVersion();
        WriteLog({"ENTROU -  ContinuaFuncaoQJInterativo()"});
        WriteLog({"sInformacao: ", answer});
        return WriteAnswer(answer);
      },
      RefuseAnswerFailed);
}

FlowCode CancelFlow() noexcept {
  return Guarded(
      [] {
        RecordLibraryVersion();
        WriteLog({"Entrou - CancelaFluxoQJInterativo()"});
        state.ClientExeName = kCompanionExe;
        if (!IsElevated()) return RefuseNotElevated();
        StopClient();
        if (const FlowCode code = CheckStopped(); code != FlowCode::kDone) return code;
        RestartClient();
        Pause(kAfterCancelLine);
        MoveToRawFolder();
        return FlowCode::kDone;
      },
      RefuseStillRunning);
}

}  // namespace caixora
