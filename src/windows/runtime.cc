// What of GCC's C++ runtime the DLL brings itself, in the place of the compiler's.
//
// The compiler's own parts take memory when a DLL is loaded (a pool for exceptions) or at a
// thread's first exception (its record, a lock), end the process where there is none, and give some
// of it back only when the host ends. A host may load and free this DLL at every sale, and the only
// thing that is thrown in it is that memory ran out. So exceptions live in static memory here.
//
// A thread has its record from its first exception in flight until its last one is gone. Nothing in
// the library asks for the number of exceptions (std::uncaught_exceptions), which would take a
// record and not give it back.
#include <unwind.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "windows/win32.h"

namespace {

// The runtime's header lies before the object: an _Unwind_Exception behind a dozen pointers.
constexpr std::size_t kHeader = 256;
constexpr std::size_t kObject = 128;
static_assert(sizeof(_Unwind_Exception) + 12 * sizeof(void*) <= kHeader);
static_assert(alignof(_Unwind_Exception) == 16);

struct Room {
  bool taken;
  alignas(16) std::byte bytes[kHeader + kObject];
};

// What the runtime keeps for a thread, laid out as the C++ ABI has it.
struct Globals {
  void* caught_exceptions;
  unsigned int uncaught_exceptions;
};

// Rooms for an exception in flight while others, each of which it interrupted, are dealt with.
struct ThreadRecord {
  std::atomic<DWORD> thread;  // 0: free
  Globals globals;
  Room rooms[4];
};

// For threads that throw at the same time; one more waits for another to be through.
constinit ThreadRecord records[16]{};

ThreadRecord* Find(DWORD thread) noexcept {
  for (ThreadRecord& record : records)
    if (record.thread.load() == thread) return &record;
  return nullptr;
}

ThreadRecord& OwnRecord() noexcept {
  const DWORD thread = ::GetCurrentThreadId();
  if (ThreadRecord* const own = Find(thread)) return *own;
  for (;; ::Sleep(1))
    for (ThreadRecord& record : records) {
      DWORD nobody = 0;
      if (record.thread.compare_exchange_strong(nobody, thread)) return record;
    }
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
  for (Room& room : OwnRecord().rooms)
    if (!room.taken) {
      room.taken = true;
      std::memset(room.bytes, 0, sizeof room.bytes);
      return room.bytes + kHeader;
    }
  std::abort();
}

void __cxa_free_exception(void* object) noexcept {
  ThreadRecord& record = OwnRecord();
  bool in_use = record.globals.caught_exceptions != nullptr || record.globals.uncaught_exceptions;
  for (Room& room : record.rooms) {
    if (room.bytes + kHeader == object) room.taken = false;
    in_use = in_use || room.taken;
  }
  if (!in_use) record.thread = 0;
}

Globals* __cxa_get_globals() noexcept { return &OwnRecord().globals; }
Globals* __cxa_get_globals_fast() noexcept { return &OwnRecord().globals; }

}  // extern "C"

// When a noexcept promise is broken the compiler's handler would print the exception's type, for
// which it carries a demangler and a printf of 90 KB into the DLL; hosts have no console to read
// that on.
namespace __gnu_cxx {
void __verbose_terminate_handler();
void __verbose_terminate_handler() { std::abort(); }
}  // namespace __gnu_cxx
// NOLINTEND(bugprone-reserved-identifier,readability-redundant-declaration)
