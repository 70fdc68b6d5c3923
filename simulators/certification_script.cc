#include "simulators/certification_script.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

namespace caixora::certification {
namespace {

using Test = Condition::Test;

constexpr std::pair<std::string_view, std::string_view> kNames[] = {
    {"cupom", "001-000"},     {"valor", "003-000"},    {"nsu", "012-000"},
    {"data", "022-000"},      {"km", "250-000"},       {"placa", "250-001"},
    {"matricula", "250-002"}, {"itens", "261-000"},    {"tipo", "800-001"},
    {"parcelas", "800-004"},  {"controle", "800-007"}, {"parcelas_link", "800-010"},
};

constexpr std::pair<std::string_view, Kind> kKinds[] = {
    {"venda", Kind::kSale},
    {"confirmacao", Kind::kConfirmation},
    {"desfazimento", Kind::kUndo},
    {"desfecho", Kind::kOutcome},
    {"cancelamento", Kind::kCancellation},
    {"reimpressao", Kind::kReprint},
    {"pedido", Kind::kRequest},
    {"fluxo_inicio", Kind::kFlowStart},
    {"fluxo_resposta", Kind::kFlowAnswer},
    {"fluxo_retorno", Kind::kFlowReturn},
    {"fluxo_fim", Kind::kFlowFinish},
    {"fluxo_cancelamento", Kind::kFlowCancel},
    {"fluxo_encerramento", Kind::kFlowEnd},
};

constexpr std::string_view kBlanks = " \t";

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// The first word, off the front of the text.
std::string_view TakeWord(std::string_view& text) {
  text = Trim(text);
  const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
  text.remove_prefix(word.size());
  text = Trim(text);
  return word;
}

bool IsUtf8(std::string_view text) try {
  return !nlohmann::json(text).dump().empty();
} catch (const nlohmann::json::exception&) {
  return false;
}

class Reader {
 public:
  Script Read(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    while (!text.empty()) {
      std::string_view line = text.substr(0, text.find('\n'));
      text.remove_prefix(std::min(line.size() + 1, text.size()));
      ++line_;
      if (!IsUtf8(line)) Fail("não está em UTF-8");
      line = Trim(line);
      if (!line.empty() && line.front() != '#') ReadLine(line);
    }
    if (script_.steps.empty()) throw ScriptError("o arquivo não tem nenhum passo");
    EndStep();
    return std::move(script_);
  }

 private:
  [[noreturn]] void Fail(const std::string& reason) const {
    throw ScriptError("linha " + std::to_string(line_) + ": " + reason);
  }

  static std::string Quoted(std::string_view word) { return '"' + std::string(word) + '"'; }

  std::string Needed(std::string_view text, std::string_view what) const {
    if (text.empty()) Fail("falta " + std::string(what));
    return std::string(text);
  }

  Span Duration(std::string_view text) const {
    const std::optional<Span> span = ReadSpan(text);
    if (!span) Fail(Quoted(text) + " não é um tempo, como 90s, 500ms ou 2min");
    return *span;
  }

  // Of nothing at all, and each step would fail before it was read.
  Span Limit(std::string_view text) const {
    const Span span = Duration(text);
    if (span == Span::zero()) Fail(Quoted(text) + " não dá tempo a ninguém");
    return span;
  }

  Step& Current(std::string_view word) {
    if (script_.steps.empty()) Fail(Quoted(word) + " antes do primeiro passo");
    return script_.steps.back();
  }

  Expectation& Last(std::string_view word) {
    Step& step = Current(word);
    if (step.expectations.empty()) Fail(Quoted(word) + " antes de um \"espera\"");
    return step.expectations.back();
  }

  void ReadLine(std::string_view line) {
    const std::string_view word = TakeWord(line);
    if (word == "roteiro") {
      script_.title = Needed(line, "o título");
    } else if (word == "encerramento") {
      script_.closing = Duration(line);
    } else if (word == "prazo") {
      (script_.steps.empty() ? script_.limit : script_.steps.back().limit.emplace()) = Limit(line);
    } else if (word == "passo") {
      BeginStep(line);
    } else if (word == "titulo") {
      Current(word).title = Needed(line, "o título");
    } else if (word == "faca") {
      Current(word).instructions.push_back(Needed(line, "o que fazer"));
    } else if (word == "gp") {
      if (line != "fechado") Fail("depois de \"gp\" só vem \"fechado\"");
      Current(word).gp_closed = true;
    } else if (word == "admite") {
      Step& step = Current(word);
      if (line == "repeticao") {
        step.may_repeat_outcome = true;
      } else if (line == "nova_venda") {
        step.may_sell_again = true;
      } else {
        Fail("depois de \"admite\" vem \"repeticao\" ou \"nova_venda\"");
      }
    } else if (word == "fluxo") {
      Current(word).scenario = Needed(line, "o cenário do companheiro");
    } else if (word == "espera") {
      ReadExpectation(Current(word), line);
    } else if (word == "responde") {
      ReadPart(Last(word), line);
    } else if (word == "senao") {
      if (!IsOutcome(Last(word).kind)) Fail("\"senao\" só vale depois de um desfecho");
      Last(word).reason = Needed(line, "o motivo");
    } else if (word == "pergunta") {
      Expectation question;
      question.kind = Kind::kQuestion;
      question.text = Needed(line, "a pergunta");
      Current(word).expectations.push_back(std::move(question));
    } else {
      Fail("palavra desconhecida: " + Quoted(word));
    }
  }

