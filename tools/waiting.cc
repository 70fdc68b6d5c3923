#include "tools/waiting.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <mutex>
#include <string_view>
#include <utility>

#include "programs/console.h"
#include "tools/exit_status.h"
#include "windows/handle.h"

namespace caixora {
namespace {

using std::chrono::seconds;

constexpr DWORD kSecondMs = 1000;

std::mutex console;                            // guards what follows, and what is shown
const std::string* uncertain_after = nullptr;  // the warning of what blocks now
std::size_t shown = 0;                         // characters of the line that stands there

HANDLE InterruptionEvent() {
  static const Handle event = Own(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  return event.get();
}

void Erase() {
  if (shown != 0) Print("\r" + std::string(shown, ' ') + "\r", STD_ERROR_HANDLE);
  shown = 0;
}

// In the one line of the console that can be erased again.
void Show(const std::string& text) {
  const HANDLE error = ::GetStdHandle(STD_ERROR_HANDLE);
  CONSOLE_SCREEN_BUFFER_INFO screen{};
  if (!::GetConsoleScreenBufferInfo(error, &screen) || screen.dwSize.X < 2) return;
  std::wstring wide = Widen(text, CP_UTF8);
  wide.resize(std::min(wide.size(), static_cast<std::size_t>(screen.dwSize.X) - 1));
  Erase();
  DWORD done = 0;
  ::WriteConsoleW(error, wide.data(), static_cast<DWORD>(wide.size()), &done, nullptr);
  shown = wide.size();
}

std::string Duration(seconds time) {
  const auto minutes = time.count() / 60;
  const std::string rest = std::to_string(time.count() % 60) + " s";
  return minutes == 0 ? rest : std::to_string(minutes) + " min " + rest;
}

void ShowTime(HANDLE stop, const std::string& what) {
  for (seconds time{1}; ::WaitForSingleObject(stop, kSecondMs) == WAIT_TIMEOUT; ++time) {
    const std::lock_guard lock(console);
    Show("Aguardando " + what + ": " + Duration(time));
  }
}

// On a thread that Windows makes for it.
BOOL WINAPI OnInterruption(DWORD type) {
  {
    const std::lock_guard lock(console);  // what this interrupts is what blocks now
    const bool again = Interrupted();
    ::SetEvent(InterruptionEvent());
    if (uncertain_after != nullptr) {
      Erase();
      Print(again ? "Encerrado sem o resultado.\n" : *uncertain_after, STD_ERROR_HANDLE);
      if (again) ::TerminateProcess(::GetCurrentProcess(), kUncertain);
    }
  }
  // Windows ends a process whose window was closed once this returns; a flow is to be cancelled
  // yet.
  if (type != CTRL_C_EVENT && type != CTRL_BREAK_EVENT) ::Sleep(INFINITE);
  return TRUE;
}

}  // namespace

void TakeInterruptions() {
  InterruptionEvent();
  ::SetConsoleCtrlHandler(OnInterruption, TRUE);
}

bool Interrupted() { return !PauseFor(0); }

bool PauseFor(DWORD milliseconds) {
  return ::WaitForSingleObject(InterruptionEvent(), milliseconds) == WAIT_TIMEOUT;
}

bool WaitFor(HANDLE object) {
  const HANDLE objects[] = {InterruptionEvent(), object};
  return ::WaitForMultipleObjects(DWORD{std::size(objects)}, objects, FALSE, INFINITE) !=
         WAIT_OBJECT_0;
}

Waiting::Waiting(std::string what, std::string warning)
    : warning_(std::move(warning)), stop_(Own(::CreateEventW(nullptr, TRUE, FALSE, nullptr))) {
  {
    const std::lock_guard lock(console);
    uncertain_after = warning_.empty() ? nullptr : &warning_;
  }
  if (IsConsole(::GetStdHandle(STD_ERROR_HANDLE)))
    line_ = std::thread([stop = stop_.get(), what = std::move(what)] { ShowTime(stop, what); });
}

Waiting::~Waiting() {
  ::SetEvent(stop_.get());
  if (line_.joinable()) line_.join();
  const std::lock_guard lock(console);
  uncertain_after = nullptr;
  Erase();
}

}  // namespace caixora
