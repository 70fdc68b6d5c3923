#include "tools/report.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>

#include "tools/embedded.h"
#include "tools/html.h"
#include "tools/report_texts.h"

namespace caixora {
namespace {

// In the place of an operation's name: calls that end early do not log it.
constexpr std::string_view kNotLogged = "(não registrada)";

class Report {
 public:
  Report(const Log& log, const ReportOptions& options, std::ostream& page)
      : log_(log), calls_(log.calls()), whole_(options.whole), html_(page, options.whole) {
    for (const OpenSale& sale : log.OpenSales()) open_.emplace(sale.call, sale.why);
    std::vector<std::int64_t> totals;
    for (const Call& call : calls_) {
      ++counts_[static_cast<std::size_t>(call.outcome)];
      if (call.kind != CallKind::kFlow) totals.push_back(call.TotalMs());
    }
    full_bar_ms_ = std::max<std::int64_t>(Quantile(totals, 95), 5000);
  }

  void Write() {
    const std::map<std::string_view, std::function<void()>> sections = {
        {"titulo", [this] { Title(); }},
        {"cabecalho", [this] { Header(); }},
        {"abertas", [this] { OpenSales(); }},
        {"resumo", [this] { Tiles(); }},
        {"filtros", [this] { Filters(); }},
        {"linha_do_tempo", [this] { Timeline(); }},
        {"chamadas", [this] { Calls(); }},
        {"horas", [this] { Hours(); }},
        {"demoradas", [this] { Slowest(); }},
        {"soltas", [this] { Unclaimed(); }},
        {"reduzidos", [this] { Shortening(); }},
        {"barra", [this] { html_ << Duration(full_bar_ms_); }},
    };
    std::string_view rest = kReportPage;
    for (std::size_t mark; (mark = rest.find("{{")) != rest.npos;) {
      html_ << rest.substr(0, mark);
      rest.remove_prefix(mark + 2);
      const std::size_t end = rest.find("}}");
      sections.at(rest.substr(0, end))();
      rest.remove_prefix(end + 2);
    }
    html_ << rest;
  }

 private:
  using Counts = std::array<std::size_t, kOutcomes>;

  static std::int64_t Quantile(std::vector<std::int64_t>& values, std::size_t percent) {
    if (values.empty()) return 0;
    const std::size_t at = (values.size() - 1) * percent / 100;
    std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(at));
    return values[at];
  }

  std::string Period() const {
    if (calls_.empty()) return "nenhuma chamada";
    const std::string first = DateText(calls_.front().begin);
    const std::string last = DateText(calls_.back().begin);
    return first == last ? first : first + " a " + last;
  }

  // ---- Above the table ----

  void Title() { html_ << Period(); }

  void Header() {
    std::set<std::string_view> versions, partners;
    for (const Call& call : calls_) versions.insert(call.version);
    constexpr std::string_view kPartner = "VERSAO SISTEMA PARCEIRO: ";
    for (const LogLine& line : log_.lines())
      if (line.Message().starts_with(kPartner))
        partners.insert(line.Message().substr(kPartner.size()));
    html_ << "<p class=\"meta\">";
    if (!calls_.empty())
      html_ << Weekday(calls_.front().begin) << ", " << Period() << ", das "
            << ClockText(calls_.front().begin) << " às "
            << ClockText(std::ranges::max(calls_, {}, &Call::end).end);
    Join(" · Caixora ", versions);
    Join(" · PDV ", partners);
    html_ << "</p><ul class=\"files\">";
    for (const LogFile& file : log_.files()) {
      html_ << "<li><b>";
      const std::array<std::string_view, 1> kept = {RotationStamp(file.name)};
      html_.Logged(file.name, kept)
          << "</b> " << Number(static_cast<std::int64_t>(file.bytes / 1024)) << " KiB, "
          << Counted(file.lines, "linha", "linhas") << "</li>";
    }
    html_ << "</ul>";
  }

  void Join(std::string_view label, const std::set<std::string_view>& texts) {
    for (const std::string_view text : texts) {
      if (text.empty()) continue;
      html_ << (text == *texts.begin() ? label : ", ");
      html_.Logged(text);
    }
  }

