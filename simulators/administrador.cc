// Stand-in for "run as administrator": this program's manifest asks for those rights, and what it
// starts inherits them. It ends with the other program's exit status.
#include <string>

#include "programs/console.h"

namespace {

enum ExitCode : DWORD { kUsage = 1, kNotStarted = 127 };
constexpr int kAttempts = 5;

// The command line behind its first word; the word, without its quotes, goes to `word`.
std::wstring_view AfterWord(std::wstring_view line, std::wstring& word) {
  bool quoted = false;
  std::size_t end = 0;
  for (; end < line.size() && (quoted || (line[end] != L' ' && line[end] != L'\t')); ++end) {
    if (line[end] == L'"')
      quoted = !quoted;
    else
      word += line[end];
  }
  line.remove_prefix(end);
  const std::size_t next = line.find_first_not_of(L" \t");
  return next == line.npos ? std::wstring_view{} : line.substr(next);
}

// Its whole path when it lies in the current folder or names one; else it is left to the search.
std::wstring Located(const std::wstring& program) {
  std::wstring path(::GetFullPathNameW(program.c_str(), 0, nullptr, nullptr), L'\0');
  path.resize(
      ::GetFullPathNameW(program.c_str(), static_cast<DWORD>(path.size()), path.data(), nullptr));
  return ::GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES ? program : path;
}

}  // namespace

int main() {
  std::wstring own;
  std::wstring program;
  const std::wstring_view line = AfterWord(::GetCommandLineW(), own);
  const std::wstring_view arguments = AfterWord(line, program);
  if (program.empty()) {
    caixora::Print("Uso: administrador <programa> [argumentos]\n");
    return kUsage;
  }
  std::wstring command = L'"' + Located(program) + L"\" " + std::wstring(arguments);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started{};
  BOOL begun = FALSE;
  // Wine loses a program now and then while it starts, before any of it has run.
  for (int attempt = 1; !begun; ++attempt) {
    begun = ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                             &startup, &started);
    if (attempt == kAttempts || ::GetLastError() != ERROR_INTERNAL_ERROR) break;
  }
  if (!begun) {
    caixora::Print("O programa não foi iniciado, erro " + std::to_string(::GetLastError()) + "\n",
                   STD_ERROR_HANDLE);
    return kNotStarted;
  }
  const caixora::Handle thread(started.hThread);
  const caixora::Handle process(started.hProcess);
  DWORD status = kNotStarted;
  ::WaitForSingleObject(process.get(), INFINITE);
  ::GetExitCodeProcess(process.get(), &status);
  return static_cast<int>(status);
}
