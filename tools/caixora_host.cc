// Console host: calls any function of Caixora.dll from the command line and shows its result, or
// serves another program as a bridge.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "caixora.hpp"
#include "programs/console.h"
#include "tools/bridge.h"
#include "tools/commands.h"
#include "tools/json_output.h"
#include "tools/narrow.h"
#include "tools/reply.h"
#include "tools/verbs.h"
// After windows.h, which it needs.
#include <shellapi.h>

namespace caixora {
namespace {

using caixora_pdv::ErroDeUso;

enum ExitCode { kDone = 0, kRefused = 1, kUsage = 2, kNoLibrary = 3 };

struct Options {
  bool list = false;
  bool bridge = false;
  bool json = false;
  bool raw = false;
  std::string library;
  std::vector<std::string> commands;
  const Verb* verb = nullptr;  // one that runs without the library, in place of the commands
  std::vector<std::string> verb_arguments;
  std::string help;  // to be shown in place of anything else
  ExitCode help_status = kDone;
};

std::vector<std::string> CommandLine() {
  int count = 0;
  wchar_t** const wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(Narrow(wide[i]));
  ::LocalFree(wide);
  return arguments;
}

Options ParseCommandLine() {
  Options options;
  CLI::App app(
      "Chama as funções da Caixora.dll pela linha de comando.\n\n"
      "  caixora_host [opções] <função> [argumentos] [+ <função> ...]\n"
      "  caixora_host [opções] --ponte",
      "caixora_host");
  app.get_formatter()->label("Usage", "Uso");
  app.get_formatter()->label("OPTIONS", "opções");
  app.get_formatter()->label("Excludes", "sem");
  app.option_defaults()->group("Opções");
  app.set_help_flag("-h,--ajuda", "esta ajuda")->group("Opções");
  app.add_option("--dll", options.library,
                 "a biblioteca; sem ela, Caixora.dll ao lado deste programa")
      ->type_name("<arquivo>");
  const auto formats = {
      app.add_flag("--bruto", options.raw, "só os bytes de cada resultado e uma quebra de linha"),
      app.add_flag("--json", options.json, "cada resultado como um objeto JSON, em uma linha"),
      app.add_flag("--ponte", options.bridge, "pedidos em JSON na entrada, respostas na saída"),
      app.add_flag("--lista", options.list, "as funções com seus argumentos")};
  for (CLI::Option* const one : formats)
    for (CLI::Option* const other : formats)
      if (one != other) one->excludes(other);
  app.footer(
      "Além das funções da biblioteca: Pausa <ms>, Pasta <dir> e o fluxo interativo completo,\n"
      "Fluxo <os onze argumentos do início> [respostas...]; a resposta \"cancelar\" o abandona.\n"
      "Código de saída: 0 tudo com sucesso, 1 recusa, 2 erro de uso, 3 sem a biblioteca.");
  // From the first function on nothing is an option, whatever it begins with.
  app.prefix_command();
  app.allow_windows_style_options(false);
  const std::vector<std::string> line = CommandLine();
  std::vector<std::string> arguments = line;
  std::ranges::reverse(arguments);
  try {
    app.parse(std::move(arguments));
  } catch (const CLI::CallForHelp&) {
    options.help = app.help();
    return options;
  } catch (const CLI::ExcludesError&) {
    throw ErroDeUso("--bruto, --json, --ponte e --lista não se combinam");
  } catch (const CLI::ParseError&) {
    throw ErroDeUso("Opção inválida, repetida ou sem o seu valor; veja --ajuda");
  }
  options.commands = app.remaining();
  if (!options.commands.empty() && options.commands.front().starts_with("-"))
    throw ErroDeUso("Opção desconhecida: " + options.commands.front());
  const Verb* const verb = options.commands.empty() ? nullptr : FindVerb(options.commands.front());
  if (verb != nullptr && verb->run != nullptr) {
    // Its options may stand before its name as well.
    options.verb = verb;
    options.verb_arguments = line;
    options.verb_arguments.erase(options.verb_arguments.end() - std::ssize(options.commands));
    return options;
  }
  if (options.bridge && !options.commands.empty())
    throw ErroDeUso("--ponte não aceita funções na linha de comando");
  if (!options.bridge && !options.list && options.commands.empty()) {
    options.help = app.help();
    options.help_status = kUsage;
  }
  return options;
}

std::filesystem::path LibraryPath(const std::string& path) {
  if (path.empty()) return L"Caixora.dll";
  // Even a bare name is one of the current folder, not of the search path.
  return std::filesystem::absolute(Widen(path, CP_UTF8));
}

int Run(const Options& options, const std::optional<JsonOutput>& json) {
  const caixora_pdv::Biblioteca library(LibraryPath(options.library));
  if (options.bridge) {
    if (RunBridge(library, *json)) return kDone;
    Print("A saída da ponte foi fechada\n", STD_ERROR_HANDLE);
    return kRefused;
  }
  const Format format = {.raw = options.raw, .json = json ? &*json : nullptr};
  return RunCommands(library, format, options.commands) ? kDone : kRefused;
}

int Start() {
  std::optional<JsonOutput> json;
  const auto fail = [&](const char* error, ExitCode code) {
    if (json) json->Write(ErrorToJson(nullptr, error));
    Print(std::string(error) + "\n", STD_ERROR_HANDLE);
    return code;
  };
  try {
    const Options options = ParseCommandLine();
    if (!options.help.empty()) return Print(options.help), options.help_status;
    if (options.verb != nullptr) return options.verb->run(options.verb_arguments);
    if (options.list) return PrintFunctions(), kDone;
    if (options.json || options.bridge) json.emplace();
    return Run(options, json);
  } catch (const caixora_pdv::ErroDeCarga& error) {
    return fail(error.what(), kNoLibrary);
  } catch (const ErroDeUso& error) {
    return fail(error.what(), kUsage);
  } catch (const std::exception& error) {
    Print("Falha interna; a operação pode ter sido realizada: " + std::string(error.what()) + "\n",
          STD_ERROR_HANDLE);
    return kRefused;
  }
}

}  // namespace
}  // namespace caixora

int main() { return caixora::Start(); }
