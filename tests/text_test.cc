// Rules over texts and numbers, each as a table of cases.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>

#include "exchange/amount.h"
#include "exchange/answer.h"
#include "exchange/items.h"
#include "fake_machine.h"
#include "interactive/flow_call.h"
#include "support/ansi.h"
#include "support/cnpj.h"
#include "support/text.h"

namespace caixora {

TEST(Ansi, EncodesAccentsAsSingleBytes) {
  EXPECT_EQ(u8"NÃO Í ¬ ç"_ansi, "N\xC3O \xCD \xAC \xE7");
}

TEST(Cnpj, ChecksDigits) {
  const struct { const char* text; bool ok; } rows[] = {
      {"12.345.678/0001-95", true}, {"11222333000181", true},   {"00000000000000", true},
      {"12345678000194", false},    {"12345678000185", false},  {"112223330001810", false},
      {"abc", true},                {"", true},                 {"12345678000100", false},
  };
  for (const auto& row : rows) EXPECT_EQ(ValidarCNPJ(row.text), row.ok) << row.text;
}

TEST(Amount, IsCutToCents) {
  const struct { double reais; const char* cents; const char* printed; } rows[] = {
      {12.5, "1250", "12.500000"},      {10.999, "1099", "10.999000"},
      {1.005, "100", "1.005000"},       {0.5, "050", "0.500000"},
      {0.0, "000", "0.000000"},         {-0.0, "000", "0.000000"},
      {1000.0, "100000", "1000.000000"}, {99.999, "9999", "99.999000"},
      {9.9999999, "100", "10.000000"},  {2147483647.99, "214748364799", "2147483647.990000"},
      {5e-324, "000", "0.000000"},      {0.0000005, "000", "0.000000"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(FormatarValor(row.reais), row.cents);
    EXPECT_EQ(PrintAmount(row.reais), row.printed);
  }
  using Limits = std::numeric_limits<double>;
  for (const double bad : {-0.01, 2147483648.0, Limits::infinity(), -Limits::infinity(),
                           Limits::quiet_NaN()})
    EXPECT_FALSE(IsSendableAmount(bad)) << bad;
}

TEST(NumeroValido, IsLenientInItsOwnWay) {
  for (const char* good : {"1", "10,50", "4.99", " 7 ", "1.2.3", "1-2", "1e", "1e5", "1e+5", ".5",
                           "+1", "-1", "--", "1e1e1"})
    EXPECT_TRUE(NumeroValido(good)) << good;
  for (const char* bad : {"", "  ", "+", "x", ",5", "1.", "1,", "1e1.5", "e5", "1ee", "1 2", "\t1",
                          "1\n"})
    EXPECT_FALSE(NumeroValido(bad)) << bad;
}

TEST(Text, TrimsSplitsAndReadsNumbers) {
  EXPECT_EQ(Trim("\t  abc \r\n"), "abc");
  EXPECT_EQ(Trim("   "), "");
  const struct { const char* text; std::vector<std::string> pieces; } splits[] = {
      {"", {}}, {"a;b;", {"a", "b"}}, {"a;;b", {"a", "", "b"}}, {";a", {"", "a"}}, {";", {""}},
  };
  for (const auto& row : splits) EXPECT_EQ(Split(row.text, ';'), row.pieces) << row.text;
  const struct { const char* text; std::int32_t number; } numbers[] = {
      {"", 0}, {"x", 0}, {" 12abc", 12}, {"+3", 3}, {"-4", -4}, {"+-5", 0}, {"--5", 0},
      {"4294967296", 2147483647}, {"-99999999999", -2147483647 - 1},
  };
  for (const auto& row : numbers) EXPECT_EQ(LeadingNumber(row.text), row.number) << row.text;
}

TEST(LogLine, IsItsOwnFormat) {
  const LogTime time{2024, 3, 7, 9, 15, 5};
  const std::string stamp = "\n07/03/2024 09:15:05 ::1.2:: ";
  const struct { std::string_view message; const char* written; } rows[] = {
      {"ENTROU", "ENTROU"},       {"100%", "100%"},         {"50%% off", "50% off"},
      {"%s%n%", "%s%n%"},         {"%%%", "%%"},            {"a\rb\nc", "a b\nc"},
      {{"cut\0here", 8}, "cut"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(FormatLogLine(time, "1.2", {row.message}, Detail::kOrdinary), stamp + row.written);
  EXPECT_EQ(FormatLogLine(time, "1.2", {"Erro ", "x"}, Detail::kDetailed), stamp + "Erro x (f)");
  EXPECT_EQ(RotatedLogName(time), "Caixora_20240307091505.log");
}

TEST(Answer, BecomesTheResult) {
  const struct { const char* name; std::string answer; std::string result; } rows[] = {
      {"empty", "", "S;2;\r\nC;;;;;;;;1;;;;;;;"},
      {"refused, capitals stay", "009-000 = 5\r\n030-000 = TRANSA\xC7\xC3O NEGADA\r\n",
       "S;0;TRANSA\xC7\xC3O NEGADA"},
      {"accents fold", "009-000 = 5\n030-000 = transa\xE7\xE3o negada \xE1\xE9\xED\xF3\xFA\xEA",
       "S;0;transacao negada aeiou\xEA"},
      {"every field",
       "001-000 = 1\n003-000 = 2\n040-000 = 3\n010-000 = 4\n013-000 = 5\n012-000 = 6\n011-000 = 7\n"
       "018-000 = 8\n800-007 = 9\n170-000 = 10\n010-001 = 11\n740-000 = 12\n741-000 = 13\n"
       "742-000 = 14\n031-000 = 15\n640-000 = no\n028-000 = 2\n029-001 = LOJA\n029-002 = TOTAL\n",
       "S;1;\r\nC;1;2;3;4;5;6;7;8;9;10;11;12;13;14;15\r\nI;LOJA\r\nI;TOTAL"},
      {"network code falls back", "010-001 = 0\n640-000 = 77", "S;2;\r\nC;;;;;;;;1;;;77;;;;"},
      {"networks change places", "010-000 = REDE\n040-000 = BANDEIRA\n504-001 = NOVA",
       "S;2;\r\nC;;;REDE;NOVA;;;;1;;;;;;;"},
      {"no institution, no change", "010-000 = REDE\n504-001 = NOVA",
       "S;2;\r\nC;;;;REDE;;;;1;;;;;;;"},
      {"second equals sign cuts", "030-000 = A=B", "S;2;A\r\nC;;;;;;;;1;;;;;;;"},
      {"key anywhere, twice", "030-000 = 029-001 x\n", "S;2;029-001 x\r\nC;;;;;;;;1;;;;;;;\r\nI;029-001 x"},
      {"last line wins, even empty", "003-000 = 1\n003-000\n", "S;2;\r\nC;;;;;;;;1;;;;;;;"},
      {"NUL ends a line", std::string("003-000 = 12\0" "34\n001-000 = 5", 27), "S;2;\r\nC;5;12;;;;;;1;;;;;;;"},
      {"0x1A ends the file", "001-000 = 5\n\x1A\n003-000 = 9", "S;2;\r\nC;5;;;;;;;1;;;;;;;"},
      {"199 characters a piece", "029-001 = " + std::string(189, 'a') + "029-002 = b\n",
       "S;2;\r\nC;;;;;;;;1;;;;;;;\r\nI;" + std::string(189, 'a') + "\r\nI;b"},
  };
  ResetMachine();
  for (const auto& row : rows)
    EXPECT_EQ(ComposeResult(ParseAnswer(row.answer)), row.result) << row.name;
}

TEST(FlowCall, AmountsHaveTheirComma) {
  for (const char* good : {"1,00", "a,bc", "1000,00"}) EXPECT_TRUE(IsValidAmount(good)) << good;
  for (const char* bad : {"", ",00", "100", "1.00", "1.000,00", "1,0", ",,00"})
    EXPECT_FALSE(IsValidAmount(bad)) << bad;
}

}  // namespace caixora
