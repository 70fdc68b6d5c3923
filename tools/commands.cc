#include "tools/commands.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "programs/console.h"
#include "tools/functions.h"
#include "tools/narrow.h"

namespace caixora {
namespace {

using caixora_pdv::ErroDeUso;

constexpr std::string_view kStart = "IniciaFuncaoQJInterativo";
constexpr std::string_view kAnswer = "ContinuaFuncaoQJInterativo";
constexpr std::size_t kStartArguments = 11;
constexpr DWORD kPollMs = 100;
constexpr DWORD kPatienceMs = 120'000;

using Arguments = std::span<const std::string>;
using Call = std::function<Reply()>;
using Step = std::function<bool()>;  // true when all went well

template <class T>
T ParseNumber(std::string_view name, const std::string& text) {
  std::string number = text;
  if constexpr (std::is_floating_point_v<T>) std::ranges::replace(number, ',', '.');
  T value{};
  const char* const end = number.data() + number.size();
  const auto [stop, error] = std::from_chars(number.data(), end, value);
  if (error != std::errc{} || stop != end)
    throw ErroDeUso(std::string(name) + ": número inválido: \"" + text + "\"");
  return value;
}

Value ParseValue(Kind kind, Type type, std::string_view name, const std::string& text) {
  switch (type) {
    case Type::kInteger:
      return ParseNumber<std::int32_t>(name, text);
    case Type::kNatural:
      return ParseNumber<std::uint32_t>(name, text);
    case Type::kAmount:
      return ParseNumber<double>(name, text);
    case Type::kText:
      break;
  }
  return EncodeText(kind, name, text);
}

// One line of the keyboard, or of a pipe, which holds Windows-1252. Nothing at the end.
std::optional<std::string> ReadAnswer() {
  const HANDLE in = ::GetStdHandle(STD_INPUT_HANDLE);
  std::string line;
  if (IsConsole(in)) {
    std::wstring typed;  // to the line's end: what is left unread would answer the next question
    wchar_t buffer[512];
    for (DWORD got = 0; !typed.ends_with(L'\n'); typed.append(buffer, got))
      if (!::ReadConsoleW(in, buffer, DWORD{std::size(buffer)}, &got, nullptr) || got == 0) break;
    line = Narrow(typed);
  } else {
    for (int c = 0; c != '\n' && (c = std::getchar()) != EOF;) line += static_cast<char>(c);
    line = caixora_pdv::ParaUtf8(line);
  }
  if (line.empty()) return std::nullopt;
  return line.substr(0, line.find_first_of("\r\n"));
}

class Host {
 public:
  Host(const caixora_pdv::Biblioteca& library, Format format)
      : library_(library), format_(format) {}

  // Checks everything that can be checked before anything is called.
  Step Prepare(const std::string& name, Arguments arguments) const {
    if (name == "Pausa") {
      Expect(name, "ms", arguments.size() == 1);
      return [ms = ParseNumber<std::uint32_t>("ms", arguments[0])] { return ::Sleep(ms), true; };
    }
    if (name == "Pasta") {
      Expect(name, "dir", arguments.size() == 1);
      return [folder = Widen(arguments[0], CP_UTF8)] {
        if (!::SetCurrentDirectoryW(folder.c_str())) throw ErroDeUso("Pasta não encontrada");
        return true;
      };
    }
    if (name == "Fluxo") {
      Expect(name, std::string(FindFunction(kStart)->parameters) + " [respostas...]",
             arguments.size() >= kStartArguments);
      Bind(kStart, arguments.first(kStartArguments));
      for (const std::string& answer : arguments.subspan(kStartArguments))
        Bind(kAnswer, {&answer, 1});
      return [this, arguments] { return RunFlow(arguments); };
    }
    return [this, name, call = Bind(name, arguments)] { return Show(name, call()).Succeeded(); };
  }

 private:
  static void Expect(std::string_view name, std::string_view parameters, bool right) {
    if (!right)
      throw ErroDeUso("Argumentos a mais ou a menos. Uso: " + std::string(name) + " " +
                      std::string(parameters));
  }

