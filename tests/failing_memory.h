// Makes the allocations of one loaded DLL fail: what it imports of the C runtime is replaced while
// this lives. The test program's own allocations, and the system's, go on.
#pragma once

#include <cstdlib>
#include <cstring>

#include "windows/win32.h"

class FailingMemory {
 public:
  explicit FailingMemory(HMODULE module) {
    auto* const base = reinterpret_cast<std::byte*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    auto* dll = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
    for (; dll->Name != 0; ++dll) {
      auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + dll->OriginalFirstThunk);
      auto* slot = reinterpret_cast<IMAGE_THUNK_DATA*>(base + dll->FirstThunk);
      for (; name->u1.AddressOfData != 0; ++name, ++slot) {
        if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
        const auto* by_name =
            reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
        Replace(by_name->Name, slot->u1.Function);
      }
    }
  }
  // The n-th allocation from now on, or all from the n-th on; -1: none.
  void FailOnce(long n) { Set(n, false); }
  void FailFrom(long n) { Set(n, true); }
  // How many have failed since.
  long Failed() const { return failed; }

 private:
  static bool Fails() {
    const long n = seen++;
    const bool fails = fail_at >= 0 && (for_good ? n >= fail_at : n == fail_at);
    failed += fails;
    return fails;
  }
  static void* Malloc(std::size_t size) { return Fails() ? nullptr : std::malloc(size); }
  static void* Calloc(std::size_t count, std::size_t size) {
    return Fails() ? nullptr : std::calloc(count, size);
  }
  static void* Realloc(void* memory, std::size_t size) {
    return Fails() ? nullptr : std::realloc(memory, size);
  }
  static void Set(long n, bool good) {
    fail_at = n;
    for_good = good;
    seen = failed = 0;
  }
  template <class Function>
  static void Put(Function* function, ULONGLONG& slot) {
    DWORD before;
    VirtualProtect(&slot, sizeof slot, PAGE_READWRITE, &before);
    slot = reinterpret_cast<ULONGLONG>(function);
    VirtualProtect(&slot, sizeof slot, before, &before);
  }
  static void Replace(const char* name, ULONGLONG& slot) {
    if (std::strcmp(name, "malloc") == 0) Put(&Malloc, slot);
    if (std::strcmp(name, "calloc") == 0) Put(&Calloc, slot);
    if (std::strcmp(name, "realloc") == 0) Put(&Realloc, slot);
    Set(-1, false);
  }
  static inline long seen = 0, fail_at = -1, failed = 0;
  static inline bool for_good = false;
};
