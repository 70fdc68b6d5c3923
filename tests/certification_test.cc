// What a certification says of a program, told as the events that the program causes.
#include "simulators/certification.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "simulators/certification_answer.h"
#include "simulators/certification_result.h"

namespace caixora::certification {
namespace {

using Events = std::vector<std::string>;

class Surroundings : public Stage {
 public:
  void OpenGp() override { gp = true; }
  void CloseGp() override { gp = false; }
  void DropRequest() override { dropped = true; }
  bool AnswerWasTaken() override { return true; }
  void SetScenario(const std::string& name) override { scenario = name; }
  std::string TimeOfDay() override { return "09:00:00"; }
  void Say(std::string_view) override {}

  bool gp = false;
  bool dropped = false;
  std::string scenario;
};

class Player {
 public:
  Player(const std::string& script, const Mode& mode) : run_(ReadScript(script), mode, around) {
    run_.Start(now_);
  }

  // "venda 17 12,50 800-004=3", "cnf 17", "cnc 17 controle", "fluxo inicio fluxo_valor=1,00",
  // "tecla s", "tempo 20" (seconds)
  void Play(const std::string& event) {
    std::istringstream words(event);
    std::string verb;
    std::string coupon;
    words >> verb >> coupon;
    if (verb == "tempo") {
      now_ += std::chrono::seconds(std::stoi(coupon));
      return run_.OnTick(now_);
    }
    if (verb == "tecla") return run_.OnKey(coupon.front(), now_);
    std::string record = "999-999 = 0\n";
    if (verb == "fluxo") {
      record += "000-000 = FLUXO\nfluxo_evento = " + coupon + '\n';
    } else {
      record += (verb == "reimpressao" ? "000-000 = ADM\n000-001 = REIMPRESSAO\n"
                 : verb == "venda"     ? "000-000 = CRT\n"
                 : verb == "cnf"       ? "000-000 =  CNF\n"
                 : verb == "ncn"       ? "000-000 = NCN\n"
                 : verb == "cnc"       ? "000-000 = CNC\n"
                                       : "000-000 = ATV\n");
      record += "001-000 = " + coupon + "\n800-005 = 12345678000195\n";
    }
    for (std::string word; words >> word;) {
      const std::size_t sign = word.find('=');
      if (sign != std::string::npos) {
        record += word.substr(0, sign) + " = " + word.substr(sign + 1) + '\n';
      } else if (word == "controle") {
        record += "800-007 = " + control_ + '\n';
      } else {
        word.erase(word.find(','), 1);
        record += "003-000 = " + word + '\n';
      }
    }
    const Request request(record);
    if (verb == "fluxo") return run_.OnFlow(request, now_);
    const Part& part = run_.OnRequest(request, now_);
    if (part.action == gp::Action::kAnswer && !request.IsSettlement()) {
      const std::string control = "CTRL" + coupon;
      if (control_.empty()) control_ = control;
      run_.OnAnswered(request,
                      Request(std::string("009-000 = ") + (part.approved ? "0" : "5") +
                              "\n800-007 = " + control + "\n030-000 = " + part.message),
                      now_);
    }
    run_.OnTick(now_);
  }

  // What failed or was skipped, as "step: reason", and what was not run.
  Events Complaints() {
    for (int i = 0; i < 100 && !run_.done(); ++i) Play("tempo 400");
    Events found;
    for (std::size_t i = 0; i < run_.results().size(); ++i) {
      const StepResult& result = run_.results()[i];
      const std::string& id = run_.script().steps[i].id;
      if (result.verdict == Verdict::kNotRun) found.push_back(id + ": não executado");
      if (result.verdict != Verdict::kPassed)
        for (const std::string& reason : result.reasons) found.push_back(id + ": " + reason);
    }
    return found;
  }

  Verdict Overall() const { return run_.Overall(); }
  const Certification& run() const { return run_; }

  Surroundings around;