  void BeginStep(std::string_view id) {
    if (!script_.steps.empty()) EndStep();
    if (id.empty() || id.find_first_of(kBlanks) != id.npos)
      Fail("o passo precisa de um nome sem espaços");
    for (const Step& step : script_.steps)
      if (step.id == id) Fail("o passo " + Quoted(id) + " já existe");
    script_.steps.emplace_back().id = id;
    step_line_ = line_;
  }

  void EndStep() {
    const Step& step = script_.steps.back();
    const int here = std::exchange(line_, step_line_);
    if (step.title.empty()) Fail("o passo " + Quoted(step.id) + " não tem título");
    if (step.instructions.empty()) Fail("o passo " + Quoted(step.id) + " não diz o que fazer");
    if (step.expectations.empty()) Fail("o passo " + Quoted(step.id) + " não espera nada");
    line_ = here;
  }

  void ReadExpectation(Step& step, std::string_view line) {
    const std::string_view word = TakeWord(line);
    const auto* kind = std::ranges::find(kKinds, word, [](const auto& row) { return row.first; });
    if (kind == std::end(kKinds)) Fail("não se pode esperar " + Quoted(word));
    Expectation expectation;
    expectation.kind = kind->second;
    if (!step.expectations.empty() && step.expectations.back().kind == Kind::kQuestion)
      Fail("as perguntas vêm no fim do passo");
    while (!line.empty()) {
      const std::string_view token = TakeWord(line);
      if (token == "como") {
        if (expectation.kind != Kind::kSale && expectation.kind != Kind::kCancellation)
          Fail("só uma venda ou um cancelamento recebe um nome");
        expectation.name = Needed(TakeWord(line), "o nome");
      } else if (token == "de") {
        if (!IsOutcome(expectation.kind)) Fail("\"de\" só vale em um desfecho");
        expectation.of = Needed(TakeWord(line), "o nome da venda");
        RequireName(expectation.of);
      } else {
        expectation.conditions.push_back(ReadCondition(token));
      }
    }
    const bool has_sale = std::ranges::any_of(
        step.expectations, [](const Expectation& e) { return e.kind == Kind::kSale; });
    if (IsOutcome(expectation.kind) && expectation.of.empty() && !has_sale)
      Fail("o passo não tem uma venda de que este seja o desfecho");
    if (!expectation.name.empty() && !names_.insert(expectation.name).second)
      Fail("o nome " + Quoted(expectation.name) + " já foi dado");
    step.expectations.push_back(std::move(expectation));
  }

  void RequireName(std::string_view name) const {
    if (!names_.contains(std::string(name))) Fail("nenhuma linha acima dá o nome " + Quoted(name));
  }

  Condition ReadCondition(std::string_view token) const {
    static constexpr std::pair<std::string_view, Test> kTests[] = {
        {"?=", Test::kEqualIfPresent}, {"!=", Test::kDifferent}, {"=", Test::kEqual}};
    Condition condition;
    condition.key = KeyOf(token);
    for (const auto& [sign, test] : kTests)
      if (const std::size_t at = token.find(sign); at != token.npos) {
        condition = {KeyOf(token.substr(0, at)), test, std::string(token.substr(at + sign.size()))};
        break;
      }
    if (condition.key.empty()) Fail("falta o campo em " + Quoted(token));
    const bool is_key = condition.key.size() >= 7 && condition.key[3] == '-';
    if (!is_key && !condition.key.starts_with("fluxo_"))
      Fail("campo desconhecido: " + Quoted(condition.key));
    if (condition.value.starts_with('$')) {
      const std::size_t point = condition.value.find('.');
      if (point == std::string::npos) Fail(Quoted(condition.value) + " deve ser $nome.campo");
      RequireName(std::string_view(condition.value).substr(1, point - 1));
      condition.value =
          condition.value.substr(0, point + 1) + KeyOf(condition.value.substr(point + 1));
    } else if (condition.key == "003-000" && condition.test != Test::kPresent) {
      condition.value = Cents(condition.value);
    }
    return condition;
  }

