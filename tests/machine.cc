#include "machine.h"

#include <chrono>
#include <cstring>
#include <new>
#include <thread>

#include "support/state.h"
#include "system/file.h"
#include "system/programs.h"
#include "system/result_string.h"
#include "system/time.h"
#include "system/version.h"
#include "system/wide_text.h"

Machine machine;

namespace {

using caixora::SystemError;

// The system's own codes, as far as the machine gives them.
constexpr auto kNone = SystemError::kNone;
constexpr SystemError kDenied{5}, kCannotRead{23}, kInUse{32}, kDiskFull{112}, kExists{183};

constexpr std::string_view kStamp = "\r\n07/03/2024 09:15:05 ::1.0.3.12:: ";

enum Memory { kNeedsNone, kNeedsSome };

struct SystemCall {
  explicit SystemCall(Memory memory) {
    if (memory == kNeedsSome) ::operator delete(::operator new(1));  // as if for a wide path
    ++inside_machine;
  }
  ~SystemCall() { --inside_machine; }
  const bool fails = machine.NextCallFails();
};

struct OpenFile {
  std::string path, key;
  caixora::File::Use use;
  std::size_t position = 0;
  bool touched = false;
};
OpenFile& Of(void* handle) { return *static_cast<OpenFile*>(handle); }

// As a system call takes a path: up to its first NUL.
std::string Key(const std::string& path) { return Lower(path.c_str()); }
std::string Key(const std::wstring& path) { return Lower({path.begin(), path.end()}); }

bool IsFile(const std::string& key) { return machine.files.count(key) != 0; }
bool IsFolder(const std::string& key) { return machine.folders.count(key) != 0; }
bool IsLog(const std::string& key) { return key.ends_with("log\\caixora.log"); }

// Why a path that is not there is not: itself, or its folder.
SystemError Missing(const std::string& key) {
  const std::size_t slash = key.rfind('\\');
  const bool in_folder = slash == key.npos || slash == 0 || IsFolder(key.substr(0, slash));
  return in_folder ? SystemError::kFileNotFound : SystemError::kPathNotFound;
}

SystemError Tell(const std::string& what, SystemError error) {
  const std::string code = std::to_string(static_cast<unsigned>(error));
  machine.Note("* " + what + (error == kNone ? "" : " (erro " + code + ")"));
  return error;
}

void NoteLogLine(const std::string& path, std::string_view line) {
  if (path != machine.log_path) machine.Note("* log em " + path.substr(0, path.rfind('\\') + 1));
  machine.log_path = path;
  machine.Note(std::string(line.substr(line.starts_with(kStamp) ? kStamp.size() : 0)));
}

void ActAsGp() {
  const std::string folder = "c:\\tef_dial\\";
  if (machine.gp_way == "trava" || !IsFile(folder + "req\\intpos.001")) return;
  const std::string request = machine.files.extract(folder + "req\\intpos.001").mapped();
  const std::string kind = request.substr(0, request.find('\r'));
  // Of a confirmation and an undo the GP says nothing.
  if (machine.gp_way == "cala" || kind.ends_with("CNF") || kind.ends_with("NCN"))
    return machine.Note("* GP pega");
  machine.files[folder + (kind.ends_with("ATV") ? "resp\\ativo.001" : "resp\\intpos.001")] =
      machine.gp_answer;
  machine.Note("* GP pega e responde");
}

// Ends the program that the command names last.
void Kill(const std::string& how, const std::string& command) {
  machine.Note("* " + how + ": " + command);
  const std::string image = Lower(command.substr(command.rfind(' ') + 1));
  if (!machine.stubborn.count(image)) machine.running.erase(image);
}

}  // namespace

void Machine::Note(const std::string& note) {
  notes.push_back(note);
  for (Trigger& trigger : triggers)
    if (note.find(trigger.text) != note.npos && --trigger.count == 0) trigger.act();
}

void ResetMachine() {
  machine = Machine();
  caixora::State empty;
  std::swap(caixora::state, empty);  // so that the old one gives its memory back
}

