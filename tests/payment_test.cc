// Whole payment calls on a machine in memory: requests, refusals, location, cycle, log.
#include <gtest/gtest.h>

#include <cmath>

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
  constexpr auto kLink = u8"a¬b¬1¬1¬1¬1|c¬d¬2¬1,5¬1¬2¬"_ansi;
  const std::string link = std::string(kLink) + "3";  // seven fields: refused when it counts
  const std::string two = std::string(u8"7891¬CAFE¬2¬10,50¬0¬21,00|x¬y¬1¬4.99¬0¬4.99"_ansi);
  const std::string p = "12345678000195 - sCNPJParceiro:12345678000195";
  const std::string sale = p + " - dValor:12.500000 - iCupom:17 - iLeitor:3";
  const std::string parts = p + " - iParcelas:4 - dValor:12.500000 - iCupom:17 - iLeitor:3";
  const std::string head = "000-000 = CRT|001-000 = 17|003-000 = 1250|";
  const std::string tail = "800-005 = 12345678000195|800-006 = 3|999-999 = 0";
  const std::string adm = "000-000 = ADM|001-000 = 17|003-000 = 1250|" + tail;
  const struct { int code; TefCall extra; std::string record, line; } rows[] = {
      {0, {}, head + "800-001 = 0|" + tail, "VendeCredito: sCNPJCliente:" + sale},
      {1, {}, head + "800-001 = 0|800-002 = 0|" + tail, "VendeCreditoVista: sCNPJCliente:" + sale},
      {2, {}, head + "800-001 = 0|800-002 = 1|800-003 = 1|800-004 = 4|" + tail, "VendeCreditoParcLoja: sCNPJCliente:" + parts},
      {3, {}, head + "800-001 = 0|800-002 = 1|800-003 = 0|800-004 = 4|" + tail, "VendeCreditoParcAdm: sCNPJCliente:" + parts},
      {4, {}, head + "800-001 = 1|" + tail, "VendeDebito: sCNPJCliente:" + sale},
      {5, {.sControle = "K9"}, "000-000 = CNC|001-000 = 17|003-000 = 1250|800-005 = 12345678000195|800-006 = 3|800-007 = K9|999-999 = 0",
       "Cancelar: sCNPJCliente:" + p + " - dValor:12.500000 - iCupom:17 - sControle:K9 - iLeitor:3"},
      {5, {.dValor = -0.0}, "000-000 = CNC|001-000 = 17|" + tail,
       "Cancelar: sCNPJCliente:" + p + " - dValor:0.000000 - iCupom:17 - sControle: - iLeitor:3"},
      {6, {}, "000-000 = ADM|000-001 = REIMPRESSAO|" + tail, "Reimpressao: sCNPJCliente:" + p + " - iLeitor:3"},
      {7, {}, adm, "Adm: sCNPJCliente:" + sale},
      {11, {}, adm, "Adm: sCNPJCliente:" + sale},
      {11, {.dValor = -0.0}, "000-000 = ADM|001-000 = 17|" + tail, "Adm: sCNPJCliente:" + p + " - dValor:0.000000 - iCupom:17 - iLeitor:3"},
      {12, {.dValor = -0.0}, "000-000 = REL|001-000 = 17|003-000 = 000|" + tail, "Relatorio:" + p + " - iCupom:17 - iLeitor:3"},
      {14, {}, head + "800-001 = 2|" + tail, "MenuPrivate: sCNPJCliente:" + sale},
      {15, {}, "000-000 = CPF|800-008 = 0|999-999 = 0", "SolicitarCPF:" + p + " - iCupom:17"},
      {20, {}, head + "800-001 = 1|800-002 = 0|" + tail, "VendeDebitoAVista: sCNPJCliente:" + sale},
      {21, {}, "000-000 = CEL|001-000 = 17|" + tail, "RecargaCelular: sCNPJCliente:" + sale},
      {22, {.sCampo011 = "A", .iQtdeItens = 0, .sItens = link.c_str()},
       head + "800-001 = 4|800-011 = A|800-012 = |800-010 = 4|",
       "LinkPagamento: sCNPJCliente:" + p + " - iParcelas:4 - dValor:12.500000 - iCupom:17 - iQtdeItens:0 - Itens:" + link + " - iLeitor:3"},
      {22, {.iQtdeItens = 2, .sItens = two.c_str()},
       head + "261-000 = 2|261-011 = 7891|261-012 = CAFE|261-013 = 2|261-014 = 10,50|261-015 = 0|261-016 = 21,00|"
       "261-021 = x|261-022 = y|261-023 = 1|261-024 = 4.99|261-025 = 0|261-026 = 4.99|800-001 = 4|800-011 = |800-012 = |800-010 = 4|",
       "LinkPagamento: sCNPJCliente:" + p + " - iParcelas:4 - dValor:12.500000 - iCupom:17 - iQtdeItens:2 - Itens:" + two + " - iLeitor:3"},
      {23, {}, head + "800-001 = 5|" + tail, "Carteira Digital/Pix: sCNPJCliente:" + sale},
      {24, {}, head + "800-001 = 6|800-006 = 3|999-999 = 0", "Listar LinkPago Pago: sCNPJCliente:" + sale},
      {25, {.sKM = "5", .sPlaca = "ABC1D23", .iQtdeItens = 1, .sItens = "a-b--d"},
       head + "250-000 = 5|250-001 = ABC1D23|261-000 = 1|261-011 = a|261-012 = b|261-013 = |261-014 = d|261-015 = |261-016 = |800-001 = 2|800-006 = 3|999-999 = 0",
       "FrotaCompleto: sCNPJCliente:" + p + " - dValor:12.500000 - sKM: 5 - sPlaca: ABC1D23 - sMatricula:  - iQtdeItens: 1 - iCupom:17 - sItens: a-b--d - iLeitor:3"},
      {26, {.sNSU = "777", .data = "25/03/2021"}, "000-000 = ADM|000-001 = REIMPRESSAO|012-000 = 777|022-000 = 25032021|" + tail,
       "ReimpressaoDireto: sCNPJCliente:" + p + " - sNSU:777 - data: 25/03/2021 - iCupom:17 - iLeitor:3"},
      {27, {}, "000-000 = CNPJ|800-008 = 0|999-999 = 0", "SolicitarCNPJ:" + p + " - iCupom:17 - iExibirTela:0"},
      {28, {}, "000-000 = CPFCNPJ|800-008 = 0|999-999 = 0", "SolicitarDocumento:" + p + " - iCupom:17 - iExibirTela:0"},
      {29, {}, head + "800-001 = 7|800-002 = 0|" + tail, "ParceleMais: sCNPJCliente:" + parts},
      {30, {}, "000-000 = ADM|000-001 = MANUTLINKPGTO|800-006 = 3|999-999 = 0", "ManutencaoLinkPagamento: sCNPJCliente:" + p + " - iLeitor:3"},
      {95, {}, "000-000 = CRT|001-000 = 17|", ""},
      {97, {}, "000-000 = ATV|001-000 = 17|999-999 = 0", "Atv: sCNPJCliente:" + p + " - iCupom:17 - iLeitor:3"},
      {98, {}, "000-000 =  CNF|001-000 = 17|800-005 = 12345678000195|999-999 = 0", "Confirmar: sCNPJCliente:" + p + " - iCupom:17"},
      {99, {}, "000-000 = NCN|001-000 = 17|800-005 = 12345678000195|999-999 = 0", "Desfazimento:" + p + " - iCupom:17"},
      {13, {}, "", ""},
      {1000, {}, "", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.code);
    SetUp();
    liveness = row.code == 97;
    TefCall call = row.extra;
    call.codigo = row.code;
    call.iParcelas = 4;
    if (!std::signbit(call.dValor)) call.dValor = 12.5;  // -0.0 marks a call without amount
    call.iCupom = 17;
    call.iLeitor = 3;
    EXPECT_EQ(Call(call), "S;2;OK\r\nC;;;;;;;;1;;;;;;;");
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
}

TEST_F(Payment, PendingConfirmationIsAnsweredLocallyAndCarriesOver) {
  PendingConfirmation = "CONFIRMAR";
  EXPECT_EQ(Call({.codigo = 98, .sCNPJCliente = "1"}), u8"S;0;CNPJ DO CLIENTE INVÁLIDO"_ansi);
  answer = "009-000 = 9";  // the GP's own word is not waited for
  std::string local;
  machine.on_pause = [&] { if (machine.Has(kResp)) local = machine[kResp]; };
  EXPECT_EQ(Call({.codigo = 11, .iCupom = 123}), "S;2;COMANDO COM SUCESSO\r\nC;123;;;;;;;1;;;;;;;");
  EXPECT_EQ(Shown(local), "000-000 =  CNF|001-000 = 123|009-000 = 0|028-000 = 0|030-000 = COMANDO COM SUCESSO|999-999 = 0");
  EXPECT_EQ(PendingConfirmation, "");
  PendingConfirmation = "CANCELAR";
  Call({.codigo = 99});
  EXPECT_TRUE(local.starts_with("000-000 =  NCN\r\n"));
}

}  // namespace
}  // namespace caixora
