#include "simulators/key_source.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>

#include "programs/console.h"
#include "simulators/gp_keys.h"

namespace caixora::gp {
namespace {

std::atomic<bool> end_asked = false;

// On a thread of the system's. When a window closes the program ends as this returns: the books
// come first.
BOOL WINAPI AskForEnd(DWORD event) {
  end_asked = true;
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) ::Sleep(INFINITE);
  return TRUE;
}

std::optional<char> NextOfConsole(HANDLE input) {
  INPUT_RECORD record;
  DWORD count = 0;
  while (::PeekConsoleInputW(input, &record, 1, &count) && count != 0 &&
         ::ReadConsoleInputW(input, &record, 1, &count) && count != 0) {
    const KEY_EVENT_RECORD& key = record.Event.KeyEvent;
    if (record.EventType == KEY_EVENT && key.bKeyDown && key.uChar.UnicodeChar > 0 &&
        key.uChar.UnicodeChar < 0x80)
      return static_cast<char>(key.uChar.UnicodeChar);
  }
  return std::nullopt;
}

}  // namespace

// Read on a thread of its own, which ends with the program: not every pipe can be asked what it
// holds.
class KeySource::Pipe {
 public:
  void ReadAll(HANDLE input) {
    char key = 0;
    for (DWORD count = 0; ::ReadFile(input, &key, 1, &count, nullptr) && count != 0;) {
      const std::lock_guard lock(mutex_);
      keys_.push_back(key);
    }
  }

  std::optional<char> Next() {
    const std::lock_guard lock(mutex_);
    if (keys_.empty()) return std::nullopt;
    const char key = keys_.front();
    keys_.pop_front();
    return key;
  }

 private:
  std::mutex mutex_;
  std::deque<char> keys_;
};

KeySource::KeySource(bool keys, bool ends) {
  if (ends) ::SetConsoleCtrlHandler(AskForEnd, TRUE);
  if (!keys) return;
  const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  console_ = IsConsole(input);
  if (console_) return;
  pipe_ = std::make_shared<Pipe>();
  std::thread([pipe = pipe_, input] { pipe->ReadAll(input); }).detach();
}

std::optional<char> KeySource::Next() const {
  if (end_asked.exchange(false)) return kEscape;
  std::optional<char> key;
  if (console_) key = NextOfConsole(::GetStdHandle(STD_INPUT_HANDLE));
  if (pipe_) key = pipe_->Next();
  return key >= 'A' && key <= 'Z' ? static_cast<char>(*key - 'A' + 'a') : key;
}

}  // namespace caixora::gp
