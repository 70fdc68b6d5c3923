// Rules over texts and numbers, each as a table of cases; and what must hold for any input.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "exchange/amount.h"
#include "exchange/answer.h"
#include "exchange/items.h"
#include "interactive/flow_call.h"
#include "properties.h"
#include "support/ansi.h"
#include "support/cnpj.h"
#include "support/log_line.h"
#include "support/text.h"

using namespace caixora;

namespace {

// clang-format off

TEST(Text, HasItsBytesDigitsAndBlanks) {
  EXPECT_EQ(u8"NÃO Í ¬ ç"_ansi, "N\xC3O \xCD \xAC \xE7");
  for (const char* good : {"12.345.678/0001-95", "11222333000181", "00000000000000", "abc", ""})
    EXPECT_TRUE(ValidarCNPJ(good)) << good;
  for (const char* bad : {"12345678000194", "12345678000185", "112223330001810", "12345678000100"})
    EXPECT_FALSE(ValidarCNPJ(bad)) << bad;
  EXPECT_EQ(Trim("\t \v\f abc \r\n"), "abc");
  EXPECT_EQ(Trim("   "), "");
  const std::pair<const char*, std::int32_t> numbers[] = {
      {"", 0}, {"x", 0}, {" 12abc", 12}, {"+3", 3}, {"-4", -4}, {"+-5", 0}, {"--5", 0},
      {" -7x", -7}, {"4294967296", 2147483647}, {"-99999999999", -2147483647 - 1}};
  for (const auto& [text, number] : numbers) EXPECT_EQ(LeadingNumber(text), number) << text;
}

TEST(Amount, IsCutToCents) {
  const struct { double reais; const char *cents, *printed; } rows[] = {
      {12.5, "1250", "12.500000"},        {10.999, "1099", "10.999000"},
      {1.005, "100", "1.005000"},         {0.5, "050", "0.500000"},
      {-0.0, "000", "0.000000"},          {1000.0, "100000", "1000.000000"},
      {9.9999999, "100", "10.000000"},    {2147483647.99, "214748364799", "2147483647.990000"},
      {0.0078125, "000", "0.007812"},     {0.0546875, "005", "0.054688"},  // ties go to even
      {std::nextafter(0.0078125, 1.0), "000", "0.007813"},
      {5e-324, "000", "0.000000"},        {3e-12, "000", "0.000000"}};
  for (const auto& row : rows) {
    EXPECT_EQ(FormatarValor(row.reais), row.cents) << row.printed;
    EXPECT_EQ(PrintAmount(row.reais), row.printed);
  }
  for (const double bad : {-0.01, 2147483648.0, HUGE_VAL, -HUGE_VAL, std::nan("")})
    EXPECT_FALSE(IsSendableAmount(bad)) << bad;
  for (const char* good : {"1,00", "a,bc", "1000,00"}) EXPECT_TRUE(IsValidAmount(good)) << good;
  for (const char* bad : {"", ",00", "100", "1.00", "1.000,00", "1,0", ",,00"})
    EXPECT_FALSE(IsValidAmount(bad)) << bad;
}

TEST(Items, HaveTheirNumbersAndNumberings) {
  for (const char* good : {"1", "10,50", "4.99", " 7 ", "1.2.3", "1-2", "1e", "1e5", "1e+5", ".5",
                           "+1", "-1", "--", "1e1e1"})
    EXPECT_TRUE(NumeroValido(good)) << good;
  for (const char* bad : {"", "  ", "+", "x", ",5", "1.", "1,", "1e1.5", "e5", "1ee", "1 2", ".-1",
                          "\t1"})
    EXPECT_FALSE(NumeroValido(bad)) << bad;
  TefArguments arguments;
  arguments.iQtdeItens = 11;
  for (int i = 0; i < 11; ++i) arguments.sItens += u8"a¬b¬1¬2¬3¬4|"_ansi;
  std::string link, fleet;
  EXPECT_FALSE(AppendLinkItems(arguments, link) || AppendFleetItems(arguments, fleet));
  EXPECT_NE(link.find("\n261-096 = 4\n261-101 = a\n261-102 = b\n"), link.npos) << link;
  EXPECT_TRUE(link.ends_with("\n261-116 = 4\n")) << link;
  EXPECT_NE(fleet.find("\n261-096 = \n261-0101 = a"), fleet.npos) << fleet;
}

TEST(LogLine, IsItsOwnFormat) {
  const LocalTime time{2024, 3, 7, 9, 15, 5};
  const std::pair<std::string_view, const char*> rows[] = {
      {"100%", "100%"}, {"50%% off", "50% off"}, {"%s%n%", "%s%n%"}, {"%%%", "%%"},
      {"a\rb\nc", "a b\nc"}, {{"cut\0here", 8}, "cut"}};
  for (const auto& [message, written] : rows)
    EXPECT_EQ(FormatLogLine(time, "1.2", {message}, Detail::kOrdinary),
              std::string("\n07/03/2024 09:15:05 ::1.2:: ") + written);
  EXPECT_EQ(FormatLogLine({12, 10, 11, 12, 13, 14}, "", {"E", "x"}, Detail::kDetailed),
            "\n11/10/12 12:13:14 :::: Ex (f)");
  EXPECT_EQ(RotatedLogName(time), "Caixora_20240307091505.log");
}

TEST(Answer, BecomesTheResult) {
  const std::pair<std::string, std::string> rows[] = {
      {"", "S;2;\r\nC;;;;;;;;1;;;;;;;"},
      {"009-000 = 5\r\n030-000 = TRANSA\xC7\xC3O NEGADA\r\n", "S;0;TRANSA\xC7\xC3O NEGADA"},
      {"009-000 = 5\n030-000 = \xE1\xE9\xED\xF3\xFA\xE3\xE7\xEA", "S;0;aeiouac\xEA"},
      {"001-000 = 1\n003-000 = 2\n040-000 = 3\n010-000 = 4\n013-000 = 5\n012-000 = 6\n011-000 = 7\n"
       "018-000 = 8\n800-007 = 9\n170-000 = 10\n010-001 = 11\n740-000 = 12\n741-000 = 13\n"
       "742-000 = 14\n031-000 = 15\n640-000 = no\n028-000 = 2\n029-001 = LOJA\n029-002 = TOTAL\n",
       "S;1;\r\nC;1;2;3;4;5;6;7;8;9;10;11;12;13;14;15\r\nI;LOJA\r\nI;TOTAL"},
      {"010-001 = 0\n640-000 = 77\n028-000 = 0", "S;2;\r\nC;;;;;;;;1;;;77;;;;"},
      {"010-001 = 1\n640-000 = 77\n018-000 = -1", "S;2;\r\nC;;;;;;;;-1;;;1;;;;"},
      {"010-000 = REDE\n040-000 = B\n504-001 = NOVA", "S;2;\r\nC;;;REDE;NOVA;;;;1;;;;;;;"},
      {"010-000 = REDE\n504-001 = NOVA", "S;2;\r\nC;;;;REDE;;;;1;;;;;;;"},
      {"030-000 = A=B", "S;2;A\r\nC;;;;;;;;1;;;;;;;"},
      {"030-000 = 029-001 x\n", "S;2;029-001 x\r\nC;;;;;;;;1;;;;;;;\r\nI;029-001 x"},
      {"003-000 = 1\n003-000\n", "S;2;\r\nC;;;;;;;;1;;;;;;;"},
      {std::string("003-000 = 12\0x\n001-000 = 5", 26), "S;2;\r\nC;5;12;;;;;;1;;;;;;;"},
      {"001-000 = \r5\n\x1A\n003-000 = 9", "S;2;\r\nC;5;;;;;;;1;;;;;;;"},
      {"029-001 = " + std::string(189, 'a') + "029-002 = b\n",
       "S;2;\r\nC;;;;;;;;1;;;;;;;\r\nI;" + std::string(189, 'a') + "\r\nI;b"}};
  for (const auto& [answer, result] : rows)
    EXPECT_EQ(ComposeResult(ParseAnswer(answer)), result) << answer;
}

// Every run sees the same mutations.
template <class Check>
void Mutate(Check check, const std::vector<std::string>& seeds) {
  const std::string pieces[] = {"\r\n", "\n", "\r", "\x1A", {'\0'}, "=", ";", "%%", "%s%n",
                                "029-001", "030-000 = ", "|", "\xAC", "-", "CAMINHO=", "1e5"};
  std::mt19937 random(20240307);
  const auto below = [&random](std::size_t bound) { return random() % bound; };
  for (int round = 0; round < 5000; ++round) {
    std::string bytes = seeds[below(seeds.size())];
    for (std::size_t edits = below(8); edits-- > 0;) {
      const std::size_t at = below(bytes.size() + 1);
      bytes.erase(at, below(3) * below(6));
      bytes.insert(at, below(4) == 0 ? std::string(below(300), static_cast<char>(below(256)))
                                     : pieces[below(std::size(pieces))]);
    }
    ASSERT_NO_THROW(check(bytes));
  }
}

TEST(Properties, HoldForMutations) {
  Mutate(CheckAnswer, {"001-000 = 17\r\n003-000 = 1250\r\n009-000 = 0\r\n028-000 = 2\r\n"
                       "029-001 = LOJA\r\n029-002 = TOTAL\r\n030-000 = aprova\xE7\xE3o\r\n040-000 = B\r\n999-999 = 0",
                       "009-000 = 5\n030-000 = N\xC3O\n", ""});
  // Code 22, 2 items, 12.5.
  const std::string head("\x16\x02\x11\0\0\0\x01\0\0\0\0\0\0\x29\x40", 15);
  const std::vector<std::string> requests = {
      head + std::string(u8"7891¬CAFE¬2¬10,50¬0¬21,00|x¬y¬1¬4.99¬0¬4.99"_ansi),
      "\x19" + head.substr(1) + "a-b-c-d-e-f|g" + std::string(1, '\0') + "12.345.678/0001-95"};
  for (const std::string& request : requests) EXPECT_TRUE(CheckRequest(request));
  Mutate(CheckRequest, requests);
  Mutate(CheckTexts,
         {"CAMINHO=C:\\Trevix\r\nOUTRA=1\r\n", "DETALHADO\r\n", "100%% de %s\r%n", ""});
}

// clang-format on

}  // namespace
