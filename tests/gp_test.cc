// The simulated GP as a program: its keys, through a pipe, and its books, as JSON.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "windows_world.h"

using namespace world;
using nlohmann::json;

namespace {

const fs::path kRequest = "C:\\Tef_Dial\\Req\\intpos.001";
const fs::path kAnswer = "C:\\Tef_Dial\\Resp\\Intpos.001";
const fs::path kOutput = "C:\\caixa\\saida.jsonl";
const fs::path kText = "C:\\caixa\\saida.txt";

class Gp : public testing::Test {
 protected:
  void SetUp() override {
    Clean();
    Install(kGpExe, fs::path("C:\\Lumetra") / kGpExe);
  }
  void TearDown() override { Kill(kGpExe); }

  void Run(const wchar_t* arguments) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE read = nullptr, write = nullptr;
    CreatePipe(&read, &write, &inherited, 0);
    const Handle input(read);
    keys_.reset(write);
    SetHandleInformation(write, HANDLE_FLAG_INHERIT, 0);
    const auto create = [&](const fs::path& path) {
      return Handle(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                CREATE_ALWAYS, 0, nullptr));
    };
    const Handle output = create(kOutput), text = create(kText);
    gp_ = Start(LR"(C:\Lumetra\clientorvane_simulador.exe --json )" + std::wstring(arguments),
                nullptr, output.get(), input.get(), text.get());
  }

  void Press(std::string_view keys) {
    DWORD done = 0;
    WriteFile(keys_.get(), keys.data(), static_cast<DWORD>(keys.size()), &done, nullptr);
  }

  // Until the last of the keys was understood as this.
  void Choose(std::string_view keys, const std::string& outcome) {
    Press(keys);
    EXPECT_TRUE(Eventually([&] {
      return Read(kText).ends_with("Próximo pedido: " + outcome + "\n");
    })) << keys;
  }

  // Written whole, and taken.
  static void Send(const std::string& record) {
    Write("C:\\caixa\\pedido", record + "999-999 = 0\r\n");
    fs::rename("C:\\caixa\\pedido", kRequest);
    EXPECT_TRUE(Eventually([] { return !fs::exists(kRequest); })) << record;
  }
  static void Sell(int coupon, int cents) {
    Send("000-000 = CRT\r\n001-000 = " + std::to_string(coupon) +
         "\r\n003-000 = " + std::to_string(cents) + "\r\n800-001 = 0\r\n");
  }
  static void Settle(const char* outcome, int coupon) {
    Send("000-000 = " + std::string(outcome) + "\r\n001-000 = " + std::to_string(coupon) + "\r\n");
  }
  // Whether a sale was approved.
  static bool Sold(int coupon, int cents) {
    Sell(coupon, cents);
    EXPECT_TRUE(Eventually([] { return fs::exists(kAnswer); })) << coupon;
    const std::string answer = Read(kAnswer);
    fs::remove(kAnswer);
    return answer.find("009-000 = 0\r\n") != std::string::npos;
  }

  // The exit code, and the books that were the last line.
  std::pair<DWORD, json> End(const char* keys = "") {
    Press(keys);
    const DWORD code = ExitCodeOf(gp_);
    std::string lines = Read(kOutput);
    lines.pop_back();
    return {code, json::parse(lines.substr(lines.rfind('\n') + 1))};
  }

 private:
  Handle keys_, gp_;
};

TEST_F(Gp, TakesTheOutcomeOfTheNextRequestFromAKey) {
  Run(L"--teclas");
  Choose("n", "recusa");
  EXPECT_FALSE(Sold(1, 1000));
  EXPECT_TRUE(Sold(2, 1000));  // one request only
  Choose("xsA", "aprova com comprovante");
  EXPECT_TRUE(Sold(3, 1002));  // the last key, before the cents
  Choose("n", "recusa");
  Settle("CNF", 2);  // has no answer, and leaves the key to
  EXPECT_FALSE(Sold(4, 1000));
  Choose("d", "aprova depois de 3 s");
  const auto asked = std::chrono::steady_clock::now();
  EXPECT_TRUE(Sold(5, 1000));
  EXPECT_GE(std::chrono::steady_clock::now() - asked, 3s);
  Choose("s", "recebe e nunca responde");
  Sell(6, 1000);
  Settle("CNF", 5);
  Settle("CNF", 5);
  Press("r");
  EXPECT_TRUE(Eventually([] { return Read(kOutput).ends_with('\n'); }));
  Settle("NCN", 6);
  const auto [code, books] = End("q");
  EXPECT_EQ(code, 5u);
  EXPECT_FALSE(fs::exists(kAnswer));
  std::string results, findings;
  for (const json& sale : books["vendas"]) results += sale["resultado"].get<std::string>() + ", ";
  for (const json& found : books["achados"])
    findings += found["id"].get<std::string>() + " " + found["cupom"].get<std::string>() + ", ";
  EXPECT_EQ(results, "recusada, aprovada, aprovada, recusada, aprovada, sem resposta, ");
  EXPECT_EQ(findings, "dois_desfechos 5, sem_desfecho 3, ");
  const std::string output = Read(kOutput);
  EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 2);
}

TEST_F(Gp, GoesOnWithTheBooksOfOneThatWasEnded) {
  Run(L"--teclas");
  EXPECT_TRUE(Sold(1, 1000));
  Choose("m", "recebe e encerra o GP sem responder");
  Sell(2, 1000);
  EXPECT_EQ(End().first, 4u);
  Run(L"--teclas STARTAUTO");
  Settle("CNF", 1);
  Settle("NCN", 2);
  auto [code, books] = End("\x1B");
  EXPECT_EQ(code, 0u);
  EXPECT_EQ(books["achados"].dump(), "[]");
  EXPECT_EQ(books["vendas"].size(), 2u);
  Run(L"--livro");
  EXPECT_EQ(End(), std::pair(code, books));
  Run(L"--teclas");  // by hand: a new day
  EXPECT_EQ(End("q").second["vendas"].size(), 0u);
}

}  // namespace