std::string Lower(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  if (text.size() > 1 && text.ends_with('\\')) text.pop_back();
  return text;
}

std::string TakeResult(CaixoraTexto text) {
  const std::string taken = machine.results.at(text);
  caixora::ResultStringFreer{}(text);
  return taken;
}

namespace caixora {

SystemError File::Open(const std::string& path, Use use) {
  Close();
  const SystemCall call(kNeedsSome);
  const std::string key = Key(path);
  const bool logs = use >= Use::kAppend && IsLog(key);
  SystemError error = kNone;
  if (call.fails || IsFolder(key) || (logs && machine.log_lines == 0) ||
      (use == Use::kReadAndAppend && machine.broken.count(key)))
    error = kDenied;
  else if (machine.locked.count(key))
    error = kInUse;
  else if (!IsFile(key) && (use == Use::kRead || key.empty()))
    error = Missing(key);
  else if (Missing(key) == SystemError::kPathNotFound)
    error = SystemError::kPathNotFound;
  if (error != kNone) return use == Use::kRead ? error : Tell("abre para gravar " + path, error);

  if (logs) --machine.log_lines;
  if (use == Use::kRead && key.find("\\resp\\") != key.npos) machine.answer_opened = true;
  if (std::string& content = machine.files[key]; use == Use::kReplace) content.clear();
  machine.open.insert(key);
  handle_ = new OpenFile{path, key, use};
  return kNone;
}

void File::Close() noexcept {
  if (handle_ == nullptr) return;
  ++inside_machine;
  const OpenFile& file = Of(handle_);
  if (file.use == Use::kReplace && !file.touched) machine.Note("* esvazia " + file.path);
  machine.open.erase(machine.open.find(file.key));
  delete &file;
  handle_ = nullptr;
  --inside_machine;
}

SystemError File::Read(char* buffer, std::size_t size, std::size_t& taken) noexcept {
  const SystemCall call(kNeedsNone);
  OpenFile& file = Of(handle_);
  taken = 0;
  if (call.fails || machine.broken.count(file.key)) return kCannotRead;
  taken = machine.files[file.key].copy(buffer, size, file.position);
  file.position += taken;
  return kNone;
}

SystemError File::Write(std::string_view bytes) noexcept {
  const SystemCall call(kNeedsNone);
  OpenFile& file = Of(handle_);
  const bool fails = call.fails || machine.broken.count(file.key);
  file.touched = true;
  machine.files[file.key].append(bytes.substr(0, fails ? bytes.size() / 2 : bytes.npos));
  if (!fails && IsLog(file.key)) return NoteLogLine(file.path, bytes), kNone;
  const char* verb = file.use == Use::kReplace ? "grava " : "acrescenta a ";
  return Tell(verb + file.path + ": " + std::string(bytes), fails ? kDiskFull : kNone);
}

SystemError File::SeekToEnd(std::int64_t& size) noexcept {
  const SystemCall call(kNeedsNone);
  size = static_cast<std::int64_t>(machine.files[Of(handle_).key].size());
  return call.fails ? kDenied : kNone;
}

SystemError QueryPath(const std::wstring& path, bool& is_folder) noexcept {
  const SystemCall call(kNeedsNone);
  is_folder = IsFolder(Key(path));
  return call.fails ? kDenied : is_folder || IsFile(Key(path)) ? kNone : Missing(Key(path));
}

SystemError DeleteFileAt(const std::string& path) {
  const SystemCall call(kNeedsSome);
  const std::string key = Key(path);
  const bool in_use =
      machine.locked.count(key) || machine.held.count(key) || machine.open.count(key);
  const SystemError refusal = call.fails ? kDenied : in_use ? kInUse : kNone;
  const bool gone = refusal == kNone && machine.files.erase(key);
  return Tell("remove " + path, refusal != kNone ? refusal : gone ? kNone : Missing(key));
}

SystemError RenameFile(const std::string& from, const std::string& to) {
  const SystemCall call(kNeedsSome);
  SystemError error = call.fails ? kDenied : IsFile(Key(to)) ? kExists : kNone;
  if (error == kNone && machine.open.count(Key(from))) error = kInUse;
  if (error == kNone && !IsFile(Key(from))) error = Missing(Key(from));
  if (error == kNone) {
    auto file = machine.files.extract(Key(from));
    file.key() = Key(to);
    machine.files.insert(std::move(file));
  }
  return Tell("renomeia " + from + " para " + to, error);
}

SystemError CreateFolder(const std::wstring& path) noexcept {
  const SystemCall call(kNeedsNone);
  SystemError error = call.fails ? kDenied : IsFolder(Key(path)) ? kExists : Missing(Key(path));
  if (error == SystemError::kFileNotFound) error = kNone;
  if (error == kNone) machine.folders.insert(Key(path));
  return Tell("cria a pasta " + std::string(path.begin(), path.end()), error);
}

bool ImageRuns(const std::string& name) noexcept {
  const SystemCall call(kNeedsNone);
  return !call.fails && machine.running.count(Lower(name)) != 0;
}

void ShellOpen(const std::string& program, const std::string& arguments) {
  const SystemCall call(kNeedsSome);
  if (call.fails) return;
  machine.Note("* inicia " + program + " <" + arguments + ">");
  const std::string image = Key(program.substr(program.rfind('\\') + 1));
  if (IsFile(Key(program)) && !machine.stillborn.count(image)) machine.running.insert(image);
}

void ShellOpenDefault(const std::string& program, const std::string& arguments,
                      const std::string& folder) {
  const SystemCall call(kNeedsSome);
  machine.Note("* inicia, sem verbo, em " + folder + ": " + program + " <" + arguments + ">");
}

void ShellRunElevated(const wchar_t* program, const wchar_t* arguments) noexcept {
  const SystemCall call(kNeedsNone);
  if (!call.fails) Kill("como administrador", ToNarrow(program) + " " + ToNarrow(arguments));
}

void RunHidden(const char* command) noexcept {
  const SystemCall call(kNeedsNone);
  if (!call.fails) Kill("oculto", command);
}

bool IsElevated() noexcept { return ImageRuns("administrador"); }

// The thread of the call goes no further.
void StopHost(std::string_view message) noexcept {
  ++inside_machine;
  machine.Note("* encerra o programa: " + std::string(message));
  machine.on_host_stop();
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

ResultString MakeResult(std::initializer_list<std::string_view> pieces) noexcept {
  const SystemCall call(kNeedsNone);
  if (call.fails || machine.failing_results-- > 0) return nullptr;
  ResultString result(new wchar_t());
  std::string& text = machine.results[result.get()];
  for (const std::string_view piece : pieces) text.append(piece);
  return result;
}

void ResultStringFreer::operator()(wchar_t* text) const noexcept {
  ++inside_machine;
  machine.results.erase(text);
  delete text;
  --inside_machine;
}

void Pause(std::uint32_t milliseconds) noexcept {
  ++inside_machine;
  machine.waited += milliseconds;
  if (machine.waited > 3'600'000) machine.running.clear();  // nobody waits longer than an hour
  machine.Note("+" + std::to_string(milliseconds));
  ActAsGp();
  --inside_machine;
}

LocalTime Now() noexcept { return {2024, 3, 7, 9, 15, 5}; }

std::wstring LibraryVersion(const char* file_name) {
  const SystemCall call(kNeedsSome);
  return file_name == std::string_view("Caixora.dll") ? L"1.0.3.12" : L"1";
}

std::wstring HostVersion() {
  const SystemCall call(kNeedsSome);
  return L"7.8.9";
}

std::wstring ToWide(const std::string& text) {
  const auto* begin = reinterpret_cast<const unsigned char*>(text.c_str());
  return {begin, begin + std::strlen(text.c_str())};
}

std::string ToNarrow(const std::wstring& text) {
  std::string narrow;
  for (const wchar_t* c = text.c_str(); *c != 0; ++c) narrow += static_cast<char>(*c);
  return narrow;
}

}  // namespace caixora