  // What somebody has to look after, by its reason; a reason with many sales stays one item.
  void OpenSales() {
    std::map<std::pair<std::string_view, const Failure*>, std::vector<std::size_t>> reasons;
    for (std::size_t i = 0; i < calls_.size(); ++i) {
      const auto found = open_.find(static_cast<std::uint32_t>(i));
      if (found != open_.end()) reasons[ReasonOf(calls_[i], found->second)].push_back(i);
      if (AmountDiffers(calls_[i]))
        reasons[{"Aprovada com outro valor", FindByResult("(valor diferente)")}].push_back(i);
    }
    if (reasons.empty()) {
      NoOpenSales();
      return;
    }
    html_ << "<ul class=\"open-sales\">";
    for (const auto& [reason, sales] : reasons) {
      const auto& [title, failure] = reason;
      html_ << "<li><h3>" << title << " <b>" << sales.size() << "</b></h3>";
      if (failure != nullptr) {
        html_ << "<p>";
        html_.Text(failure->meaning) << "</p><p class=\"do\">";
        html_.Text(failure->remedy) << "</p>";
      }
      html_ << "<ul>";
      for (const std::size_t sale : sales) OpenSaleItem(sale);
      html_ << "</ul></li>";
    }
    html_ << "</ul>";
  }

  void NoOpenSales() {
    const auto is_cut = [cut = FindByResult("(fim do log)")](const Call& call) {
      return call.kind != CallKind::kFlow && call.failures == std::vector{cut};
    };
    const auto is_sold = [](const Call& call) {
      return call.kind == CallKind::kSale && call.outcome == Outcome::kApproved;
    };
    html_ << "<p class=\"fine\"><b>Nenhuma.</b> "
          << (std::ranges::any_of(calls_, is_sold)
                  ? "Depois de cada venda que o GP aprovou há uma confirmação ou um desfazimento "
                    "do seu cupom."
                  : "O log não tem venda que o GP aprovou.");
    if (std::ranges::any_of(calls_, is_cut))
      html_ << " Mas o log acaba no meio de uma chamada: leia também o seguinte.";
    html_ << "</p>";
  }

  static std::pair<std::string_view, const Failure*> ReasonOf(const Call& call, OpenSale::Why why) {
    if (why == OpenSale::Why::kApproved)
      return {"Aprovada, sem desfecho", FindByResult("(aprovada, sem desfecho)")};
    const Failure* const known = call.failures.empty() ? nullptr : call.failures.front();
    return {why == OpenSale::Why::kUncertain ? "Incerta: o GP pode ter aprovado"
                                             : "Resposta local, no lugar da resposta do GP",
            known};
  }

  void OpenSaleItem(std::size_t index) {
    const Call& call = calls_[index];
    html_ << "<li><a href=\"#c" << index << "\">";
    html_ << (call.coupon ? "cupom " + std::to_string(*call.coupon) : "cupom desconhecido")
          << "</a> ";
    html_.Logged(AmountText(call)) << " · ";
    html_.Logged(call.operation.empty() ? kNotLogged : call.operation)
        << " · " << DateText(call.begin) << " " << ClockText(call.begin) << "</li>";
  }

  void Tile(std::string_view value, std::string_view label, std::string_view kind = {},
            std::string_view more = {}) {
    html_ << "<div class=\"tile " << kind << "\"><dt>" << label << "</dt><dd>" << value << "</dd>";
    if (!more.empty()) html_ << "<dd class=\"also\">" << more << "</dd>";
    html_ << "</div>";
  }

  void Tiles() {
    std::int64_t cents = 0;
    std::size_t sales = 0;
    std::size_t confirmed = 0;
    std::size_t undone = 0;
    std::vector<std::int64_t> gp;
    for (const Call& call : calls_) {
      const bool local = call.outcome == Outcome::kLocalReply;
      confirmed += local && call.kind == CallKind::kConfirmation;
      undone += local && call.kind == CallKind::kUndo;
      if (call.kind != CallKind::kSale) continue;
      gp.push_back(call.phase_ms[static_cast<std::size_t>(CallPhase::kGp)]);
      if (call.outcome != Outcome::kApproved) continue;
      ++sales;
      cents += call.answered_cents.value_or(call.cents.value_or(0));
    }
    const auto count = [this](Outcome outcome) {
      return Number(static_cast<std::int64_t>(counts_[static_cast<std::size_t>(outcome)]));
    };
    Tile(Number(static_cast<std::int64_t>(calls_.size())), "chamadas");
    Tile(Number(static_cast<std::int64_t>(sales)), "vendas aprovadas", "o0", Reais(cents));
    Tile(Number(static_cast<std::int64_t>(confirmed)), "confirmações", "o3",
         Counted(undone, "desfazimento", "desfazimentos"));
    Tile(count(Outcome::kRefused), "recusadas pelo GP", "o1");
    Tile(count(Outcome::kLocalFailure), "falhas locais", "o2");
    Tile(count(Outcome::kUnfinished), "sem desfecho no log", "o4");
    const std::int64_t slow = Quantile(gp, 95);
    Tile(Duration(Quantile(gp, 50)), "tempo do GP por venda", {}, "95% em até " + Duration(slow));
  }

