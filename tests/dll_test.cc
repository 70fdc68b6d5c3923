// The real Caixora.dll with real files, the simulated programs and other real processes.
#include <gtest/gtest.h>

#include <atomic>
#include <optional>

#include "caixora.h"
#include "failing_memory.h"
#include "support/ansi.h"
#include "windows_world.h"

using namespace world;
using caixora::operator""_ansi;

namespace {

std::optional<Library> dll;
#define CALL(name) dll->Find(&name, #name)

constexpr char kMerchant[] = "12.345.678/0001-95";
constexpr char kPartner[] = "11.222.333/0001-81";
const fs::path kRequest = "C:\\Tef_Dial\\Req\\intpos.001";
const fs::path kAnswer = "C:\\Tef_Dial\\Resp\\intpos.001";
const fs::path kGpLog = "C:\\Lumetra\\Log\\Caixora.log";
const fs::path kInert = "C:\\taskkill_inerte.txt";  // taskkill records requests and ends nothing
const std::string kInactive(u8"S;0;GP NÃO ATIVO"_ansi);
const std::string kNotCreated(
    u8"S;0;ERRO AO CRIAR ARQUIVO TEF, VERIFIQUE AS PERMISSÕES no DIRETORIO C:\\Tef_dial"_ansi);
const std::string kEmptyAnswer = "S;2;\r\nC;;;;;;;;1;;;;;;;";
const std::string kDone = "S;2;COMANDO COM SUCESSO\r\nC;17;;;;;;;1;;;;;;;";

std::string Sell(double amount, const char* merchant = kMerchant) {
  return Library::Take(CALL(VendeCreditoVista)(merchant, kPartner, amount, 17, 3));
}
std::string Confirm() { return Library::Take(CALL(Confirmar)(kMerchant, kPartner, 17)); }
std::string Await() { return Library::Take(CALL(AguardaFuncaoQJInterativo)()); }

std::string LastRequest() {
  const std::string all = Read("C:\\Lumetra\\Pedidos.txt");
  return all.substr(all.rfind("====") + 15);  // "==== hh:mm:ss" and a line end
}

bool Contains(const fs::path& file, std::string_view text) {
  return Read(file).find(text) != std::string::npos;
}

class Dll : public testing::Test {
 protected:
  void SetUp() override {
    Clean();
    Install(kGpExe, fs::path("C:\\Lumetra") / kGpExe);
    dll.emplace(OwnFolder() / "Caixora.dll");
    ASSERT_NE(dll->module(), nullptr);
  }
  void TearDown() override {
    dll.reset();
    Kill(kGpExe);
  }
  // A GP that works on the exchange folder, or one that is merely there while a test plays its
  // part.
  static void StartGp(bool idle = false) {
    Start(LR"(C:\Lumetra\clientorvane_simulador.exe STARTAUTO)" +
          std::wstring(idle ? LR"( --pasta C:\Outra)" : L""));
    ASSERT_TRUE(Eventually(
        [idle] { return Count(kGpExe) == 1 && (!idle || fs::exists("C:\\Outra\\Resp")); }));
  }
};

TEST_F(Dll, ExportsEachNameUnderItsOrdinal) {
  WORD ordinal = 0;
  for (const char* name : {"VendeCreditoVista",
                           "VendeCreditoParcLoja",
                           "VendeCreditoParcAdm",
                           "VendeDebito",
                           "Cancelar",
                           "Adm",
                           "Confirmar",
                           "Desfazimento",
                           "SolicitarCPF",
                           "Relatorio",
                           "VendeCredito",
                           "Atv",
                           "Teste",
                           "MenuPrivate",
                           "Reimpressao",
                           "VendeDebitoAVista",
                           "RecargaCelular",
                           "LinkPagamento",
                           "VendeCarteiraDigitalPix",
                           "ListarLinkPagamentoPago",
                           "VendeFrotaCompleto",
                           "ReimpressaoDireto",
                           "SolicitarCNPJ",
                           "SolicitarDocumento",
                           "ConfiguraIntTefInterativo",
                           "IniciaFuncaoQJInterativo",
                           "AguardaFuncaoQJInterativo",
                           "ContinuaFuncaoQJInterativo",
                           "FinalizaFuncaoQJInterativo",
                           "CancelarFluxoQJInterativo",
                           "ParceleMais",
                           "ManutencaoLinkPagamento"})
    EXPECT_EQ(GetProcAddress(dll->module(), name),
              GetProcAddress(dll->module(), MAKEINTRESOURCEA(++ordinal)))
        << name;
}

TEST_F(Dll, SellsAndReturnsWhatTheGpSays) {
  EXPECT_EQ(Sell(12.5), kInactive);  // nobody runs: the library starts the GP
  ASSERT_TRUE(Eventually([] { return Count(kGpExe) == 1; }));
  const std::string approved = Sell(12.5);
  EXPECT_EQ(approved.substr(0, 33), "S;1;TRANSA\xC7\xC3O APROVADA\r\nC;17;1250") << approved;
  EXPECT_NE(approved.find("\r\nI;VALOR: R$ 12,50\r\n"), approved.npos);
  EXPECT_EQ(LastRequest(),
            "000-000 = CRT\r\n001-000 = 17\r\n003-000 = 1250\r\n800-001 = 0\r\n800-002 = 0\r\n"
            "800-005 = 12345678000195\r\n800-006 = 3\r\n999-999 = 0\r\n");
  const struct {
    double amount;
    std::string_view result;
  } rows[] = {
      {1.01, "S;2;TRANSA\xC7\xC3O APROVADA\r\nC;17;101;"},
      {1.02, u8"S;0;TRANSAÇÃO NÃO AUTORIZADA"_ansi},
      {1.06, "S;1;TRANSA\xC7\xC3O APROVADA\r\nC;17;106;REDE SIMULADA;REDE SUBSTITUTA;"},
      {1.08, "S;0;transacao nao autorizada"},
      {1.04, kInactive},  // and is started again
  };
  for (const auto& row : rows) EXPECT_EQ(Sell(row.amount).substr(0, row.result.size()), row.result);
  EXPECT_TRUE(Eventually([] { return Count(kGpExe) == 1; }));
  EXPECT_TRUE(Contains(kGpLog, " ::" CAIXORA_VERSION ":: VERSAO SISTEMA PARCEIRO: 3.2.1-teste\r"))
      << Read(kGpLog).substr(0, 2000);
}

TEST_F(Dll, ConfirmsUndoesAndAnswersLiveness) {
  StartGp();
  EXPECT_EQ(Confirm(), kDone);
  EXPECT_EQ(LastRequest(),
            "000-000 =  CNF\r\n001-000 = 17\r\n800-005 = 12345678000195\r\n999-999 = 0\r\n");
  EXPECT_EQ(Library::Take(CALL(Desfazimento)(kMerchant, kPartner, 17)), kDone);
  Write("C:\\Tef_Dial\\Resp\\ativo.001", "009-000 = 9\r\n");
  EXPECT_EQ(Library::Take(CALL(Atv)(kMerchant, kPartner, 17, 3)),
            "S;2;GP ATIVO\r\nC;17;;;;;;;1;;;;;;;");
}

TEST_F(Dll, HostileTextsGoThroughWhole) {
  StartGp();
  Write("LD.txt", "DETALHADO");
  std::string text = "%s%n%%";
  for (int i = 0; i < 1 << 20; ++i) text += static_cast<char>(i % 255 + 1);
  const auto cancel = CALL(Cancelar);
  EXPECT_EQ(Library::Take(cancel(kMerchant, kPartner, 0, 1, text.c_str(), 2)).substr(0, 4), "S;1;");
  std::string on_disk;
  for (const char c : text) on_disk += c == '\n' ? "\r\n" : std::string(1, c);
  EXPECT_EQ(
      LastRequest(),
      "000-000 = CNC\r\n001-000 = 1\r\n800-005 = 12345678000195\r\n800-006 = 2\r\n800-007 = " +
          on_disk + "\r\n999-999 = 0\r\n");
  EXPECT_EQ(Sell(1, nullptr), u8"S;0;CNPJ DO CLIENTE INVÁLIDO"_ansi);
}

// A test plays the GP: takes the request, then does `answer`.
TEST_F(Dll, FaultsEndInTheirTexts) {
  const auto write = [](const std::string& bytes) { return [bytes] { Write(kAnswer, bytes); }; };
  const auto not_found_yet = [] { Eventually([] { return Contains(kGpLog, "Arquivo NULL"); }); };
  const std::string big(50 << 20, 'x');
  Handle held;
  const struct {
    const char* name;
    std::function<void()> before, answer;
    std::string result;
    bool stays = false;
  } rows[] = {
      {"no Req folder", [] { fs::remove_all("C:\\Tef_Dial\\Req"); }, {}, kNotCreated},
      {"request locked", [&] { held = Hold(kRequest, 0); }, {}, kNotCreated},
      {"a folder for the request", [] { fs::create_directories(kRequest); }, {}, kNotCreated},
      {"LD.txt locked, whatever it says",
       [&] {
         Write("LD.txt", "NADA");
         held = Hold("LD.txt", 0);
       },
       [] {
         EXPECT_TRUE(Contains(kGpLog, "VALIDOU DADOS"));
         Write(kAnswer, "009-000 = 0");
       },
       kEmptyAnswer},
      {"answer of 50 MB", {}, write("003-000 = 7\n" + big), "S;2;\r\nC;;7;;;;;;1;;;;;;;"},
      {"answer locked for a while",
       {},
       [&] {
         Write(kAnswer, "003-000 = 5");
         held = Hold(kAnswer, 0);
         not_found_yet();
         held.reset();
       },
       "S;2;\r\nC;;5;;;;;;1;;;;;;;"},
      {"answer is a folder, then the GP dies",
       {},
       [&] {
         fs::create_directories(kAnswer);
         not_found_yet();
         Kill(kGpExe);
       },
       kInactive},
      {"answer still held open stays on disk",
       {},
       [&] {
         held = Hold(kAnswer, FILE_SHARE_READ | FILE_SHARE_WRITE);
         DWORD written;
         WriteFile(held.get(), "003-000 = 5\r\n", 13, &written, nullptr);
       },
       "S;2;\r\nC;;5;;;;;;1;;;;;;;",
       true},
      {"GP dies after taking", {}, [] { Kill(kGpExe); }, kInactive},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    TearDown();
    SetUp();
    StartGp(/*idle=*/true);
    if (row.before) row.before();
    std::atomic<bool> over = false;
    std::thread gp([&] {
      if (!row.answer) return;
      while (!over && Read(kRequest).empty()) std::this_thread::sleep_for(10ms);
      std::error_code held_open;
      while (!over && !fs::remove(kRequest, held_open)) std::this_thread::sleep_for(10ms);
      if (!over) row.answer();
    });
    EXPECT_EQ(Sell(1), row.result);
    over = true;
    gp.join();
    EXPECT_EQ(row.stays, Read(kAnswer) == "003-000 = 5\r\n");
    held.reset();
  }
}

TEST_F(Dll, FullDiskLeavesNoHalfRequest) {
  ULARGE_INTEGER total{};
  GetDiskFreeSpaceExA("F:\\", nullptr, &total, nullptr);
  if (total.QuadPart == 0 || total.QuadPart > 1 << 20)
    GTEST_SKIP() << "F: is no small disk that could be filled";
  fs::remove("C:\\Tef_Dial\\Tef_Dial.exe");
  fs::create_directories("F:\\Tef_Dial\\Req");
  Write("F:\\Tef_Dial\\Tef_Dial.exe", "");
  Write("F:\\fill", std::string(total.QuadPart, 'x'));
  StartGp(/*idle=*/true);
  EXPECT_EQ(Sell(1), kNotCreated.substr(0, kNotCreated.size() - 11) + "F:\\Tef_dial");
  EXPECT_FALSE(fs::exists("F:\\Tef_Dial\\Req\\intpos.001"));
  for (const char* path : {"F:\\fill", "F:\\Tef_Dial"}) fs::remove_all(path);
}

TEST_F(Dll, EndsTheHostWithoutItsLog) {
  constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE;
  const struct {
    const char* name;
    DWORD share;  // of another program that has the log open; kAll + 1: a file is in the folder's
                  // place
    DWORD status;
  } rows[] = {{"no folder possible", kAll + 1, 1},
              {"held", 0, 1},
              {"held against writers", FILE_SHARE_READ, 1},
              {"held against readers", FILE_SHARE_WRITE, 1},
              {"watched", kAll, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Clean();
    fs::create_directories("Log");
    Handle held;
    if (row.share > kAll) {
      fs::remove_all("Log");
      Write("Log", "a file");
    } else {
      held = Hold("Log\\Caixora.log", row.share);
    }
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    Handle output(CreateFileA("saida.txt", GENERIC_WRITE, FILE_SHARE_READ, &inheritable,
                              CREATE_ALWAYS, 0, nullptr));
    EXPECT_EQ(ExitCodeOf(Start(HostCommand(L"host.exe", L"vender"), nullptr, output.get())),
              row.status);
    output.reset();
    const std::string_view said = u8"não foi possível criar o log!"_ansi;
    EXPECT_EQ(Read("saida.txt"), row.status == 1 ? said : "");
  }
}

TEST_F(Dll, LoadedAndFreedLeavesNothing) {
  Write("LD.txt", "off");
  const auto cycle = [](int times, bool fails) {
    for (int i = 0; i < times; ++i) {
      dll.emplace(OwnFolder() / "Caixora.dll");
      if (fails) {
        FailingMemory memory(dll->module());
        memory.FailFrom(i % 7);
        EXPECT_EQ(Sell(1, "1").substr(0, 4), "S;0;");
        EXPECT_EQ(CALL(ContinuaFuncaoQJInterativo)("1"), 36);
      }
      dll.reset();
    }
  };
  fs::create_directories("C:\\Resp");
  for (const bool fails : {false, true}) {
    cycle(50, fails);  // whatever the system keeps for good
    // Wine 10 takes memory for itself in steps, over some thousand loads of whatever DLL. What this
    // one left would grow every time.
    bool grows = true;
    for (int round = 0; grows && round < 6; ++round) {
      const Holdings before;
      cycle(1300, fails);
      const Holdings after;
      std::printf(
          "1300 loads%s: %zu -> %zu bytes of heap, %d -> %d handles, next slot %lu -> %lu\n",
          fails ? " with failing calls" : "", before.heap, after.heap, before.handles,
          after.handles, before.slot, after.slot);
      EXPECT_EQ(after.handles, before.handles);
      EXPECT_EQ(after.slot, before.slot);
      grows = after.heap > before.heap + 1024;
    }
    EXPECT_FALSE(grows);
  }
}

class DllFlow : public Dll {
 protected:
  void SetUp() override {
    Dll::SetUp();
    Install("Trevix.exe", "C:\\Trevix\\Trevix.exe");
    Install("Email.exe", "C:\\Trevix\\Email.exe");
    fs::create_directories("C:\\Trevix\\Resp");
    Write("ConfigQJ.ini", "CAMINHO=C:\\Trevix\r\n");
    // A request to end companions that comes late would end the one that a test has just started.
    Write(kInert, "");
  }
  static int Begin(const char* scenario) {
    return CALL(IniciaFuncaoQJInterativo)(20, kPartner, 1, scenario, "1,00", "000545", "20210325",
                                          "009", "652", 7, "");
  }
  static int Finish() {
    return CALL(FinalizaFuncaoQJInterativo)(99, kPartner, 1, "", "1,00", "000545", "20210325",
                                            "009", "652", 7, "");
  }
  static std::string NextText() {
    std::string text;
    Eventually([&] { return !(text = Await()).empty(); });
    return text;
  }
  static bool WasStartedWith(std::string_view line) {
    return Eventually([line] { return Contains("C:\\Trevix\\Trevix_parametros.txt", line); });
  }
};

// Every allocation failing once, and every one from there on, in calls that go their whole way.
// Waits are short in this DLL and nothing else is different.
TEST_F(DllFlow, EndsInTextOrCodeWithoutMemory) {
  StartGp();
  ASSERT_TRUE(Eventually([] { return Sell(1).starts_with("S;1;"); }));
  dll.emplace(OwnFolder() / "Caixora_rapida.dll");
  FailingMemory memory(dll->module());
  const struct {
    const char* name;
    std::function<bool()> works;  // true when the call ended in one of its texts or codes
    long step;
  } rows[] = {
      {"sale", [] { return Sell(1).starts_with("S;"); }, 1},
      {"confirmation", [] { return Confirm().starts_with("S;"); }, 1},
      {"start", [] { return Begin("rapida") >= 0; }, 3},
      {"question", [] { return Await() != "(null)"; }, 1},
      {"answer", [] { return CALL(ContinuaFuncaoQJInterativo)("1") >= 0; }, 1},
      {"finish", [] { return Finish() >= 0; }, 3},
      {"cancel", [] { return CALL(CancelarFluxoQJInterativo)() >= 0; }, 3},
  };
  for (const auto& row : rows) {
    long faults = 0;
    for (long n = 0;; n += row.step) {
      for (const bool for_good : {false, true}) {
        for_good ? memory.FailFrom(n) : memory.FailOnce(n);
        EXPECT_TRUE(row.works()) << row.name << ", allocation " << n;
        faults += memory.Failed();
        Kill("Trevix.exe");
      }
      if (memory.Failed() == 0) break;
    }
    memory.FailOnce(-1);
    std::printf("%s: %ld allocations failed\n", row.name, faults);
    EXPECT_GT(faults, 10) << row.name;
  }
  EXPECT_EQ(std::string(CALL(Teste)()), "OK");
  EXPECT_TRUE(Eventually([] { return Sell(1).starts_with("S;1;"); }));
}

TEST_F(DllFlow, RunsAskedAnsweredAndSent) {
  ASSERT_EQ(Begin(""), 0);
  EXPECT_NE(NextText(), "");
  EXPECT_EQ(Read("C:\\Trevix\\Trevix_parametros.txt"),
            u8"20¬11222333000181¬1¬¬1,00¬000545¬20210325¬1¬009¬652¬1¬7\r\n"_ansi);
  EXPECT_EQ(CALL(ContinuaFuncaoQJInterativo)("3"), 0);
  EXPECT_NE(NextText(), "");
  EXPECT_EQ(CALL(ContinuaFuncaoQJInterativo)("1"), 0);
  EXPECT_NE(NextText().find("[RETORNO]"), std::string::npos);
  EXPECT_TRUE(Eventually([] { return Count("Trevix.exe") == 0; }));
  EXPECT_EQ(Finish(), 0);
  EXPECT_TRUE(Eventually([] {
    return Read("C:\\Trevix\\Email_recebido.txt") ==
           "TRDT|20210325||20210325||True|11222333000181|LOAD|009|652\r\n";
  }));
  EXPECT_EQ(Read("C:\\taskkill.log").substr(0, 24), "/F /T /IM Trevix.exe\r\n/F");
}

TEST_F(DllFlow, IsCancelledAndCrashes) {
  ASSERT_EQ(Begin("longa"), 0);
  ASSERT_TRUE(WasStartedWith(u8"20¬11222333000181¬1¬longa¬"_ansi));
  fs::remove(kInert);
  // On a busy machine the check for what still runs comes before what ends it: 43, and again.
  EXPECT_TRUE(Eventually([] { return CALL(CancelarFluxoQJInterativo)() == 0; }));
  EXPECT_TRUE(Eventually([] { return Count("taskkill.exe") + Count("Trevix.exe") == 0; }));
  EXPECT_EQ(Await(), u8"[ERROABORTAR]#Trevix não está em execução"_ansi);
  Write(kInert, "");
  ASSERT_EQ(Begin("queda"), 0);
  EXPECT_NE(NextText(), "");
  EXPECT_EQ(CALL(ContinuaFuncaoQJInterativo)("1"), 0);
  EXPECT_TRUE(Eventually([] { return Count("Trevix.exe") == 0; }));
  EXPECT_EQ(NextText(), u8"[ERROABORTAR]#Trevix não está em execução"_ansi);
  EXPECT_EQ(CALL(ConfiguraIntTefInterativo)(), 0);
  EXPECT_TRUE(WasStartedWith(u8"\n20¬11222333000181¬1¬999¬"_ansi));
}

// The codes that only a system can give; memory shows the others.
TEST_F(DllFlow, RefusesWhatTheSystemRefuses) {
  ASSERT_EQ(Begin("longa"), 0);
  ASSERT_TRUE(WasStartedWith("longa"));
  const fs::path answer = "C:\\Trevix\\Resp\\Resp001.txt";
  Handle held = Hold(answer, FILE_SHARE_READ);
  EXPECT_EQ(CALL(ContinuaFuncaoQJInterativo)("1"), 36);
  held.reset();
  EXPECT_EQ(CALL(ContinuaFuncaoQJInterativo)("2"), 0);
  EXPECT_EQ(Read(answer), "12") << "the staged answer stands in front";
  fs::remove_all("C:\\Trevix\\Resp");
  EXPECT_EQ(CALL(ContinuaFuncaoQJInterativo)("1"), 35);
  EXPECT_EQ(CALL(CancelarFluxoQJInterativo)(), 43);
  Kill("Trevix.exe");
  fs::remove("C:\\Trevix\\Email.exe");
  EXPECT_EQ(Finish(), 39);
  Write("C:\\Trevix\\Trevix.exe", "not a program");
  EXPECT_EQ(Begin(""), 33);
}

TEST_F(DllFlow, NeedsAdministratorRights) {
  HANDLE own, opened = nullptr;
  TOKEN_LINKED_TOKEN linked{};
  DWORD size;
  OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, &own);
  const Handle token(own);
  GetTokenInformation(own, TokenLinkedToken, &linked, sizeof linked, &size);
  const Handle without_rights(linked.LinkedToken);
  DuplicateTokenEx(without_rights.get(), TOKEN_ALL_ACCESS, nullptr, SecurityImpersonation,
                   TokenPrimary, &opened);
  const Handle primary(opened);
  EXPECT_EQ(ExitCodeOf(Start(HostCommand(L"host.exe", L"iniciar"), primary.get())), 42u);
  EXPECT_FALSE(fs::exists("C:\\taskkill.log"));
}

// The library's texts are Windows-1252 in a host whose ANSI code page is UTF-8, too.
TEST_F(DllFlow, SpeaksItsOwnCodePageInEveryHost) {
  const fs::path folder = L"C:\\Tr\u00E9vix";
  Install("Trevix.exe", folder / "Trevix.exe");
  Write("ConfigQJ.ini", u8"CAMINHO=C:\\Trévix\r\n"_ansi);
  EXPECT_EQ(ExitCodeOf(Start(HostCommand(L"host_utf8.exe", L"fluxo"))), 0u);
  EXPECT_TRUE(Eventually([&] {
    return Contains(folder / "Trevix_parametros.txt",
                    u8"20¬11222333000181¬1¬rapida¬1,00¬Ãç¬¬1¬¬¬1¬7\r\n"_ansi);
  }));
  EXPECT_TRUE(Contains(L"C:\\Tr\u00E9vixLog\\Caixora.log", u8"Taskkill no Trevix para não"_ansi));
}

}  // namespace
