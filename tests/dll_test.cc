// The real Caixora.dll with real files, the simulated programs and other real processes.
#include <gtest/gtest.h>

#include <atomic>

#include "caixora.h"
#include "support/ansi.h"
#include "windows_world.h"
// After windows.h, which it needs.
#include <oleauto.h>

using namespace world;
using caixora::operator""_ansi;

namespace {

HMODULE dll;

template <class Function>
Function Export(Function, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(dll, name)));
}
#define CALL(name) Export(&name, #name)

std::string Take(CaixoraTexto text) {
  if (text == nullptr) return "(null)";
  std::string bytes(reinterpret_cast<const char*>(text), SysStringByteLen(text));
  SysFreeString(text);
  return bytes;
}

constexpr char kClient[] = "12.345.678/0001-95";
constexpr char kPartner[] = "11.222.333/0001-81";
const fs::path kRequest = "C:\\Tef_Dial\\Req\\intpos.001";
const fs::path kAnswer = "C:\\Tef_Dial\\Resp\\intpos.001";
const std::string kInactive(u8"S;0;GP NÃO ATIVO"_ansi);
const std::string kNotCreated = std::string(u8"S;0;ERRO AO CRIAR ARQUIVO TEF, VERIFIQUE AS PERMISSÕES no DIRETORIO "_ansi) + "C:\\Tef_dial";
const std::string kEmptyAnswer = "S;2;\r\nC;;;;;;;;1;;;;;;;";

std::string Sell(double amount, const char* client = kClient) {
  return Take(CALL(VendeCreditoVista)(client, kPartner, amount, 17, 3));
}

std::string LastRequest() {
  const std::string all = Read("C:\\Lumetra\\Pedidos.txt");
  return all.substr(all.rfind("====") + 15);  // "==== hh:mm:ss" and a line end
}

class Dll : public testing::Test {
 protected:
  void SetUp() override {
    Clean();
    Install(kGpExe, fs::path("C:\\Lumetra") / kGpExe);
    dll = LoadLibraryA((OwnFolder() / "Caixora.dll").string().c_str());
    ASSERT_NE(dll, nullptr);
  }
  void TearDown() override {
    FreeLibrary(dll);
    Kill(kGpExe);
  }
  // A GP that works on the exchange folder, or one that is merely there while a test plays its part.
  void StartGp(bool idle = false) {
    CloseHandle(Start("C:\\Lumetra\\" + std::string(kGpExe) + " STARTAUTO" + (idle ? " --pasta C:\\Outra" : "")));
    ASSERT_TRUE(Eventually([] { return Count(kGpExe) == 1; }));
    ASSERT_TRUE(!idle || Eventually([] { return fs::exists("C:\\Outra\\Resp"); }));
  }
};

TEST_F(Dll, ExportsEachNameUnderItsOrdinal) {
  const char* const names[] = {
      "VendeCreditoVista", "VendeCreditoParcLoja", "VendeCreditoParcAdm", "VendeDebito", "Cancelar", "Adm", "Confirmar", "Desfazimento",
      "SolicitarCPF", "Relatorio", "VendeCredito", "Atv", "Teste", "MenuPrivate", "Reimpressao", "VendeDebitoAVista", "RecargaCelular",
      "LinkPagamento", "VendeCarteiraDigitalPix", "ListarLinkPagamentoPago", "VendeFrotaCompleto", "ReimpressaoDireto", "SolicitarCNPJ",
      "SolicitarDocumento", "ConfiguraIntTefInterativo", "IniciaFuncaoQJInterativo", "AguardaFuncaoQJInterativo", "ContinuaFuncaoQJInterativo",
      "FinalizaFuncaoQJInterativo", "CancelarFluxoQJInterativo", "ParceleMais", "ManutencaoLinkPagamento"};
  WORD ordinal = 0;
  for (const char* name : names) EXPECT_EQ(GetProcAddress(dll, name), GetProcAddress(dll, MAKEINTRESOURCEA(++ordinal))) << name;
}

