#include "tools/commands.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <functional>
#include <iterator>
#include <nlohmann/json.hpp>
#include <span>
#include <string_view>
#include <utility>
#include <variant>

#include "programs/console.h"
#include "tools/answers.h"
#include "tools/arguments.h"
#include "tools/call.h"
#include "tools/functions.h"
#include "tools/reply.h"
#include "tools/verbs.h"
#include "tools/vocabulary.h"
#include "tools/waiting.h"

namespace caixora {
namespace {

using caixora_pdv::Centavos;
using caixora_pdv::ErroDeUso;

constexpr std::string_view kStart = "IniciaFuncaoQJInterativo";
constexpr std::string_view kNews = "AguardaFuncaoQJInterativo";
constexpr std::string_view kAnswer = "ContinuaFuncaoQJInterativo";
constexpr std::string_view kFinish = "FinalizaFuncaoQJInterativo";
constexpr std::string_view kCancel = "CancelarFluxoQJInterativo";
constexpr std::size_t kStartArguments = 11;
constexpr DWORD kPollMs = 100;
constexpr DWORD kPatienceMs = 120'000;
constexpr int kCancelAttempts = 5;
constexpr DWORD kCancelPauseMs = 500;

using Arguments = std::span<const std::string>;
using Step = std::function<ExitStatus()>;

std::int64_t NumberOf(std::string_view name, const std::string& text, const ParsedNumber& parsed) {
  if (const auto* const wrong = std::get_if<std::string>(&parsed))
    throw ErroDeUso(std::string(name) + ": \"" + text + "\" " + *wrong);
  return std::get<std::int64_t>(parsed);
}

template <class T>
T ParseInteger(std::string_view name, const std::string& text, T least) {
  constexpr T kMost = std::numeric_limits<T>::max();
  return static_cast<T>(NumberOf(name, text, ParseWhole(text, least, kMost)));
}

Value ParseValue(const Function& function, Type type, std::string_view name,
                 const std::string& text) {
  switch (type) {
    case Type::kInteger:
      return ParseInteger<std::int32_t>(name, text, LeastFor(function, name));
    case Type::kNatural:
      return ParseInteger<std::uint32_t>(name, text, 0);
    case Type::kAmount:
      return Centavos(NumberOf(name, text, ParseAmount(text))).Reais();
    case Type::kText:
      break;
  }
  return EncodeText(function.kind, name, text);
}

std::string_view Awaited(Kind kind) {
  switch (kind) {
    case Kind::kSale:
      return "o GP concluir a venda";
    case Kind::kOutcome:
      return "o GP retirar o pedido";
    case Kind::kPayment:
      return "o GP concluir a operação";
    case Kind::kTest:
      return "a biblioteca";
    case Kind::kInteractive:
      break;
  }
  return "o Trevix";
}

// What Ctrl-C leaves unknown while the function blocks, and how to find it out.
std::string Warning(const Function& function, Arguments arguments) {
  std::string text =
      "O resultado ainda não se sabe, e a espera continua. Ctrl-C de novo encerra sem ele.\n";
  switch (function.kind) {
    case Kind::kSale: {
      const std::vector<std::string_view> names = ParameterNames(function);
      const auto coupon = std::ranges::find(names, "iCupom") - names.begin();
      return text + "A venda fica então incerta, e se desfaz assim:\n  caixora_host Desfazimento " +
             arguments[0] + " " + arguments[1] + " " + arguments[static_cast<std::size_t>(coupon)] +
             "\n";
    }
    case Kind::kOutcome:
      return text + "Repita então a chamada, antes de qualquer outra.\n";
    case Kind::kPayment:
      return text + "Verifique então no GP se a operação foi feita.\n";
    case Kind::kTest:
    case Kind::kInteractive:
      break;
  }
  return text + "Verifique então no Trevix se a transação foi feita.\n";
}

struct Call {
  const Function* function;
  Address address;
  std::vector<Value> values;
  std::string warning;

