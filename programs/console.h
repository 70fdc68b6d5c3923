// What the programs around the library share: console output, the raw command line, whole files.
//
// The console is written in UTF-8; files and command lines hold Windows-1252 bytes.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "programs/utf8.h"
#include "windows/handle.h"

namespace caixora {

inline std::wstring Widen(std::string_view text, UINT code_page) {
  std::wstring wide(text.size(), L'\0');  // never more units than bytes
  const int size = static_cast<int>(text.size());
  const int used = ::MultiByteToWideChar(code_page, 0, text.data(), size, wide.data(), size);
  wide.resize(static_cast<std::size_t>(used));
  return wide;
}

inline bool IsConsole(HANDLE handle) {
  DWORD mode = 0;
  return ::GetConsoleMode(handle, &mode) != 0;
}

// Writes at once, whatever the console's code page; a pipe or file receives the UTF-8 bytes.
inline void Print(std::string_view utf8, DWORD stream = STD_OUTPUT_HANDLE) {
  const HANDLE out = ::GetStdHandle(stream);
  DWORD done = 0;
  if (IsConsole(out)) {
    const std::wstring wide = Widen(utf8, CP_UTF8);
    ::WriteConsoleW(out, wide.data(), static_cast<DWORD>(wide.size()), &done, nullptr);
  } else {
    ::WriteFile(out, utf8.data(), static_cast<DWORD>(utf8.size()), &done, nullptr);
  }
}

// The command line behind the program's name, blanks and quotes as they came.
inline std::string_view RawArguments() {
  std::string_view line = ::GetCommandLineA();
  const bool quoted = line.starts_with('"');
  const std::size_t end = quoted ? line.find('"', 1) : line.find_first_of(" \t");
  if (end == std::string_view::npos) return {};
  line.remove_prefix(quoted ? end + 1 : end);
  const std::size_t first = line.find_first_not_of(" \t");
  return first == std::string_view::npos ? std::string_view{} : line.substr(first);
}

// The folder of the running program, without a trailing backslash.
inline std::string OwnFolder() {
  char path[MAX_PATH];
  const std::string_view whole(path, ::GetModuleFileNameA(nullptr, path, MAX_PATH));
  return std::string(whole.substr(0, whole.rfind('\\')));
}

inline Handle OpenFile(const std::string& path, DWORD access, DWORD share, DWORD disposition) {
  return Own(::CreateFileA(path.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                           nullptr));
}

// The whole file, or nothing while it is missing or somebody still has it open for writing.
inline std::optional<std::string> ReadWhole(const std::string& path) {
  const Handle file =
      OpenFile(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, OPEN_EXISTING);
  if (!file) return std::nullopt;
  std::string bytes;
  char buffer[4096];
  for (DWORD got = 0;; bytes.append(buffer, got)) {
    if (!::ReadFile(file.get(), buffer, sizeof buffer, &got, nullptr)) return std::nullopt;
    if (got == 0) return bytes;
  }
}

// False also when there is no file, because it could not be opened.
inline bool WriteTo(HANDLE file, std::string_view bytes) {
  DWORD done = 0;
  return file != nullptr &&
         ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr) &&
         done == bytes.size();
}

// One write at the end of the file, so that lines of programs running side by side never mix.
inline bool AppendLine(const std::string& path, std::string_view line) {
  const Handle file =
      OpenFile(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS);
  return WriteTo(file.get(), std::string(line) + "\r\n");
}

// Puts the file in place complete: its reader never meets half of it. Tries again for five seconds
// while an older file of that name is held open.
inline bool Publish(const std::string& temporary, const std::string& path, std::string_view bytes) {
  if (!WriteTo(OpenFile(temporary, GENERIC_WRITE, 0, CREATE_ALWAYS).get(), bytes)) return false;
  for (int attempt = 0; attempt < 250; ++attempt) {
    if (::MoveFileExA(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) return true;
    ::Sleep(20);
  }
  return false;
}

}  // namespace caixora