TEST_F(Dll, SellsAndReturnsWhatTheGpSays) {
  EXPECT_EQ(Sell(12.5), kInactive);  // nobody runs: the library starts the GP
  ASSERT_TRUE(Eventually([] { return Count(kGpExe) == 1; }));
  const std::string request = "000-000 = CRT\r\n001-000 = 17\r\n003-000 = 1250\r\n800-001 = 0\r\n800-002 = 0\r\n800-005 = 12345678000195\r\n800-006 = 3\r\n999-999 = 0\r\n";
  const std::string approved = Sell(12.5);
  EXPECT_EQ(approved.substr(0, 33), "S;1;TRANSA\xC7\xC3O APROVADA\r\nC;17;1250") << approved;
  EXPECT_NE(approved.find("\r\nI;VALOR: R$ 12,50\r\n"), approved.npos);
  EXPECT_EQ(LastRequest(), request);
  const struct { double amount; std::string_view result; } rows[] = {
      {1.01, "S;2;TRANSA\xC7\xC3O APROVADA\r\nC;17;101;"},
      {1.02, u8"S;0;TRANSAÇÃO NÃO AUTORIZADA"_ansi},
      {1.06, "S;1;TRANSA\xC7\xC3O APROVADA\r\nC;17;106;REDE SIMULADA;REDE SUBSTITUTA;"},
      {1.08, "S;0;transacao nao autorizada"},
      {1.04, kInactive},  // and is started again
  };
  for (const auto& row : rows) EXPECT_EQ(Sell(row.amount).substr(0, row.result.size()), row.result);
  EXPECT_TRUE(Eventually([] { return Count(kGpExe) == 1; }));
  EXPECT_EQ(fs::exists(kRequest), false);
  const std::string log = Read("C:\\Lumetra\\Log\\Caixora.log");
  EXPECT_NE(log.find(" ::" CAIXORA_VERSION ":: VERSAO SISTEMA PARCEIRO: 3.2.1-teste\r\n"), log.npos) << log.substr(0, 2000);
}

TEST_F(Dll, ConfirmsUndoesAndAnswersLiveness) {
  StartGp();
  const auto by_ordinal = reinterpret_cast<decltype(&Confirmar)>(reinterpret_cast<void*>(GetProcAddress(dll, MAKEINTRESOURCEA(7))));
  const std::string done = "S;2;COMANDO COM SUCESSO\r\nC;17;;;;;;;1;;;;;;;";
  EXPECT_EQ(Take(by_ordinal(kClient, kPartner, 17)), done);
  EXPECT_EQ(LastRequest(), "000-000 =  CNF\r\n001-000 = 17\r\n800-005 = 12345678000195\r\n999-999 = 0\r\n");
  EXPECT_EQ(Take(CALL(Desfazimento)(kClient, kPartner, 17)), done);
  Write("C:\\Tef_Dial\\Resp\\ativo.001", "009-000 = 9\r\n");
  EXPECT_EQ(Take(CALL(Atv)(kClient, kPartner, 17, 3)), "S;2;GP ATIVO\r\nC;17;;;;;;;1;;;;;;;");
  EXPECT_EQ(std::string(CALL(Teste)()), "OK");
}

TEST_F(Dll, HostileTextsGoThroughWhole) {
  StartGp();
  Write("LD.txt", "DETALHADO");
  std::string text = "%s%n%%";
  for (int i = 0; i < 1 << 20; ++i) text += static_cast<char>(i % 255 + 1);
  EXPECT_EQ(Take(CALL(Cancelar)(kClient, kPartner, 0, 1, text.c_str(), 2)).substr(0, 4), "S;1;");
  std::string on_disk;
  for (const char c : text) on_disk += c == '\n' ? "\r\n" : std::string(1, c);
  EXPECT_EQ(LastRequest(), "000-000 = CNC\r\n001-000 = 1\r\n800-005 = 12345678000195\r\n800-006 = 2\r\n800-007 = " + on_disk + "\r\n999-999 = 0\r\n");
  EXPECT_EQ(Sell(1, nullptr), u8"S;0;CNPJ DO CLIENTE INVÁLIDO"_ansi);
}

