// The checks of what a sale needs: exchange folder, GP, and how the two are found.
#include <algorithm>

#include "exchange/exchange_folder.h"
#include "support/file_helpers.h"
#include "system/file.h"
#include "system/programs.h"
#include "tools/diagnosis_checks.h"
#include "tools/diagnosis_machine.h"
#include "tools/image_file.h"

namespace caixora {
namespace {

constexpr std::string_view kNoExchangeFolder = "S;0;PASTA TEF_DIAL NAO LOCALIZADA, VERIFIQUE";
constexpr std::string_view kManyExchangeFolders =
    "S;0;DEVE HAVER SOMENTE UMA PASTA TEF_DIAL NO COMPUTADOR, VERIFIQUE";
constexpr std::string_view kNoGp = "S;0;GP NAO INSTALADO";

bool IsSimulator(std::string_view exe) {
  return Lowered(exe).find("simulador") != std::string::npos;
}

// What a drive without an exchange folder has in its place.
std::string WhatIsOn(char drive, Finding& finding) {
  const std::string program = ExchangeProgramOn(drive), folder = FolderOf(program);
  if (KindOfDrive(drive) == DriveKind::kNone) return "a unidade não existe";
  if (Look(folder) == Found::kFile) return Shown(folder) + " é um arquivo, e não uma pasta";
  if (Look(folder) == Found::kMissing) return "sem a pasta Tef_Dial";
  if (const std::string hidden = WithHiddenExtension(program); !hidden.empty()) {
    finding.Warn(
        {}, Join({"Mostre as extensões no Windows, e tire o \".txt\" de ", Shown(hidden), "."}));
    return Shown(hidden) + " no lugar de Tef_Dial.exe";
  }
  switch (Look(program)) {
    case Found::kFolder:
      return Shown(program) + " é uma pasta, e não um arquivo";
    case Found::kFile:
      return Join(
          {Shown(program), " não pode ser lido: ", Reason(File().Open(program, File::Use::kRead))});
    case Found::kMissing:
      break;
  }
  finding.Warn({}, Join({"A pasta ", Shown(folder),
                         " só conta com Tef_Dial.exe dentro dela. "
                         "Ponha-o ali, ou apague a pasta."}));
  return "a pasta Tef_Dial está sem Tef_Dial.exe";
}

void JudgeDrive(char drive, Finding& finding) {
  const DriveKind kind = KindOfDrive(drive);
  if (kind == DriveKind::kFixed) return;
  const std::string_view name = kind == DriveKind::kNetwork     ? "de rede"
                                : kind == DriveKind::kRemovable ? "removível"
                                                                : "de disco óptico";
  const std::string letter = {drive, ':'};
  finding.Warn(Join({letter, " é uma unidade ", name, ": a troca com o GP para quando ela falta."}),
               "Ponha a pasta Tef_Dial em um disco do próprio computador.");
}

// What lies in the way in the exchange folder: the library deletes and replaces these files.
void JudgeLeftover(const std::string& path, std::string_view what, std::string_view danger,
                   Finding& finding) {
  const std::string shown = Shown(path);
  switch (Look(path)) {
    case Found::kMissing:
      return;
    case Found::kFolder:
      finding.Fail(Join({shown, " é uma pasta, e o arquivo não pode ser criado."}),
                   Join({"Apague a pasta ", shown, "."}));
      return;
    case Found::kFile:
      break;
  }
  SystemError error = TryToDelete(path);
  if (error == SystemError::kNone) error = File().Open(path, File::Use::kReadAndAppend);
  if (error != SystemError::kNone) {
    finding.Fail(Join({shown, " está preso: ", Reason(error), ". ", danger}),
                 Join({"Feche o programa que o usa, tire o atributo \"somente leitura\", e apague ",
                       shown, "."}));
    return;
  }
  finding.Warn(Join({shown, " está na pasta: ", what}),
               "Se nenhuma operação está em curso, confira no relatório do GP a última venda antes "
               "de vender de novo. A próxima chamada apaga o arquivo.");
}

bool NeedsExchangeFolder(const Checkout& checkout, Finding& finding) {
  if (!checkout.exchange_folder.empty()) return true;
  finding.Warn("Não verificado: não se sabe qual é a pasta de troca.",
               "Corrija antes o item tef_dial.");
  return false;
}

bool BeginsAsProgram(const std::string& path) {
  std::string bytes;
  return ReadBytes(path, bytes, 2) == SystemError::kNone && BeginsAsImage(bytes);
}

}  // namespace

Finding CheckExchangeFolder(const Checkout&) {
  Finding finding, strange;
  std::vector<std::string> looked_at, found;
  for (const char drive : kDrives) {
    if (drive == '\0') continue;
    const std::string letter = {drive, ':'};
    if (OpensForReading(ExchangeProgramOn(drive))) {
      found.push_back(letter);
      JudgeDrive(drive, strange);
      looked_at.push_back(letter + " (tem Tef_Dial\\Tef_Dial.exe)");
    } else {
      looked_at.push_back(Join({letter, " (", WhatIsOn(drive, strange), ")"}));
    }
  }
  const std::string drives = Join({"Unidades olhadas: ", Listed(looked_at), "."});
  if (found.size() == 1) {
    finding.Note(Join({"A pasta de troca está em ", found[0], ". ", drives}));
  } else if (found.empty()) {
    finding.Fail(Join({"Nenhuma pasta de troca. ", Returns(kNoExchangeFolder), " ", drives}),
                 RemedyFor(kNoExchangeFolder));
    for (char drive = 'G'; drive <= 'Z'; ++drive)
      if (KindOfDrive(drive) != DriveKind::kNone && OpensForReading(ExchangeProgramOn(drive)))
        finding.Fail(Join({"Há uma em ", {&drive, 1}, ":, onde a biblioteca não procura."}),
                     "Instale o GP com a pasta Tef_Dial em uma das unidades olhadas.");
  } else {
    finding.Fail(Join({"Mais de uma pasta de troca: em ", Listed(found), ". ",
                       Returns(kManyExchangeFolders), " ", drives}),
                 RemedyFor(kManyExchangeFolders));
  }
  finding.Add(strange.status, strange.text, strange.remedy);
  return finding;
}

Finding CheckRequests(const Checkout& checkout) {
  Finding finding;
  if (!NeedsExchangeFolder(checkout, finding)) return finding;
  const std::string path = Join({checkout.exchange_folder, kRequest});
  if (JudgeFolder(FolderOf(path),
                  "A venda devolve \"S;0;ERRO AO CRIAR ARQUIVO TEF...\": o pedido não chega ao GP.",
                  finding))
    JudgeLeftover(path, "um pedido que o GP não retirou.",
                  "A biblioteca não consegue gravar o pedido.", finding);
  return finding;
}

Finding CheckAnswers(const Checkout& checkout) {
  Finding finding;
  if (!NeedsExchangeFolder(checkout, finding)) return finding;
  const std::string path = Join({checkout.exchange_folder, kAnswer});
  if (!JudgeFolder(FolderOf(path),
                   "O GP e a biblioteca não têm onde gravar a resposta: a venda não volta enquanto "
                   "o GP estiver aberto.",
                   finding))
    return finding;
  for (const std::string_view answer : {kAnswer, kLivenessAnswer})
    JudgeLeftover(Join({checkout.exchange_folder, answer}),
                  "uma resposta do GP que nenhuma chamada leu.",
                  "A próxima venda o leria como a sua resposta.", finding);
  return finding;
}

Finding CheckGpProgram(const Checkout& checkout) {
  Finding finding;
  if (checkout.is_developers) {
    finding.Warn(Join({"A marca de desenvolvimento impõe ", Shown(checkout.GpFolder()),
                       checkout.GpExe(), "; nada mais é procurado."}),
                 "Veja o item marca_desenvolvedor.");
    return finding;
  }
  std::vector<std::string> tried;
  for (std::size_t i = 0; i < kGpPlaces && i <= checkout.gp.value_or(kGpPlaces); ++i) {
    const std::string path = GpPlaceAt(i).Path();
    if (path.front() == '\0') continue;
    tried.push_back(Shown(path));
    if (checkout.gp == i) continue;
    if (Look(path) == Found::kFolder)
      finding.Warn(Join({Shown(path), " é uma pasta, e não um programa."}), {});
    else if (Look(path) == Found::kFile)
      finding.Warn(Join({Shown(path), " existe e não pode ser lido: ",
                         Reason(File().Open(path, File::Use::kRead)), "."}),
                   "Dê ao usuário do caixa permissão para ler esse arquivo.");
  }
  const std::string order = Join({"Caminhos tentados, nesta ordem: ", Listed(tried), "."});
  if (!checkout.gp) {
    finding.Fail(Join({"O GP não está em nenhum dos caminhos. ", Returns(kNoGp), " ", order}),
                 Join({RemedyFor(kNoGp),
                       " Se ele está em outra pasta, instale-o de novo em uma "
                       "destas."}));
    return finding;
  }
  const GpPlace place = GpPlaceAt(*checkout.gp);
  const bool simulates = IsSimulator(place.exe);
  finding.Note(Join({"GP usado: ", Shown(place.Path()),
                     simulates ? ", um simulador, que não cobra de ninguém. " : ". ", order}));
  if (!BeginsAsProgram(place.Path()) && !ImageRuns(std::string(place.exe)))
    finding.Fail(Join({Shown(place.Path()),
                       " não é um programa do Windows: está vazio ou "
                       "danificado, e não abre."}),
                 "Instale o GP de novo.");
  for (const std::size_t index : checkout.hidden_gps) {
    const GpPlace other = GpPlaceAt(index);
    if (Lowered(other.Path()) == Lowered(place.Path())) continue;
    if (simulates && !IsSimulator(other.exe))
      finding.Fail(Join({"O simulador esconde o GP de verdade, ", Shown(other.Path()),
                         ": as vendas parecem aprovadas, e nada é cobrado."}),
                   Join({"Apague ", Shown(place.Path()), "."}));
    else if (!IsSimulator(other.exe))
      finding.Warn(Join({"Há outro GP, que não é usado: ", Shown(other.Path()), "."}),
                   "Desinstale o GP que a loja não usa.");
  }
  return finding;
}

Finding CheckGpRuns(const Checkout& checkout) {
  Finding finding;
  const std::string exe(checkout.GpExe());
  if (exe.empty())
    finding.Warn("Não verificado: não há GP nos caminhos conhecidos.", "Corrija antes o item gp.");
  else if (ImageRuns(exe))
    finding.Note(exe + " está em execução.");
  else if (checkout.is_developers)
    finding.Fail(exe +
                     " não está em execução, e com a marca de desenvolvimento a biblioteca não o "
                     "inicia: a venda espera 5 minutos e falha.",
                 "Em um caixa, apague a marca. Em uma máquina de desenvolvimento, abra o GP.");
  else
    finding.Warn(exe +
                     " não está em execução. A primeira chamada o inicia e devolve \"S;0;GP NÃO "
                     "ATIVO\".",
                 "Abra o GP antes da primeira venda, ou chame Atv até ele responder.");
  std::vector<std::string> seen = {Lowered(exe)};
  for (std::size_t i = 0; i < kGpPlaces; ++i) {
    const std::string other(GpPlaceAt(i).exe);
    if (std::find(seen.begin(), seen.end(), Lowered(other)) != seen.end()) continue;
    seen.push_back(Lowered(other));
    if (ImageRuns(other))
      finding.Warn(exe.empty() ? other + " está em execução, de uma pasta em que não é procurado."
                               : Join({other, " está em execução. A biblioteca só vigia ", exe,
                                       ", e os dois disputam a pasta de troca."}),
                   exe.empty() ? "Instale o GP em um dos caminhos conhecidos."
                               : Join({"Feche ", other, ", ou desinstale o GP que não é usado."}));
  }
  return finding;
}

Finding CheckDeveloperMark(const Checkout& checkout) {
  Finding finding;
  const std::string mark = Shown(kDeveloperMark);
  if (checkout.is_developers)
    finding.Warn(Join({mark, " existe. Ele troca o GP da loja por ", Shown(kDeveloperFolder),
                       kDeveloperExe, ", e uma venda não volta se o GP fechar."}),
                 Join({"Em um caixa, apague ", mark, "."}));
  else
    finding.Note(Join({"Sem a marca de desenvolvimento (", mark, ")."}));
  return finding;
}

}  // namespace caixora
