// Broken checkouts, a row each, on a machine in memory: which items tell of them and what they say.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "machine.h"
#include "script.h"
#include "tools/diagnosis_machine.h"
#include "tools/diagnosis_output.h"
#include "tools/image_file.h"

namespace {

constexpr std::uint16_t kX86 = caixora::ImageFile::kX86, kX64 = caixora::ImageFile::kX64;

// What the machine in memory does not know.
struct Facts {
  std::string folder = "C:\\caixa";
  unsigned code_page = 1252;
  std::map<char, caixora::DriveKind> drives;
  caixora::SystemError load = caixora::SystemError::kNone;
  bool folder_given = false;
} facts;

struct LibraryExport {
  std::string name;
  std::uint32_t ordinal;
};
const std::vector<LibraryExport> kExports = {
#include "library_exports.inc"
};

// A DLL with one section, which is loaded where it lies in the file.
std::string Image(std::uint16_t machine, bool is_library, std::size_t left_out = 0) {
  const std::vector<LibraryExport> exports(kExports.begin() + static_cast<long>(left_out),
                                           kExports.end());
  std::string bytes(512, '\0');
  const auto put = [&bytes](std::size_t at, std::uint32_t number, std::size_t size) {
    if (bytes.size() < at + size) bytes.resize(at + size);
    for (std::size_t i = 0; i < size; ++i) bytes[at + i] = static_cast<char>(number >> 8 * i);
  };
  bytes.replace(0, 2, "MZ");
  put(0x3C, 64, 4);
  bytes.replace(64, 2, "PE");
  put(68, machine, 2);
  put(70, 1, 2);  // sections
  put(84, 240, 2);
  put(86, is_library ? 0x2022 : 0x22, 2);
  put(88, 0x20B, 2);
  put(196, 16, 4);
  put(200, 512, 4);  // the export directory
  const auto count = static_cast<std::uint32_t>(exports.size());
  put(512 + 16, 1, 4);
  put(512 + 24, count, 4);
  put(512 + 32, 552, 4);
  put(512 + 36, 552 + 4 * count, 4);
  bytes.resize(552 + 6 * count);
  for (std::uint32_t i = 0; i < count; ++i) {
    put(552 + 4 * i, static_cast<std::uint32_t>(bytes.size()), 4);
    put(552 + 4 * count + 2 * i, exports[i].ordinal - 1, 2);
    bytes += exports[i].name + '\0';
  }
  put(328 + 12, 512, 4);
  put(328 + 16, static_cast<std::uint32_t>(bytes.size()) - 512, 4);
  put(328 + 20, 512, 4);
  return bytes;
}

void PutLibrary(const std::string& bytes) { machine.files["c:\\caixa\\caixora.dll"] = bytes; }

void StartGood() {
  facts = {};
  StartCase();
  RunLine("pasta C:\\caixa; arquivo C:\\T\\Trevix.exe = MZ; pasta C:\\Pavolin TEF\\Log");
  RunLine("arquivo ConfigQJ.ini = C:\\T¶CAMINHO=C:\\T¶");
  PutLibrary(Image(kX64, true));
}

struct Row {
  const char* broken;   // by a script
  const char* works;    // a sale ("V"), an interactive flow ("F")
  const char* changed;  // items that are no longer OK: "id A" or "id F", in their order
  const char* says;     // what the first of them tells; separated by "|"
  void (*also)() = nullptr;
};

// What a failure takes along.
#define NO_EXCHANGE "tef_dial F, req A, resp A"
#define NO_PATH "config F, trevix A, log_interativo A, email A"

const Row kRows[] = {
    {"", "VF", "", ""},
    {"apaga C:\\caixa\\Caixora.dll", "", "dll F", "C:\\caixa\\Caixora.dll|Copie"},
    {"", "", "dll F", "é de 32 bits|193", [] { PutLibrary(Image(kX86, true)); }},
    {"", "", "dll F", "ARM", [] { PutLibrary(Image(0xAA64, true)); }},
    {"", "", "dll F", "cortada|devia ter", [] { PutLibrary(Image(kX64, true).substr(0, 900)); }},
    {"", "", "dll F", "vazio", [] { PutLibrary(""); }},
    {"", "", "dll F", "outro conteúdo", [] { PutLibrary("<html>"); }},
    {"", "", "dll F", "é um programa", [] { PutLibrary(Image(kX64, false)); }},
    {"", "", "dll F", "VendeCreditoVista e VendeCreditoParcLoja",
     [] { PutLibrary(Image(kX64, true, 2)); }},
    {"", "VF", "dll A", "números para as funções VendeCreditoVista",
     [] { PutLibrary(Image(kX64, true).replace(552 + 4 * 32, 1, 1, '\x50')); }},
    {"", "", "dll F", "outra DLL", [] { PutLibrary(Image(kX64, true, 32)); }},
    {"", "", "dll F", "não carrega|126", [] { facts.load = caixora::SystemError{126}; }},
    {"", "", "dll F", "não pode ser lida|32",
     [] { machine.locked.insert("c:\\caixa\\caixora.dll"); }},
    {"apaga C:\\caixa\\Caixora.dll; pasta C:\\caixa\\Caixora.dll", "", "dll F", "é uma pasta"},
    {"apaga C:\\caixa\\Caixora.dll; arquivo C:\\caixa\\Caixora (1).dll", "", "dll F",
     "caixora (1).dll"},
    {"", "VF", "dll A", "pdv.exe|193|--ponte",
     [] { machine.files["pdv.exe"] = Image(kX86, false); }},
    {"pasta C:\\b", "VF", "dll A, pasta_atual A", "Não há uma em C:\\b",
     [] {
       facts.folder = "C:\\b";
       facts.folder_given = true;
     }},
    {"pasta C:\\b; arquivo C:\\caixa\\LD.txt; apaga LD.txt", "VF", "pasta_atual A",
     "C:\\b|Iniciar em|C:\\caixa\\LD.txt não é lido", [] { facts.folder = "C:\\b"; }},
    {"apaga Log; arquivo Log", "", "pasta_atual F", "C:\\caixa\\Log\\|é um arquivo"},
    {"tranca .", "VF", "pasta_atual A", "LD.txt não pode ser criado|acesso negado"},
    {"tranca .; apaga Log", "", "pasta_atual F", "não pode ser criada"},
    {"arquivo LD.txt = detalhado", "VF", "ld A", "[detalhado]|minúsculas|maiúsculas"},
    {"arquivo LD.txt = DETALHADO ", "VF", "ld A", "espaços antes ou depois"},
    {"arquivo LD.txt = \\xEF\\xBB\\xBFDETALHADO", "VF", "ld A", "BOM"},
    {"arquivo LD.txt = \\xFF\\xFED\\x00", "VF", "ld A", "UTF-16"},
    {"arquivo LD.txt = ¶DETALHADO", "VF", "ld A", "primeira linha está vazia|normais"},
    {"arquivo LD.txt = N", "VF", "ld A", "[N]|nada é escrito"},
    {"apaga LD.txt; arquivo LD.txt.txt = DETALHADO", "VF", "ld A", "LD.txt.txt|extensões"},
    {"apaga LD.txt; pasta LD.txt", "VF", "ld A", "é uma pasta"},
    {"tranca LD.txt", "VF", "ld A", "erro 32"},
    {"estraga LD.txt", "VF", "ld A", "abre e não pode ser lido|desligado"},
    {"apaga C:\\Tef_Dial\\Tef_Dial.exe", "F", NO_EXCHANGE,
     "C: (a pasta Tef_Dial está sem Tef_Dial.exe)|D: (a unidade não existe)|NAO LOCALIZADA"},
    {"apaga C:\\Tef_Dial\\Tef_Dial.exe; arquivo G:\\Tef_Dial\\Tef_Dial.exe", "F", NO_EXCHANGE,
     "Há uma em G:"},
    {"apaga C:\\Tef_Dial\\Tef_Dial.exe; pasta C:\\Tef_Dial\\Tef_Dial.exe", "F", NO_EXCHANGE,
     "é uma pasta, e não um arquivo"},
    {"tranca C:\\Tef_Dial\\Tef_Dial.exe", "F", NO_EXCHANGE, "não pode ser lido|32"},
    {"apaga C:\\Tef_Dial\\Tef_Dial.exe; arquivo C:\\Tef_Dial\\Tef_Dial.exe.txt", "F", NO_EXCHANGE,
     "tire o \".txt\""},
    {"arquivo F:\\Tef_Dial\\Tef_Dial.exe", "F", NO_EXCHANGE, "em C: e F:|SOMENTE UMA"},
    {"pasta D:\\Tef_Dial", "VF", "tef_dial A",
     "A pasta de troca está em C:|D: (a pasta Tef_Dial está sem"},
    {"", "VF", "tef_dial A, config A", "C: é uma unidade de rede",
     [] { facts.drives['C'] = caixora::DriveKind::kNetwork; }},
    {"apaga C:\\Tef_Dial\\Req", "F", "req F", "Não há a pasta C:\\Tef_dial\\Req|Crie a pasta"},
    {"apaga C:\\Tef_Dial\\Req; arquivo C:\\Tef_Dial\\Req", "F", "req F",
     "é um arquivo, e não uma pasta"},
    {"tranca C:\\Tef_Dial\\Req", "F", "req F", "não aceita arquivos: acesso negado"},
    {"estraga C:\\Tef_Dial\\Req", "F", "req F", "cheio"},
    {"arquivo C:\\Tef_Dial\\Req\\intpos.001", "VF", "req A", "um pedido que o GP não retirou"},
    {"pasta C:\\Tef_Dial\\Req\\intpos.001", "F", "req F", "é uma pasta"},
    {"apaga C:\\Tef_Dial\\Resp", "F", "resp F", "não volta"},
    {"arquivo C:\\Tef_Dial\\Resp\\Intpos.001", "VF", "resp A", "nenhuma chamada leu"},
    {"arquivo C:\\Tef_Dial\\Resp\\Ativo.001; segura C:\\Tef_Dial\\Resp\\Ativo.001", "F", "resp F",
     "está preso|32"},
    {"apaga C:\\Pavolin TEF\\Pavolin.exe", "F", "gp F, gp_ativo A",
     "C:\\Pavolin TEF\\Pavolin.exe, C:\\Orvane "
     "Lumetra\\clientorvane.exe|F:\\LUMETRA\\clientorvane.exe e F:\\Lumetra\\ClientOrvane.exe"},
    {"apaga C:\\Pavolin TEF\\Pavolin.exe; pasta C:\\Pavolin TEF\\Pavolin.exe", "F",
     "gp F, gp_ativo A", "é uma pasta"},
    {"tranca C:\\Pavolin TEF\\Pavolin.exe", "F", "gp F, gp_ativo A",
     "existe e não pode ser lido|32"},
    {"solta Pavolin.exe", "F", "gp F, gp_ativo A", "não é um programa"},
    {"solta Pavolin.exe; arquivo C:\\Pavolin TEF\\Pavolin.exe = MZ", "VF", "gp_ativo A",
     "GP NÃO ATIVO|Atv"},
    {"arquivo D:\\Nerol TEF\\Nerol.exe", "VF", "gp A", "outro GP|D:\\Nerol TEF\\Nerol.exe"},
    {"apaga C:\\Pavolin TEF\\Pavolin.exe; roda nerol.exe", "F", "gp F, gp_ativo A",
     "O GP não está em nenhum"},
    {"apaga C:\\Pavolin TEF\\Pavolin.exe; arquivo C:\\Lumetra\\clientorvane.exe; "
     "roda clientorvane.exe; solta Pavolin.exe",
     "VF", "", ""},
    {"apaga C:\\Pavolin TEF\\Pavolin.exe; arquivo D:\\Lumetra\\clientorvane_simulador.exe; "
     "arquivo C:\\Lumetra\\clientorvane_simulador.exe; roda clientorvane_simulador.exe; "
     "solta Pavolin.exe",
     "VF", "", ""},
    {"roda nerol.exe", "VF", "gp_ativo A", "Nerol.exe está em execução"},
    {"apaga C:\\Pavolin TEF\\Pavolin.exe; arquivo C:\\Lumetra\\clientorvane_simulador.exe; "
     "arquivo C:\\Lumetra\\clientorvane.exe; roda clientorvane_simulador.exe; solta Pavolin.exe",
     "F", "gp F",
     "esconde o GP de verdade, C:\\LUMETRA\\clientorvane.exe|Apague "
     "C:\\Lumetra\\clientorvane_simulador.exe"},
    {"arquivo C:\\OrvaneAutomacao.txt", "F", "gp A, marca_desenvolvedor A, log F",
     "impõe D:\\Programas"},
    {"arquivo C:\\OrvaneAutomacao.txt; solta Pavolin.exe; "
     "pasta D:\\Programas\\Cartao - Vetra\\Projeto com skin - Talvi\\Log",
     "F", "gp A, gp_ativo F, marca_desenvolvedor A", "impõe D:\\Programas"},
    {"apaga C:\\Pavolin TEF\\Log; arquivo C:\\Pavolin TEF\\Log", "F", "log F", "é um arquivo"},
    {"arquivo C:\\Pavolin TEF\\Log\\Caixora.log; tranca C:\\Pavolin TEF\\Log\\Caixora.log", "F",
     "log F, pendencias A", "erro 32|Aberto por leitor.exe|Feche o visualizador"},
    {"arquivo LD.txt = N; arquivo C:\\Pavolin TEF\\Log\\Caixora.log; tranca C:\\Pavolin "
     "TEF\\Log\\Caixora.log",
     "VF", "ld A, log A, pendencias A", "[N]"},
    {"pasta C:\\Pavolin TEF\\Log\\Caixora.log", "F", "log F", "é uma pasta"},
    {"tamanho C:\\Pavolin TEF\\Log\\Caixora.log = 12000000", "VF", "log A", "11,4 MiB|renomeie"},
    {"apaga ConfigQJ.ini", "V", NO_PATH, "C:\\caixa\\ConfigQJ.ini não existe|37"},
    {"apaga ConfigQJ.ini; arquivo C:\\caixa\\ConfigQJ.ini", "V", NO_PATH,
     "onde a biblioteca não procura"},
    {"apaga ConfigQJ.ini; arquivo ConfigQJ.ini.txt", "V", NO_PATH,
     "ConfigQJ.ini.txt, que não conta"},
    {"tranca ConfigQJ.ini", "V", NO_PATH, "não abre|32|Feche o programa"},
    {"apaga ConfigQJ.ini; pasta ConfigQJ.ini", "V", NO_PATH, "é uma pasta|Apague a pasta"},
    {"estraga ConfigQJ.ini", "V", NO_PATH, "até o fim"},
    {"arquivo ConfigQJ.ini = \\xEF\\xBB\\xBFCAMINHO=C:\\T¶", "V", NO_PATH ", cancelamento A",
     "BOM antes de CAMINHO|30|ANSI"},
    {"arquivo ConfigQJ.ini = \\xFF\\xFEC\\x00A\\x00=\\x00", "V", NO_PATH ", cancelamento A",
     "UTF-16"},
    {"arquivo ConfigQJ.ini = C:\\T¶Caminho=C:\\T", "V", NO_PATH ", cancelamento A",
     "[Caminho=C:\\T]|maiúsculas"},
    {"arquivo ConfigQJ.ini = C:\\T¶CAMINHO =C:\\T", "V", NO_PATH ", cancelamento A",
     "espaços em volta"},
    {"arquivo ConfigQJ.ini = C:\\T¶\"CAMINHO\"=C:\\T", "V", NO_PATH ", cancelamento A",
     "aspas em volta"},
    {"arquivo ConfigQJ.ini = C:\\T¶CAMINHO: C:\\T", "V", NO_PATH ", cancelamento A",
     "falta o \"=\""},
    {"arquivo ConfigQJ.ini = C:\\T¶CAMINHO=", "V", NO_PATH ", cancelamento A",
     "não há nada depois"},
    {"arquivo ConfigQJ.ini = C:\\T¶CAMINHO==C:\\T", "V",
     "config F, trevix A, email A, cancelamento A", "está vazio|31"},
    {"arquivo ConfigQJ.ini = C:\\T¶CAMINHO=C:\\T=x", "VF", "config A", "[C:\\T]|segundo"},
    {"arquivo ConfigQJ.ini = C:\\T¶CAMINHO=C:\\X¶CAMINHO=C:\\T", "VF", "config A", "Há 2 linhas"},
    {"arquivo ConfigQJ.ini = CAMINHO=C:\\T", "VF", "cancelamento A",
     "[CAMINHO=C:\\T]|CAMINHO=C:\\T\\Req|até o próximo início|na segunda"},
    {"arquivo ConfigQJ.ini = ¶CAMINHO=C:\\T", "VF", "cancelamento A", "é []|log vai para Log"},
    {"arquivo ConfigQJ.ini = \"C:\\T\"¶CAMINHO=\"C:\\T\"", "V",
     "config F, trevix F, log_interativo F, email A", "aspas"},
    {"arquivo ConfigQJ.ini = C:\\T ¶CAMINHO=C:\\T\\x20", "V", "config F, trevix F, email A",
     "espaços no começo ou no fim"},
    {"arquivo ConfigQJ.ini = Z:\\T¶CAMINHO=Z:\\T", "V",
     "config F, trevix F, log_interativo F, email A", "Z: não existe|administrador"},
    {"arquivo ConfigQJ.ini = C:\\T\\Trevix.exe¶CAMINHO=C:\\T\\Trevix.exe", "V",
     "config F, trevix F, email A", "nome do programa"},
    {"arquivo ConfigQJ.ini = C:\\Automação¶CAMINHO=C:\\Automa\\xC3\\xA7\\xC3\\xA3o", "V",
     "config F, trevix F, email A, cancelamento A", "UTF-8"},
    {"arquivo ConfigQJ.ini = T¶CAMINHO=T", "V", "config F, trevix F, email A",
     "não começa por uma unidade"},
    {"apaga C:\\T\\Trevix.exe", "V", "trevix F", "C:\\T\\Trevix.exe não existe|32"},
    {"arquivo C:\\T\\Trevix.exe", "V", "trevix F", "vazio ou danificado"},
    {"apaga C:\\T\\Trevix.exe; pasta C:\\T\\Trevix.exe", "V", "trevix F", "é uma pasta"},
    {"apaga C:\\T\\Req", "V", "trevix F", "C:\\T\\Req|perguntas"},
    {"apaga C:\\T\\Resp", "V", "trevix F", "35"},
    {"arquivo C:\\T\\IniciandoAtualizacao.txt", "V", "trevix F", "marca de atualização|41"},
    {"arquivo C:\\T\\Resp\\Resp001_Temp.txt", "VF", "trevix A", "frente da próxima resposta"},
    {"arquivo C:\\T\\Req\\Req001.txt; segura C:\\T\\Req\\Req001.txt", "V", "trevix F",
     "Req001.txt não pode ser apagado|32"},
    {"arquivo C:\\T\\Req\\Req001.txt; arquivo C:\\T\\Resp\\Resp001.txt", "VF", "", ""},
    {"roda trevix.exe", "VF", "trevix A", "em execução"},
    {"apaga C:\\TLog; arquivo C:\\TLog", "V", "log_interativo F", "C:\\TLog\\|encerra o PDV"},
    {"apaga C:\\T\\Email.exe", "VF", "email A", "39"},
    {"solta administrador", "V", "administrador F", "42"},
    {"", "VF", "pagina_de_codigo A", "UTF-8", [] { facts.code_page = 65001; }},
    {"VendeCredito $VENDA", "VF", "pendencias A", "cupom 17|aprovada, sem confirmação"},
    {"VendeCredito $VENDA; VendeCredito $C $P 9.5 18 3; Confirmar $C $P 18", "VF", "pendencias F",
     "cupom 17"},
    {"VendeCredito $VENDA; Confirmar $C $P 17", "VF", "", ""},
    {"VendeCredito $VENDA", "VF", "pendencias F", "06/03/2024 às 09:15:05: aprovada",
     [] {
       for (auto& [path, log] : machine.files)
         for (std::size_t at = 0; (at = log.find("07/03", at)) != log.npos;) log[at + 1] = '6';
     }},
    {"VendeCredito $VENDA; tranca C:\\Tef_Dial\\Tef_Dial.exe; Confirmar $C $P 17; solta "
     "C:\\Tef_Dial\\Tef_Dial.exe; "
     "gp cala; VendeCredito $C $P 9.5 18 3",
     "VF", "pendencias F", "cupom 18|Não é uma aprovação"},
    {"quando VERIFICANDO SE: apaga C:\\Tef_Dial\\Req\\intpos.001; quando AGUARDANDO: solta "
     "Pavolin.exe; gp cala; "
     "VendeCredito $VENDA; roda Pavolin.exe",
     "VF", "pendencias F", "cupom 17|não se sabe|Desfazimento"},
};

std::string Changed(const caixora::Diagnosis& diagnosis) {
  std::string changed;
  for (const auto& [id, finding] : diagnosis.items)
    if (finding.status != caixora::Status::kOk)
      changed.append(changed.empty() ? "" : ", ")
          .append(id)
          .append(finding.status == caixora::Status::kFailure ? " F" : " A");
  return changed;
}

TEST(Diagnosis, TellsOfBrokenCheckouts) {
  for (const Row& row : kRows) {
    StartGood();
    if (*row.broken != '\0') RunLine(row.broken);
    if (row.also != nullptr) row.also();
    const std::map<std::string, std::string> files = machine.files;
    const std::set<std::string> folders = machine.folders, running = machine.running;
    machine.notes.clear();
    const caixora::Diagnosis diagnosis = caixora::Diagnose({"", facts.folder_given});
    SCOPED_TRACE(row.broken + ("\n" + caixora::DiagnosisText(diagnosis)));
    EXPECT_TRUE(files == machine.files && folders == machine.folders && running == machine.running);
    EXPECT_TRUE(machine.open.empty());
    for (const std::string& note : machine.notes) EXPECT_TRUE(note.ends_with(")")) << note;
    EXPECT_EQ(std::string(diagnosis.sale ? "V" : "") + (diagnosis.flow ? "F" : ""), row.works);
    const std::string changed = Changed(diagnosis);
    EXPECT_EQ(changed, row.changed);
    for (const auto& [id, finding] : diagnosis.items) {
      EXPECT_EQ(finding.remedy.empty(), finding.status == caixora::Status::kOk) << id;
      if (!changed.starts_with(std::string(id) + ' ')) continue;
      std::string_view rest = row.says;
      while (!rest.empty()) {
        const std::string piece(rest.substr(0, rest.find('|')));
        rest.remove_prefix(std::min(rest.size(), piece.size() + 1));
        EXPECT_NE((finding.text + finding.remedy).find(piece), std::string::npos) << piece;
      }
    }
  }
}

TEST(Diagnosis, IsShownToPeopleAndPrograms) {
  StartGood();
  RunLine("apaga C:\\Tef_Dial\\Resp; arquivo LD.txt = N\x1B[2J");
  const caixora::Diagnosis diagnosis = caixora::Diagnose({});
  const std::string text = caixora::DiagnosisText(diagnosis);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 19) << text;
  EXPECT_EQ(text.find('\x1B'), std::string::npos);
  EXPECT_NE(text.find("\nFALHA resp: "), std::string::npos) << text;
  EXPECT_TRUE(text.ends_with("\nUma venda pode funcionar aqui: não. Um fluxo interativo: sim.\n"));
  const nlohmann::ordered_json json = caixora::DiagnosisJson(diagnosis);
  EXPECT_EQ(json["venda"], false);
  EXPECT_EQ(json["interativo"], true);
  EXPECT_EQ(json["itens"][2]["id"], "ld");
  EXPECT_EQ(json["itens"][2]["estado"], "aviso");
  EXPECT_EQ(json["itens"][5]["correcao"], diagnosis.items[5].finding.remedy);
  EXPECT_EQ(diagnosis.Worst(), caixora::Status::kFailure);
}