// A test plays the GP: takes the request, then does `answer`.
TEST_F(Dll, FaultsEndInTheirTexts) {
  const auto write = [](const std::string& bytes) { return [bytes] { Write(kAnswer, bytes); }; };
  const std::string big(50 << 20, 'x');
  static std::unique_ptr<Holding> holding;
  const struct { const char* name; std::function<void()> before; std::function<void()> answer; std::string result; } rows[] = {
      {"no Req folder", [] { fs::remove_all("C:\\Tef_Dial\\Req"); }, {}, kNotCreated},
      {"Req folder goes while settling", [] { std::thread([] { std::this_thread::sleep_for(500ms); fs::remove_all("C:\\Tef_Dial\\Req"); }).detach(); }, {}, kNotCreated},
      {"request locked", [] { holding = std::make_unique<Holding>(kRequest, 0); }, {}, kNotCreated},
      {"a folder for the request", [] { fs::create_directories(kRequest); }, {}, kNotCreated},
      {"LD.txt locked", [] { holding = std::make_unique<Holding>("LD.txt", 0); }, write("009-000 = 0"), kEmptyAnswer},
      {"answer empty", {}, write(""), kEmptyAnswer},
      {"answer of 50 MB", {}, write("003-000 = 7\n" + big), "S;2;\r\nC;;7;;;;;;1;;;;;;;"},
      {"answer locked for a second", {}, [] {
         Write(kAnswer, "003-000 = 5");
         holding = std::make_unique<Holding>(kAnswer, 0);
         std::thread([] { std::this_thread::sleep_for(1s); holding->Release(); }).detach();
       }, "S;2;\r\nC;;5;;;;;;1;;;;;;;"},
      {"answer is a folder, then the GP dies", {}, [] { fs::create_directories(kAnswer); std::this_thread::sleep_for(500ms); Kill(kGpExe); }, kInactive},
      {"answer in pieces stays on disk", {}, [] {
         holding = std::make_unique<Holding>(kAnswer, FILE_SHARE_READ | FILE_SHARE_WRITE);
         DWORD written;
         WriteFile(holding->handle(), "003-000 = 5\r\n", 13, &written, nullptr);
       }, "S;2;\r\nC;;5;;;;;;1;;;;;;;"},
      {"GP dies while settling", [] { std::thread([] { std::this_thread::sleep_for(300ms); Kill(kGpExe); }).detach(); }, {}, kInactive},
      {"GP dies after taking", {}, [] { Kill(kGpExe); }, kInactive},
      {"GP answers and dies", {}, [] { Write(kAnswer, "003-000 = 5"); Kill(kGpExe); }, "S;2;\r\nC;;5;;;;;;1;;;;;;;"},
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
      while (!over && !fs::remove(kRequest)) std::this_thread::sleep_for(10ms);
      row.answer();
    });
    EXPECT_EQ(Sell(1), row.result);
    over = true;
    gp.join();
    EXPECT_EQ(row.name == std::string("answer in pieces stays on disk"), Read(kAnswer) == "003-000 = 5\r\n");
    holding.reset();
  }
}

TEST_F(Dll, FullDiskLeavesNoHalfRequest) {
  ULARGE_INTEGER total{};
  GetDiskFreeSpaceExA("F:\\", nullptr, &total, nullptr);
  if (total.QuadPart == 0 || total.QuadPart > 1 << 20) GTEST_SKIP() << "F: is no small disk that could be filled";
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
  fs::remove_all("C:\\caixa\\Log");
  Write("C:\\caixa\\Log", "a file where the folder should be");
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  const HANDLE output = CreateFileA("C:\\caixa\\saida.txt", GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_ALWAYS, 0, nullptr);
  EXPECT_EQ(ExitCodeOf(Start((OwnFolder() / "dll_test.exe").string() + " --vender", nullptr, output)), 1u);
  CloseHandle(output);
  EXPECT_EQ(Read("C:\\caixa\\saida.txt"), u8"não foi possível criar o log!"_ansi);
}

TEST_F(Dll, LeaksNothingOverManyCallsAndLoads) {
  const auto refuse = [](int calls) { for (int i = 0; i < calls; ++i) EXPECT_EQ(Sell(1, "1").substr(0, 8), "S;0;CNPJ"); };
  refuse(100);  // whatever the runtime and the system keep for good
  const int handles = OpenHandles();
  const std::size_t memory = PrivateBytes();
  refuse(1000);
  std::printf("1000 refused calls: handles %d -> %d, private bytes %zu -> %zu\n", handles, OpenHandles(), memory, PrivateBytes());
  EXPECT_LE(OpenHandles(), handles);
  EXPECT_LE(PrivateBytes(), memory + (256 << 10));
  for (int i = 0; i < 100; ++i) {
    FreeLibrary(dll);
    dll = LoadLibraryA((OwnFolder() / "Caixora.dll").string().c_str());
    ASSERT_NE(dll, nullptr);
  }
  EXPECT_LE(OpenHandles(), handles + 2);
}

