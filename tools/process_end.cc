#include "tools/process_end.h"

#include <atomic>
#include <iterator>

#include "programs/console.h"
#include "tools/exit_status.h"

namespace caixora {
namespace {

std::atomic<bool> watching = false;
std::atomic<bool> in_library = false;

// Constants, since threads that ended just now may have held the heap's lock.
constexpr char kNarrow[] =
    "\nA biblioteca encerrou este processo: não conseguiu abrir o log. O resultado da chamada em "
    "curso não se sabe.\n";
constexpr wchar_t kWide[] =
    L"\nA biblioteca encerrou este processo: não conseguiu abrir o log. O resultado da chamada em "
    L"curso não se sabe.\n";

// Windows calls this as the last act of every ordinary end, whichever runtime the library has.
void NTAPI OnProcess(void*, DWORD reason, void*) {
  if (reason != DLL_PROCESS_DETACH || !watching || !in_library) return;
  const HANDLE error = ::GetStdHandle(STD_ERROR_HANDLE);
  DWORD done = 0;
  if (IsConsole(error))
    ::WriteConsoleW(error, kWide, DWORD{std::size(kWide) - 1}, &done, nullptr);
  else
    ::WriteFile(error, kNarrow, DWORD{sizeof kNarrow - 1}, &done, nullptr);
  ::TerminateProcess(::GetCurrentProcess(), kLibraryEnded);
}

}  // namespace

void WatchForProcessEnd() { watching = true; }

InLibrary::InLibrary() { in_library = true; }
InLibrary::~InLibrary() { in_library = false; }

}  // namespace caixora

// The linker gathers such pointers in the list of callbacks that Windows reads.
#ifdef _MSC_VER
#pragma comment(linker, "/INCLUDE:_tls_used")
#pragma const_seg(".CRT$XLY")
extern "C" const PIMAGE_TLS_CALLBACK caixora_on_process = caixora::OnProcess;
#pragma const_seg()
#pragma comment(linker, "/INCLUDE:caixora_on_process")
#else
extern "C" __attribute__((used, section(".CRT$XLY"))) const PIMAGE_TLS_CALLBACK caixora_on_process =
    caixora::OnProcess;
#endif