  void Filters() {
    html_ << "<fieldset><legend>Desfecho</legend>";
    for (std::size_t i = 0; i < kOutcomes; ++i) {
      if (counts_[i] == 0) continue;
      html_ << "<label class=\"chip o" << i << "\"><input type=\"checkbox\" name=\"o\" value=\""
            << i << "\" checked> " << OutcomeName(static_cast<Outcome>(i)) << " <b>" << counts_[i]
            << "</b></label>";
    }
    html_ << "</fieldset>";
    std::set<std::string_view> operations;
    for (const Call& call : calls_) operations.insert(call.operation);
    html_ << "<label>Operação <select name=\"f\"><option value=\"\">todas</option>";
    for (const std::string_view operation : operations) {
      if (operation.empty()) continue;
      html_ << "<option>";
      html_.Logged(operation) << "</option>";
    }
    html_ << "</select></label>";
  }

  // ---- The day ----

  struct Slice {
    std::size_t call;
    LogTime begin, end;  // within the hour
  };

  void Timeline() {
    std::map<LogTime, std::map<LogTime, std::vector<Slice>>> days;  // day, hour
    for (std::size_t i = 0; i < calls_.size(); ++i) {
      const LogTime begin = calls_[i].begin;
      const LogTime end = std::max(calls_[i].end, begin + 1);
      // A flow or a wait may last for hours; a clock that was set must not make thousands of rows.
      for (LogTime at = begin; at < end && at < begin + kDay;) {
        const LogTime hour = DayOf(at) + HourOf(at) * kHour;
        const LogTime stop = std::min(end, hour + kHour);
        days[DayOf(at)][HourOf(at)].push_back({i, at - hour, stop - hour});
        at = stop;
      }
    }
    constexpr std::size_t kDaysShown = 3;
    std::size_t left = days.size();
    for (const auto& [day, hours] : days) {
      html_ << "<details class=\"day\"" << (left-- <= kDaysShown ? " open" : "") << "><summary>"
            << Weekday(day) << ", " << DateText(day)
            << "</summary><div class=\"hours\"><div class=\"hour minutes\" "
               "aria-hidden=\"true\"><span></span>"
            << "<b>0</b><b>10</b><b>20</b><b>30</b><b>40</b><b>50 min</b></div>";
      for (LogTime hour = hours.begin()->first; hour <= hours.rbegin()->first; ++hour) {
        html_ << "<div class=\"hour\"><span>" << hour << "h</span><svg viewBox=\"0 0 3600 20\" "
              << "preserveAspectRatio=\"none\" aria-hidden=\"true\">";
        if (const auto found = hours.find(hour); found != hours.end())
          for (const Slice& slice : found->second) Bar(slice);
        html_ << "</svg></div>";
      }
      html_ << "</div></details>";
    }
  }

  void Bar(const Slice& slice) {
    const Call& call = calls_[slice.call];
    html_ << "<a class=\"o" << static_cast<std::size_t>(call.outcome) << "\" href=\"#c"
          << slice.call << "\" tabindex=\"-1\"><title>" << ClockText(call.begin) << " ";
    html_.Logged(call.operation);
    if (call.coupon) html_ << ", cupom " << std::int64_t{*call.coupon};
    html_ << ": " << OutcomeName(call.outcome) << ", " << Duration(call.TotalMs())
          << "</title><rect class=\"all\" x=\"" << slice.begin << "\" width=\""
          << slice.end - slice.begin << "\" height=\"20\"/>";
    std::int64_t at_ms = 0;
    for (std::size_t phase = 0; phase < kCallPhases; ++phase) {
      const std::int64_t ms = call.phase_ms[phase];
      const LogTime hour = call.begin - HourOf(call.begin) * kHour - DayOf(call.begin);
      // Only in the hour in which the call begins: a phase that goes on shows as the whole.
      if (ms > 0 && hour == slice.begin && static_cast<CallPhase>(phase) != CallPhase::kGp)
        html_ << "<rect class=\"p" << phase << "\" x=\"" << Decimal(slice.begin * 1000 + at_ms)
              << "\" width=\"" << Decimal(ms) << "\" height=\"20\"/>";
      at_ms += ms;
    }
    html_ << "</a>";
  }