class DllFlow : public Dll {
 protected:
  void SetUp() override {
    Dll::SetUp();
    Install("Trevix.exe", "C:\\Trevix\\Trevix.exe");
    Install("Email.exe", "C:\\Trevix\\Email.exe");
    fs::create_directories("C:\\Trevix\\Resp");
    Write("ConfigQJ.ini", "CAMINHO=C:\\Trevix\r\n");
  }
  static int Begin(const char* scenario, decltype(&IniciaFuncaoQJInterativo) run = CALL(IniciaFuncaoQJInterativo), std::uint32_t function = 20,
                   const char* amount = "1,00", const char* cnpj = kPartner) {
    return run(function, cnpj, 1, scenario, amount, "000545", "20210325", "009", "652", 7, "");
  }
  static std::string NextText() {
    std::string text;
    Eventually([&] { return !(text = Take(CALL(AguardaFuncaoQJInterativo)())).empty(); });
    return text;
  }
};

TEST_F(DllFlow, RunsAskedAnsweredAndSent) {
  ASSERT_EQ(Begin(""), 0);
  EXPECT_NE(NextText(), "");
  EXPECT_EQ(Read("C:\\Trevix\\Trevix_parametros.txt"), u8"20¬11222333000181¬1¬¬1,00¬000545¬20210325¬1¬009¬652¬1¬7\r\n"_ansi);
  EXPECT_EQ(CALL(ContinuaFuncaoQJInterativo)("3"), 0);
  EXPECT_NE(NextText(), "");
  EXPECT_EQ(CALL(ContinuaFuncaoQJInterativo)("1"), 0);
  EXPECT_NE(NextText().find("[RETORNO]"), std::string::npos);
  EXPECT_EQ(Begin("", CALL(FinalizaFuncaoQJInterativo), 99), 0);
  EXPECT_EQ(Read("C:\\Trevix\\Email_recebido.txt"), "TRDT|20210325||20210325||True|11222333000181|LOAD|009|652\r\n");
  EXPECT_EQ(Read("C:\\taskkill.log").substr(0, 24), "/F /T /IM Trevix.exe\r\n/F");
}

TEST_F(DllFlow, IsCancelledAndCrashes) {
  ASSERT_EQ(Begin("longa"), 0);
  EXPECT_EQ(CALL(CancelarFluxoQJInterativo)(), 0);
  EXPECT_TRUE(Eventually([] { return Count("Trevix.exe") == 0; }));
  const std::string lines = Read("C:\\Trevix\\Trevix_parametros.txt");
  EXPECT_EQ(lines.substr(lines.find('\n') + 1), u8"800¬¬¬¬¬¬¬1¬¬¬1¬0\r\n"_ansi);
  EXPECT_EQ(Take(CALL(AguardaFuncaoQJInterativo)()), u8"[ERROABORTAR]#Trevix não está em execução"_ansi);
  ASSERT_EQ(Begin("queda"), 0);
  EXPECT_NE(NextText(), "");
  EXPECT_EQ(CALL(ContinuaFuncaoQJInterativo)("1"), 0);
  EXPECT_TRUE(Eventually([] { return Count("Trevix.exe") == 0; }));
  EXPECT_EQ(NextText(), u8"[ERROABORTAR]#Trevix não está em execução"_ansi);
  EXPECT_EQ(CALL(ConfiguraIntTefInterativo)(), 0);
  EXPECT_TRUE(Eventually([] { return Read("C:\\Trevix\\Trevix_parametros.txt").find(u8"\n20¬11222333000181¬1¬999¬"_ansi) != std::string::npos; }));
}

