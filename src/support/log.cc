#include "support/log.h"

#include <array>
#include <string>

#include "support/ansi.h"
#include "support/boundary.h"
#include "support/file_helpers.h"
#include "support/state.h"
#include "support/text_mode.h"
#include "system/programs.h"
#include "system/time.h"
#include "system/version.h"
#include "system/wide_text.h"

namespace caixora {
namespace {

// Creates the switch file when the system says that it is missing; any other trouble is left to
// the reading of it.
void EnsureDetailSwitchFile() {
  if (!FileExists(ToWide(kSwitchFile)))
    static_cast<void>(File().Open(kSwitchFile, File::Use::kReplace));
}

[[noreturn]] void StopWithoutLog() noexcept {
  Guarded(
      [] {
        const auto& [path, bytes] = state.UnreturnedAnswer;
        if (bytes.empty() || OpensForReading(path)) return;
        // When the disk takes neither the line nor the answer there is nobody left to tell.
        File file;
        if (file.Open(path, File::Use::kReplace) == SystemError::kNone)
          static_cast<void>(file.Write(bytes));
      },
      [] {});
  StopHost(u8"não foi possível criar o log!"_ansi);
}

void AppendLogLine(Pieces message, Detail detail) {
  const LocalTime now = Now();
  const std::string folder = LogFolderUnder(state.LogBaseFolder);
  const std::string path = folder + kLogFile;
  // A log that cannot be moved aside grows on, and the next line tries again.
  if (FileSizeMB(path) >= kRotationSizeMB)
    static_cast<void>(RenameFile(path, folder + RotatedLogName(now)));

  const std::string line =
      EncodeTextMode(FormatLogLine(now, state.LogVersionText, message, detail));
  File file;
  if (file.Open(path, File::Use::kReadAndAppend) != SystemError::kNone) {
    // The folder is missing before the first line alone, so the other lines do not ask for it.
    static_cast<void>(CreateFolder(ToWide(folder)));
    if (file.Open(path, File::Use::kReadAndAppend) != SystemError::kNone) StopWithoutLog();
  }
  static_cast<void>(file.Write(line));
}

}  // namespace

LogMode ReadLogSwitch() {
  File file;
  if (file.Open(kSwitchFile, File::Use::kRead) != SystemError::kNone) return LogMode::kOrdinary;
  std::array<char, kSwitchBytes> start;
  std::size_t size = 0;
  if (file.Read(start.data(), start.size(), size) != SystemError::kNone) return LogMode::kOff;
  return ModeOf({start.data(), size});
}

std::string LogFolderUnder(const std::string& base) { return base + "Log\\"; }

void WriteLog(Pieces message, Detail detail) noexcept {
  Guarded(
      [&] {
        EnsureDetailSwitchFile();
        if (IsWritten(ReadLogSwitch(), detail)) AppendLogLine(message, detail);
      },
      [] {});
}

void RecordLibraryVersion() noexcept {
  Guarded([] { state.LogVersionText = ToNarrow(LibraryVersion("Caixora.dll")); }, [] {});
}

}  // namespace caixora
