#include "simulators/certification_run.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>

#include "programs/console.h"
#include "simulators/certification_answer.h"
#include "simulators/certification_result.h"
#include "simulators/embedded.h"
#include "simulators/gp_keys.h"
#include "simulators/gp_manager.h"
#include "simulators/gp_stand_in.h"
#include "simulators/key_source.h"
#include "simulators/now.h"

namespace caixora::certification {
namespace {

constexpr char kDate[] = "%d/%m/%Y %H:%M:%S";

// A request in a folder of a closed GP was written just before it closed: a GP that is opened again
// finds it. For one that nobody opens, this long is waited.
constexpr std::chrono::seconds kStranded{3};

bool Exists(const std::string& path) {
  return ::GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// A file that others append to, from where it ended when this was made.
class Tail {
 public:
  explicit Tail(std::string path) : path_(std::move(path)) { taken_ = Size(); }

  std::string Whole() {
    const std::string text = ReadWhole(path_).value_or("");
    return text.size() < taken_ ? text : text.substr(taken_);
  }

  // The next whole line.
  std::optional<std::string> Next() {
    if (Size() == taken_) return std::nullopt;
    const std::string text = Whole();
    const std::size_t end = text.find("\r\n");
    if (end == std::string::npos) return std::nullopt;
    taken_ += end + 2;
    return text.substr(0, end);
  }

 private:
  std::size_t Size() const {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!::GetFileAttributesExA(path_.c_str(), GetFileExInfoStandard, &data)) return 0;
    return static_cast<std::size_t>(data.nFileSizeLow);
  }

  std::string path_;
  std::size_t taken_ = 0;
};

Request InUtf8(const Request& request) {
  std::string record;
  for (const auto& [key, value] : request.fields())
    record += Utf8(key) + " = " + Utf8(value) + '\n';
  return Request(record);
}

class Director : public gp::Director, public Stage {
 public:
  Director(Script script, const RunOptions& options, std::function<void()> report)
      : options_(options),
        report_(std::move(report)),
        flows_(options.companion + "\\Trevix_fluxos.txt"),
        log_(stand_in_.folder() + "Log\\Caixora.log"),
        run_(std::move(script), ModeOf(options), *this) {
    circumstances_.program = options.program;
    circumstances_.started = Now(kDate);
    std::array<char, MAX_COMPUTERNAME_LENGTH + 1> name{};
    DWORD size = name.size();
    if (::GetComputerNameA(name.data(), &size)) circumstances_.machine = Utf8({name.data(), size});
    for (const char* left : {"\\Req\\intpos.001", "\\Resp\\intpos.001", "\\Resp\\ativo.001"})
      ::DeleteFileA((options.folder + left).c_str());
    run_.Start(Clock::now());
  }

  // ---- As the GP's director ----

  bool TakesRequests() override {
    if (gp_runs_ || !Exists(request_)) {
      stranded_.reset();
      return gp_runs_;
    }
    if (!stranded_) stranded_ = Clock::now();
    return Clock::now() - *stranded_ >= kStranded;
  }

  const gp::Outcome* Decide(const Request& request) override {
    if (!decided_) {
      part_ = &run_.OnRequest(InUtf8(request), Clock::now());
      outcome_ = {.cents = "",
                  .action = part_->action,
                  .approved = part_->approved,
                  .receipt = part_->receipt,
                  .every_field = false,
                  .delay = part_->delay,
                  .refusal = part_->message,
                  .description = ""};
      decided_ = true;
    }
    return &outcome_;
  }

  void Received(const Request&, const gp::Outcome&, Moment) override { decided_ = false; }

  void Revise(const Request&, std::string& answer) override { answer = Dressed(answer, *part_); }

  void Answered(const Request& request, const Request& answer, Moment now) override {
    run_.OnAnswered(InUtf8(request), InUtf8(answer), now);
  }

  bool Key(char key) override {
    if (key == 'r')
      report_();
    else
      run_.OnKey(key == gp::kEscape ? 'q' : key, Clock::now());
    return true;
  }

  std::optional<int> Tick(Moment now) override {
    Print(std::exchange(said_, {}));
    if (const bool runs = stand_in_.Runs(); runs != gp_runs_) {
      gp_runs_ = runs;
      if (runs) run_.OnGpStarted();
    }
    while (const std::optional<std::string> line = flows_.Next())
      run_.OnFlow(FlowEvent(*line), now);
    run_.OnTick(now);
    if (!run_.done()) return std::nullopt;
    return Report();
  }

  // ---- As the stage ----

