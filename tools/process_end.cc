#include "tools/process_end.h"

#include <iterator>

#include "programs/console.h"
#include "tools/exit_status.h"

namespace caixora {
namespace {

bool in_library = false;

// Constants, since threads that ended just now may have held the heap's lock.
constexpr char kNarrow[] =
    "\nA biblioteca encerrou este processo: não conseguiu abrir o log. O resultado da chamada em "
    "curso não se sabe.\n";
constexpr wchar_t kWide[] =
    L"\nA biblioteca encerrou este processo: não conseguiu abrir o log. O resultado da chamada em "
    L"curso não se sabe.\n";

// Runs when the thread ends that watches, and so where it ends the whole process, whichever runtime
// the library has for that.
void NTAPI OnEnd(void*) {
  if (!in_library) return;
  const HANDLE error = ::GetStdHandle(STD_ERROR_HANDLE);
  DWORD done = 0;
  if (IsConsole(error))
    ::WriteConsoleW(error, kWide, DWORD{std::size(kWide) - 1}, &done, nullptr);
  else
    ::WriteFile(error, kNarrow, DWORD{sizeof kNarrow - 1}, &done, nullptr);
  ::TerminateProcess(::GetCurrentProcess(), kLibraryEnded);
}

}  // namespace

void WatchForProcessEnd() {
  // Its callback runs for threads that have something there.
  ::FlsSetValue(::FlsAlloc(OnEnd), &in_library);
}

InLibrary::InLibrary() { in_library = true; }
InLibrary::~InLibrary() { in_library = false; }

}  // namespace caixora