  // Without a word, for what is called again and again.
  Reply Quietly() const { return CallFunction(*function, address, values); }

  Reply operator()() const {
    const Waiting waiting(std::string(Awaited(function->kind)) + " (" + function->name + ")",
                          warning);
    return Quietly();
  }
};

void ExpectArguments(std::string_view name, std::string_view parameters, std::size_t given,
                     std::size_t least, std::size_t most) {
  if (given >= least && given <= most) return;
  throw ErroDeUso(std::string(name) + ": argumentos a " + (given < least ? "menos" : "mais") +
                  ": são " + std::to_string(least) + (most > least ? " ou mais" : "") + ", e há " +
                  std::to_string(given) + ". Uso: " + std::string(name) + " " +
                  std::string(parameters));
}

class Host {
 public:
  Host(const caixora_pdv::Biblioteca& library, Format format)
      : library_(library), format_(format) {}

  // Checks everything that can be checked before anything is called.
  Step Prepare(const std::string& name, Arguments arguments) const {
    const Verb* const verb = FindVerb(name);
    if (verb == nullptr) return [this, call = Bind(name, arguments)] { return Show(call, call()); };
    if (verb->run != nullptr) throw ErroDeUso(name + ": não se combina com \"+\"");
    if (name == "Fluxo") return PrepareFlow(*verb, arguments);
    ExpectArguments(name, verb->parameters, arguments.size(), 1, 1);
    if (name == "Pausa")
      return [ms = ParseInteger<std::uint32_t>("ms", arguments[0], 0)] {
        return PauseFor(ms) ? kDone : kCancelled;
      };
    return [folder = arguments[0]] {
      if (::SetCurrentDirectoryW(Widen(folder, CP_UTF8).c_str())) return kDone;
      throw ErroDeUso("Pasta: não foi encontrada: " + folder);
    };
  }

 private:
  Call Bind(std::string_view name, Arguments arguments = {}) const {
    const Function& function = *FindFunction(name);
    const std::vector<std::string_view> names = ParameterNames(function);
    ExpectArguments(name, function.parameters, arguments.size(), names.size(), names.size());
    std::vector<Value> values;
    for (std::size_t i = 0; i < names.size(); ++i)
      values.push_back(ParseValue(function, function.types[i], names[i], arguments[i]));
    if (const std::string wrong = WrongValues(function, names, values); !wrong.empty())
      throw ErroDeUso(wrong);
    return {&function, AddressOf(library_, function), std::move(values),
            Warning(function, arguments)};
  }

  ExitStatus Show(const Call& call, const Reply& reply) const {
    if (format_.json != nullptr)
      format_.json->Write(ToJson(nullptr, reply));
    else if (format_.raw)
      WriteTo(::GetStdHandle(STD_OUTPUT_HANDLE), reply.text + "\n");
    else
      PrintDecoded(call.function->name, reply);
    return reply.Status();
  }

  Step PrepareFlow(const Verb& verb, Arguments arguments) const {
    const std::size_t most = std::max(arguments.size(), kStartArguments);
    ExpectArguments(verb.name, verb.parameters, arguments.size(), kStartArguments, most);
    std::vector<std::string> shared(arguments.begin(), arguments.begin() + kStartArguments);
    const Call start = Bind(kStart, shared);
    if (std::get<std::uint32_t>(start.values.front()) == format_.finish)
      throw ErroDeUso("uFuncao: " + shared.front() +
                      " é a função de encerramento (--funcao-fim): faria outra transação");
    shared.front() = std::to_string(format_.finish);
    const Arguments given = arguments.subspan(kStartArguments);
    for (const std::string& answer : given) Bind(kAnswer, {&answer, 1});
    return [this, given, start, news = Bind(kNews), finish = Bind(kFinish, shared),
            cancel = Bind(kCancel)] {
      if (const ExitStatus status = Show(start, start()); status != kDone) return status;
      ExitStatus status = kUncertain;
      try {
        status = Converse(news, given);
      } catch (...) {
        CancelFlow(cancel);
        throw;
      }
      if (status == kDone) return Show(finish, finish());
      return CancelFlow(cancel) == kDone ? status : kUncertain;
    };
  }

