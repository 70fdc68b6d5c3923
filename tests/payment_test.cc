// Whole payment calls on a machine in memory: requests, refusals, location, cycle, log.
#include <gtest/gtest.h>

#include <functional>

#include "caixora.h"
#include "exchange/chama_tef.h"
#include "fake_machine.h"
#include "support/ansi.h"
#include "support/state.h"

namespace caixora {
namespace {

constexpr char kCnpj[] = "12.345.678/0001-95";
constexpr char kReq[] = "C:\\Tef_dial\\Req\\intpos.001";
constexpr char kResp[] = "C:\\Tef_dial\\Resp\\intpos.001";
constexpr char kGp[] = "C:\\Pavolin TEF\\";

// A GP that takes the request at its first chance and answers with `answer`.
class Payment : public testing::Test {
 protected:
  void SetUp() override {
    ResetMachine();
    machine.folders = {"c:", "c:\\tef_dial", "c:\\tef_dial\\req", "c:\\tef_dial\\resp",
                       "c:\\pavolin tef"};
    machine["C:\\Tef_Dial\\Tef_Dial.exe"];
    machine["C:\\Pavolin TEF\\Pavolin.exe"];
    machine.images = {"pavolin.exe"};
    machine.on_pause = [this] {
      if (!machine.Has(kReq)) return;
      request = machine[kReq];
      machine.files.erase("c:\\tef_dial\\req\\intpos.001");
      machine[liveness ? "C:\\Tef_dial\\Resp\\Ativo.001" : kResp] = answer;
    };
  }
  void TearDown() override { EXPECT_EQ(machine.open_files, 0); }

  std::string Call(TefCall call) {
    if (call.sCNPJCliente == nullptr) call.sCNPJCliente = kCnpj;
    if (call.sCNPJParceiro == nullptr) call.sCNPJParceiro = kCnpj;
    return TextOf(ChamaTef(call));
  }
  bool Logged(const std::string& message) const {
    return (machine.Log("") + machine.Log(kGp) + "\n").find("\n" + message + "\n") !=
           std::string::npos;
  }