  static std::string Decimal(std::int64_t thousandths) {
    const std::string digits = std::to_string(1000 + thousandths % 1000);
    return std::to_string(thousandths / 1000) + "." + digits.substr(1);
  }

  // ---- The table ----

  void Calls() {
    LogTime day = kNoTime;
    for (std::size_t i = 0; i < calls_.size(); ++i) {
      if (DayOf(calls_[i].begin) != day) {
        day = DayOf(calls_[i].begin);
        html_ << "<tbody class=\"date\"><tr><th colspan=\"6\" scope=\"rowgroup\">" << Weekday(day)
              << ", " << DateText(day) << "</th></tr></tbody>";
      }
      Row(i);
    }
  }

  void Row(std::size_t index) {
    const Call& call = calls_[index];
    const auto outcome = static_cast<std::size_t>(call.outcome);
    html_ << "<tbody class=\"call\" id=\"c" << index << "\" data-o=\"" << outcome << "\"";
    if (call.coupon) html_ << " data-c=\"" << std::int64_t{*call.coupon} << "\"";
    if (IsOpen(index)) html_ << " data-open";
    html_ << "><tr><td data-l=\"Hora\"><time>" << ClockText(call.begin)
          << "</time></td><th scope=\"row\"><a href=\"#c" << index << "\">";
    html_.Logged(call.operation.empty() ? kNotLogged : call.operation) << "</a></th>";
    html_ << "<td class=\"n\" data-l=\"Cupom\">";
    if (call.coupon) html_ << std::int64_t{*call.coupon};
    html_ << "</td><td class=\"n\" data-l=\"Valor\">";
    html_.Logged(AmountText(call));
    if (AmountDiffers(call))
      html_ << " <strong class=\"differs\">aprovado " << Reais(*call.answered_cents) << "</strong>";
    html_ << "</td><td data-l=\"Resultado\"><span class=\"chip o" << outcome << "\">"
          << OutcomeName(call.outcome) << "</span> ";
    if (IsOpen(index)) html_ << "<strong class=\"open\">em aberto</strong> ";
    html_ << "<span class=\"said\">";
    html_.Logged(ResultMessage(call)) << "</span>";
    if (call.outcome != Outcome::kRefused && !call.failures.empty()) {
      html_ << "<small>";
      html_.Text(call.failures.front()->meaning) << "</small>";
    }
    html_ << "</td><td data-l=\"Duração\">";
    PhaseBar(call);
    html_ << "<span>" << Duration(call.TotalMs()) << "</span></td></tr><tr class=\"more\">"
          << "<td colspan=\"6\">";
    More(index);
    html_ << "</td></tr></tbody>\n";
  }

  bool IsOpen(std::size_t index) const { return open_.contains(static_cast<std::uint32_t>(index)); }

  void PhaseBar(const Call& call) {
    const std::int64_t total = std::max<std::int64_t>(call.TotalMs(), 1);
    const std::int64_t full = std::max(total, full_bar_ms_);
    html_ << "<svg class=\"bar o" << static_cast<std::size_t>(call.outcome)
          << (total > full_bar_ms_ ? " long" : "")
          << "\" viewBox=\"0 0 1000 10\" preserveAspectRatio=\"none\" aria-hidden=\"true\">";
    std::int64_t at = 0;
    for (std::size_t phase = 0; phase < kCallPhases; ++phase) {
      const std::int64_t ms = call.phase_ms[phase];
      if (ms > 0)
        html_ << "<rect class=\"p" << phase << "\" x=\"" << at * 1000 / full << "\" width=\""
              << std::max<std::int64_t>(ms * 1000 / full, 4) << "\" height=\"10\"/>";
      at += ms;
    }
    html_ << "</svg>";
  }

