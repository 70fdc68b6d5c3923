// The books of the simulated GP: requests and answers in, what does not come out even out.
#include "simulators/books.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

namespace caixora::gp {
namespace {

// A word a field: header with its subtype behind a slash, coupon, amount; then what came of it: "+"
// approved, "-" refused, "!" never taken, nothing: no answer.
Request Record(const std::string& text) {
  std::istringstream words(text);
  std::string header, coupon, cents;
  words >> header >> coupon >> cents;
  const std::size_t slash = std::min(header.find('/'), header.size());
  std::string record = "000-000 =  " + header.substr(0, slash) + "\r\n001-000 = " + coupon + "\r\n";
  if (slash < header.size()) record += "800-001 = " + header.substr(slash + 1) + "\r\n";
  if (cents.size() > 1) record += "003-000 = " + cents + "\r\n";
  return Request(record);
}

Books Kept(const std::string& day) {
  Books books;
  std::istringstream events(day);
  int second = 10;
  for (std::string event; std::getline(events, event, ',');) {
    const std::string time = "2024-03-07 09:15:" + std::to_string(second++);
    books.Add(BookLine(time, Record(event), !event.ends_with('!')));
    if (event.ends_with('+')) books.Add(BookLine(time, Request("009-000 = 0")));
    if (event.ends_with('-')) books.Add(BookLine(time, Request("009-000 = 5")));
  }
  return books;
}

TEST(Books, FindWhatDoesNotComeOutEven) {
  const struct {
    const char* day;
    const char* findings;  // kind and coupon of each
  } rows[] = {
      {"CRT/0 1 1000 +, CNF 1, CRT/1 2 1000 +, NCN 2, CRT/0 3 1002 -, CRT/0 4 1000 +, CNF 4", ""},
      {"CRT/0 1 1000 +", "sem_desfecho 1"},
      {"CRT/0 1 1000 +, CRT/0 2 1000 +, CNF 2", "sem_desfecho 1"},
      {"CRT/0 1 1000 +, CNF 2", "desfecho_sem_venda 2, sem_desfecho 1"},
      {"NCN 2", "desfecho_sem_venda 2"},
      {"CRT/0 1 1000 +, CNF 1, CNF 1", "dois_desfechos 1"},
      {"CRT/0 1 1000 +, CNF 1, NCN 1, NCN 1", "dois_desfechos 1, dois_desfechos 1"},
      {"CRT/0 1 1000 +, CNF 1 !", "sem_desfecho 1"},
      {"CRT/0 1 1002 -, CNF 1", "recusa_confirmada 1"},
      {"CRT/0 1 1002 -, CNF 1, CNF 1", "recusa_confirmada 1, dois_desfechos 1"},
      {"CRT/0 1 1002 -, NCN 1", ""},  // from a journal: the PDV was ended before the answer
      // No answer: to be undone, and not to be confirmed.
      {"CRT/0 1 1003", "sem_resposta 1"},
      {"CRT/0 1 1003, NCN 1", ""},
      {"CRT/0 1 1003, CNF 1", "desfecho_sem_venda 1"},
      {"CRT/0 1 1003, NCN 1, CNF 1", "dois_desfechos 1"},
      {"CRT/0 1 1003, REL 2 0 +", "sem_resposta 1"},  // not the answer to the sale
      // Never taken: nothing to settle, an undo is right, and the request may be taken later.
      {"CRT/0 1 1005 !", ""},
      {"CRT/0 1 1005 !, NCN 1", ""},
      {"CRT/0 1 1005 !, CNF 1", "desfecho_sem_venda 1"},
      {"CRT/0 1 1005 !, CRT/0 1 1005 +, CNF 1", ""},
      {"CRT/0 1 1005 !, CRT/0 1 1000 +, CNF 1", "valor_alterado 1"},
      // A coupon is for one sale, whatever became of it.
      {"CRT/0 1 1000 +, CNF 1, CRT/0 1 2000 +, CNF 1", "cupom_repetido 1"},
      {"CRT/0 1 1000 +, CNF 1, CRT/0 1 2000 +", "cupom_repetido 1, sem_desfecho 1"},
      {"CRT/0 1 1002 -, CRT/0 1 1002 -", "cupom_repetido 1"},
      {"CRT/0 1 1003, NCN 1, CRT/0 1 1000 +, CNF 1", "cupom_repetido 1"},
      {"CRT/0 1 1003, CRT/0 1 1000 +, CNF 1", "cupom_repetido 1, valor_alterado 1, sem_resposta 1"},
      {"CRT/0 1 1002 -, CRT/0 1 1000 +, CNF 1", "cupom_repetido 1, valor_alterado 1"},
      {"CRT/0 1 1000 +, CRT/0 1 2000 +, CNF 1",
       "cupom_repetido 1, valor_alterado 1, sem_desfecho 1"},
      {"CEL 1 +, CRT/0 1 1000 +, CNF 1", "cupom_repetido 1"},
      // A cancellation and the menu name the coupon of a sale; an outcome of theirs is optional.
      {"CRT/0 1 1000 +, CNF 1, CNC 1 1000 +", ""},
      {"CRT/0 1 1000 +, CNF 1, CNC 1 1000 +, CNF 1", ""},
      {"CRT/0 1 1000 +, CNF 1, CNC 1 1000 +, CNF 1, NCN 1", "dois_desfechos 1"},
      {"CRT/0 1 1000 +, CNF 1, CNC 1 1002 -, CNF 1", "recusa_confirmada 1"},
      {"CRT/0 1 1000 +, CNC 1 1000 +, CNF 1", ""},
      {"CNC 1 1003, ADM 2, CEL 3 +", ""},
      {"ADM 1 +, CRT/0 1 1000 +, CNF 1", ""},
      {"CEL 3 +, CNF 3", ""},
      {"ADM 3 +, CNF 3", ""},
      // Whatever else has a coupon is no sale, and a link is one.
      {"ATV 1 +, REL 1 1000 +, CRT/6 1 1000 +, XYZ 1 1000 -, CRT/0 1 1000 +, CNF 1", ""},
      {"CRT/6 1 1000 +, CNF 1", "desfecho_sem_venda 1"},
      {"CRT/4 1 1000 +, CRT/9 2 1000 +", "sem_desfecho 1, sem_desfecho 2"},
  };
  for (const auto& row : rows) {
    std::string found;
    for (const Finding& finding : Kept(row.day).Findings())
      found += (found.empty() ? "" : ", ") + std::string(finding.id) + " " + finding.coupon;
    EXPECT_EQ(found, row.findings) << row.day;
  }
}

TEST(Books, SayThemInPortugueseAndInJson) {
  const Books books = Kept("CRT/0 1 1000 +, CNF 1, CNF 1, CRT/1 2 2000 +, CRT/0 \xC3 1002 -");
  EXPECT_EQ(
      books.Text(),
      "Livro do GP: 2 aprovadas, 1 recusada, 0 sem resposta\n"
      "  Vendas sem desfecho:\n"
      "    cupom 2: DEBITO de 20,00 às 09:15:13: aprovada, e não foi confirmada nem desfeita\n"
      "  Mais de um desfecho para uma venda:\n"
      "    cupom 1: CREDITO de 10,00 às 09:15:10: já confirmada, e confirmada às 09:15:12\n");
  const nlohmann::ordered_json json = books.Json();
  EXPECT_EQ(json["certo"], false);
  EXPECT_EQ(json["achados"][1].dump(),
            R"({"id":"sem_desfecho","cupom":"2","hora":"2024-03-07 09:15:13","texto":)"
            R"("DEBITO de 20,00 às 09:15:13: aprovada, e não foi confirmada nem desfeita"})");
  EXPECT_EQ(json["vendas"][0].dump(),
            R"({"cupom":"1","hora":"2024-03-07 09:15:10","operacao":"CREDITO","centavos":"1000",)"
            R"("resultado":"aprovada","desfechos":["confirmada","confirmada"]})");
  EXPECT_EQ(json["vendas"][2]["cupom"], "Ã");
  EXPECT_EQ(Kept("ATV 1 +").Text(),
            "Livro do GP: 0 aprovadas, 0 recusadas, 0 sem resposta\n  Nada a acertar.\n");
  EXPECT_EQ(Kept("ATV 1 +").Json()["certo"], true);
}

// A coupon that would be two columns is one, and strange lines are none.
TEST(Books, KeepTheirLines) {
  const Request odd("000-000 = CRT\r\n001-000 = 1\t9\r\n003-000 = 5\r\n");
  EXPECT_EQ(BookLine("t", odd, true), "t\tpedido\tCRT\t\t1 9\t5");
  Books books;
  for (const char* line : {"", "\t", "t\tpedido", "t\taprovado", "t\tpedido\tCRT", "nada\tdisto"})
    books.Add(line);
  EXPECT_EQ(books.Json()["vendas"].size(), 1u);
}

}  // namespace
}  // namespace caixora::gp