  std::string answer = "009-000 = 0\r\n030-000 = OK\r\n";
  std::string request;
  bool liveness = false;
};

// Line ends as "|".
std::string Shown(std::string record) {
  for (std::size_t at; (at = record.find("\r\n")) != record.npos;) record.replace(at, 2, "|");
  return record;
}

TEST_F(Payment, EveryOperationHasItsRequestAndLogLine) {
  static const std::string seven(u8"a¬b¬1¬1¬1¬1¬7"_ansi);  // a field too many: refused when it counts
  static const std::string two(u8"7891¬CAFE¬2¬10,50¬0¬21,00|x¬y¬1¬4.99¬0¬4.99"_ansi);
  constexpr auto c = kCnpj;
  const std::string p = "12345678000195 - sCNPJParceiro:12345678000195";
  const std::string sale = p + " - dValor:12.500000 - iCupom:17 - iLeitor:3";
  const std::string parts = p + " - iParcelas:4 - dValor:12.500000 - iCupom:17 - iLeitor:3";
  const std::string head = "000-000 = CRT|001-000 = 17|003-000 = 1250|";
  const std::string tail = "800-005 = 12345678000195|800-006 = 3|999-999 = 0";
  const std::string adm = "000-000 = ADM|001-000 = 17|003-000 = 1250|" + tail;
  const auto direct = [](std::int32_t code) {
    return ChamaTef({.codigo = code, .sCNPJCliente = kCnpj, .sCNPJParceiro = kCnpj, .dValor = 12.5, .iCupom = 17, .iLeitor = 3}).release();
  };
  const struct { std::function<CaixoraTexto()> call; std::string record, line; } rows[] = {
      {[&] { return VendeCredito(c, c, 12.5, 17, 3); }, head + "800-001 = 0|" + tail, "VendeCredito: sCNPJCliente:" + sale},
      {[&] { return VendeCreditoVista(c, c, 12.5, 17, 3); }, head + "800-001 = 0|800-002 = 0|" + tail, "VendeCreditoVista: sCNPJCliente:" + sale},
      {[&] { return VendeCreditoParcLoja(c, c, 4, 12.5, 17, 3); }, head + "800-001 = 0|800-002 = 1|800-003 = 1|800-004 = 4|" + tail, "VendeCreditoParcLoja: sCNPJCliente:" + parts},
      {[&] { return VendeCreditoParcAdm(c, c, 4, 12.5, 17, 3); }, head + "800-001 = 0|800-002 = 1|800-003 = 0|800-004 = 4|" + tail, "VendeCreditoParcAdm: sCNPJCliente:" + parts},
      {[&] { return VendeDebito(c, c, 12.5, 17, 3); }, head + "800-001 = 1|" + tail, "VendeDebito: sCNPJCliente:" + sale},
      {[&] { return Cancelar(c, c, 12.5, 17, "K9", 3); }, "000-000 = CNC|001-000 = 17|003-000 = 1250|800-005 = 12345678000195|800-006 = 3|800-007 = K9|999-999 = 0",
       "Cancelar: sCNPJCliente:" + p + " - dValor:12.500000 - iCupom:17 - sControle:K9 - iLeitor:3"},
      {[&] { return Cancelar(c, c, -0.0, 17, nullptr, 3); }, "000-000 = CNC|001-000 = 17|" + tail,
       "Cancelar: sCNPJCliente:" + p + " - dValor:0.000000 - iCupom:17 - sControle: - iLeitor:3"},
      {[&] { return Reimpressao(c, c, 3); }, "000-000 = ADM|000-001 = REIMPRESSAO|" + tail, "Reimpressao: sCNPJCliente:" + p + " - iLeitor:3"},
      {[&] { return direct(7); }, adm, "Adm: sCNPJCliente:" + sale},
      {[&] { return Adm(c, c, 12.5, 17, 3); }, adm, "Adm: sCNPJCliente:" + sale},
      {[&] { return Relatorio(c, c, 17, 3); }, "000-000 = REL|001-000 = 17|003-000 = 000|" + tail, "Relatorio:" + p + " - iCupom:17 - iLeitor:3"},
      {[&] { return MenuPrivate(c, c, 12.5, 17, 3); }, head + "800-001 = 2|" + tail, "MenuPrivate: sCNPJCliente:" + sale},
      {[&] { return SolicitarCPF(c, c, 17); }, "000-000 = CPF|800-008 = 0|999-999 = 0", "SolicitarCPF:" + p + " - iCupom:17"},
      {[&] { return VendeDebitoAVista(c, c, 12.5, 17, 3); }, head + "800-001 = 1|800-002 = 0|" + tail, "VendeDebitoAVista: sCNPJCliente:" + sale},
      {[&] { return RecargaCelular(c, c, 17, 3); }, "000-000 = CEL|001-000 = 17|" + tail, "RecargaCelular: sCNPJCliente:" + p + " - dValor:0.000000 - iCupom:17 - iLeitor:3"},
      {[&] { return LinkPagamento(c, c, 4, 12.5, 17, 0, seven.c_str(), "A", "", 3); }, head + "800-001 = 4|800-011 = A|800-012 = |800-010 = 4|",
       "LinkPagamento: sCNPJCliente:" + p + " - iParcelas:4 - dValor:12.500000 - iCupom:17 - iQtdeItens:0 - Itens:" + seven + " - iLeitor:3\n****IntPos****"},
      {[&] { return LinkPagamento(c, c, 4, 12.5, 17, 2, two.c_str(), "A", "B", 3); },
       head + "261-000 = 2|261-011 = 7891|261-012 = CAFE|261-013 = 2|261-014 = 10,50|261-015 = 0|261-016 = 21,00|"
       "261-021 = x|261-022 = y|261-023 = 1|261-024 = 4.99|261-025 = 0|261-026 = 4.99|800-001 = 4|800-011 = A|800-012 = B|800-010 = 4|",
       "LinkPagamento: sCNPJCliente:" + p + " - iParcelas:4 - dValor:12.500000 - iCupom:17 - iQtdeItens:2 - Itens:" + two + " - iLeitor:3\n****IntPos****"},
      {[&] { return VendeCarteiraDigitalPix(c, c, 12.5, 17, 3); }, head + "800-001 = 5|" + tail, "Carteira Digital/Pix: sCNPJCliente:" + sale},
      {[&] { return ListarLinkPagamentoPago(c, c, 12.5, 17, 3); }, head + "800-001 = 6|800-006 = 3|999-999 = 0", "Listar LinkPago Pago: sCNPJCliente:" + sale},
      {[&] { return VendeFrotaCompleto(c, c, 12.5, "5", "ABC1D23", "", 1, "a-b--d", 17, 3); },
       head + "250-000 = 5|250-001 = ABC1D23|261-000 = 1|261-011 = a|261-012 = b|261-013 = |261-014 = d|261-015 = |261-016 = |800-001 = 2|800-006 = 3|999-999 = 0",
       "FrotaCompleto: sCNPJCliente:" + p + " - dValor:12.500000 - sKM: 5 - sPlaca: ABC1D23 - sMatricula:  - iQtdeItens: 1 - iCupom:17 - sItens: a-b--d - iLeitor:3"},
      {[&] { return ReimpressaoDireto(c, c, "777", "25/03/2021", 17, 3); }, "000-000 = ADM|000-001 = REIMPRESSAO|012-000 = 777|022-000 = 25032021|" + tail,
       "ReimpressaoDireto: sCNPJCliente:" + p + " - sNSU:777 - data: 25/03/2021 - iCupom:17 - iLeitor:3"},
      {[&] { return SolicitarCNPJ(c, c, 17); }, "000-000 = CNPJ|800-008 = 0|999-999 = 0", "SolicitarCNPJ:" + p + " - iCupom:17 - iExibirTela:0"},
      {[&] { return SolicitarDocumento(c, c, 17); }, "000-000 = CPFCNPJ|800-008 = 0|999-999 = 0", "SolicitarDocumento:" + p + " - iCupom:17 - iExibirTela:0"},
      {[&] { return ParceleMais(c, c, 12.5, 17, 3); }, head + "800-001 = 7|800-002 = 0|" + tail, "ParceleMais: sCNPJCliente:" + p + " - iParcelas:1 - dValor:12.500000 - iCupom:17 - iLeitor:3"},
      {[&] { return ManutencaoLinkPagamento(c, c, 3); }, "000-000 = ADM|000-001 = MANUTLINKPGTO|800-006 = 3|999-999 = 0", "ManutencaoLinkPagamento: sCNPJCliente:" + p + " - iLeitor:3"},
      {[&] { return direct(95); }, "000-000 = CRT|001-000 = 17|", ""},
      {[&] { return Atv(c, c, 17, 3); }, "000-000 = ATV|001-000 = 17|999-999 = 0", "Atv: sCNPJCliente:" + p + " - iCupom:17 - iLeitor:3"},
      {[&] { return Confirmar(c, c, 17); }, "000-000 =  CNF|001-000 = 17|800-005 = 12345678000195|999-999 = 0", "Confirmar: sCNPJCliente:" + p + " - iCupom:17"},
      {[&] { return Desfazimento(c, c, 17); }, "000-000 = NCN|001-000 = 17|800-005 = 12345678000195|999-999 = 0", "Desfazimento:" + p + " - iCupom:17"},
      {[&] { return direct(13); }, "", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.record);
    SetUp();
    liveness = row.record.starts_with("000-000 = ATV");
    AnswerIsLiveness = !liveness;  // as a call before may have left it
    EXPECT_EQ(TextOf(ResultString(row.call())).substr(0, 4), "S;2;");
    EXPECT_EQ(Shown(request), row.record);
    EXPECT_TRUE(row.line.empty() || Logged("[METODO] " + row.line)) << machine.Log(kGp);
    EXPECT_EQ(machine.Log(kGp).find("[METODO]") == std::string::npos, row.line.empty());
  }
}

TEST_F(Payment, BadInputIsRefusedBeforeAnyFileIsTouched) {
  const struct { TefCall call; std::string_view result, line; } rows[] = {
      {{.sCNPJCliente = "12345678000194"}, u8"S;0;CNPJ DO CLIENTE INVÁLIDO"_ansi, u8"CNPJ do cliente inválido(L): "_ansi},
      {{.sCNPJCliente = "abc"}, u8"S;0;CNPJ DO CLIENTE INVÁLIDO"_ansi, u8"CNPJ do cliente inválido(L): abc"_ansi},
      {{.sCNPJParceiro = "1"}, u8"S;0;CNPJ DO PARCEIRO INVÁLIDO"_ansi, u8"CNPJ do parceiro inválido(L): "_ansi},
      {{.iParcelas = 0}, u8"S;0;PARCELA INVÁLIDA"_ansi, u8"Parcela inválida: "_ansi},
      {{.dValor = -0.01}, u8"S;0;VALOR INVÁLIDO"_ansi, u8"Valor inválido: "_ansi},
  };
  for (const auto& row : rows) {
    SetUp();
    machine[kResp] = "old";
    EXPECT_EQ(Call(row.call), row.result);
    EXPECT_TRUE(Logged(std::string(row.line))) << machine.Log(kGp);
    EXPECT_EQ(machine[kResp], "old");
    EXPECT_EQ(machine.waited, 0u);
  }
}

TEST_F(Payment, BadItemsAreRefusedBeforeTheRequest) {
  const std::string separator = "S;0;Verifique a string de itens, o caractere de separacao nao esta correto";
  const std::string fields = "S;0;Verifique a string de itens, os parametros nao estao no formato correto";
  const std::string quantity = "S;0;Informe a quantidade do produto utilizando numeros inteiros";
  const std::string values = "S;0;Verifique os valores enviados, os mesmos nao estao no formato correto";
  const struct { int code, count; std::string_view items; std::string result; } rows[] = {
      {22, 1, u8"a¬b¬1¬1¬1¬1¬1"_ansi, separator},
      {22, 1, "abc", fields},
      {22, 1, "|", fields},
      {22, 2, u8"a¬b¬1,5¬1¬1¬1|c¬d¬1¬x¬1¬1"_ansi, quantity},
      {22, 2, u8"a¬b¬1¬x¬1¬1|c¬d¬1"_ansi, fields},
      {22, 2, u8"a¬b¬1¬1¬1¬1|c¬d¬1¬1¬1¬x"_ansi, values},
      {22, 1, u8"a¬b¬1¬1¬1¬1|unlooked"_ansi, "S;2;OK\r\nC;;;;;;;;1;;;;;;;"},
      {22, 2147483647, u8"a¬b¬1¬1¬1¬1"_ansi, fields},
      {25, 3, "a|b", "S;0;Quantidade de Itens diverge dos itens enviados.iQtdeItens: 3 - ItensEnviados : 2"},
  };
  for (const auto& row : rows) {
    SetUp();
    request.clear();
    const std::string items(row.items);
    EXPECT_EQ(Call({.codigo = row.code, .iQtdeItens = row.count, .sItens = items.c_str()}), row.result);
    EXPECT_EQ(request.empty(), row.result.starts_with("S;0;"));
  }
  EXPECT_TRUE(Logged("Quantidade de Itens diverge dos itens enviados. iQtdeItens: 3 - ItensEnviados: 2"));
}

TEST_F(Payment, LogTellsAnApprovedSaleInOrder) {
  machine["LD.txt"] = "DETALHADO";
  ClientFolder = LogBaseFolder = kGp;  // as after an earlier call
  answer = "001-000 = 17\n030-000 = APROVADA\n009-000 = 0";
  EXPECT_EQ(Call({.codigo = 4, .dValor = 1, .iCupom = 17}), "S;2;APROVADA\r\nC;17;;;;;;;1;;;;;;;");
  std::string drives;
  for (const char* drive : {"C", "D", "E", "F"})
    drives += "\nValidando a Pasta TEF_DIAL (f)\nCaminho da Pasta Tef_dial: " + std::string(drive) + ":\\Tef_Dial\\Tef_Dial.exe";
  const std::string folder = "C:\\Tef_dial";
  const std::string cnpj = "\nSomenteNumerosStr: 12.345.678/0001-95 (f)\nRetorno - SomenteNumerosStr: 12345678000195 (f)";
  const std::string check = "\nVerificacao Execucao do Processo: Pavolin.exe (f)";
  const auto removed = [&](const std::string& path) {
    return "\nAntes de Remover Arquivo - " + path + "\nCaminho Remover Arquivo: " + path + " (f)";
  };
  EXPECT_EQ(machine.Log(kGp),
            "\nENTROU - ChamaTef (f)" + std::string(u8"\nENTROU - Verificação do caminho do EXE\nSAIU - Verificação do caminho do EXE"_ansi) +
            "\nValidar Pasta TEF_DIAL (f)" + drives + "\nValidando a Pasta TEF_DIAL (f)\nCaminho da Pasta Tef_dial: "
            "\nCaminho da Pasta Tef_dial: " + folder + " (f)\nVERSAO SISTEMA PARCEIRO: 7.8.9\nCAMINHO DO ARQUIVO LOG: " + kGp +
            "\nVALIDANDO DADOS" + cnpj + cnpj + "\nVALIDOU DADOS\nLIMPANDO PASTAS TEF" +
            removed(folder + "\\Req\\Intpos.001") + "\nDepois de Remover Arquivo - " + folder + "\\Req\\Intpos.001 (f)" +
            removed(folder + "\\Resp\\Intpos.001") + "\nDepois de Remover Arquivo - " + folder + "\\Resp\\Intpos.001 (f)"
            "\nENTROU - Sleep 1000 (f)\nVerificando CLIENT EM EXECUCAO" + check + "\nENVIANDO COMANDO"
            "\n[METODO] VendeDebito: sCNPJCliente:12345678000195 - sCNPJParceiro:12345678000195 - dValor:1.000000 - iCupom:17 - iLeitor:0"
            "\nGerando Arquivo Intpos.001\nGerou Arquivo Intpos.001 (f)\nVERIFICANDO SE O CLIENT PROCESSOU O INTPOS DA PASTA REQ"
            "\nSleep 100 (f)\nAbrindo Intpos.001" + folder + "\\Req\\intpos.001 (f)\nAGUARDANDO INTPOS NA PASTA RESP"
            "\nSleep 200 (f)\nAbrindo " + folder + "\\Resp\\Intpos.001 (f)\nLOCALIZOU ARQUIVO NA PASTA RESP" + check +
            "\nLEU ARQUIVO NA PASTA RESP, RECUPERANDO DADOS\nLINHA001: 001-000 = 17\nLINHA030: 030-000 = APROVADA"
            "\nPROCESSOU ARQUIVO\nREMOVENDO ARQUIVO" + removed(folder + "\\Resp\\Intpos.001") +
            std::string(u8"\nExclusão: "_ansi) + folder + "\\Resp\\Intpos.001 (f)\nAntes de Gerar o Retorno (f)"
            // The line end inside the message stands as carriage return (a blank) and line feed.
            "\nRETORNO: S;2;APROVADA \r\nC;17;;;;;;;1;;;;;;;");
  EXPECT_EQ(machine.waited, 1300u);
  EXPECT_FALSE(machine.Has(kResp));
}

TEST_F(Payment, LocationPrefersDrivesThenRows) {
  const struct { const char* name; std::vector<std::string> files; std::string folder, exe, result; } rows[] = {
      {"first row", {"C:\\Lumetra\\ClientOrvane.exe", "C:\\Pavolin TEF\\Pavolin.exe"}, kGp, "Pavolin.exe", ""},
      {"C before D", {"D:\\Pavolin TEF\\Pavolin.exe", "C:\\Lumetra\\ClientOrvane.exe"}, "C:\\LUMETRA\\", "clientorvane.exe", ""},
      {"simulator first", {"C:\\Lumetra\\clientorvane_simulador.exe", "C:\\Lumetra\\ClientOrvane.exe"}, "C:\\Lumetra\\", "clientorvane_simulador.exe", ""},
      {"other drive", {"F:\\Nerol TEF\\Nerol.exe"}, "F:\\Nerol TEF\\", "Nerol.exe", ""},
      {"none", {}, "", "", "S;0;GP NAO INSTALADO"},
      {"two folders", {"E:\\Tef_Dial\\Tef_Dial.exe"}, "", "", "S;0;DEVE HAVER SOMENTE UMA PASTA TEF_DIAL NO COMPUTADOR, VERIFIQUE"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    SetUp();
    machine.files.erase("c:\\pavolin tef\\pavolin.exe");
    for (const char drive : {'c', 'd', 'e', 'f'})
      for (const char* folder : {"", "\\lumetra", "\\nerol tef", "\\pavolin tef"}) machine.folders.insert(std::string(1, drive) + ":" + folder);
    for (const auto& file : row.files) machine[file];
    const std::string result = Call({});
    EXPECT_EQ(ClientFolder, row.folder);
    EXPECT_EQ(ClientExeName, row.exe);
    EXPECT_TRUE(row.result.empty() || result == row.result) << result;
  }
  machine.files.erase("e:\\tef_dial\\tef_dial.exe");
  ExchangeFolder.clear();
  machine.files.erase("c:\\tef_dial\\tef_dial.exe");
  EXPECT_EQ(Call({}), "S;0;PASTA TEF_DIAL NAO LOCALIZADA, VERIFIQUE");
}

TEST_F(Payment, InactiveGpIsStartedAndTheCallEnds) {
  machine.images.clear();
  EXPECT_EQ(Call({}), u8"S;0;GP NÃO ATIVO"_ansi);
  EXPECT_EQ(machine.started, std::vector<std::string>{"open|C:\\Pavolin TEF\\Pavolin.exe|STARTAUTO"});
  EXPECT_TRUE(Logged("GP INATIVO, enviando comando C:\\Pavolin TEF\\Pavolin.exe STARTAUTO"));
  machine["C:\\OrvaneAutomacao.txt"];
  machine.folders.insert({"d:", "d:\\programas\\cartao - vetra\\projeto com skin - talvi"});
  EXPECT_EQ(Call({}), "S;2;OK\r\nC;;;;;;;;1;;;;;;;") << "a developer's GP is not looked for";
}

TEST_F(Payment, HungGpIsKilledAndRestarted) {
  machine.on_pause = [] {};
  EXPECT_EQ(Call({}), "S;0;GP NAO ATIVO");
  EXPECT_EQ(machine.waited, 1000u + 3000u * 100u + 1000u);
  ASSERT_EQ(machine.started.size(), 10u);
  EXPECT_EQ(machine.started[4], "hidden|cmd /c taskkill -f -im ClientOrvane.exe|");
  EXPECT_EQ(machine.started[8], "hidden|cmd /c taskkill -f -im Trevix.exe|");
  EXPECT_EQ(machine.started[9], "open|C:\\Pavolin TEF\\Pavolin.exe|STARTAUTO");
  EXPECT_TRUE(machine.Has(kReq)) << "the next call removes it";
  EXPECT_TRUE(Logged(std::string(u8"Taskkill no GP, provavelmente está travado."_ansi)));
}

TEST_F(Payment, PendingConfirmationIsAnsweredLocallyAndCarriesOver) {
  const auto refused = [] { return TextOf(ResultString(Confirmar("1", kCnpj, 1))); };
  EXPECT_EQ(refused(), u8"S;0;CNPJ DO CLIENTE INVÁLIDO"_ansi);
  answer = "009-000 = 9";  // the GP's own word is not waited for
  std::string local;
  machine.on_pause = [&] { if (machine.Has(kResp)) local = machine[kResp]; };
  EXPECT_EQ(Call({.codigo = 11, .iCupom = 123}), "S;2;COMANDO COM SUCESSO\r\nC;123;;;;;;;1;;;;;;;");
  EXPECT_EQ(Shown(local), "000-000 =  CNF|001-000 = 123|009-000 = 0|028-000 = 0|030-000 = COMANDO COM SUCESSO|999-999 = 0");
  EXPECT_TRUE(Logged("CONFIRMACAO/DESFAZIMENTO: CONFIRMAR"));
  EXPECT_EQ(PendingConfirmation, "");
  ResultString(Desfazimento(kCnpj, kCnpj, 1));
  EXPECT_TRUE(local.starts_with("000-000 =  NCN\r\n"));
  const std::function<void()> forgetting[] = {[] { Teste(); }, [] { ResultString(Cancelar("1", "1", 0, 1, "", 1)); }, [] { ResultString(RecargaCelular("1", "1", 1, 1)); }};
  for (const auto& forget : forgetting) {
    refused();
    EXPECT_EQ(PendingConfirmation, "CONFIRMAR");
    forget();
    EXPECT_EQ(PendingConfirmation, "");
  }
}

TEST_F(Payment, GpGoneWhileWaitingIsStarted) {
  machine.on_pause = [] { if (machine.files.erase("c:\\tef_dial\\req\\intpos.001")) machine.images.clear(); };
  EXPECT_EQ(Call({}), u8"S;0;GP NÃO ATIVO"_ansi);
  EXPECT_TRUE(Logged("AGUARDANDO INTPOS NA PASTA RESP\nArquivo NULL\nCLIENT NAO ESTA EM EXECUCAO\nGP NAO ATIVO, APOS AGUARDAR ARQUIVO NA PASTA RESP"));
}

}  // namespace
}  // namespace caixora
