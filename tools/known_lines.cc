#include "tools/known_lines.h"

#include <algorithm>

#include "tools/failures.h"

namespace caixora {
namespace {

constexpr KnownLine kPaymentLines[] = {
    {"Sleep 200", kAwaiting, kRepeats | kWaits | kBursts},
    {"Abrindo Intpos.001*", kHandedOver, kRepeats | kWaits},
    {"Abrindo *", kAwaiting, kRepeats | kWaits},
    {"Arquivo NULL", kAwaiting, kRepeats | kWaits | kBursts},
    {"Sleep 100", kHandedOver, kRepeats | kWaits | kBursts},
    {"Verificando GP", kHandedOver, kRepeats | kWaits},
    {"ENTROU - ChamaTef", kEntered},
    {"ENTROU - Verificação do caminho do EXE", kLocating},
    {"SAIU - Verificação do caminho do EXE", kLocated},
    {"Validar Pasta TEF_DIAL", kFolders, kRepeats},
    {"Validando a Pasta TEF_DIAL", kFolders, kRepeats},
    {"Caminho da Pasta Tef_dial: *", kFolders, kRepeats},
    {"VERSAO SISTEMA PARCEIRO: *", kVersions},
    {"CAMINHO DO ARQUIVO LOG: *", kLogPath},
    {"VALIDANDO DADOS", kValidating},
    {"VALIDOU DADOS", kValidated},
    {"LIMPANDO PASTAS TEF", kCleaning},
    {"ENTROU - Sleep 1000", kCleaning, kRepeats},
    {"Verificando CLIENT EM EXECUCAO", kChecking},
    {"ENVIANDO COMANDO", kSending},
    {"[METODO] *", kNamed},
    {"****IntPos****", kNamed, kRepeats},
    {"Gerando Arquivo Intpos.001", kWriting},
    {"Gerou Arquivo Intpos.001", kWritten},
    {"VERIFICANDO SE O CLIENT PROCESSOU O INTPOS DA PASTA REQ", kHandedOver},
    {"CONFIRMACAO/DESFAZIMENTO: *", kHandedOver},
    {"Taskkill no GP, *", kHandedOver, kRepeats},
    {"AGUARDANDO INTPOS NA PASTA RESP", kAwaiting},
    {"LOCALIZOU ARQUIVO NA PASTA RESP", kFound, kBursts},
    {"LEU ARQUIVO NA PASTA RESP, RECUPERANDO DADOS", kReading},
    {"LINHA001: *", kReading, kRepeats},
    {"LINHA030: *", kReading, kRepeats},
    {"PROCESSOU ARQUIVO", kProcessed},
    {"REMOVENDO ARQUIVO", kRemoving},
    {"Antes de Gerar o Retorno", kRemoving, kRepeats},
    {"RETORNO: *", kReturned},
};

constexpr FlowEntry kFlowEntries[] = {
    {"ENTROU -  AguardaFuncaoQJInterativo()", FlowFunction::kWait, "AguardaFuncaoQJInterativo"},
    {"ENTROU -  ContinuaFuncaoQJInterativo()", FlowFunction::kContinue,
     "ContinuaFuncaoQJInterativo"},
    {"ENTROU -  IniciaFuncaoQJInterativo()", FlowFunction::kStart, "Fluxo interativo"},
    {"ENTROU -  FinalizaFuncaoQJInterativo()", FlowFunction::kFinish, "FinalizaFuncaoQJInterativo"},
    {"Entrou - CancelaFluxoQJInterativo()", FlowFunction::kCancel, "CancelarFluxoQJInterativo"},
};

// Lines of waits that are said at several steps.
constexpr std::string_view kOtherWaits[] = {
    "Verificacao Execucao do Processo: *",
    "Fim Verificacao Execucao do Processo: *",
    "Aguardando Execução do Trevix.exe",
};

}  // namespace

const KnownLine* FindPaymentLine(std::string_view message) {
  for (const KnownLine& known : kPaymentLines)
    if (Matches(known.pattern, message)) return &known;
  return nullptr;
}

const FlowEntry* FindFlowEntry(std::string_view message) {
  for (const FlowEntry& entry : kFlowEntries)
    if (entry.line == message) return &entry;
  return nullptr;
}

bool IsOtherWait(std::string_view message) {
  return std::ranges::any_of(
      kOtherWaits, [message](std::string_view pattern) { return Matches(pattern, message); });
}

}  // namespace caixora
