// The report is given what the library itself logs, on the machine in memory, and what befalls logs
// on their way to support.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "machine.h"
#include "script.h"
#include "tools/log_reader.h"
#include "tools/log_text.h"
#include "tools/report.h"
#include "tools/report_command.h"
#include "tools/shortened.h"

namespace caixora {
namespace {

// Lines as the library writes them, from the notes of the machine.
struct Writer {
  LogTime ms = 0;
  std::string log;
  std::vector<std::string> lines;
  std::vector<LogTime> times;        // theirs, in milliseconds
  std::vector<std::string> results;  // of the calls that logged

  void Line(const std::string& message) {
    const LogTime time = 1709802905 + ms / 1000;
    lines.push_back("\r\n" + DateText(time) + " " + ClockText(time) + " ::1.0.0.0:: " + message);
    times.push_back(ms);
    log += lines.back();
  }

  void Take(const std::vector<std::string>& notes, bool detailed) {
    bool logged = false;
    for (const std::string& note : notes) {
      if (note.starts_with("* ")) continue;
      if (note.starts_with("+")) ms += std::stol(note.substr(1));
      if (note.starts_with("= ") && logged) results.push_back(DecodeLog(note.substr(2)));
      if (note.starts_with("= ")) logged = false;
      if (note.starts_with("+") || note.starts_with("= ")) continue;
      if (!detailed && note.ends_with(" (f)")) continue;
      Line(note);
      logged = true;
    }
  }
};

bool IsPayment(const std::string& result) { return result.starts_with("S;"); }

bool Tells(const Call& call, const std::string& result) {
  if (call.result == result) return true;
  const auto names = [&](const Failure* failure) { return Matches(failure->result, result); };
  return (call.result.empty() || call.result.ends_with("…")) &&
         std::ranges::any_of(call.failures, names);
}

class LibraryLogs : public testing::TestWithParam<bool> {};

TEST_P(LibraryLogs, SayWhatTheHostGot) {
  std::size_t payments = 0;
  for (const char* file :
       {"operacoes.txt", "recusas.txt", "troca.txt", "localizacao.txt", "fluxo.txt"}) {
    for (const Case& script : ReadCases(kTranscripts / file)) {
      SCOPED_TRACE(script.title);
      StartCase();
      Writer writer;
      for (const std::string& line : script.lines)
        if (!IsTranscript(line) && RunLine(line)) writer.Take(machine.notes, GetParam());
      Log log;
      log.Add("Caixora.log", writer.log);
      log.Read();
      std::size_t next = 0;
      for (const std::string& result : writer.results) {
        const bool is_code = result.size() == 2 && result[0] >= '3' && result[0] <= '4';
        if (result.starts_with("S;0;") || is_code) {
          EXPECT_NE(FindByResult(result), nullptr) << result;
        }
        while (next < log.calls().size() && log.calls()[next].kind == CallKind::kFlow) ++next;
        if (!IsPayment(result)) continue;
        ++payments;
        ASSERT_LT(next, log.calls().size());
        const Call& call = log.calls()[next++];
        // The last call of a log may go on behind its end.
        if (call.failures == std::vector{FindByResult("(fim do log)")}) continue;
        EXPECT_TRUE(Tells(call, result)) << "returned " << result << "\nread " << call.result;
      }
      for (const LogLine& line : log.lines()) EXPECT_NE(line.call, LogLine::kNoCall) << line.text;
    }
  }
  EXPECT_GT(payments, 60u);
}

INSTANTIATE_TEST_SUITE_P(Modes, LibraryLogs, testing::Bool());

Writer Calls(const std::string& script, bool detailed, LogTime ms = 0) {
  StartCase();
  Writer writer;
  writer.ms = ms;
  RunLine(script);
  writer.Take(machine.notes, detailed);
  return writer;
}

// By a GP that takes its time where it is asked to.
std::string Sale(int coupon, const std::string& status = "0", bool slow = false) {
  const std::string number = std::to_string(coupon);
  const std::string answer = "001-000 = " + number + "\xC2\xB6" + "003-000 = 1250\xC2\xB6" +
                             "009-000 = " + status + "\xC2\xB6" + "030-000 = DE " + number;
  const std::string gp =
      slow ? "gp trava; quando 3x +100: apaga $REQ; quando 9x +200: arquivo $RESP = " + answer
           : "gp responde " + answer;
  return gp + "; VendeCredito $C $P 12.5 " + number + " 3";
}

// Two programs that sell at the same time, one a little behind the other.
TEST(Log, TellsTwoProgramsApart) {
  for (const auto& [detailed, coarse] : {std::pair(false, 1), {true, 1}, {false, 1000}}) {
    for (const LogTime behind : {0, 150, 300, 700, 1100, 1300, 2000}) {
      const Writer first = Calls(Sale(17, "0", true), detailed);
      const Writer second = Calls(Sale(18, "5", true), detailed, behind);
      std::multimap<LogTime, std::string> merged;
      for (const Writer* writer : {&first, &second})
        for (std::size_t i = 0; i < writer->lines.size(); ++i)
          merged.emplace(writer->times[i] / coarse, writer->lines[i]);
      std::string bytes;
      for (const auto& [time, line] : merged) bytes += line;
      Log log;
      log.Add("Caixora.log", bytes);
      log.Read();
      ASSERT_EQ(log.calls().size(), 2u) << behind;
      for (const Call& call : log.calls()) {
        const bool refused = call.coupon == 18;
        EXPECT_EQ(call.outcome, refused ? Outcome::kRefused : Outcome::kApproved) << behind;
        // Lines that both say in the same moment are anybody's.
        const double lines = static_cast<double>((refused ? second : first).lines.size());
        EXPECT_NEAR(static_cast<double>(call.lines.size()), lines, 3) << behind;
      }
    }
  }
}

TEST(Log, SortsFilesAndJoinsWhatTheyCut) {
  const Writer whole = Calls(Sale(17) + "; Confirmar $C $P 17", false);
  for (std::size_t cut = 1; cut < whole.lines.size(); ++cut) {
    Log log;
    std::string parts[2];
    for (std::size_t i = 0; i < whole.lines.size(); ++i) parts[i >= cut] += whole.lines[i];
    log.Add("Caixora.log", parts[1]);
    log.Add("Caixora_20240307091506.log", parts[0]);
    log.Read();
    ASSERT_EQ(log.calls().size(), 2u) << cut;
    EXPECT_TRUE(log.OpenSales().empty()) << cut;
  }
}

std::string Joined(const std::vector<std::string>& lines, std::size_t begin, std::size_t end) {
  std::string bytes;
  for (; begin < end; ++begin) bytes += lines[begin];
  return bytes;
}

// Whatever is left of a sale's confirmation, the sale is not closed by a part of it.
TEST(Log, ClaimsNoMoreThanACutLogSays) {
  const Writer day = Calls(Sale(17) + "; Confirmar $C $P 17", false);
  const std::size_t answer = day.log.rfind("RETORNO: ");
  for (std::size_t size = answer; size < day.log.size(); ++size) {
    Log log;
    log.Add("Caixora.log", day.log.substr(0, size));
    log.Read();
    ASSERT_EQ(log.calls().size(), 2u) << size;
    EXPECT_EQ(log.calls()[1].outcome, Outcome::kUnfinished) << log.calls()[1].result;
    EXPECT_EQ(log.OpenSales().size(), 1u) << size;
  }
  const Writer sale = Calls(Sale(17), false);
  const std::size_t handed_over = sale.log.find("VERIFICANDO SE");
  for (std::size_t size = sale.log.find("\r\n", handed_over); size < sale.log.size(); ++size) {
    Log log;
    log.Add("Caixora.log", sale.log.substr(0, size));
    log.Read();
    EXPECT_EQ(log.OpenSales().size(), 1u) << size;
  }
  const auto named = std::ranges::find_if(
      sale.lines, [](const std::string& line) { return line.find("[METODO]") != line.npos; });
  const auto cut = static_cast<std::size_t>(named - sale.lines.begin()) + 1;
  Log log;
  log.Add("Caixora.log", Joined(sale.lines, cut, sale.lines.size() - 1));
  log.Read();
  EXPECT_EQ(log.OpenSales().size(), 1u);
}

// The first call of a process begins in the current folder's log, and goes on in the GP's.
TEST(Log, JoinsACallOfTwoLogs) {
  const Writer older = Calls(Sale(16), false, -86400000);
  const Writer sale = Calls(Sale(17), false);
  Log log;
  log.Add("atual.log", sale.lines[0]);
  log.Add("Caixora.log", older.log + Joined(sale.lines, 1, sale.lines.size()));
  log.Read();
  ASSERT_EQ(log.calls().size(), 2u);
  EXPECT_EQ(log.calls()[1].lines.size(), sale.lines.size());
}

TEST(Log, LeavesACallThatStops) {
  for (const bool detailed : {false, true}) {
    const Writer next = Calls(Sale(18), detailed, 20000);
    const Writer killed = Calls(Sale(17), detailed);
    const auto waits = std::ranges::find_if(
        killed.lines, [](const std::string& line) { return line.find("AGUARDANDO") != line.npos; });
    const auto stop = static_cast<std::size_t>(waits - killed.lines.begin()) + 1;
    Log log;
    log.Add("Caixora.log", Joined(killed.lines, 0, stop) + next.log);
    log.Read();
    ASSERT_EQ(log.calls().size(), 2u);
    EXPECT_EQ(log.calls()[0].lines.size(), stop);
    EXPECT_EQ(log.calls()[0].failures,
              std::vector{FindByResult("(sem retorno, depois do pedido)")});
    EXPECT_EQ(log.OpenSales().size(), 2u);
  }
}

// The end of one day's log and the beginning of another's are no call.
TEST(Log, JoinsNoCallsOfTwoDays) {
  const Writer first = Calls(Sale(17), false, -86400000);
  const Writer second = Calls(Sale(18), false);
  for (std::size_t cut = 1; cut < second.lines.size(); ++cut) {
    Log log;
    log.Add("Caixora.log", Joined(second.lines, cut, second.lines.size()));
    log.Add("Caixora_20240306120000.log", Joined(first.lines, 0, cut));
    log.Read();
    ASSERT_EQ(log.calls().size(), 2u) << cut;
    EXPECT_EQ(log.calls()[1].coupon, 18) << cut;
    EXPECT_EQ(log.calls()[0].failures, std::vector{FindByResult("(fim do log)")}) << cut;
  }
}

TEST(Log, KnowsOpenSales) {
  const std::string dies = "; gp cala; quando +200: solta Pavolin.exe; VendeCredito $C $P 1 19 3";
  const std::tuple<std::string, int, std::string> kDays[] = {
      {Sale(17), 17, "aprovada"},
      {Sale(17) + "; Confirmar $C $P 17", 0, ""},
      {Sale(17) + "; Desfazimento $C $P 17", 0, ""},
      {Sale(17) + "; VendeCredito $C $P 12.5 17 3; Confirmar $C $P 17", 17, "aprovada"},
      {Sale(17) + "; Confirmar $C $P 18", 17, "aprovada"},
      {Sale(17) + "; Confirmar 1 $P 17", 17, "aprovada"},
      {Sale(17) + "; tranca $RESP; quando 2x +200: solta Pavolin.exe; Confirmar $C $P 17", 17,
       "aprovada"},
      {Sale(17, "5"), 0, ""},
      {"gp responde 030-000 = OK" + dies, 19, "falha local"},
      {"gp cala; Confirmar 1 $P 17; VendeCredito $C $P 1 19 3", 19, "resposta local"},
      {"solta Pavolin.exe; VendeCredito $C $P 1 19 3", 0, ""},
  };
  for (const auto& [script, coupon, outcome] : kDays) {
    Log log;
    log.Add("Caixora.log", Calls(script, false).log);
    log.Read();
    const auto open = log.OpenSales();
    ASSERT_EQ(open.size(), coupon == 0 ? 0u : 1u) << script;
    if (coupon == 0) continue;
    EXPECT_EQ(log.calls()[open[0].call].coupon, coupon) << script;
    EXPECT_EQ(OutcomeName(log.calls()[open[0].call].outcome), outcome) << script;
  }
}

TEST(Log, TakesTheLineEndsOfOtherMachines) {
  std::string bytes = Calls(Sale(17) + "; Confirmar $C $P 17", false).log;
  std::erase(bytes, '\n');
  Log log;
  EXPECT_TRUE(log.Add("Caixora.log", bytes));
  log.Read();
  EXPECT_EQ(log.calls().size(), 2u);
}

std::string Page(const Log& log, bool whole) {
  std::ostringstream page;
  WriteReport(log, {.whole = whole}, page);
  return page.str();
}

TEST(Report, LosesNoLineOfWhateverFile) {
  std::mt19937 random(7);
  const Writer day = Calls(Sale(17) + "; Confirmar $C $P 17; " + Sale(18, "5"), true);
  for (int round = 0; round < 60; ++round) {
    std::string bytes = day.log.substr(random() % 3000, random() % 9000);
    for (int i = 0; i < 20 && !bytes.empty(); ++i)
      bytes[random() % bytes.size()] =
          static_cast<char>(i % 2 ? random() : "<>&\"'/\r\n :;"[i % 12]);
    Log log;
    log.Add("Caixora.log", bytes);
    log.Read();
    const std::string page = Page(log, true);
    std::istringstream lines(DecodeLog(bytes));
    for (std::string line; std::getline(lines, line);) {
      std::string html;
      AppendHtml(line, html);
      ASSERT_NE(page.find(html), page.npos) << round << ": " << line;
    }
  }
}

TEST(Report, ShortensFileNamesAndAmounts) {
  std::string bytes = Calls(Sale(17), false).log;
  const std::string amount = "dValor:12.500000";
  bytes.replace(bytes.find(amount), amount.size(), "dValor:12345678000195");
  Log log;
  log.Add("loja 12.345.678-0001-95.log", bytes);
  log.Add("Caixora_20240306120000.log", bytes);
  log.Read();
  const std::string page = Page(log, false);
  EXPECT_NE(page.find("loja …0195.log"), page.npos);
  EXPECT_NE(page.find("Caixora_20240306120000.log"), page.npos);
  EXPECT_EQ(page.find("12345678000195"), page.npos);
}

TEST(Shortened, LeavesTheLastDigits) {
  const std::pair<std::string_view, std::string_view> kTexts[] = {
      {"12.345.678/0001-95", "…0195"},
      {"sCNPJCliente:12345678000195 - sCNPJParceiro:11222333000181 - iCupom:17",
       "sCNPJCliente:…0195 - sCNPJParceiro:…0181 - iCupom:17"},
      {"12345678/0001-95", "…0195"},
      {"CPF 123.456.789-09.", "CPF …09."},
      {"123456789-09", "…09"},
      {"12345678909", "…09"},
      {"4111 1111 1111 1234", "…1234"},
      {"4111.1111.1111.1234 ", "…1234 "},
      {"3782 822463 10005", "…0005"},
      {"TEL (11) 98765-4321", "TEL (…21"},
      {"11 3265-4321", "…21"},
      {"98765-4321", "…21"},
      {"029-001 = 12345678000195", "029-001 = …0195"},
      {"20¬11222333000181¬1,00", "20¬…0181¬1,00"},
      {"07/03/2024 09:15:05 ::1.0.3.12:: 001-000 = 17",
       "07/03/2024 09:15:05 ::1.0.3.12:: 001-000 = 17"},
      {"C;2147483647;1250;;;012345;", "C;2147483647;1250;;;012345;"},
      {"1-DIESEL S10-40-6.25-0-250.00", "1-DIESEL S10-40-6.25-0-250.00"},
  };
  const std::array<std::string_view, 1> kept = {"2147483647"};
  for (const auto& [text, shown] : kTexts) EXPECT_EQ(Shortened(text, kept), shown);
}

TEST(Html, HoldsNothingThatActs) {
  const std::pair<std::string_view, std::string_view> kTexts[] = {
      {"</script><!--", "&lt;/script&gt;&lt;!--"},
      {"\" onload='x' &lt;", "&quot; onload=&#39;x&#39; &amp;lt;"},
      {std::string_view("a\0b\x1B[1m\x7F\r", 9), "a␀b␛[1m␡␍"},
      {"\u2028\u202E\u200B\uFEFF\u0085", "\\u2028\\u202E\\u200B\\uFEFF\\x85"},
      {"\xFF\xC3", "\\xFF\\xC3"},
      {"ação 😀", "ação 😀"},
  };
  for (const auto& [text, shown] : kTexts) {
    std::string html;
    AppendHtml(text, html);
    EXPECT_EQ(html, shown);
  }
}

TEST(ReportCommand, SaysWhatIsWrong) {
  const auto folder = std::filesystem::path(testing::TempDir()) / "relatório";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  const auto put = [&](const char* name, const std::string& bytes) {
    std::ofstream(folder / name, std::ios::binary) << bytes;
    return (folder / name).string();
  };
  const std::string log = put("Caixora.log", Calls(Sale(17), false).log);
  const std::string older =
      put("Caixora_20240306120000.log", Calls(Sale(16), false, -86400000).log);
  const std::string page = (folder / "p.html").string();
  const std::tuple<std::vector<std::string>, int, std::string> kCommands[] = {
      {{"--saida", page, log}, 0, "1 chamada: aprovada 1"},
      {{"--saida", page, (folder / "CAIXORA*.LOG").string()}, 0, "2 chamadas"},
      {{"--saida", page, log, log}, 0, "1 chamada:"},
      {{"--saida", page, page}, 1, "Não é um log"},
      {{"--saida", page, put("outro.txt", "nada\n")}, 1, "Não é um log"},
      {{"--saida", page, put("vazio.log", "")}, 1, "Arquivo vazio"},
      {{"--saida", page, log, put("vazio.log", "")}, 0, "Arquivo vazio"},
      {{"--saida", page, put("outro.txt", "nada\n"), log}, 0, "1 chamada:"},
      {{"--saida", page, (folder / "nada.log").string()}, 1, "não encontrado"},
      {{"--saida", page, (folder / "nada*.log").string()}, 1, "Nenhum arquivo"},
      {{"--saida", page, folder.string()}, 1, "É uma pasta"},
      {{"--saida", log, log}, 1, "no lugar do log"},
      {{"--saida", (folder / "x" / "p.html").string(), log}, 1, "Não foi possível gravar"},
      {{"--complet", log}, 2, "desconhecida"},
      {{log, "--saida"}, 2, "Falta o arquivo"},
      {{}, 2, "Uso: "},
  };
  for (const auto& [arguments, status, text] : kCommands) {
    std::ostringstream out, errors;
    EXPECT_EQ(RunReport(arguments, out, errors), status) << text;
    EXPECT_NE((out.str() + errors.str()).find(text), std::string::npos)
        << out.str() << errors.str();
  }
}

}  // namespace
}  // namespace caixora

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  ReadCommon();
  return RUN_ALL_TESTS();
}