  void OpenGp() override {
    stand_in_.Open();
    gp_runs_ = stand_in_.Runs();
  }
  void CloseGp() override {
    stand_in_.Close();
    gp_runs_ = false;
  }
  void DropRequest() override { ::DeleteFileA(request_.c_str()); }
  bool AnswerWasTaken() override { return !Exists(options_.folder + "\\Resp\\Intpos.001"); }
  void SetScenario(const std::string& name) override {
    const Handle file =
        OpenFile(options_.companion + "\\Trevix_cenario.txt", GENERIC_WRITE, 0, CREATE_ALWAYS);
    WriteTo(file.get(), name);
  }
  std::string TimeOfDay() override { return Now("%H:%M:%S"); }
  // Shown behind the lines of the GP that it is about.
  void Say(std::string_view line) override { said_.append(line) += '\n'; }

 private:
  using Clock = std::chrono::steady_clock;

  static Mode ModeOf(const RunOptions& options) {
    return {.automatic = options.automatic,
            .has_companion = Exists(options.companion + "\\Trevix.exe"),
            .limit = options.limit};
  }

  // "inicio valor:30,00" as a record.
  static Request FlowEvent(const std::string& line) {
    std::string_view rest = line;
    const std::string_view event = rest.substr(0, rest.find(' '));
    rest.remove_prefix(event.size());
    std::string record = "000-000 = FLUXO\nfluxo_evento = " + Utf8(event) + '\n';
    if (const std::size_t colon = rest.find(':'); colon != rest.npos)
      record +=
          "fluxo_" + Utf8(rest.substr(1, colon - 1)) + " = " + Utf8(rest.substr(colon + 1)) + '\n';
    return Request(record);
  }

  // What the library wrote into its log meanwhile.
  void ReadVersions() {
    const std::string log = log_.Whole();
    constexpr std::string_view kProgram = "VERSAO SISTEMA PARCEIRO: ";
    if (const std::size_t at = log.rfind(kProgram); at != std::string::npos) {
      const std::size_t begin = at + kProgram.size();
      circumstances_.program_version =
          Utf8(log.substr(begin, log.find_first_of("\r\n", begin) - begin));
    }
    const std::size_t end = log.rfind(":: ");
    const std::size_t begin = end == std::string::npos ? end : log.rfind("::", end - 1);
    if (begin != std::string::npos)
      circumstances_.library_version = Utf8(log.substr(begin + 2, end - begin - 2));
  }

  int Report() {
    ::DeleteFileA((options_.companion + "\\Trevix_cenario.txt").c_str());
    circumstances_.ended = Now(kDate);
    ReadVersions();
    Print(said_ + '\n' + Text(run_, circumstances_));
    const std::string base =
        options_.result.empty() ? Now("certificacao-%Y%m%d-%H%M%S") : options_.result;
    const std::string json =
        Json(run_, circumstances_).dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
    for (const auto& [extension, text] :
         {std::pair{".json", json + '\n'}, {".html", Page(run_, circumstances_)}}) {
      const bool done =
          WriteTo(OpenFile(base + extension, GENERIC_WRITE, 0, CREATE_ALWAYS).get(), text);
      Print((done ? "Gravado: " : "Não foi possível gravar ") + Utf8(base) + extension + '\n');
    }
    switch (run_.Overall()) {
      case Verdict::kPassed:
        return 0;
      case Verdict::kFailed:
        return kFailed;
      default:
        return kIncomplete;
    }
  }

  RunOptions options_;
  std::function<void()> report_;
  gp::StandIn stand_in_;
  std::string request_ = options_.folder + "\\Req\\intpos.001";
  bool gp_runs_ = false;
  std::string said_;
  Tail flows_;
  Tail log_;
  Circumstances circumstances_;
  Certification run_;
  const Part* part_ = nullptr;
  gp::Outcome outcome_{};
  bool decided_ = false;
  std::optional<Moment> stranded_;
};

}  // namespace

int Run(const RunOptions& options, gp::Director& books, const std::function<void()>& report) try {
  std::optional<std::string> file;
  if (!options.steps.empty()) {
    file = ReadWhole(options.steps);
    if (!file) throw ScriptError("não pôde ser lido");
  }
  Director director(ReadScript(file ? *file : kCertificationScript), options, report);
  const gp::KeySource source(!options.automatic, true);
  if (!options.automatic)
    Print(
        "Teclas: s ou n responde à pergunta, p pula o passo, f o reprova, v\n"
        "repete o passo ou volta ao anterior, r mostra o livro, q encerra e grava o resultado.\n");
  return gp::Manager(options.folder, {&director, &books}, [&] { return source.Next(); }).Run();
} catch (const ScriptError& error) {
  Print((options.steps.empty() ? "roteiro" : Utf8(options.steps)) + ": " + error.what() + '\n',
        STD_ERROR_HANDLE);
  return kBadScript;
} catch (const gp::StandIn::Obstacle& obstacle) {
  Print(std::string(obstacle.what()) + '\n', STD_ERROR_HANDLE);
  return kObstructed;
}

}  // namespace caixora::certification
