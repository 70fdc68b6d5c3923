#include "support/log.h"

#include <array>
#include <optional>
#include <string>

#include "support/clock.h"
#include "support/file.h"
#include "support/files.h"
#include "support/hard_stop.h"
#include "support/state.h"
#include "support/text_mode.h"

namespace caixora {
namespace {

constexpr char kSwitchFile[] = "LD.txt";

// Creates the switch file when the system says that it is missing; any other trouble is left to
// the reading of it. False when the check itself failed.
bool EnsureDetailSwitchFile() noexcept {
  try {
    if (QueryPath(ToWide(kSwitchFile)) == PathState::kNotFound)
      File::Open(kSwitchFile, File::Use::kReplace);
    return true;
  } catch (...) {
    return false;
  }
}

// A switch file that cannot be opened asks for ordinary lines; one that opens but cannot be read
// throws, and nothing is written.
LogMode ReadDetailSwitch() {
  auto file = File::Open(kSwitchFile, File::Use::kRead);
  if (!file) return LogMode::kOrdinary;
  std::array<char, kSwitchBytes> start;
  return ModeOf({start.data(), file->Read(start.data(), start.size())});
}

[[noreturn]] void StopWithoutLog() noexcept {
  try {
    const bool removed = !UnreturnedAnswer.bytes.empty() && !OpensForReading(UnreturnedAnswer.path);
    if (removed)
      if (auto file = File::Open(UnreturnedAnswer.path, File::Use::kReplace))
        file->Write(UnreturnedAnswer.bytes);
  } catch (...) {
    // The disk took neither the line nor the answer.
  }
  StopHost();
}

void AppendLogLine(Pieces message, Detail detail) {
  const LogTime now = Now();
  const std::string folder = LogBaseFolder + "Log\\";
  const std::string path = folder + "Caixora.log";
  if (FileSizeMB(path) >= kRotationSizeMB) RenameFile(path, folder + RotatedLogName(now));

  const std::string line = EncodeTextMode(FormatLogLine(now, LogVersionText, message, detail));
  auto file = File::Open(path, File::Use::kAppend);
  if (!file) {
    // The folder is missing before the first line alone, so the other lines do not ask for it.
    CreateFolder(ToWide(folder));
    file = File::Open(path, File::Use::kAppend);
  }
  if (!file) StopWithoutLog();
  file->Write(line);
}

}  // namespace

void WriteLog(Pieces message, Detail detail) noexcept {
  try {
    if (EnsureDetailSwitchFile() && IsWritten(ReadDetailSwitch(), detail))
      AppendLogLine(message, detail);
  } catch (...) {
    // Out of memory, a full disk: the line is lost and the payment goes on.
  }
}

}  // namespace caixora
