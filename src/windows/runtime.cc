// What of GCC's C++ runtime the DLL brings itself, in the place of the compiler's.
//
// The compiler's own parts take memory when a DLL is loaded (a pool for exceptions) or at a
// thread's first exception (its record, a lock), end the process where there is none, and give some
// of it back only when the host ends. A host may load and free this DLL at every sale, and the only
// thing that is thrown in it is that memory ran out. So exceptions live in static memory here.
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "windows/win32.h"

namespace {

// Exceptions at once, over all threads: one in flight and one while it is dealt with, for each.
constexpr std::size_t kRooms = 32;

// The runtime's header lies before the object; both are smaller than this by half and more.
constexpr std::size_t kHeader = 512;
constexpr std::size_t kObject = 256;

struct Room {
  std::atomic<bool> taken;
  alignas(16) std::byte bytes[kHeader + kObject];
};
Room rooms[kRooms];

// What the runtime keeps for a thread, laid out as the C++ ABI has it.
struct Globals {
  void* caught_exceptions;
  unsigned int uncaught_exceptions;
};

struct ThreadRecord {
  std::atomic<DWORD> thread;  // 0: free
  Globals globals;
};
ThreadRecord records[kRooms];

ThreadRecord* Find(DWORD thread) noexcept {
  for (ThreadRecord& record : records)
    if (record.thread.load() == thread) return &record;
  return nullptr;
}

}  // namespace

// Names of the runtime, each declared because no header does.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-redundant-declaration)
extern "C" {

void* __cxa_allocate_exception(std::size_t size) noexcept;
void __cxa_free_exception(void* object) noexcept;
Globals* __cxa_get_globals() noexcept;
Globals* __cxa_get_globals_fast() noexcept;

void* __cxa_allocate_exception(std::size_t size) noexcept {
  if (size > kObject) std::abort();
  for (;; ::Sleep(1))  // every room is soon free again: nothing waits while it holds one
    for (Room& room : rooms)
      if (!room.taken.exchange(true)) {
        std::memset(room.bytes, 0, sizeof room.bytes);
        return room.bytes + kHeader;
      }
}

void __cxa_free_exception(void* object) noexcept {
  for (Room& room : rooms)
    if (room.bytes + kHeader == object) room.taken = false;
  ThreadRecord* const record = Find(::GetCurrentThreadId());
  if (record != nullptr && record->globals.caught_exceptions == nullptr &&
      record->globals.uncaught_exceptions == 0)
    record->thread = 0;
}

Globals* __cxa_get_globals() noexcept {
  const DWORD thread = ::GetCurrentThreadId();
  for (;; ::Sleep(1)) {
    if (ThreadRecord* const known = Find(thread)) return &known->globals;
    for (ThreadRecord& record : records) {
      DWORD nobody = 0;
      if (record.thread.compare_exchange_strong(nobody, thread)) {
        record.globals = {};
        return &record.globals;
      }
    }
  }
}

Globals* __cxa_get_globals_fast() noexcept { return __cxa_get_globals(); }

}  // extern "C"

// When a noexcept promise is broken the compiler's handler would print the exception's type, for
// which it carries a demangler and a printf of 90 KB into the DLL; hosts have no console to read
// that on.
namespace __gnu_cxx {
void __verbose_terminate_handler();
void __verbose_terminate_handler() { std::abort(); }
}  // namespace __gnu_cxx
// NOLINTEND(bugprone-reserved-identifier,readability-redundant-declaration)
