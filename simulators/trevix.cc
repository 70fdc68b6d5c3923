// Simulated companion: asks its questions and gives its return through the exchange files, in the
// way that field 4 of its parameter line chooses.
#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "programs/console.h"
#include "support/ansi.h"

namespace caixora {
namespace {

constexpr DWORD kPollMs = 20;
constexpr DWORD kLongestRunMs = 10 * 60 * 1000;
constexpr DWORD kQuickRunMs = 1000;  // long enough for the check that follows a start

enum ExitCode { kDone = 0, kCrashed = 3, kNotAnswered = 4, kNotWritten = 5 };

std::vector<std::string> SplitFields(std::string_view line) {
  std::vector<std::string> fields;
  for (std::size_t end; (end = line.find(kNotSign)) != std::string_view::npos;
       line.remove_prefix(end + 1))
    fields.emplace_back(line.substr(0, end));
  fields.emplace_back(line);
  fields.resize(std::max<std::size_t>(fields.size(), 12));
  return fields;
}

class Companion {
 public:
  explicit Companion(std::string folder) : folder_(std::move(folder)) {
    ::CreateDirectoryA((folder_ + "\\Req").c_str(), nullptr);
    ::CreateDirectoryA((folder_ + "\\Resp").c_str(), nullptr);
  }

  // A line in the record of flows, such as "retorno status:0".
  void Note(std::string_view event, std::string_view value = {}) const {
    AppendLine(folder_ + "\\Trevix_fluxos.txt",
               std::string(event) + std::string(value.empty() ? "" : " ") + std::string(value));
  }

  void RemoveExchangeFiles() const {
    ::DeleteFileA(question_.c_str());
    ::DeleteFileA(answer_.c_str());
  }

  bool Say(std::string_view line) const {
    Print("Enviado: " + Utf8(line) + "\n");
    return Publish(folder_ + "\\Req001_Temp.txt", question_, std::string(line) + "\r\n");
  }

  // Asks and waits until the question was taken and answered.
  std::optional<std::string> Ask(std::string_view question) const {
    if (!Say(question)) return std::nullopt;
    Note("pergunta");
    const ULONGLONG asked = ::GetTickCount64();
    while (::GetTickCount64() - asked < kLongestRunMs) {
      ::Sleep(kPollMs);
      if (::GetFileAttributesA(question_.c_str()) != INVALID_FILE_ATTRIBUTES) continue;
      std::optional<std::string> answer = ReadWhole(answer_);
      if (!answer || !::DeleteFileA(answer_.c_str())) continue;
      Print("Resposta: " + Utf8(*answer) + "\n");
      Note("resposta");
      return answer;
    }
    return std::nullopt;
  }

 private:
  std::string folder_;
  std::string question_ = folder_ + "\\Req\\Req001.txt";
  std::string answer_ = folder_ + "\\Resp\\Resp001.txt";
};

// One scenario of field 4. Any other text means the last row.
struct Scenario {
  std::string_view name;
  std::vector<std::string_view> questions;
  std::string_view status;
  std::string_view message;
};

const Scenario& FindScenario(std::string_view name) {
  constexpr std::string_view kInstalments = u8"Informe o número de parcelas"_ansi;
  constexpr std::string_view kConfirm = u8"Confirma a operação? 1-Sim 2-Não"_ansi;
  constexpr std::string_view kApproved = u8"TRANSAÇÃO APROVADA"_ansi;
  static const Scenario kScenarios[] = {
      {"rapida", {}, "0", kApproved},
      {"recusa", {kConfirm}, "5", u8"TRANSAÇÃO NÃO AUTORIZADA"_ansi},
      {"queda", {kConfirm}, "", ""},
      {"padrao", {kInstalments, kConfirm}, "0", kApproved},
  };
  const Scenario* scenario = kScenarios;
  while (scenario->name != name && scenario + 1 != std::end(kScenarios)) ++scenario;
  return *scenario;
}

// The scenario that was laid out for one transaction, else the one of its parameters.
std::string TakeScenario(const std::string& folder, const std::string& otherwise) {
  const std::string path = folder + "\\Trevix_cenario.txt";
  const std::optional<std::string> laid_out = ReadWhole(path);
  if (!laid_out) return otherwise;
  ::DeleteFileA(path.c_str());
  return *laid_out;
}

int RunTransaction(const Companion& companion, const std::vector<std::string>& fields,
                   std::string_view chosen) {
  const Scenario& scenario = FindScenario(chosen);
  std::string answers;
  for (const std::string_view question : scenario.questions) {
    const std::optional<std::string> answer = companion.Ask(question);
    if (!answer) return kNotAnswered;
    answers += (answers.empty() ? "" : ",") + *answer;
  }
  // A crash: nothing is cleaned up and no return is written.
  if (scenario.name == "queda") ::TerminateProcess(::GetCurrentProcess(), kCrashed);

  const std::string nsu = std::to_string(::GetTickCount64() % 1'000'000'000);
  std::string result = "[RETORNO]|FUNCAO:" + fields[0] + "|STATUS:" + std::string(scenario.status) +
                       "|VALOR:" + fields[4] + "|NSU:" + nsu + "|RESPOSTAS:" + answers +
                       "|MENSAGEM:" + std::string(scenario.message);
  // A result is one line, whatever was answered.
  for (const char end : {'\r', '\n'}) std::ranges::replace(result, end, ' ');
  if (!companion.Say(result)) return kNotWritten;
  companion.Note("retorno", "status:" + std::string(scenario.status));
  if (scenario.questions.empty()) ::Sleep(kQuickRunMs);
  return kDone;
}

int Run(std::string_view line) {
  const std::vector<std::string> fields = SplitFields(line);
  const bool cancels = fields[0] == "800";
  const bool finishes = fields[0] == "99";
  const std::string folder = OwnFolder();
  const std::string scenario = cancels || finishes ? "" : TakeScenario(folder, fields[3]);
  if (scenario == "imediata") return kDone;

  const Companion companion(folder);
  if (!finishes) companion.RemoveExchangeFiles();  // at the end the last exchange stays in place
  // Whoever sees the line finds the folders ready.
  AppendLine(folder + "\\Trevix_parametros.txt", line);
  Print("Parâmetros: " + Utf8(line) + "\n");
  if (cancels) {
    companion.Note("cancelamento");
    ::Sleep(200);
  } else if (finishes) {
    companion.Note("fim");
    ::Sleep(300);
  } else {
    companion.Note("inicio", "valor:" + fields[4]);
    if (scenario != "longa") return RunTransaction(companion, fields, scenario);
    ::Sleep(kLongestRunMs);
  }
  return kDone;
}

}  // namespace
}  // namespace caixora

int main() { return caixora::Run(caixora::RawArguments()); }
