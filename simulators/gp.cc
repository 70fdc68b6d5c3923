// Simulated GP: the program around its exchange folder, its keys and its books.
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

#include "programs/console.h"
#include "simulators/books.h"
#include "simulators/certification_run.h"
#include "simulators/gp_keys.h"
#include "simulators/gp_manager.h"
#include "simulators/gp_stand_in.h"
#include "simulators/key_source.h"
#include "simulators/now.h"
#include "tools/json_output.h"

namespace caixora::gp {
namespace {

constexpr DWORD kExitDelayMs = 500;  // long enough for the library to notice that it was taken

// Beside those of the keys and of the outcomes.
enum ExitCode { kUsage = 1, kNoFolder = 2, kAlreadyRuns = 3, kUneven = 5 };

// The books in their file, line for line.
class BookKeeper : public Director {
 public:
  explicit BookKeeper(std::string path) : path_(std::move(path)) {
    const std::string lines = ReadWhole(path_).value_or("");
    for (std::string_view rest = lines; !rest.empty();) {
      const std::string_view line = rest.substr(0, rest.find("\r\n"));
      books_.Add(line);
      rest.remove_prefix(std::min(line.size() + 2, rest.size()));
    }
  }

  const Books& books() const { return books_; }

  void Received(const Request& request, const Outcome& outcome, Moment) override {
    Add(BookLine(Now(kTime), request, outcome.action != Action::kNeverTake));
  }
  void Answered(const Request&, const Request& answer, Moment) override {
    Add(BookLine(Now(kTime), answer));
  }

 private:
  static constexpr char kTime[] = "%Y-%m-%d %H:%M:%S";

  void Add(const std::string& line) {
    books_.Add(line);
    AppendLine(path_, line);
  }

  std::string path_;
  Books books_;
};

// The only drive that holds the exchange folder; empty when there is none or more than one.
std::string FindExchangeFolder() {
  ::SetErrorMode(SEM_FAILCRITICALERRORS);  // a drive without a disk asks nothing
  std::string found;
  for (const char drive : std::string_view("CDEF")) {
    const std::string folder = std::string(1, drive) + ":\\Tef_Dial";
    if (!OpenFile(folder + "\\Tef_Dial.exe", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING))
      continue;
    if (!found.empty()) return {};
    found = folder;
  }
  return found;
}

struct Options {
  bool automatic = false;  // started by the library, perhaps on the console of its host
  bool keys = false;
  bool json = false;
  bool books_only = false;
  bool certifies = false;
  std::string folder;
  certification::RunOptions run;
};

std::optional<Options> ReadOptions(int argc, char** argv) {
  Options options;
  std::string limit;
  const std::pair<std::string_view, bool*> switches[] = {{"--teclas", &options.keys},
                                                         {"--json", &options.json},
                                                         {"--livro", &options.books_only},
                                                         {"--roteiro", &options.certifies},
                                                         {"--auto", &options.run.automatic}};
  const std::pair<std::string_view, std::string*> values[] = {
      {"--pasta", &options.folder},         {"--passos", &options.run.steps},
      {"--resultado", &options.run.result}, {"--programa", &options.run.program},
      {"--trevix", &options.run.companion}, {"--prazo", &limit}};
  const auto find = [](const auto& table, std::string_view argument) {
    return std::ranges::find_if(table, [&](const auto& row) { return row.first == argument; });
  };
  for (int i = 1; i < argc; ++i) {
    const auto* turned_on = find(switches, argv[i]);
    const auto* value = find(values, argv[i]);
    if (turned_on != std::end(switches))
      *turned_on->second = true;
    else if (::_stricmp(argv[i], "STARTAUTO") == 0)
      options.automatic = true;
    else if (value != std::end(values) && i + 1 < argc)
      *value->second = argv[++i];
    else
      return std::nullopt;
  }
  options.run.program = Utf8(options.run.program);
  options.run.limit = certification::ReadSpan(limit);
  if (!limit.empty() && options.run.limit.value_or(certification::Span{}).count() == 0)
    return std::nullopt;
  return options;
}

void PrintOpening() {
  Print("GP simulado. Os centavos do valor escolhem o desfecho:\n");
  for (const Outcome& row : Outcomes())
    Print("  " + std::string(row.cents.empty() ? "outros" : row.cents) + ": " +
          std::string(row.description) + "\n");
}

int Serve(const Options& options, BookKeeper& keeper, const std::function<void()>& report) {
  const bool keys =
      options.keys || (!options.automatic && IsConsole(::GetStdHandle(STD_INPUT_HANDLE)));
  if (!options.automatic) PrintOpening();
  if (keys) Print(Keys::Help());
  Keys by_key([](std::string_view text) { Print(text); }, report);
  const KeySource source(keys, !options.automatic);
  return Manager(options.folder, {&by_key, &keeper}, [&] { return source.Next(); }).Run();
}

int Start(int argc, char** argv) {
  std::optional<Options> options = ReadOptions(argc, argv);
  if (!options) {
    Print(
        "Uso: clientorvane_simulador [STARTAUTO] [--pasta <pasta de troca>] [--teclas] [--json]\n"
        "     clientorvane_simulador --livro [--json]\n"
        "     clientorvane_simulador --roteiro [--auto] [--passos <arquivo>] [--prazo <tempo>]\n"
        "         [--resultado <base>] [--programa <nome e versão>] [--trevix <pasta>]\n");
    return kUsage;
  }
  if (StoodIn(options->automatic)) return kEnded;
  std::optional<JsonOutput> json;
  if (options->json) json.emplace();
  const std::string path = OwnFolder() + "\\Livro.txt";
  std::optional<BookKeeper> keeper;
  const auto report = [&] {
    Print(keeper->books().Text());
    if (json) json->Write(keeper->books().Json());
  };
  const auto even = [&] { return keeper->books().Findings().empty() ? kEnded : kUneven; };
  if (options->books_only) {
    keeper.emplace(path);
    report();
    return even();
  }

  const Handle lock(::CreateMutexA(nullptr, FALSE, "CaixoraGpSimulado"));
  if (::GetLastError() == ERROR_ALREADY_EXISTS) {
    Print("O GP simulado já está em execução.\n");
    return kAlreadyRuns;
  }
  if (options->folder.empty()) options->folder = FindExchangeFolder();
  if (options->folder.empty()) {
    Print("É preciso exatamente uma pasta Tef_Dial com Tef_Dial.exe nas unidades C: a F:\n");
    return kNoFolder;
  }
  // Who starts it by hand begins anew; the library only brings back one that was ended.
  if (!options->automatic) ::DeleteFileA(path.c_str());
  keeper.emplace(path);
  if (options->certifies) {
    options->run.folder = options->folder;
    const int code = certification::Run(options->run, *keeper, report);
    report();
    return code;
  }
  const int code = Serve(*options, *keeper, report);
  if (!options->automatic || options->keys || options->json) report();
  ::Sleep(kExitDelayMs);
  return code == kEnded ? even() : code;
}

}  // namespace
}  // namespace caixora::gp

int main(int argc, char** argv) { return caixora::gp::Start(argc, argv); }
