// Stand-in for taskkill where the system's own does not know /T: ends every process of one image
// name, keeps a record of each run and can be told to end nothing.
#include <cwchar>
#include <string>

#include "console.h"
// After windows.h, which it needs.
#include <tlhelp32.h>

namespace {

constexpr DWORD kEndWaitMs = 1000;

// Ends the process and waits until it is gone, so that a check right afterwards misses it.
void End(DWORD id) {
  const caixora::Handle process(::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
  if (!process || !::TerminateProcess(process.get(), 1)) return;
  ::WaitForSingleObject(process.get(), kEndWaitMs);
}

int EndAll(const std::wstring& image) {
  const HANDLE opened = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (opened == INVALID_HANDLE_VALUE) return 0;
  const caixora::Handle snapshot(opened);
  int found = 0;
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = ::Process32FirstW(opened, &entry); more;
       more = ::Process32NextW(opened, &entry)) {
    if (::_wcsicmp(entry.szExeFile, image.c_str()) != 0) continue;
    if (entry.th32ProcessID == ::GetCurrentProcessId()) continue;
    ++found;
    End(entry.th32ProcessID);
  }
  return found;
}

}  // namespace

int main(int argc, char** argv) {
  caixora::AppendLine("C:\\taskkill.log", caixora::RawArguments());

  std::string image;
  for (int i = 1; i + 1 < argc; ++i) {
    const char sign = argv[i][0];
    if ((sign == '/' || sign == '-') && ::_stricmp(argv[i] + 1, "im") == 0) image = argv[++i];
  }
  if (image.empty()) {
    caixora::Print("Uso: taskkill [/F] [/T] /IM <nome do programa>\n");
    return 1;
  }
  if (::GetFileAttributesA("C:\\taskkill_inerte.txt") != INVALID_FILE_ATTRIBUTES) {
    caixora::Print("Inerte: nenhum processo foi encerrado.\n");
    return 0;
  }
  const int found = EndAll(caixora::Widen(image, CP_ACP));
  caixora::Print("Processos \"" + caixora::Utf8(image) + "\": " + std::to_string(found) + "\n");
  return found > 0 ? 0 : 128;
}
