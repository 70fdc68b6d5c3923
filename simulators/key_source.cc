#include "simulators/key_source.h"

#include <atomic>

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
  while (::GetNumberOfConsoleInputEvents(input, &count) && count != 0 &&
         ::ReadConsoleInputW(input, &record, 1, &count) && count != 0) {
    const KEY_EVENT_RECORD& key = record.Event.KeyEvent;
    if (record.EventType == KEY_EVENT && key.bKeyDown && key.uChar.UnicodeChar > 0 &&
        key.uChar.UnicodeChar < 0x80)
      return static_cast<char>(key.uChar.UnicodeChar);
  }
  return std::nullopt;
}

std::optional<char> NextOfPipe(HANDLE input) {
  DWORD count = 0;
  if (::GetFileType(input) == FILE_TYPE_PIPE &&
      (!::PeekNamedPipe(input, nullptr, 0, nullptr, &count, nullptr) || count == 0))
    return std::nullopt;
  char key = 0;
  if (!::ReadFile(input, &key, 1, &count, nullptr) || count == 0) return std::nullopt;
  return key;
}

}  // namespace

KeySource::KeySource(bool keys, bool ends) : keys_(keys) {
  if (ends) ::SetConsoleCtrlHandler(AskForEnd, TRUE);
}

std::optional<char> KeySource::Next() const {
  if (end_asked.exchange(false)) return kEscape;
  if (!keys_) return std::nullopt;
  const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  const std::optional<char> key = IsConsole(input) ? NextOfConsole(input) : NextOfPipe(input);
  return key >= 'A' && key <= 'Z' ? static_cast<char>(*key - 'A' + 'a') : key;
}

}  // namespace caixora::gp