  void More(std::size_t index) {
    const Call& call = calls_[index];
    html_ << "<p class=\"phases\">";
    for (std::size_t phase = 0; phase < kCallPhases; ++phase)
      if (call.phase_ms[phase] > 0)
        html_ << "<span class=\"o" << static_cast<std::size_t>(call.outcome) << "\"><i class=\"p"
              << phase << "\"></i>" << PhaseTitle(call, phase) << " "
              << Duration(call.phase_ms[phase]) << "</span>";
    Detail("rede", call.network);
    Detail("autorização", call.authorisation, true);
    Detail("NSU", call.nsu, true);
    if (!call.begins_in_log) html_ << "<span>o começo da chamada não está no log</span>";
    html_ << "</p>";
    if (call.failures.size() > 1) html_ << "<p>Um destes:</p>";
    for (const Failure* const failure : call.failures) {
      const std::string_view got = call.failures.size() > 1 || call.result.empty()
                                       ? std::string_view(failure->result)
                                       : FirstLine(call.result);
      // In brackets: what the log shows in the place of a result.
      html_ << "<dl class=\"why\"><dt>" << (got.starts_with('(') ? "No log" : "O PDV recebeu")
            << "</dt><dd><code>";
      html_.Logged(got) << "</code></dd><dt>O que significa</dt><dd>";
      html_.Text(failure->meaning) << "</dd><dt>O que fazer</dt><dd>";
      html_.Text(failure->remedy) << "</dd></dl>";
    }
    html_ << "<details class=\"lines\"><summary>" << Counted(call.lines.size(), "linha", "linhas")
          << " do log</summary>";
    const std::string coupon = call.coupon ? std::to_string(*call.coupon) : std::string();
    const std::array<std::string_view, 3> kept = {coupon, call.nsu, call.authorisation};
    Lines(call.lines, kept);
    html_ << "</details>";
  }

  void Detail(std::string_view label, std::string_view value, bool keep = false) {
    if (value.empty()) return;
    html_ << "<span>" << label << " <b>";
    const std::array<std::string_view, 1> kept = {keep ? value : std::string_view{}};
    html_.Logged(value, kept) << "</b></span>";
  }

  // The many lines of a wait are folded away.
  void Lines(const std::vector<std::uint32_t>& lines, std::span<const std::string_view> kept) {
    constexpr std::size_t kFew = 4;
    for (std::size_t begin = 0; begin < lines.size();) {
      const bool waits = log_.lines()[lines[begin]].waits;
      std::size_t end = begin;
      while (end < lines.size() && log_.lines()[lines[end]].waits == waits) ++end;
      const bool folds = waits && end - begin > kFew;
      if (folds)
        html_ << "<details class=\"waits\"><summary>"
              << Counted(end - begin, "linha de espera", "linhas de espera") << ", "
              << ClockText(log_.lines()[lines[begin]].time) << " a "
              << ClockText(log_.lines()[lines[end - 1]].time) << "</summary>";
      html_ << "<pre>";
      for (; begin < end; ++begin) html_.Logged(log_.lines()[lines[begin]].text, kept) << "\n";
      html_ << "</pre>" << (folds ? "</details>" : "");
    }
  }

  // ---- Below the table ----

  void Hours() {
    std::map<LogTime, Counts> hours;
    for (const Call& call : calls_)
      ++hours[HourOf(call.begin)][static_cast<std::size_t>(call.outcome)];
    std::size_t most = 1;
    for (const auto& [hour, counts] : hours) most = std::max(most, Sum(counts));
    html_ << "<thead><tr><th scope=\"col\">Hora</th>";
    for (std::size_t i = 0; i < kOutcomes; ++i)
      if (counts_[i] > 0)
        html_ << "<th scope=\"col\" class=\"n\">" << OutcomeName(static_cast<Outcome>(i))
              << "</th>";
    html_ << "<th scope=\"col\" class=\"n\">total</th><th></th></tr></thead><tbody>";
    for (const auto& [hour, counts] : hours) {
      html_ << "<tr><th scope=\"row\">" << hour << "h</th>";
      Cells(counts);
      html_ << "<td><svg class=\"stack\" viewBox=\"0 0 1000 10\" preserveAspectRatio=\"none\" "
               "aria-hidden=\"true\">";
      std::size_t at = 0;
      for (std::size_t i = 0; i < kOutcomes; ++i) {
        if (counts[i] > 0)
          html_ << "<rect class=\"o" << i << "\" x=\"" << at * 1000 / most << "\" width=\""
                << counts[i] * 1000 / most << "\" height=\"10\"/>";
        at += counts[i];
      }
      html_ << "</svg></td></tr>";
    }
    html_ << "</tbody><tfoot><tr><th scope=\"row\">total</th>";
    Cells(counts_);
    html_ << "<td></td></tr></tfoot>";
  }

