#include "tools/answers.h"

#include <iterator>
#include <string_view>
#include <utility>

#include "programs/console.h"
#include "tools/narrow.h"
#include "tools/waiting.h"

namespace caixora {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr DWORD kPollMs = 20;

// Nobody may be left reading when the flow is cancelled: the library starts a program for that,
// which would wait for the input that it shares. Hence reads begin when there is something to read.

// False when interrupted before a character came.
bool AwaitCharacter(HANDLE console) {
  while (WaitFor(console)) {
    INPUT_RECORD record{};
    DWORD got = 0;
    if (!::PeekConsoleInputW(console, &record, 1, &got)) return false;
    const KEY_EVENT_RECORD& key = record.Event.KeyEvent;
    if (got == 1 && record.EventType == KEY_EVENT && key.uChar.UnicodeChar != 0 &&
        (key.bKeyDown || key.wVirtualKeyCode == VK_MENU))  // Alt and digits: as Alt is let go
      return true;
    if (got == 1) ::ReadConsoleInputW(console, &record, 1, &got);
  }
  return false;
}

// False when interrupted before a byte came.
bool AwaitByte(HANDLE stream) {
  DWORD available = 0;
  while (::PeekNamedPipe(stream, nullptr, 0, nullptr, &available, nullptr) && available == 0)
    if (!PauseFor(kPollMs)) return false;
  return true;  // also at the end of a pipe, and for what is no pipe
}

// To the line's end: what is left unread would answer the next question.
std::optional<std::string> TypedLine(HANDLE console) {
  if (!AwaitCharacter(console)) return std::nullopt;
  std::wstring typed;
  wchar_t buffer[512];
  for (DWORD got = 0; !typed.ends_with(L'\n'); typed.append(buffer, got))
    if (!::ReadConsoleW(console, buffer, DWORD{std::size(buffer)}, &got, nullptr) || got == 0)
      return std::nullopt;
  return Narrow(typed);
}

}  // namespace

Answers::Answers(std::span<const std::string> given)
    : given_(given),
      input_(::GetStdHandle(STD_INPUT_HANDLE)),
      lines_(input_, [this] { return AwaitByte(input_); }) {}

bool Answers::Typed() const { return given_.empty() && IsConsole(input_); }

std::optional<std::string> Answers::Next() {
  if (!given_.empty()) return std::exchange(given_, given_.subspan(1)).front();
  std::optional<std::string> answer;
  if (Typed())
    answer = TypedLine(input_);
  else if (const std::optional<Line> line = lines_.Next())
    answer = line->text;
  if (!answer) return std::nullopt;
  // PowerShell puts one before what it pipes.
  if (std::exchange(first_, false) && answer->starts_with(kByteOrderMark))
    answer->erase(0, kByteOrderMark.size());
  while (answer->ends_with('\n') || answer->ends_with('\r')) answer->pop_back();
  return answer;
}

}  // namespace caixora
