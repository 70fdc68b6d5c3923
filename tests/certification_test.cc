// What a certification says of a program, told as the events that the program causes.
#include "simulators/certification.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

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
    {"undoes a refused sale", {"venda 5 14,30"}, {"ncn 4", "venda 5 14,30"}, {}},
    {"confirms a cancellation", {"cnc 1 controle"}, {"cnc 1 controle", "cnf 1"}, {}},
    {"starts the flow again",
     {"fluxo inicio fluxo_valor=30,00"},
     {"fluxo inicio fluxo_valor=30,00", "fluxo inicio fluxo_valor=30,00"},
     {}},
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

}  // namespace
}  // namespace caixora::certification
