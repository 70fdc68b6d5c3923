#include "tools/report_command.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "tools/log_reader.h"
#include "tools/report.h"

namespace caixora {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kUse =
    "Uso: relatorio [--completo] [--saida <arquivo.html>] <log> [<log> ...]\n";

struct WrongUse : std::runtime_error {
  using runtime_error::runtime_error;
};

struct Request {
  ReportOptions options;
  fs::path page = "relatorio.html";
  std::vector<fs::path> logs;
};

fs::path PathOf(std::string_view utf8) { return {std::u8string(utf8.begin(), utf8.end())}; }

std::string Utf8(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// "*" is any text, "?" any one byte; letters without regard to their case.
bool FitsWildcards(std::string_view name, std::string_view pattern) {
  if (pattern.empty()) return name.empty();
  if (pattern.front() == '*')
    return FitsWildcards(name, pattern.substr(1)) ||
           (!name.empty() && FitsWildcards(name.substr(1), pattern));
  return !name.empty() &&
         (pattern.front() == '?' || Lower(pattern.front()) == Lower(name.front())) &&
         FitsWildcards(name.substr(1), pattern.substr(1));
}

// The command interpreter of Windows leaves wildcards to the program.
void AddLogs(const std::string& argument, std::vector<fs::path>& logs) {
  const fs::path path = PathOf(argument);
  const std::string pattern = Utf8(path.filename());
  std::vector<fs::path> found;
  if (pattern.find_first_of("*?") == pattern.npos || fs::exists(path)) {
    found = {path};
  } else {
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored))
      if (entry.is_regular_file() && FitsWildcards(Utf8(entry.path().filename()), pattern))
        found.push_back(path.has_parent_path() ? entry.path() : entry.path().filename());
    if (found.empty()) throw std::runtime_error("Nenhum arquivo: " + argument);
    std::ranges::sort(found);
  }
  for (fs::path& log : found) {
    const auto same = [&](const fs::path& other) {
      std::error_code ignored;
      return log == other || fs::equivalent(log, other, ignored);
    };
    if (std::ranges::none_of(logs, same)) logs.push_back(std::move(log));
  }
}

Request ParseArguments(std::span<const std::string> arguments) {
  Request request;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument == "--completo") {
      request.options.whole = true;
    } else if (argument == "--saida") {
      if (++i == arguments.size()) throw WrongUse("Falta o arquivo de --saida");
      request.page = PathOf(arguments[i]);
    } else if (argument.starts_with("--")) {
      throw WrongUse("Opção desconhecida: " + argument);
    } else {
      AddLogs(argument, request.logs);
    }
  }
  if (request.logs.empty()) throw WrongUse("Falta o log");
  return request;
}

std::string ReadFile(const fs::path& path) {
  if (!fs::exists(path)) throw std::runtime_error("Arquivo não encontrado: " + Utf8(path));
  if (fs::is_directory(path))
    throw std::runtime_error("É uma pasta: " + Utf8(path) + ". Indique o arquivo, ou " +
                             Utf8(path / "*.log"));
  std::ifstream file(path, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file) throw std::runtime_error("Não foi possível ler: " + Utf8(path));
  return bytes;
}

// A page of ours holds lines of a log, and is none.
bool IsPage(std::string_view bytes) { return bytes.starts_with("<!DOCTYPE"); }

// Why the file is no log; empty when it is one, and was added.
std::string WhyNoLog(const fs::path& path, Log& log) {
  const std::string bytes = ReadFile(path);
  if (bytes.empty()) return "Arquivo vazio: " + Utf8(path) + "\n";
  if (IsPage(bytes) || !log.Add(Utf8(path.filename()), bytes))
    return "Não é um log da Caixora: " + Utf8(path) + "\n";
  return {};
}

void WritePage(const Request& request, const Log& log) {
  for (const fs::path& input : request.logs) {
    std::error_code ignored;
    if (fs::equivalent(input, request.page, ignored))
      throw std::runtime_error("A página ficaria no lugar do log: " + Utf8(request.page));
  }
  std::ofstream page(request.page, std::ios::binary);
  if (page) WriteReport(log, request.options, page);
  page.close();
  if (!page) throw std::runtime_error("Não foi possível gravar: " + Utf8(request.page));
}

}  // namespace

int RunReport(std::span<const std::string> arguments, std::ostream& out, std::ostream& errors) {
  try {
    const Request request = ParseArguments(arguments);
    Log log;
    std::size_t logs = 0;
    for (const fs::path& path : request.logs) {
      const std::string why = WhyNoLog(path, log);
      logs += why.empty();
      errors << why;
    }
    if (logs == 0) return 1;
    log.Read();
    WritePage(request, log);
    out << Utf8(fs::absolute(request.page)) << "\n" << ReportSummary(log);
    return 0;
  } catch (const WrongUse& error) {
    errors << error.what() << "\n" << kUse;
    return 2;
  } catch (const std::exception& error) {
    errors << error.what() << "\n";
    return 1;
  }
}

}  // namespace caixora