  // Again when a companion that was told to end is still there.
  ExitStatus CancelFlow(const Call& cancel) const {
    Reply reply = cancel();
    for (int attempt = 1; attempt < kCancelAttempts && !reply.Succeeded(); ++attempt) {
      ::Sleep(kCancelPauseMs);
      reply = cancel();
    }
    return Show(cancel, reply);
  }

  // kDone when the flow has its result and is to be finished; of anything else it is to be
  // cancelled.
  ExitStatus Converse(const Call& news, Arguments given) const {
    Answers answers(given);
    while (true) {
      const Reply reply = NextNews(news);
      if (Interrupted()) return kCancelled;
      Show(news, reply);
      if (!reply.Succeeded()) return kRefused;
      if (reply.text.find("[RETORNO]") != std::string::npos) return kDone;
      const std::optional<Call> answer = NextAnswer(answers);
      if (!answer) return kCancelled;
      if (Show(*answer, (*answer)()) != kDone) return kRefused;
    }
  }

  // The companion's next text; an [ERROABORTAR] of our own when it takes too long.
  Reply NextNews(const Call& news) const {
    const Waiting waiting("a próxima pergunta do Trevix (Ctrl-C cancela o fluxo)");
    const ULONGLONG start = ::GetTickCount64();
    Reply reply = news.Quietly();
    while (reply.text.empty() && PauseFor(kPollMs)) {
      if (::GetTickCount64() - start >= kPatienceMs)
        throw std::runtime_error("O Trevix nada perguntou em 120 s");
      reply = news.Quietly();
    }
    return reply;
  }

  // The call that takes the next answer to the library; nothing when the flow is to be cancelled.
  std::optional<Call> NextAnswer(Answers& answers) const {
    while (true) {
      const bool typed = answers.Typed();
      if (typed) Print("Resposta (ou cancelar): ", STD_ERROR_HANDLE);
      const std::optional<std::string> answer = answers.Next();
      if (typed && Interrupted()) Print("\n", STD_ERROR_HANDLE);
      if (!answer || answer == "cancelar" || Interrupted()) return std::nullopt;
      try {
        const Call call = Bind(kAnswer, {&*answer, 1});
        if (!typed && Decoded()) Print("Resposta: " + *answer + "\n");
        return call;
      } catch (const ErroDeUso& error) {
        Print(std::string(error.what()) + "\n", STD_ERROR_HANDLE);
        // A pipe's next line answers the next question, not this one.
        if (!typed) return std::nullopt;
      }
    }
  }

  bool Decoded() const { return !format_.raw && format_.json == nullptr; }

  const caixora_pdv::Biblioteca& library_;
  Format format_;
};

}  // namespace

ExitStatus RunCommands(const caixora_pdv::Biblioteca& library, Format format,
                       const std::vector<std::string>& arguments) {
  const Host host(library, format);
  std::vector<std::pair<std::string, Step>> steps;
  for (auto next = arguments.begin();; ++next) {
    const auto end = std::find(next, arguments.end(), "+");
    if (next == end) throw ErroDeUso("Falta uma função ao lado de \"+\"");
    const std::string name = Resolve(*next);
    steps.emplace_back(name, host.Prepare(name, {next + 1, end}));
    if ((next = end) == arguments.end()) break;
  }
  ExitStatus worst = kDone;
  for (const auto& [name, step] : steps) {
    if (Interrupted()) {
      Print("Interrompido; não foi chamada: " + name + "\n", STD_ERROR_HANDLE);
      worst = std::max(worst, kCancelled);
    } else {
      worst = std::max(worst, step());
    }
  }
  return worst;
}

}  // namespace caixora