// Whatever the bytes, the reader stays within them.
TEST(ImageFile, IsReadAtAnyLengthAndDamage) {
  const std::string whole = Image(kX64, true);
  for (std::size_t size = 0; size < whole.size(); ++size)
    EXPECT_NE(caixora::ReadImage(whole.substr(0, size)).shape, caixora::ImageFile::Shape::kWhole);
  for (std::size_t at = 0; at < 700; ++at)
    for (const char byte : {'\xFF', '\x7F', '\0'}) {
      std::string damaged = whole;
      damaged[at] = byte;
      EXPECT_LE(caixora::ReadImage(damaged).exports.size(), 65536u);
    }
}

}  // namespace

namespace caixora {

std::string CurrentFolder() { return facts.folder; }
std::string ProgramFolder() { return "C:\\caixa"; }

SystemError TryToWriteIn(const std::string& folder) {
  const std::string key = Lower(folder);
  if (machine.locked.count(key)) return SystemError{5};
  if (machine.broken.count(key)) return SystemError{112};
  return key == "." || machine.folders.count(key) ? SystemError::kNone : SystemError::kPathNotFound;
}
SystemError TryToMakeFolderIn(const std::string& folder) { return TryToWriteIn(folder); }

SystemError TryToDelete(const std::string& path) {
  const bool stays = machine.locked.count(Lower(path)) || machine.held.count(Lower(path));
  return stays ? SystemError{32} : SystemError::kNone;
}

SystemError TryToLoad(const std::string&) { return facts.load; }

DriveKind KindOfDrive(char letter) {
  if (const auto set = facts.drives.find(letter); set != facts.drives.end()) return set->second;
  return machine.folders.count(Lower({letter, ':'})) ? DriveKind::kFixed : DriveKind::kNone;
}

std::vector<ListedFile> ListFiles(const std::string& folder, const std::string& prefix) {
  std::vector<ListedFile> files;
  const std::string start = (folder == "." ? "" : Lower(folder) + '\\') + Lower(prefix);
  for (const auto& [path, bytes] : machine.files)
    if (path.starts_with(start) && path.find('\\', start.size()) == path.npos)
      files.push_back({path.substr(path.rfind('\\') + 1), bytes.size()});
  return files;
}

std::vector<std::string> UsersOf(const std::string&) { return {"leitor.exe"}; }
unsigned AnsiCodePage() { return facts.code_page; }

}  // namespace caixora

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  ReadCommon();
  return RUN_ALL_TESTS();
}
