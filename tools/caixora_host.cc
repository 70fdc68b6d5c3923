// Console host: calls any function of Caixora.dll from the command line and shows its result, or
// serves another program as a bridge.
#include <array>
#include <exception>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "caixora.hpp"
#include "programs/console.h"
#include "tools/bridge.h"
#include "tools/commands.h"
#include "tools/help.h"
#include "tools/json_output.h"
#include "tools/narrow.h"
#include "tools/options.h"
#include "tools/process_end.h"
#include "tools/reply.h"
#include "tools/waiting.h"
// After windows.h, which it needs.
#include <shellapi.h>

namespace caixora {
namespace {

std::vector<std::string> CommandLine() {
  int count = 0;
  wchar_t** const wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(Narrow(wide[i]));
  ::LocalFree(wide);
  return arguments;
}

std::filesystem::path LibraryPath(const std::string& path) {
  if (path.empty()) return L"Caixora.dll";
  // Even a bare name is one of the current folder, not of the search path.
  return std::filesystem::absolute(Widen(path, CP_UTF8));
}

// The window of a program that was started by itself closes with it, before anyone has read it.
void KeepOwnWindow() {
  std::array<DWORD, 2> processes;
  if (::GetConsoleProcessList(processes.data(), DWORD{processes.size()}) != 1) return;
  Print("\nTecle Enter para fechar.");
  char key = 0;
  DWORD got = 0;
  ::ReadFile(::GetStdHandle(STD_INPUT_HANDLE), &key, 1, &got, nullptr);
}

ExitStatus ShowHelp(const Options& options) {
  Print(options.help);
  if (options.help_status != kDone) KeepOwnWindow();
  return options.help_status;
}

// Empty when the file says none.
std::string FileVersion(const wchar_t* path) {
  const DWORD size = ::GetFileVersionInfoSizeW(path, nullptr);
  std::vector<char> information(size);
  void* value = nullptr;
  UINT length = 0;
  if (size == 0 || !::GetFileVersionInfoW(path, 0, size, information.data()) ||
      !::VerQueryValueW(information.data(), L"\\", &value, &length))
    return {};
  const auto* const fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
  std::string text;
  for (const DWORD pair : {fixed->dwFileVersionMS, fixed->dwFileVersionLS})
    text += (text.empty() ? "" : ".") + std::to_string(HIWORD(pair)) + "." +
            std::to_string(LOWORD(pair));
  return text;
}

ExitStatus ShowVersions(const std::filesystem::path& library) {
  Print("caixora_host " CAIXORA_VERSION "\n");
  wchar_t path[MAX_PATH] = {};
  if (::SearchPathW(nullptr, library.c_str(), nullptr, MAX_PATH, path, nullptr) == 0) {
    Print(Narrow(library.native()) + ": não encontrada\n", STD_ERROR_HANDLE);
    return kNoLibrary;
  }
  const std::string version = FileVersion(path);
  Print(Narrow(library.filename().native()) + " " + (version.empty() ? "sem versão" : version) +
        " (" + Narrow(path) + ")\n");
  return kDone;
}

// Says in the console's title bar what runs there, while it does.
class Title {
 public:
  Title() {
    ::GetConsoleTitleW(before_, kLength);
    ::SetConsoleTitleW(L"caixora_host: console da Caixora.dll");
  }
  ~Title() { ::SetConsoleTitleW(before_); }
  Title(const Title&) = delete;
  Title& operator=(const Title&) = delete;

 private:
  static constexpr DWORD kLength = 256;
  wchar_t before_[kLength] = {};
};

ExitStatus Run(const Options& options, const std::optional<JsonOutput>& json) {
  const caixora_pdv::Biblioteca library(LibraryPath(options.library));
  if (options.bridge) {
    if (RunBridge(library, *json)) return kDone;
    Print("A saída da ponte foi fechada\n", STD_ERROR_HANDLE);
    return kRefused;
  }
  const Title title;
  WatchForProcessEnd();
  TakeInterruptions();
  const Format format = {
      .raw = options.raw, .json = json ? &*json : nullptr, .finish = options.finish};
  return RunCommands(library, format, options.commands);
}

int Start() {
  std::optional<JsonOutput> json;
  Options options;
  const auto fail = [&](const std::string& error, ExitStatus status) {
    if (!json && (options.json || options.bridge)) json.emplace();
    if (json) json->Write(ErrorToJson(nullptr, error));
    Print(error + "\n", STD_ERROR_HANDLE);
    return status;
  };
  try {
    const std::vector<std::string> arguments = CommandLine();
    ParseOptions(arguments, options);
    if (!options.help.empty()) return ShowHelp(options);
    if (options.verb != nullptr) return options.verb->run(options.verb_arguments);
    if (options.list) return Print(ListOfAll(AllVerbs())), kDone;
    if (options.version) return ShowVersions(LibraryPath(options.library));
    if (options.json || options.bridge) json.emplace();
    return Run(options, json);
  } catch (const caixora_pdv::ErroDeCarga& error) {
    return fail(error.what(), kNoLibrary);
  } catch (const caixora_pdv::ErroDeUso& error) {
    return fail(error.what(), kUsage);
  } catch (const std::exception& error) {
    Print("Falha interna; a operação pode ter sido realizada: " + std::string(error.what()) + "\n",
          STD_ERROR_HANDLE);
    return options.bridge ? kRefused : kUncertain;
  }
}

}  // namespace
}  // namespace caixora

int main() { return caixora::Start(); }
