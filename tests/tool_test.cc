// What a person types to the tool, and what it says about itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tools/arguments.h"
#include "tools/exit_status.h"
#include "tools/functions.h"
#include "tools/help.h"
#include "tools/names.h"

using namespace caixora;
using std::string;
using std::string_view;

namespace {

// clang-format off

string Shown(const ParsedNumber& number) {
  const auto* const value = std::get_if<std::int64_t>(&number);
  return value ? std::to_string(*value) : std::get<string>(number);
}

TEST(Amount, IsOneNumberOrAReason) {
  const struct { const char *text, *cents_or_reason; } rows[] = {
      {"12,50", "1250"}, {"12.50", "1250"}, {"12", "1200"}, {"12,5", "1250"}, {"0,05", "5"},
      {"0", "0"}, {"007,10", "710"}, {"2147483647,99", "214748364799"},
      {"2147483648", "passa de"}, {"99999999999999999999,00", "passa de"},
      {"1.000", "três casas: \"1,00\", ou \"1000,00\"?"}, {"10,999", "três casas"},
      {"1,2345", "mais de duas casas"}, {"1.000,00", "milhar"}, {"1,000.00", "milhar"},
      {"1..5", "milhar"}, {"", "vazio"}, {" 1", "espaços"}, {"1 000", "espaços"},
      {"1\t", "espaços"}, {"+1", "sinal de mais"}, {"-1", "negativo"}, {"-0", "negativo"},
      {"1e2", "outros caracteres"}, {"nan", "outros"}, {"inf", "outros"}, {"0x1", "outros"},
      {"R$1", "outros"}, {",50", "parte inteira"}, {"12,", "não tem os centavos"},
      {".", "inteira"}};
  for (const auto& [text, expected] : rows) {
    const string shown = Shown(ParseAmount(text));
    if (std::isdigit(expected[0])) EXPECT_EQ(shown, expected) << text;
    else EXPECT_NE(shown.find(expected), string::npos) << text << ": " << shown;
  }
}

TEST(Whole, IsOneNumberOrAReason) {
  const struct { const char* text; std::int64_t least, most; const char* expected; } rows[] = {
      {"17", 1, INT32_MAX, "17"}, {"017", 1, INT32_MAX, "17"}, {"-3", INT32_MIN, INT32_MAX, "-3"},
      {"2147483647", 1, INT32_MAX, "2147483647"}, {"4294967295", 0, UINT32_MAX, "4294967295"},
      {"0", 1, INT32_MAX, "alcance; falta um número inteiro de 1 a 2147483647"},
      {"2147483648", 1, INT32_MAX, "alcance"}, {"4294967313", 1, INT32_MAX, "alcance"},
      {"-1", 0, UINT32_MAX, "alcance"}, {"99999999999999999999", 0, UINT32_MAX, "alcance"},
      {"1.000", 1, INT32_MAX, "milhar"}, {"1,5", 1, INT32_MAX, "milhar"},
      {"1e2", 1, INT32_MAX, "outros caracteres"}, {"+1", 1, INT32_MAX, "sinal de mais"},
      {"--1", INT32_MIN, INT32_MAX, "outros"}, {"1-", 1, INT32_MAX, "outros"},
      {"-", INT32_MIN, INT32_MAX, "outros"}, {"1 ", 1, INT32_MAX, "espaços"}, {"", 0, 9, "vazio"}};
  for (const auto& [text, least, most, expected] : rows) {
    const string shown = Shown(ParseWhole(text, least, most));
    if (string_view("-0123456789").find(expected[0]) != string_view::npos)
      EXPECT_EQ(shown, expected) << text;
    else EXPECT_NE(shown.find(expected), string::npos) << text << ": " << shown;
  }
}

TEST(Names, AreFoundOrSuggested) {
  const string_view names[] = {"VendeCredito", "VendeCreditoVista", "Relatorio", "relatorio", "Adm",
                               "Atv"};
  using Names = std::vector<string_view>;
  const struct { const char* word; Names found; const char* suggested; } rows[] = {
      {"VendeCredito", {"VendeCredito"}, "VendeCredito"}, {"vendecredito", {"VendeCredito"}, ""},
      {"VENDECREDITOVISTA", {"VendeCreditoVista"}, ""}, {"relatorio", {"relatorio"}, ""},
      {"Relatorio", {"Relatorio"}, ""}, {"RELATORIO", {"Relatorio", "relatorio"}, ""},
      {"VendaCredito", {}, "quis dizer VendeCredito?"}, {"vendecrediot", {}, "VendeCredito?"},
      {"relatório", {}, "Relatorio ou relatorio?"}, {"amd", {}, "quis dizer Adm?"},
      {"Vista", {}, "quis dizer VendeCreditoVista?"}, {"xyzw", {}, nullptr}, {"", {}, nullptr}};
  for (const auto& [word, found, suggested] : rows) {
    EXPECT_EQ(FindName(word, names), found) << word;
    const string text = Suggestion(word, names);
    if (suggested == nullptr) EXPECT_EQ(text, "") << word;
    else EXPECT_NE(text.find(suggested), string::npos) << word << ": " << text;
  }
}

// Every argument is explained, and the example is a call that the tool would make.
TEST(Help, OfEachFunctionShowsACallThatCanBeMade) {
  EXPECT_EQ(AllFunctions().size(), 32U);
  for (const Function& function : AllFunctions()) {
    const string help = FunctionHelp(function), example = Example(function);
    std::istringstream rest(example);
    string word, program, name;
    rest >> program >> name;
    EXPECT_EQ(name, function.name);
    EXPECT_NE(help.find(example), string::npos);
    EXPECT_NE(help.find("Devolve:"), string::npos);
    const auto names = ParameterNames(function);
    std::vector<Value> values;
    for (std::size_t i = 0; i < names.size(); ++i) {
      EXPECT_NE(help.find("  " + string(names[i]) + " ("), string::npos) << help;
      rest >> std::ws;
      if (rest.peek() == '"') { std::getline(rest.ignore(), word, '"'); } else rest >> word;
      switch (function.types[i]) {
        case Type::kText: values.emplace_back(word); break;
        case Type::kInteger:
          values.emplace_back(static_cast<std::int32_t>(std::get<std::int64_t>(
              ParseWhole(word, LeastFor(function, names[i]), INT32_MAX))));
          break;
        case Type::kNatural:
          values.emplace_back(static_cast<std::uint32_t>(
              std::get<std::int64_t>(ParseWhole(word, 0, UINT32_MAX))));
          break;
        case Type::kAmount:
          values.emplace_back(
              static_cast<double>(std::get<std::int64_t>(ParseAmount(word))) / 100);
          break;
      }
    }
    EXPECT_TRUE((rest >> std::ws).eof()) << example;
    EXPECT_EQ(WrongValues(function, names, values), "") << example;
  }
}

TEST(Values, ThatTheLibraryWouldTakeAreRefused) {
  const Function& link = *FindFunction("LinkPagamento");
  const auto names = ParameterNames(link);
  const struct { double amount; std::int32_t count; const char *items, *reason; } rows[] = {
      {1, 0, "", ""}, {1, 2, "a|b", ""}, {0, 0, "", "dValor: uma venda"}, {1, 1, "a|b", "tem 2"},
      {1, 0, "a", "tem 1"}, {1, 1, "", "tem 0"}};
  for (const auto& [amount, count, items, reason] : rows) {
    const Value values[] = {"", "", 1, amount, 17, count, items, "", "", 1};
    EXPECT_NE(WrongValues(link, names, values).find(reason), string::npos) << reason;
    EXPECT_EQ(WrongValues(link, names, values).empty(), *reason == '\0') << reason;
  }
  EXPECT_EQ(LeastFor(link, "iCupom"), 1);
  EXPECT_EQ(LeastFor(*FindFunction("Confirmar"), "iCupom"), 1);
  EXPECT_LT(LeastFor(*FindFunction("Atv"), "iCupom"), 0);
}

TEST(ExitStatus, TellsALocalReplyFromAnApproval) {
  const struct { Kind kind; bool succeeded, local; ExitStatus status; } rows[] = {
      {Kind::kSale, true, false, kDone}, {Kind::kSale, false, false, kRefused},
      {Kind::kSale, false, true, kLocalReply}, {Kind::kPayment, false, true, kLocalReply},
      {Kind::kOutcome, true, true, kDone}, {Kind::kOutcome, false, false, kRefused},
      {Kind::kInteractive, false, false, kRefused}};
  for (const auto& [kind, succeeded, local, status] : rows)
    EXPECT_EQ(StatusOf(kind, succeeded, local), status);
  for (const char digit : string_view("01234567"))
    EXPECT_NE(ExitStatusHelp().find(string("  ") + digit + "  "), string::npos) << digit;
}

}  // namespace
