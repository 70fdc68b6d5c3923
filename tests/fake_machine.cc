#include "fake_machine.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "support/clock.h"
#include "support/file.h"
#include "support/hard_stop.h"
#include "support/state.h"
#include "support/system_process.h"
#include "support/version.h"
#include "support/wait.h"

Machine machine;

namespace {

std::string Lower(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  while (text.ends_with('\\')) text.pop_back();
  return text;
}

// As a system call takes a path: up to its first NUL.
std::string Key(const std::string& path) { return Lower(path.c_str()); }

bool FolderOf(const std::string& key) {
  const std::size_t slash = key.rfind('\\');
  return slash == key.npos || machine.folders.count(key.substr(0, slash)) != 0;
}

struct OpenFile {
  std::string key;
  std::size_t position = 0;
};

}  // namespace

bool Machine::Has(const std::string& path) const { return files.count(Lower(path)) != 0; }
std::string& Machine::operator[](const std::string& path) { return files[Lower(path)]; }

std::string Machine::Log(const std::string& folder) const {
  const auto found = files.find(Lower(folder + "Log\\Caixora.log"));
  std::string messages;
  if (found == files.end()) return messages;
  const std::string& bytes = found->second;
  const std::string mark = " ::" + version + ":: ";
  for (std::size_t at = bytes.find(mark); at != bytes.npos;) {
    at += mark.size();
    const std::size_t next = bytes.find(mark, at);
    // A stamp and the line end before it: 2 + 19 characters.
    messages += "\n" + bytes.substr(at, next == bytes.npos ? next : next - at - 21);
    at = next;
  }
  return messages;
}

void ResetMachine() {
  machine = Machine();
  using namespace caixora;
  for (std::string* text : {&ClientFolder, &ClientExeName, &ExchangeFolder, &ReqFolder, &RespFolder,
                            &LogVersionText, &LogBaseFolder, &PendingConfirmation})
    text->clear();
  UnreturnedAnswer = {};
  ConfigList.clear();
  AnswerIsLiveness = false;
}

bool NextCallFails() { return machine.steps++ == machine.fail_at; }

std::string TextOf(const caixora::ResultString& result) {
  if (result == nullptr) return "(null)";
  std::uint32_t size;
  const char* text = reinterpret_cast<const char*>(result.get());
  std::memcpy(&size, text - 4, 4);
  return {text, size};
}

