#include "tools/answers.h"

#include <iterator>
#include <utility>

#include "programs/console.h"
#include "tools/narrow.h"

namespace caixora {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// To the line's end: what is left unread would answer the next question.
std::optional<std::string> TypedLine(HANDLE console) {
  std::wstring typed;
  wchar_t buffer[512];
  for (DWORD got = 0; !typed.ends_with(L'\n'); typed.append(buffer, got))
    if (!::ReadConsoleW(console, buffer, DWORD{std::size(buffer)}, &got, nullptr) || got == 0)
      return std::nullopt;
  return Narrow(typed);
}

}  // namespace

Answers::Answers(std::span<const std::string> given)
    : given_(given), input_(::GetStdHandle(STD_INPUT_HANDLE)), lines_(input_) {}

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