  static std::size_t Sum(const Counts& counts) {
    std::size_t sum = 0;
    for (const std::size_t count : counts) sum += count;
    return sum;
  }

  void Cells(const Counts& counts) {
    for (std::size_t i = 0; i < kOutcomes; ++i) {
      if (counts_[i] == 0) continue;
      html_ << "<td class=\"n\">";
      if (counts[i] > 0) html_ << counts[i];
      html_ << "</td>";
    }
    html_ << "<td class=\"n\"><b>" << Sum(counts) << "</b></td>";
  }

  void Slowest() {
    constexpr std::size_t kShown = 10;
    std::vector<std::size_t> calls;
    for (std::size_t i = 0; i < calls_.size(); ++i)
      if (calls_[i].kind != CallKind::kFlow) calls.push_back(i);
    const auto slower = [this](std::size_t a, std::size_t b) {
      return calls_[a].TotalMs() > calls_[b].TotalMs();
    };
    const std::size_t shown = std::min(kShown, calls.size());
    std::ranges::partial_sort(calls, calls.begin() + static_cast<std::ptrdiff_t>(shown), slower);
    calls.resize(shown);
    for (const std::size_t i : calls) {
      const Call& call = calls_[i];
      html_ << "<tr><td><a href=\"#c" << i << "\">" << DateText(call.begin).substr(0, 5) << " "
            << ClockText(call.begin) << "</a></td><td>";
      html_.Logged(call.operation.empty() ? kNotLogged : call.operation) << "</td><td class=\"n\">";
      if (call.coupon) html_ << std::int64_t{*call.coupon};
      html_ << "</td><td>";
      PhaseBar(call);
      html_ << "<span>" << Duration(call.TotalMs()) << "</span></td></tr>";
    }
  }

  void Unclaimed() {
    std::vector<std::uint32_t> lines;
    for (std::uint32_t i = 0; i < log_.lines().size(); ++i)
      if (log_.lines()[i].call == LogLine::kNoCall) lines.push_back(i);
    if (lines.empty()) return;
    html_ << "<section><h2>Linhas fora das chamadas</h2><p>Não se reconheceu a chamada a que "
             "pertencem. Estão aqui como no log.</p><details class=\"lines\"><summary>"
          << Counted(lines.size(), "linha", "linhas") << "</summary>";
    Lines(lines, {});
    html_ << "</details></section>";
  }

  void Shortening() {
    html_
        << (whole_
                ? "<strong>Esta página tem CNPJs, documentos e cartões inteiros: proteja-a como "
                  "dado pessoal.</strong>"
                : "CNPJs, CPFs, cartões, telefones e outros números de dez dígitos ou mais "
                  "aparecem só com os últimos dígitos, depois de “…”. Com <code>--completo</code> "
                  "saem inteiros.");
  }

  const Log& log_;
  const std::vector<Call>& calls_;
  bool whole_;
  Html html_;
  std::map<std::uint32_t, OpenSale::Why> open_;
  Counts counts_{};
  std::int64_t full_bar_ms_ = 0;
};

}  // namespace

void WriteReport(const Log& log, const ReportOptions& options, std::ostream& page) {
  Report(log, options, page).Write();
}

std::string ReportSummary(const Log& log) {
  std::array<std::size_t, kOutcomes> counts{};
  for (const Call& call : log.calls()) ++counts[static_cast<std::size_t>(call.outcome)];
  std::string text = Counted(log.calls().size(), "chamada", "chamadas");
  for (std::size_t i = 0; i < kOutcomes; ++i)
    if (counts[i] > 0)
      text.append(text.find(':') == text.npos ? ": " : ", ")
          .append(OutcomeName(static_cast<Outcome>(i)))
          .append(" ")
          .append(std::to_string(counts[i]));
  const std::size_t open = log.OpenSales().size();
  return text + "\n" +
         (open == 0
              ? "Nenhuma venda em aberto"
              : Counted(open, "venda em aberto", "vendas em aberto") + ": veja no alto da página") +
         "\n";
}

}  // namespace caixora
