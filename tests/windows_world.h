// Real files and processes for the tests that run on Windows or under Wine. The tests own C: to F:,
// empty folders there and end programs; outside Wine they ask for leave first.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>

#include "windows/handle.h"
// After windows.h, which they need.
#include <oleauto.h>
#include <tlhelp32.h>

namespace world {

namespace fs = std::filesystem;
using caixora::Handle;
using namespace std::chrono_literals;

inline constexpr char kGpExe[] = "clientorvane_simulador.exe";

inline bool MayEmptyThisMachine() {
  const HMODULE ntdll = GetModuleHandleA("ntdll.dll");
  if (GetProcAddress(ntdll, "wine_get_version") != nullptr) return true;
  if (std::getenv("CAIXORA_TESTS_MAY_EMPTY_THIS_MACHINE") != nullptr) return true;
  std::puts(
      "These tests empty C:\\Tef_Dial, C:\\Lumetra, C:\\Trevix, C:\\caixa, C:\\Outra\n"
      "and what has these names but for an accent or a \"Log\" at the end, fill a disk\n"
      "F: of less than 1 MB, and end Trevix.exe, Email.exe and\n"
      "clientorvane_simulador.exe.\n"
      "To let them, set CAIXORA_TESTS_MAY_EMPTY_THIS_MACHINE.");
  return false;
}

inline fs::path OwnFolder() {
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  return fs::path(path).parent_path();
}

inline void Write(const fs::path& path, std::string_view bytes) {
  fs::create_directories(fs::absolute(path).parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string Read(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A program of ours under the name and in the folder that a test wants.
inline void Install(const char* program, const fs::path& path) {
  fs::create_directories(path.parent_path());
  fs::copy_file(OwnFolder() / program, path, fs::copy_options::overwrite_existing);
}

inline int CountOrKill(const std::string& image, bool kill) {
  int count = 0;
  const Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Process32First(snapshot.get(), &entry); more;
       more = Process32Next(snapshot.get(), &entry)) {
    if (_stricmp(entry.szExeFile, image.c_str()) != 0) continue;
    ++count;
    if (!kill) continue;
    const Handle process(OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, entry.th32ProcessID));
    TerminateProcess(process.get(), 9);
    WaitForSingleObject(process.get(), 10000);
  }
  return count;
}
inline int Count(const std::string& image) { return CountOrKill(image, false); }
inline void Kill(const std::string& image) { CountOrKill(image, true); }

// Polls for at most a minute, so that only what never comes counts as missing.
inline bool Eventually(const std::function<bool()>& holds) {
  for (int i = 0; i < 6000; ++i, std::this_thread::sleep_for(10ms))
    if (holds()) return true;
  return false;
}

// Starts a program, in another token and with other streams if given.
inline Handle Start(std::wstring command, HANDLE token = nullptr, HANDLE output = nullptr,
                    HANDLE input = nullptr, HANDLE error = nullptr) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  if (output != nullptr) {
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output;
    startup.hStdInput = input;
    startup.hStdError = error;
  }
  PROCESS_INFORMATION process{};
  wchar_t* const line = command.data();
  const BOOL inherit = output != nullptr;
  const auto start = [&] {
    return token == nullptr ? CreateProcessW(nullptr, line, nullptr, nullptr, inherit, 0, nullptr,
                                             nullptr, &startup, &process)
                            : CreateProcessAsUserW(token, nullptr, line, nullptr, nullptr, inherit,
                                                   0, nullptr, nullptr, &startup, &process);
  };
  BOOL started = start();
  // Wine loses a program now and then while it starts, before any of it has run.
  for (int more = 4; !started && GetLastError() == ERROR_INTERNAL_ERROR && more > 0; --more)
    started = start();
  if (!started) {
    std::printf("%ls: error %lu\n", command.c_str(), GetLastError());
    return nullptr;
  }
  CloseHandle(process.hThread);
  return Handle(process.hProcess);
}

inline std::wstring HostCommand(const wchar_t* program, const wchar_t* role) {
  return L"\"" + (OwnFolder() / program).wstring() + L"\" " + role;
}

inline DWORD ExitCodeOf(const Handle& process) {
  DWORD code = 9999;
  WaitForSingleObject(process.get(), 60000);
  GetExitCodeProcess(process.get(), &code);
  return code;
}

// A DLL as hosts load it.
class Library {
 public:
  explicit Library(const fs::path& path) : module_(LoadLibraryW(path.c_str())) {}
  ~Library() { FreeLibrary(module_); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  HMODULE module() const { return module_; }

  template <class Function>
  Function Find(Function, const char* name) const {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }
  static std::string Take(wchar_t* text) {
    if (text == nullptr) return "(null)";
    std::string bytes(reinterpret_cast<const char*>(text), SysStringByteLen(text));
    SysFreeString(text);
    return bytes;
  }

 private:
  HMODULE module_;
};

// A file held open as another program would.
inline Handle Hold(const fs::path& path, DWORD share) {
  return caixora::Own(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, share, nullptr,
                                  OPEN_ALWAYS, 0, nullptr));
}

// What a process holds, counted by hand: Wine counts neither handles nor private bytes.
struct Holdings {
  int handles = 0;
  std::size_t heap = 0;
  DWORD slot = TlsAlloc();  // the lowest free one

  Holdings() {
    TlsFree(slot);
    DWORD flags;
    for (std::uintptr_t value = 4; value < 0x8000; value += 4)
      handles += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0;
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(64, heaps);
    for (DWORD i = 0; i < count; ++i) {
      PROCESS_HEAP_ENTRY entry{};
      while (HeapWalk(heaps[i], &entry))
        if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) heap += entry.cbData;
    }
  }
};

// An empty installation: C:\caixa as the current directory, an exchange folder, no program running.
inline void Clean() {
  for (const char* image : {kGpExe, "Trevix.exe", "Email.exe"}) Kill(image);
  // Requests to end a companion run on their own and still write their record.
  Eventually([] { return Count("taskkill.exe") == 0; });
  fs::current_path("C:\\");
  for (const wchar_t* folder :
       {L"C:\\caixa", L"C:\\Tef_Dial", L"C:\\Lumetra", L"C:\\Trevix", L"C:\\TrevixLog",
        L"C:\\Outra", L"C:\\Tr\u00E9vix", L"C:\\Tr\u00E9vixLog"}) {
    // What is in it: the folder itself may still be some console's current directory.
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder, ignored))
      Eventually([&] {
        std::error_code error;
        fs::remove_all(entry.path(), error);
        return !error;
      });
  }
  for (const char* file : {"C:\\taskkill.log", "C:\\taskkill_inerte.txt"})
    Eventually([file] {
      std::error_code error;
      fs::remove(file, error);
      return !error;
    });
  for (const char* folder : {"C:\\caixa", "C:\\Outra", "C:\\Tef_Dial\\Req", "C:\\Tef_Dial\\Resp"})
    fs::create_directories(folder);
  Write("C:\\Tef_Dial\\Tef_Dial.exe", "");
  fs::current_path("C:\\caixa");
}

}  // namespace world
