#include "simulators/books.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "programs/utf8.h"

namespace caixora::gp {
namespace {

constexpr std::string_view kTaken = "pedido", kLeftAlone = "ignorado";
constexpr std::string_view kApproves = "aprovado", kRefuses = "recusado";
constexpr std::string_view kConfirmed = "confirmada", kUndone = "desfeita";

// The kinds of findings in the order in which people read them.
constexpr std::pair<std::string_view, std::string_view> kTitles[] = {
    {"sem_desfecho", "Vendas sem desfecho"},
    {"sem_resposta", "Vendas sem resposta e sem desfazimento"},
    {"desfecho_sem_venda", "Desfechos sem venda"},
    {"recusa_confirmada", "Vendas recusadas e confirmadas"},
    {"dois_desfechos", "Mais de um desfecho para uma venda"},
    {"cupom_repetido", "Cupons usados mais de uma vez"},
    {"valor_alterado", "Valores alterados em uma repetição"},
};

constexpr std::size_t kColumns = 6;  // time, kind, header, subtype, coupon, cents

std::string Line(const std::array<std::string_view, kColumns>& columns) {
  std::string line;
  for (const std::string_view column : columns) {
    if (!line.empty()) line += '\t';
    std::ranges::replace_copy_if(
        column, std::back_inserter(line), [](char c) { return c >= 0 && c < ' '; }, ' ');
  }
  return line;
}

std::array<std::string, kColumns> Columns(std::string_view line) {
  std::array<std::string, kColumns> columns;
  for (std::string& column : columns) {
    const std::size_t end = std::min(line.find('\t'), line.size());
    column = Utf8(line.substr(0, end));
    line.remove_prefix(std::min(end + 1, line.size()));
  }
  return columns;
}

std::string Counted(std::size_t count, std::string_view noun) {
  return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::string Clock(std::string_view time) {
  return "às " + std::string(time.substr(std::min(time.find(' ') + 1, time.size())));
}

}  // namespace

std::string BookLine(std::string_view time, const Request& request, bool taken) {
  return Line({time, taken ? kTaken : kLeftAlone, request.Header(), request.Subtype(),
               request.Value("001-000"), request.Value("003-000")});
}

std::string BookLine(std::string_view time, const Request& answer) {
  return Line({time, answer.Value("009-000") == "0" ? kApproves : kRefuses});
}

std::string Books::Sale::Name() const {
  return std::string(operation->title) + (cents.empty() ? "" : " de " + ReadableAmount(cents));
}

void Books::Add(std::string_view line) {
  const auto [time, kind, header, subtype, coupon, cents] = Columns(line);
  const bool taken = kind == kTaken;
  if (kind == kApproves || kind == kRefuses) {
    if (awaits_answer_) sales_.back().fate = kind == kApproves ? Fate::kApproved : Fate::kRefused;
  } else if (taken && (header == "CNF" || header == "NCN")) {
    Settle(time, coupon, header == "CNF");
  } else if (taken || kind == kLeftAlone) {
    const Operation* operation = FindOperation(header, subtype);
    awaits_answer_ = operation != nullptr && operation->posting != Posting::kNone;
    if (awaits_answer_)
      Open({time, operation, coupon, cents, taken ? Fate::kUnanswered : Fate::kLeft, {}});
  }
}

void Books::Open(Sale sale) {
  std::vector<std::size_t>& same = of_coupon_[sale.coupon];
  const auto earlier = std::find_if(same.rbegin(), same.rend(),
                                    [&](std::size_t i) { return sales_[i].OwnsCoupon(); });
  if (sale.OwnsCoupon() && earlier != same.rend()) {
    const Sale& before = sales_[*earlier];
    if (before.fate != Fate::kLeft)
      noted_.push_back(About(sale, "cupom_repetido",
                             "já era o de " + before.Name() + " " + Clock(before.time) + ", " +
                                 std::string(kFateNames[static_cast<std::size_t>(before.fate)])));
    if (!before.IsConcluded() && before.cents != sale.cents)
      noted_.push_back(
          About(sale, "valor_alterado",
                "o pedido " + Clock(before.time) + " era de " + ReadableAmount(before.cents)));
  }
  same.push_back(sales_.size());
  sales_.push_back(std::move(sale));
}

// Of several with that coupon it is for one that waits for it, first for one that has to; the last
// of them all, when none does.
Books::Sale* Books::ForOutcome(std::string_view coupon) {
  const auto found = of_coupon_.find(coupon);
  if (found == of_coupon_.end()) return nullptr;
  Sale* best = nullptr;
  const auto rank = [](const Sale& sale) {
    return !sale.IsOpen() ? 0 : sale.operation->posting == Posting::kSale ? 2 : 1;
  };
  for (const std::size_t i : found->second)
    if (best == nullptr || rank(sales_[i]) >= rank(*best)) best = &sales_[i];
  return best;
}

void Books::Settle(std::string_view time, std::string_view coupon, bool confirmed) {
  const std::string_view outcome = confirmed ? kConfirmed : kUndone;
  const std::string what = std::string(outcome) + " " + Clock(time);
  Sale* sale = ForOutcome(coupon);
  if (sale == nullptr) {
    noted_.push_back({"desfecho_sem_venda", std::string(coupon), std::string(time),
                      what + ", e o GP não recebeu venda com esse cupom"});
    return;
  }
  // Who was ended before the answer undoes without knowing it: only a confirmation is wrong there.
  if (!sale->outcomes.empty())
    noted_.push_back(
        About(*sale, "dois_desfechos", "já " + std::string(sale->outcomes.back()) + ", e " + what));
  else if (confirmed && sale->fate == Fate::kRefused)
    noted_.push_back(About(*sale, "recusa_confirmada", "recusada, e " + what));
  else if (confirmed && sale->fate == Fate::kUnanswered)
    noted_.push_back(About(*sale, "desfecho_sem_venda", what + ", e o GP não respondeu ao pedido"));
  else if (confirmed && sale->fate == Fate::kLeft)
    noted_.push_back(About(*sale, "desfecho_sem_venda", what + ", e o GP não retirou o pedido"));
  sale->outcomes.push_back(outcome);
}

Finding Books::About(const Sale& sale, std::string_view id, std::string_view text) {
  return {id, sale.coupon, sale.time,
          sale.Name() + " " + Clock(sale.time) + ": " + std::string(text)};
}

std::vector<Finding> Books::Findings() const {
  std::vector<Finding> findings = noted_;
  for (const Sale& sale : sales_) {
    if (!sale.IsOpen() || sale.operation->posting != Posting::kSale) continue;
    findings.push_back(
        sale.fate == Fate::kApproved
            ? About(sale, "sem_desfecho", "aprovada, e não foi confirmada nem desfeita")
            : About(sale, "sem_resposta", "o PDV não sabe se foi aprovada, e não a desfez"));
  }
  return findings;
}

std::string Books::Text() const {
  const std::vector<Finding> findings = Findings();
  const auto count = [&](Fate fate) {
    return static_cast<std::size_t>(std::ranges::count(sales_, fate, &Sale::fate));
  };
  std::string text = "Livro do GP: " + Counted(count(Fate::kApproved), "aprovada") + ", " +
                     Counted(count(Fate::kRefused), "recusada") + ", " +
                     std::to_string(count(Fate::kUnanswered)) + " sem resposta\n";
  if (findings.empty()) return text + "  Nada a acertar.\n";
  for (const auto& [id, title] : kTitles) {
    bool first = true;
    for (const Finding& finding : findings) {
      if (finding.id != id) continue;
      if (std::exchange(first, false)) text.append("  ").append(title).append(":\n");
      text += "    cupom " + finding.coupon + ": " + finding.text + "\n";
    }
  }
  return text;
}

nlohmann::ordered_json Books::Json() const {
  const std::vector<Finding> findings = Findings();
  nlohmann::ordered_json json = {{"certo", findings.empty()},
                                 {"achados", nlohmann::json::array()},
                                 {"vendas", nlohmann::json::array()}};
  for (const Finding& finding : findings)
    json["achados"].push_back({{"id", finding.id},
                               {"cupom", finding.coupon},
                               {"hora", finding.time},
                               {"texto", finding.text}});
  for (const Sale& sale : sales_)
    json["vendas"].push_back({{"cupom", sale.coupon},
                              {"hora", sale.time},
                              {"operacao", sale.operation->title},
                              {"centavos", sale.cents},
                              {"resultado", kFateNames[static_cast<std::size_t>(sale.fate)]},
                              {"desfechos", sale.outcomes}});
  return json;
}

}  // namespace caixora::gp