  std::string Cents(const std::string& value) const {
    std::string cents = value;
    if (const std::size_t comma = cents.find(','); comma > 0 && comma + 3 == cents.size())
      cents.erase(comma, 1);
    const bool digits = std::ranges::all_of(cents, [](char c) { return c >= '0' && c <= '9'; });
    if (cents.size() == value.size() || !digits)
      Fail(Quoted(value) + " não é um valor em reais, como 12,50");
    return cents;
  }

  // A message as an answer holds it. Readers cut values at "=" and find keys at "-".
  std::string Bytes(const std::string& utf8) const {
    if (utf8.find_first_of("=-") != std::string::npos)
      Fail("uma mensagem não leva \"=\" nem \"-\"");
    std::string bytes;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
      const auto unit = [&](std::size_t at) {
        return at < utf8.size() ? static_cast<unsigned char>(utf8[at]) : 0u;
      };
      const unsigned first = unit(i);
      if (first < 0x80) {
        bytes += utf8[i];
        continue;
      }
      const unsigned code = (first & 0x1Fu) << 6 | (unit(++i) & 0x3Fu);
      if ((first != 0xC2 && first != 0xC3) || (unit(i) & 0xC0u) != 0x80 || code < 0xA0)
        Fail("a mensagem tem um caractere que uma resposta não leva");
      bytes += static_cast<char>(code);
    }
    return bytes;
  }

  void ReadPart(Expectation& expectation, std::string_view line) const {
    if (IsFlow(expectation.kind) || IsOutcome(expectation.kind) ||
        expectation.kind == Kind::kQuestion)
      Fail("o GP não responde a isto");
    Part part;
    const std::string_view verb = TakeWord(line);
    if (verb == "recusa") {
      part.approved = false;
    } else if (verb == "morre") {
      part.action = gp::Action::kStaySilent;
    } else if (verb == "ignora") {
      part.action = gp::Action::kNeverTake;
    } else if (verb != "aprova") {
      Fail("depois de \"responde\" vem aprova, recusa, morre ou ignora");
    }
    const bool answers = part.action == gp::Action::kAnswer;
    while (!line.empty()) {
      const std::string_view word = TakeWord(line);
      if (word == "demora") {
        part.delay = Duration(TakeWord(line));
      } else if (word == "fecha" && answers) {
        part.closes = true;
      } else if (word == "sem_comprovante" && answers && part.approved) {
        part.receipt = false;
      } else if (word == "comprovante_longo" && answers && part.approved) {
        part.long_receipt = true;
      } else if (word == "mensagem" && answers) {
        part.message = Bytes(Needed(std::exchange(line, {}), "a mensagem"));
      } else {
        Fail(Quoted(word) + " não vale depois de " + Quoted(verb));
      }
    }
    expectation.part = std::move(part);
  }

  Script script_;
  std::set<std::string> names_;
  int line_ = 0;
  int step_line_ = 0;
};

}  // namespace

bool IsFlow(Kind kind) { return kind >= Kind::kFlowStart && kind <= Kind::kFlowEnd; }
bool IsOutcome(Kind kind) { return kind >= Kind::kConfirmation && kind <= Kind::kOutcome; }

bool Step::HasFlow() const {
  return std::ranges::any_of(expectations, [](const Expectation& e) { return IsFlow(e.kind); });
}

std::string KeyOf(std::string_view name) {
  for (const auto& [known, key] : kNames)
    if (known == name) return std::string(key);
  return std::string(name);
}

std::string_view NameOf(std::string_view key) {
  for (const auto& [name, known] : kNames)
    if (known == key) return name;
  return {};
}

std::optional<Span> ReadSpan(std::string_view text) {
  static constexpr std::pair<std::string_view, Span> kUnits[] = {
      {"ms", Span(1)}, {"s", std::chrono::seconds(1)}, {"min", std::chrono::minutes(1)}};
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || number < 0 || number > 86400) return std::nullopt;
  const std::string_view unit = text.substr(static_cast<std::size_t>(end - text.data()));
  for (const auto& [name, length] : kUnits)
    if (unit == name) return number * length;
  return std::nullopt;
}

Script ReadScript(std::string_view utf8) { return Reader().Read(utf8); }

}  // namespace caixora::certification
