#include "tools/exit_status.h"

#include <string_view>
#include <utility>

namespace caixora {
namespace {

constexpr std::pair<ExitStatus, std::string_view> kMeanings[] = {
    {kDone, "sucesso; de um desfecho, também a resposta local"},
    {kRefused, "recusa, falha ou venda incerta: S;0;, um código diferente de 0, [ERROABORTAR]"},
    {kUsage, "uso errado: nada foi chamado"},
    {kNoLibrary, "a biblioteca não foi carregada: nada foi chamado"},
    {kLocalReply, "resposta local: S;2; que não é uma aprovação; desfaça a venda"},
    {kCancelled, "cancelado pelo operador, em um fluxo ou entre duas chamadas"},
    {kLibraryEnded, "a biblioteca encerrou o processo: não conseguiu abrir o log"},
    {kUncertain, "não se sabe o resultado de uma chamada: verifique no GP"},
};

}  // namespace

ExitStatus StatusOf(Kind kind, bool succeeded, bool local) {
  if (local && kind != Kind::kOutcome) return kLocalReply;
  return succeeded ? kDone : kRefused;
}

std::string ExitStatusHelp() {
  std::string text;
  for (const auto& [status, meaning] : kMeanings)
    text.append("  ").append(std::to_string(status)).append("  ").append(meaning).append("\n");
  return text;
}

}  // namespace caixora