  Call Bind(std::string_view name, Arguments arguments) const {
    const Function* const function = FindFunction(name);
    if (function == nullptr) throw ErroDeUso("Função desconhecida: " + std::string(name));
    Expect(name, function->parameters, arguments.size() == function->types.size());
    std::vector<Value> values;
    try {
      const std::vector<std::string_view> names = ParameterNames(*function);
      for (std::size_t i = 0; i < names.size(); ++i)
        values.push_back(ParseValue(function->kind, function->types[i], names[i], arguments[i]));
    } catch (const ErroDeUso& error) {
      throw ErroDeUso(error.what() + (". Uso: " + std::string(name) + " ") +
                      std::string(function->parameters));
    }
    return [function, address = AddressOf(library_, *function), values = std::move(values)] {
      return CallFunction(*function, address, values);
    };
  }

  Reply Show(std::string_view name, Reply reply) const {
    if (format_.json != nullptr)
      format_.json->Write(ToJson(nullptr, reply));
    else if (format_.raw)
      WriteTo(::GetStdHandle(STD_OUTPUT_HANDLE), reply.text + "\n");
    else
      PrintDecoded(name, reply);
    return reply;
  }

  Reply CallAndShow(std::string_view name, Arguments arguments = {}) const {
    return Show(name, Bind(name, arguments)());
  }

  // The call that takes the next answer, from the command line or the keyboard, to the library;
  // nothing when there is none left. Asks again for one that cannot be sent: an error here would
  // leave the companion running.
  std::optional<Call> NextAnswer(Arguments& answers) const {
    while (true) {
      try {
        if (!format_.raw && answers.empty()) Print("Resposta (ou cancelar): ");
        const std::optional<std::string> answer =
            answers.empty() ? ReadAnswer() : std::exchange(answers, answers.subspan(1)).front();
        if (!answer || answer == "cancelar") return std::nullopt;
        return Bind(kAnswer, {&*answer, 1});
      } catch (const ErroDeUso& error) {
        Print(std::string(error.what()) + "\n", STD_ERROR_HANDLE);
      }
    }
  }

  bool RunFlow(Arguments arguments) const {
    static const std::string kWait = "AguardaFuncaoQJInterativo";
    Arguments answers = arguments.subspan(kStartArguments);
    std::vector<std::string> start(arguments.begin(), arguments.begin() + kStartArguments);
    if (!CallAndShow(kStart, start).Succeeded()) return false;
    const Call wait = Bind(kWait, {});
    ULONGLONG last_news = ::GetTickCount64();
    while (::GetTickCount64() - last_news < kPatienceMs) {
      const Reply news = wait();
      if (news.text.empty()) {
        ::Sleep(kPollMs);
        continue;
      }
      Show(kWait, news);
      if (!news.Succeeded()) break;
      if (news.text.find("[RETORNO]") != std::string::npos) {
        start[0] = "99";
        return CallAndShow("FinalizaFuncaoQJInterativo", start).Succeeded();
      }
      const std::optional<Call> answer = NextAnswer(answers);
      if (!answer || !Show(kAnswer, (*answer)()).Succeeded()) break;
      last_news = ::GetTickCount64();
    }
    CallAndShow("CancelarFluxoQJInterativo");
    return false;
  }

  const caixora_pdv::Biblioteca& library_;
  Format format_;
};

}  // namespace

bool RunCommands(const caixora_pdv::Biblioteca& library, Format format,
                 const std::vector<std::string>& arguments) {
  const Host host(library, format);
  std::vector<Step> steps;
  for (auto next = arguments.begin();; ++next) {
    const auto end = std::find(next, arguments.end(), "+");
    if (next == end) throw ErroDeUso("Falta uma função ao lado de \"+\"");
    steps.push_back(host.Prepare(*next, {next + 1, end}));
    if ((next = end) == arguments.end()) break;
  }
  bool succeeded = true;
  for (const Step& step : steps) succeeded &= step();
  return succeeded;
}

void PrintFunctions() {
  for (const Function& row : AllFunctions())
    Print(std::string(row.name) + " " + std::string(row.parameters) + "\n");
}

}  // namespace caixora