TEST_F(DllFlow, EveryRefusalHasItsCodeAndLogLine) {
  // The finish's line where it differs from the start's.
  const struct { int code; const char* amount; const char* cnpj; std::string_view line, finish_line; void (*spoil)(); } rows[] = {
      {30, "1,00", kPartner, u8"Erro - Não foi encontrado o caminho para o Trevix.exe"_ansi, {}, [] { Write("ConfigQJ.ini", "CAMINHO=\r\ncaminho=C:\\Trevix\r\nCAMINHO =C:\\Trevix"); }},
      {31, "1,00", kPartner, "ConfigQJ.ini vazio.", {}, [] { Write("ConfigQJ.ini", "CAMINHO==\r\n"); }},
      {32, "1,00", kPartner, u8"Trevix não Encontrado! - C:\\Trevix\\Trevix.exe"_ansi, "Trevix nao Encontrado! - C:\\Trevix\\Trevix.exe", [] { fs::remove("C:\\Trevix\\Trevix.exe"); }},
      {33, "1,00", kPartner, u8"Trevix.exe não está em execução"_ansi, u8"Trevix.exe nao está em execucao"_ansi, [] { Write("C:\\Trevix\\Trevix.exe", "not a program"); }},
      {37, "1,00", kPartner, "Erro na leitura do Arquivo ConfigQJ.ini", {}, [] { fs::remove("ConfigQJ.ini"); }},
      {38, "100", kPartner, "Valor com formato incorreto - Utilize virgula como separador 00,00", {}, [] { fs::remove("ConfigQJ.ini"); }},
      {40, "100", "12345678000100", "CNPJ Invalido ou no formato incorreto - Utilize no seguinte formato: 12345678000100", {}, [] {}},
      {40, "1,00", "abc", "CNPJ Invalido ou no formato incorreto - Utilize no seguinte formato: 12345678000100", {}, [] {}},
      {41, "1,00", kPartner, "Trevix.exe em Atualizacao", {}, [] { Write("C:\\Trevix\\IniciandoAtualizacao.txt", ""); }},
      {43, "1,00", kPartner, u8"Trevix.exe está em execução devido ao outra transacao"_ansi, {}, [] {
         Write("C:\\taskkill_inerte.txt", "");
         CloseHandle(Start(std::string("C:\\Trevix\\Trevix.exe ") + std::string(u8"1¬¬¬longa¬¬¬¬¬¬¬¬"_ansi)));
       }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.code);
    TearDown();
    SetUp();
    row.spoil();
    const auto logged = [](std::string_view line) {
      return (Read("Log\\Caixora.log") + Read("C:\\TrevixLog\\Caixora.log")).find(":: " + std::string(line)) != std::string::npos;
    };
    EXPECT_EQ(Begin("rapida", CALL(IniciaFuncaoQJInterativo), 20, row.amount, row.cnpj), row.code);
    EXPECT_TRUE(logged(row.line));
    EXPECT_EQ(Begin("rapida", CALL(FinalizaFuncaoQJInterativo), 99, row.amount, row.cnpj), row.code);
    EXPECT_TRUE(logged(row.finish_line.empty() ? row.line : row.finish_line));
  }
  EXPECT_EQ(CALL(CancelarFluxoQJInterativo)(), 43);
  TearDown();
  SetUp();
  ASSERT_EQ(Begin("longa"), 0);
  {
    const Holding held("C:\\Trevix\\Resp\\Resp001.txt", FILE_SHARE_READ);
    EXPECT_EQ(CALL(ContinuaFuncaoQJInterativo)("1"), 36);
  }
  fs::remove_all("C:\\Trevix\\Resp");
  EXPECT_EQ(CALL(ContinuaFuncaoQJInterativo)("1"), 35);
  fs::remove("C:\\Trevix\\Email.exe");
  EXPECT_EQ(Begin("", CALL(FinalizaFuncaoQJInterativo), 99), 39);
}

TEST_F(DllFlow, NeedsAdministratorRights) {
  HANDLE token, primary = nullptr;
  TOKEN_LINKED_TOKEN linked{};
  DWORD size;
  OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, &token);
  GetTokenInformation(token, TokenLinkedToken, &linked, sizeof linked, &size);
  DuplicateTokenEx(linked.LinkedToken, TOKEN_ALL_ACCESS, nullptr, SecurityImpersonation, TokenPrimary, &primary);
  EXPECT_EQ(ExitCodeOf(Start((OwnFolder() / "dll_test.exe").string() + " --iniciar", primary)), 42u);
  EXPECT_FALSE(fs::exists("C:\\taskkill.log"));
  for (const HANDLE handle : {token, linked.LinkedToken, primary}) CloseHandle(handle);
}

}  // namespace

// The test program is also the host that a test ends or runs without rights.
int main(int argc, char** argv) {
  const std::string role = argc > 1 ? argv[1] : "";
  if (role == "--vender" || role == "--iniciar") {
    dll = LoadLibraryA((OwnFolder() / "Caixora.dll").string().c_str());
    if (role == "--vender") return Sell(1).empty();
    const int code = CALL(IniciaFuncaoQJInterativo)(20, "abc", 1, "", "", "", "", "", "", 0, "");
    return code == CALL(CancelarFluxoQJInterativo)() ? code : 0;
  }
  testing::InitGoogleTest(&argc, argv);
  const int failed = RUN_ALL_TESTS();
  std::this_thread::sleep_for(1s);  // for a GP that the library has just asked the shell to start
  Clean();
  return failed;
}
