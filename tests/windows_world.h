// Real files and processes for the tests that run on Windows or under Wine. The tests own C: to F:.
#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>

#include "support/windows.h"
// After windows.h, which it needs.
#include <tlhelp32.h>

namespace world {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

inline constexpr char kGpExe[] = "clientorvane_simulador.exe";

inline fs::path OwnFolder() {
  char path[MAX_PATH];
  GetModuleFileNameA(nullptr, path, MAX_PATH);
  return fs::path(path).parent_path();
}

inline void Write(const fs::path& path, const std::string& bytes) {
  fs::create_directories(fs::absolute(path).parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string Read(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A program of ours under the name and in the folder that a test wants.
inline void Install(const std::string& program, const fs::path& path) {
  fs::create_directories(path.parent_path());
  fs::copy_file(OwnFolder() / program, path, fs::copy_options::overwrite_existing);
}

inline int CountOrKill(const std::string& image, bool kill) {
  int count = 0;
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  PROCESSENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Process32First(snapshot, &entry); more; more = Process32Next(snapshot, &entry)) {
    if (_stricmp(entry.szExeFile, image.c_str()) != 0) continue;
    ++count;
    if (!kill) continue;
    const HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, entry.th32ProcessID);
    TerminateProcess(process, 9);
    WaitForSingleObject(process, 2000);
    CloseHandle(process);
  }
  CloseHandle(snapshot);
  return count;
}
inline int Count(const std::string& image) { return CountOrKill(image, false); }
inline void Kill(const std::string& image) { CountOrKill(image, true); }

// Polls for at most ten seconds.
inline bool Eventually(const std::function<bool()>& holds) {
  for (int i = 0; i < 1000; ++i, std::this_thread::sleep_for(10ms))
    if (holds()) return true;
  return false;
}

// Starts a program, in another token if given; the caller owns the handle.
inline HANDLE Start(std::string command, HANDLE token = nullptr, HANDLE output = nullptr) {
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  if (output != nullptr) {
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output;
  }
  PROCESS_INFORMATION process{};
  const BOOL inherit = output != nullptr;
  const BOOL started =
      token == nullptr
          ? CreateProcessA(nullptr, command.data(), nullptr, nullptr, inherit, 0, nullptr, nullptr, &startup, &process)
          : CreateProcessAsUserA(token, nullptr, command.data(), nullptr, nullptr, inherit, 0, nullptr, nullptr, &startup, &process);
  if (!started) return nullptr;
  CloseHandle(process.hThread);
  return process.hProcess;
}

inline DWORD ExitCodeOf(HANDLE process) {
  DWORD code = 9999;
  WaitForSingleObject(process, 30000);
  GetExitCodeProcess(process, &code);
  CloseHandle(process);
  return code;
}

// Holds a file open as another program would.
class Holding {
 public:
  Holding(const fs::path& path, DWORD share)
      : handle_(CreateFileA(path.string().c_str(), GENERIC_READ | GENERIC_WRITE, share, nullptr, OPEN_ALWAYS, 0, nullptr)) {}
  ~Holding() { Release(); }
  void Release() {
    if (handle_ != INVALID_HANDLE_VALUE) CloseHandle(handle_);
    handle_ = INVALID_HANDLE_VALUE;
  }
  HANDLE handle() const { return handle_; }

 private:
  HANDLE handle_;
};

// Counted by hand, since Wine counts neither handles nor private bytes.
inline int OpenHandles() {
  int count = 0;
  DWORD flags;
  for (std::uintptr_t value = 4; value < 0x8000; value += 4) count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0;
  return count;
}

inline std::size_t PrivateBytes() {
  std::size_t bytes = 0;
  MEMORY_BASIC_INFORMATION region{};
  for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) != 0; at += region.RegionSize)
    if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
  return bytes;
}

// An empty installation: C:\caixa as the current directory, an exchange folder, no program running.
inline void Clean() {
  for (const char* image : {kGpExe, "Trevix.exe", "Email.exe"}) Kill(image);
  // Requests to end a companion run on their own and still write their record.
  Eventually([] { return Count("taskkill.exe") == 0; });
  fs::current_path("C:\\");
  for (const char* folder : {"C:\\caixa", "C:\\Tef_Dial", "C:\\Lumetra", "C:\\Trevix", "C:\\TrevixLog", "C:\\Outra"}) {
    // What is in it: the folder itself may still be some console's current directory.
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder, ignored)) fs::remove_all(entry.path());
  }
  for (const char* file : {"C:\\taskkill.log", "C:\\taskkill_inerte.txt"})
    Eventually([file] { std::error_code error; fs::remove(file, error); return !error; });
  for (const char* folder : {"C:\\caixa", "C:\\Outra", "C:\\Tef_Dial\\Req", "C:\\Tef_Dial\\Resp"}) fs::create_directories(folder);
  Write("C:\\Tef_Dial\\Tef_Dial.exe", "");
  fs::current_path("C:\\caixa");
}

}  // namespace world