 private:
  Moment now_{};
  Certification run_;
  std::string control_;
};

const std::string& BuiltIn() {
  static const std::string text = [] {
    std::ifstream file(CAIXORA_SCRIPT);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }();
  return text;
}

const Events kCorrect = {
    "venda 1 10,10",
    "cnf 1",  // abertura
    "venda 2 12,50",
    "cnf 2",  // venda
    "venda 3 13,40 800-001=1",
    "cnf 3",  // sem_comprovante
    "venda 4 14,20",
    "venda 5 14,30",
    "cnf 5",  // recusa
    "venda 6 15,60",
    "ncn 6",  // impressora
    "venda 7 16,70",
    "cnf 7",  // demora
    "venda 8 17,80",
    "tempo 3",
    "ncn 8",  // gp_morre
    "venda 9 18,90",
    "tempo 20",
    "ncn 9",  // gp_ignora
    "venda 10 11,00",
    "cnf 10",  // centavos
    "venda 11 90,30 800-001=0 800-004=3",
    "cnf 11",  // parcelas
    "venda 12 19,10",
    "cnf 12",  // acentos
    "venda 13 21,20",
    "cnf 13",          // comprovante
    "cnc 1 controle",  // cancelamento
    "reimpressao 0",   // reimpressao
    "venda 14 31,50 800-001=4 261-000=2 261-011=A 261-016=1 261-021=B 261-026=1 800-010=1",
    "cnf 14",  // link
    "venda 15 150,40 800-001=2 250-000=12345 250-001=ABC1D23 250-002=77 261-000=1 261-011=A",
    "cnf 15",  // frota
    "venda 16 22,30",
    "cnf 16",  // pdv_morre
    "venda 17 23,40",
    "cnf 17",  // confirmacao_recusada
    "fluxo inicio fluxo_valor=30,00",
    "fluxo pergunta",
    "fluxo resposta",
    "fluxo resposta",
    "fluxo retorno fluxo_status=0",
    "fluxo fim",
    "fluxo inicio fluxo_valor=30,10",
    "fluxo resposta",
    "fluxo retorno fluxo_status=5",
    "fluxo fim",
    "fluxo inicio fluxo_valor=30,20",
    "fluxo pergunta",
    "fluxo cancelamento",
};

struct Variation {
  const char* name;
  Events instead_of;  // neighbouring events of the correct program
  Events come;
  Events complaints;
};

void PrintTo(const Variation& variation, std::ostream* out) { *out << variation.name; }

const Variation kVariations[] = {
    {"nothing", {}, {}, {}},
    // What a correct program may do as well.
    {"polls", {"cnf 1"}, {"atv 1", "atv 1", "cnf 1", "atv 9"}, {}},
    {"undoes at the restart", {"cnf 16"}, {"atv 1", "ncn 16"}, {}},
    {"does not know that it was through", {"cnf 16"}, {"cnf 16", "cnf 16"}, {}},
    {"sells again after the undo", {"ncn 8"}, {"ncn 8", "venda 80 17,80", "cnf 80"}, {}},
    {"sells again what was never taken", {"ncn 9"}, {"ncn 9", "venda 9 18,90", "cnf 9"}, {}},
    {"undoes a refused sale", {"venda 5 14,30"}, {"ncn 4", "venda 5 14,30"}, {}},
    {"confirms a cancellation", {"cnc 1 controle"}, {"cnc 1 controle", "cnf 1"}, {}},
    {"starts the flow again",
     {"fluxo inicio fluxo_valor=30,00"},
     {"fluxo inicio fluxo_valor=30,00", "fluxo inicio fluxo_valor=30,00"},
     {}},
    {"tries a refused sale again", {"venda 4 14,20"}, {"venda 4 14,20", "venda 40 14,20"}, {}},
    // Faults.
    {"forgets to confirm", {"cnf 2"}, {}, {"venda: não confirmou nem desfez o cupom 2"}},
    {"forgets the last one",
     {"cnf 17"},
     {},
     {"confirmacao_recusada: não repetiu a confirmação recusada do cupom 17"}},
    {"confirms twice", {"cnf 2"}, {"cnf 2", "cnf 2"}, {"venda: confirmou duas vezes o cupom 2"}},
    {"confirms and undoes",
     {"cnf 3"},
     {"cnf 3", "ncn 3"},
     {"sem_comprovante: desfez o cupom 3 depois de o confirmar"}},
    {"undoes and confirms",
     {"ncn 6"},
     {"ncn 6", "cnf 6"},
     {"impressora: confirmou o cupom 6 depois de o desfazer"}},
    {"undoes twice", {"ncn 6"}, {"ncn 6", "ncn 6"}, {"impressora: desfez duas vezes o cupom 6"}},
    {"confirms a refusal",
     {"venda 4 14,20"},
     {"venda 4 14,20", "cnf 4"},
     {"recusa: confirmou uma venda recusada (cupom 4)"}},
    {"undoes what it should confirm",
     {"cnf 12"},
     {"ncn 12"},
     {"acentos: desfez o cupom 12 em vez de o confirmar"}},
    {"confirms what was not printed",
     {"ncn 6"},
     {"cnf 6"},
     {"impressora: confirmou o cupom 6 em vez de o desfazer: a impressão do comprovante falhou"}},
    {"reuses a coupon",
     {"venda 5 14,30", "cnf 5"},
     {"venda 4 14,30", "cnf 4"},
     {"recusa: reutilizou o cupom 4, do passo \"Recusa, e uma venda depois dela\""}},
    {"rounds down",
     {"venda 10 11,00", "cnf 10"},
     {"venda 10 10,99"},
     {"centavos: valor 10,99 em vez de 11,00: truncou em vez de arredondar"}},
    {"cuts a sum below its amount",
     {"venda 10 11,00", "cnf 10"},
     {"venda 10 1,10"},
     {"centavos: valor 1,10 em vez de 11,00"}},
    {"repeats without undoing",
     {"ncn 8"},
     {"venda 80 17,80", "cnf 80"},
     {"gp_morre: repetiu a venda sem desfazer o cupom 8, que ficou sem resposta do GP",
      "gp_morre: confirmou uma venda recusada (cupom 80)"}},
    {"lets an uncertain sale be",
     {"ncn 9"},
     {},
     {"gp_ignora: não desfez o cupom 9, que ficou sem resposta do GP"}},
    {"confirms an uncertain sale",
     {"ncn 9"},
     {"cnf 9"},
     {"gp_ignora: confirmou o cupom 9, que ficou sem resposta do GP"}},
    {"takes a local reply for an approval",
     {"cnf 17"},
     {"venda 18 5,00", "cnf 18"},
     {"confirmacao_recusada: fez outra venda sem repetir a confirmação recusada do cupom 17: a "
      "resposta que recebeu é local, e não uma aprovação",
      "confirmacao_recusada: confirmou uma venda recusada (cupom 18)"}},
    {"does not undo the second try",
     {"ncn 8"},
     {"ncn 8", "venda 80 17,80"},
     {"gp_morre: não confirmou nem desfez o cupom 80"}},
    {"sells twice under another coupon",
     {"cnf 2"},
     {"cnf 2", "venda 20 12,50", "cnf 20"},
     {"venda: chegou outra vez uma venda de R$ 12,50 (cupom 20): o cupom 2 já valia",
      "venda: confirmou uma venda recusada (cupom 20)"}},
    {"makes the second try twice",
     {"ncn 8"},
     {"ncn 8", "venda 80 17,80", "cnf 80", "venda 81 17,80"},
     {"gp_morre: chegou outra vez uma venda de R$ 17,80 (cupom 81): o cupom 80 já valia"}},
    {"alters the amount of the second try",
     {"ncn 8"},
     {"ncn 8", "venda 80 17,81"},
     {"gp_morre: repetiu a venda desfeita: valor 17,81 em vez de 17,80"}},
    {"reuses the coupon in the second try",
     {"ncn 8"},
     {"ncn 8", "venda 8 17,80", "cnf 8"},
     {"gp_morre: reutilizou o cupom 8, do passo \"O GP cai enquanto a resposta é esperada\""}},
    {"forgets to confirm and reuses the coupon",
     {"cnf 2", "venda 3 13,40 800-001=1", "cnf 3"},
     {"venda 2 13,40", "cnf 2"},
     {"venda: não confirmou nem desfez o cupom 2",
      "sem_comprovante: reutilizou o cupom 2, do passo \"Venda confirmada\""}},
    {"corrects an amount",
     {"venda 2 12,50", "cnf 2"},
     {"venda 20 abc,", "venda 2 12,50"},
     {"venda: valor a,bc em vez de 12,50"}},
    {"leaves two steps out",
     {"venda 11 90,30 800-001=0 800-004=3", "cnf 11", "venda 12 19,10", "cnf 12"},
     {},
     {"parcelas: não chegou a venda de R$ 90,30", "acentos: não chegou a venda de R$ 19,10"}},
    {"confirms a refused cancellation and cancels again",
     {"cnc 1 controle"},
     {"cnc 1 800-007=CTRL9", "cnf 1", "cnc 1 controle"},
     {"cancelamento: controle CTRL9 em vez de CTRL1",
      "cancelamento: confirmou uma operação recusada (cupom 1)"}},
    {"confirms a stranger",
     {"cnf 3"},
     {"cnf 99", "cnf 3"},
     {"sem_comprovante: confirmou o cupom 99, que não é de nenhuma venda do roteiro"}},
    {"sells in one payment",
     {"venda 11 90,30 800-001=0 800-004=3", "cnf 11"},
     {"venda 11 90,30 800-001=0"},
     {"parcelas: sem o campo 800-004 (parcelas)"}},
    {"cancels without the control",
     {"cnc 1 controle"},
     {"cnc 1"},
     {"cancelamento: sem o campo 800-007 (controle)"}},
    {"cancels another",
     {"cnc 1 controle"},
     {"cnc 1 800-007=CTRL9"},
     {"cancelamento: controle CTRL9 em vez de CTRL1"}},
    {"cancels unasked",
     {"cnf 3"},
     {"cnc 3", "cnf 3"},
     {"sem_comprovante: chegou um cancelamento (cupom 3), que o passo não pede"}},
    {"leaves a step out", {"reimpressao 0"}, {}, {"reimpressao: não chegou a reimpressão"}},
    {"abandons a flow",
     {"fluxo retorno fluxo_status=0", "fluxo fim"},
     {"fluxo cancelamento"},
     {"fluxo_confirmado: esperava-se o retorno do fluxo, e chegou o cancelamento do fluxo"}},
    {"finishes a cancelled flow",
     {"fluxo cancelamento"},
     {"fluxo fim"},
     {"fluxo_cancelado: esperava-se o cancelamento do fluxo, e chegou a finalização do fluxo"}},
};

class ProgramTest : public testing::TestWithParam<Variation> {};

TEST_P(ProgramTest, IsJudged) {
  const Variation& variation = GetParam();
  Player player(BuiltIn(), {.automatic = true, .has_companion = true, .limit = std::nullopt});
  Events events = kCorrect;
  const auto found = std::ranges::search(events, variation.instead_of);
  ASSERT_EQ(std::ranges::size(found), variation.instead_of.size());
  events.insert(events.erase(found.begin(), found.end()), variation.come.begin(),
                variation.come.end());
  for (const std::string& event : events) player.Play(event);
  EXPECT_EQ(player.Complaints(), variation.complaints);
  EXPECT_EQ(player.Overall(), variation.complaints.empty() ? Verdict::kPassed : Verdict::kFailed);
}

INSTANTIATE_TEST_SUITE_P(All, ProgramTest, testing::ValuesIn(kVariations));

constexpr char kTwoSteps[] = R"(
passo um
titulo Um <b>
faca Venda.
espera venda valor=1,00
pergunta Viva?
passo dois
titulo Dois
faca Venda.
gp fechado
espera venda valor=2,00
espera confirmacao
)";

struct Course {
  Events events;
  Events complaints;
  Verdict overall;
};

// With an operator: keys, and the time that runs out.
TEST(Operator, Decides) {
  const Course courses[] = {
      {{"venda 1 1,00", "cnf 1", "tecla s", "venda 2 2,00", "cnf 2"}, {}, Verdict::kPassed},
      {{"venda 1 1,00", "cnf 1", "tecla n", "venda 2 2,00", "cnf 2"},
       {"um: o operador respondeu não: Viva?"},
       Verdict::kFailed},
      {{"venda 1 1,00", "cnf 1", "venda 2 2,00", "cnf 2"},
       {"um: o operador não respondeu: Viva?"},
       Verdict::kFailed},
      {{"tecla p", "venda 2 2,00", "cnf 2"}, {"um: pulado pelo operador"}, Verdict::kNotRun},
      {{"tecla f", "venda 2 2,00", "cnf 2"}, {"um: reprovado pelo operador"}, Verdict::kFailed},
      {{"tecla f", "tecla v", "venda 1 1,00", "cnf 1", "tecla s", "venda 2 2,00", "cnf 2"},
       {},
       Verdict::kPassed},
      {{"venda 1 1,00", "cnf 1", "tecla s", "tecla q"}, {"dois: não executado"}, Verdict::kNotRun},
      {{"venda 1 1,00", "cnf 1", "tecla s", "tempo 299", "venda 2 2,00", "tempo 299", "cnf 2"},
       {},
       Verdict::kPassed},
      {{"venda 1 1,00", "cnf 1", "tecla s", "venda 2 2,00", "tempo 301"},
       {"dois: não confirmou nem desfez o cupom 2 no tempo dado"},
       Verdict::kFailed},
  };
  for (const Course& course : courses) {
    Player player(kTwoSteps, {});
    for (const std::string& event : course.events) player.Play(event);
    EXPECT_EQ(player.Complaints(), course.complaints) << testing::PrintToString(course.events);
    EXPECT_EQ(player.Overall(), course.overall) << testing::PrintToString(course.events);
  }
}

// A sale that was wrong is not waited for again, nor what depends on it.
TEST(Gp, IsClosedWhereAStepSaysSo) {
  Player player(kTwoSteps, {});
  EXPECT_TRUE(player.around.gp);
  player.Play("venda 1 1,01");
  EXPECT_FALSE(player.around.gp);
}

TEST(Script, IsRefusedWithItsLine) {
  const std::string step = "passo a\ntitulo A\nfaca B\n";
  const std::pair<std::string, std::string> rows[] = {
      {"", "o arquivo não tem nenhum passo"},
      {"titulo A", "linha 1: \"titulo\" antes do primeiro passo"},
      {"\n# nada\nvende", "linha 3: palavra desconhecida: \"vende\""},
      {"passo a\ntitulo A\n", "linha 1: o passo \"a\" não diz o que fazer"},
      {step, "linha 1: o passo \"a\" não espera nada"},
      {step + "espera brisa", "linha 4: não se pode esperar \"brisa\""},
      {step + "espera venda valor=12.50", "linha 4: \"12.50\" não é um valor em reais, como 12,50"},
      {step + "espera venda valor=1,,0", "linha 4: \"1,,0\" não é um valor em reais, como 12,50"},
      {step + "pergunta n\xE3o?", "linha 4: não está em UTF-8"},
      {step + "espera venda cor=azul", "linha 4: campo desconhecido: \"cor\""},
      {step + "espera venda\nresponde talvez",
       "linha 5: depois de \"responde\" vem aprova, recusa, morre ou ignora"},
      {step + "espera venda\nresponde recusa sem_comprovante",
       "linha 5: \"sem_comprovante\" não vale depois de \"recusa\""},
      {step + "espera venda\nresponde aprova mensagem 日本",
       "linha 5: a mensagem tem um caractere que uma resposta não leva"},
      {step + "espera confirmacao",
       "linha 4: o passo não tem uma venda de que este seja o desfecho"},
      {step + "espera cancelamento controle=$x.controle",
       "linha 4: nenhuma linha acima dá o nome \"x\""},
      {step + "prazo 5", "linha 4: \"5\" não é um tempo, como 90s, 500ms ou 2min"},
      {step + "prazo 0s", "linha 4: \"0s\" não dá tempo a ninguém"},
      {step + "espera venda\npasso a", "linha 5: o passo \"a\" já existe"},
  };
  for (const auto& [text, reason] : rows) {
    std::string said = "nada";
    try {
      ReadScript(text);
    } catch (const ScriptError& error) {
      said = error.what();
    }
    EXPECT_EQ(said, reason) << text;
  }
}

TEST(Answer, GetsItsMessageAndLongReceipt) {
  Part part;
  part.message = "\xC9";
  part.long_receipt = true;
  const std::string answer =
      Dressed("009-000 = 0\r\n028-000 = 1\r\n029-001 = A\r\n030-000 = B\r\n999-999 = 0\r\n", part);
  EXPECT_TRUE(answer.starts_with("009-000 = 0\r\n028-000 = 60\r\n029-001 = LINHA 001\r\n"));
  EXPECT_NE(answer.find("\r\n029-005 = \r\n"), answer.npos);
  const std::size_t tenth = answer.find("029-010");
  EXPECT_GT(answer.find("\r\n", tenth) - tenth, 199u);
  EXPECT_TRUE(
      answer.ends_with("029-060 = FIM DO COMPROVANTE\r\n030-000 = \xC9\r\n999-999 = 0\r\n"));
}

TEST(Result, ShortensDocumentsAndRunsNothing) {
  Player player(kTwoSteps, {.automatic = true, .has_companion = true, .limit = std::nullopt});
  player.Play("venda 1 1,00 800-011=<script>{{TITULO}}</script> 800-006=123.456.789-01");
  const Circumstances circumstances = {.program = "A & \"B\"",
                                       .program_version = {},
                                       .library_version = {},
                                       .machine = {},
                                       .started = {},
                                       .ended = {}};
  const std::string page = Page(player.run(), circumstances);
  const std::string json = Json(player.run(), circumstances).dump();
  EXPECT_EQ(page.find("<script"), page.npos);
  EXPECT_EQ(page.find("12345678000195"), page.npos);
  EXPECT_EQ(json.find("12345678000195"), json.npos);
  EXPECT_EQ(json.find("123.456.789-01"), json.npos);
  EXPECT_NE(page.find("&lt;script&gt;{{TITULO}}&lt;/script&gt;"), page.npos);
  EXPECT_NE(page.find("<td>A &amp; &quot;B&quot;</td>"), page.npos);
  EXPECT_NE(page.find("Um &lt;b&gt;"), page.npos);
  EXPECT_NE(page.find("INCOMPLETO"), page.npos);
}

}  // namespace
}  // namespace caixora::certification
