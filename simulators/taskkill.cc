// Stand-in for taskkill where the system's own does not know /T: ends every process of one image
// name, keeps a record of each run and can be told to end nothing.
#include <cwchar>
#include <string>

#include "programs/console.h"
// After windows.h, which it needs.
#include <tlhelp32.h>

namespace {

constexpr DWORD kEndWaitMs = 1000;

enum ExitCode { kEnded = 0, kUsage = 1, kNoneEnded = 2, kNotFound = 128 };

// Ends the process and waits until it is gone, so that a check right afterwards misses it.
bool End(DWORD id) {
  const caixora::Handle process(::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
  return process && ::TerminateProcess(process.get(), 1) &&
         ::WaitForSingleObject(process.get(), kEndWaitMs) == WAIT_OBJECT_0;
}

ExitCode EndAll(const std::wstring& image) {
  const HANDLE opened = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (opened == INVALID_HANDLE_VALUE) return kNotFound;
  const caixora::Handle snapshot(opened);
  int found = 0;
  int ended = 0;
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = ::Process32FirstW(opened, &entry); more;
       more = ::Process32NextW(opened, &entry)) {
    if (::_wcsicmp(entry.szExeFile, image.c_str()) != 0) continue;
    if (entry.th32ProcessID == ::GetCurrentProcessId()) continue;
    ++found;
    ended += End(entry.th32ProcessID);
  }
  caixora::Print("Processos: " + std::to_string(found) + ", encerrados: " + std::to_string(ended) +
                 "\n");
  if (found == 0) return kNotFound;
  return ended > 0 ? kEnded : kNoneEnded;
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
    return kUsage;
  }
  if (::GetFileAttributesA("C:\\taskkill_inerte.txt") != INVALID_FILE_ATTRIBUTES) {
    caixora::Print("Inerte: nenhum processo foi encerrado.\n");
    return kEnded;  // plays a request that is accepted and then comes to nothing
  }
  return EndAll(caixora::Widen(image, CP_ACP));
}