namespace caixora {

std::optional<File> File::Open(const std::string& path, Use use) noexcept {
  const InMachine scope;
  const std::string key = Key(path);
  if (NextCallFails() || key.empty() || machine.locked.count(key) || machine.folders.count(key))
    return std::nullopt;
  if (use == Use::kAppend && key.ends_with("caixora.log")) {
    if (machine.log_lines == 0) return std::nullopt;
    --machine.log_lines;
  }
  if (use == Use::kRead ? machine.files.count(key) == 0 : !FolderOf(key)) return std::nullopt;
  std::string& content = machine.files[key];
  if (use == Use::kReplace) content.clear();
  ++machine.open_files;
  return File(new OpenFile{key});
}

File::~File() {
  if (handle_ == nullptr) return;
  --machine.open_files;
  delete static_cast<OpenFile*>(handle_);
}

std::size_t File::Read(char* buffer, std::size_t size) {
  if (NextCallFails()) throw FileError("ReadFile");
  auto& file = *static_cast<OpenFile*>(handle_);
  const std::size_t taken = machine.files[file.key].copy(buffer, size, file.position);
  file.position += taken;
  return taken;
}

void File::Write(std::string_view bytes) {
  const InMachine scope;
  std::string& content = machine.files[static_cast<OpenFile*>(handle_)->key];
  const bool full = NextCallFails();
  content.append(bytes.substr(0, full ? bytes.size() / 2 : bytes.npos));
  if (full) throw FileError("WriteFile");
}

std::int64_t File::SeekToEnd() noexcept {
  return static_cast<std::int64_t>(machine.files[static_cast<OpenFile*>(handle_)->key].size());
}

PathState QueryPath(const std::wstring& path) noexcept {
  const InMachine scope;
  const std::string key = Lower({path.begin(), path.end()});
  if (NextCallFails()) return PathState::kUnreadable;
  if (machine.folders.count(key)) return PathState::kFolder;
  if (machine.files.count(key)) return PathState::kFile;
  return FolderOf(key) ? PathState::kNotFound : PathState::kUnreadable;
}

Deletion DeleteFileAt(const std::string& path) noexcept {
  const InMachine scope;
  if (NextCallFails() || machine.locked.count(Key(path))) return Deletion::kFailed;
  return machine.files.erase(Key(path)) ? Deletion::kDone : Deletion::kMissing;
}

void RenameFile(const std::string& from, const std::string& to) noexcept {
  const InMachine scope;
  if (NextCallFails() || !machine.files.count(Key(from)) || machine.files.count(Key(to))) return;
  machine.files[Key(to)] = machine.files[Key(from)];
  machine.files.erase(Key(from));
}

void CreateFolder(const std::wstring& path) noexcept {
  const InMachine scope;
  const std::string key = Lower({path.begin(), path.end()});
  if (!NextCallFails() && FolderOf(key) && !machine.files.count(key)) machine.folders.insert(key);
}

std::wstring ToWide(const std::string& text) {
  const InMachine scope;
  if (NextCallFails()) throw std::bad_alloc();
  std::wstring wide;
  for (const char c : std::string(text.c_str())) wide += static_cast<unsigned char>(c);
  return wide;
}

LogTime Now() noexcept { return machine.now; }

void Pause(std::uint32_t milliseconds) noexcept {
  const InMachine scope;
  machine.waited += milliseconds;
  machine.on_pause();
}

void StopHost() noexcept {
  const InMachine scope;
  machine.on_hard_stop();
  std::_Exit(1);
}

bool ImageRuns(const std::string& name) noexcept {
  const InMachine scope;
  return !NextCallFails() && machine.images.count(Lower(name)) != 0;
}

namespace {
void Start(const std::string& what) {
  if (NextCallFails()) return;
  machine.started.push_back(what);
  machine.on_start();
}
}  // namespace

void ShellOpen(const std::string& program, const std::string& arguments) noexcept {
  const InMachine scope;
  Start("open|" + program + "|" + arguments);
}
void ShellRunElevated(const wchar_t* program, const wchar_t* arguments) noexcept {
  const InMachine scope;
  Start("runas|" + ToNarrow(program) + "|" + ToNarrow(arguments));
}
void RunHidden(const char* command) noexcept {
  const InMachine scope;
  Start(std::string("hidden|") + command + "|");
}
bool IsElevated() noexcept { return !NextCallFails() && machine.elevated; }

std::wstring HostVersion() { return L"7.8.9"; }
std::string ToNarrow(const std::wstring& text) {
  const InMachine scope;
  std::string narrow;
  for (const wchar_t c : text) narrow += static_cast<char>(c);
  return narrow;
}
void RecordLibraryVersion() noexcept {
  const InMachine scope;
  LogVersionText = machine.version;
}

void ResultStringFreer::operator()(wchar_t* text) const noexcept {
  std::free(reinterpret_cast<char*>(text) - 4);
}

// A byte count before the text, as in a BSTR.
ResultString MakeResult(Pieces text) noexcept {
  const InMachine scope;
  if (NextCallFails()) return nullptr;
  std::string joined;
  for (const std::string_view piece : text) joined.append(piece);
  const auto size = static_cast<std::uint32_t>(joined.size());
  char* memory = static_cast<char*>(std::malloc(4 + joined.size() + 1));
  std::memcpy(memory, &size, 4);
  std::memcpy(memory + 4, joined.c_str(), joined.size() + 1);
  return ResultString(reinterpret_cast<wchar_t*>(memory + 4));
}

}  // namespace caixora
