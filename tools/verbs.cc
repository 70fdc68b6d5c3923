#include "tools/verbs.h"

#include <algorithm>

#include "tools/diagnosis_command.h"
#include "tools/report_verb.h"

namespace caixora {
namespace {

constexpr Verb kVerbs[] = {
    {"ajuda", "[função]", "esta ajuda, ou a de uma função",
     "O mesmo que --ajuda. Com uma função: argumentos, tipos, o que devolve e um exemplo.\n\n"
     "Exemplo:\n"
     "  caixora_host ajuda VendeCreditoVista\n",
     nullptr},
    {"diagnostico", "[--json] [--pasta <pasta>] [--dll <arquivo>]",
     "diz o que impediria uma venda ou um fluxo interativo neste computador",
     "Só lê: não chama o GP nem a biblioteca. Cada linha é um item: OK, AVISO ou FALHA, o que foi\n"
     "achado e, depois da seta, o que fazer. A última diz se uma venda e se um fluxo interativo\n"
     "poderiam funcionar. Rode-o com o usuário do caixa, e como o PDV: as permissões contam.\n"
     "--pasta examina como se o PDV fosse iniciado naquela pasta.\n"
     "Código de saída: 0 tudo certo, 1 avisos, 2 uma falha.\n\n"
     "Exemplo:\n"
     "  caixora_host diagnostico --pasta C:\\caixa\n",
     RunDiagnosis},
    {"Fluxo", "<os onze argumentos de IniciaFuncaoQJInterativo> [respostas...]",
     "conduz um fluxo interativo do início ao fim",
     "Mostra cada pergunta do Trevix e envia as respostas, na ordem dada. Quando elas acabam, uma\n"
     "por linha: do teclado, ou da entrada, em UTF-8. A resposta \"cancelar\" e Ctrl-C cancelam o\n"
     "fluxo; o fim da entrada e uma resposta que não pode ser enviada, também. Com o retorno, o\n"
     "fluxo é encerrado com a função 99, a do Trevix simulado; --funcao-fim <n>, antes de Fluxo,\n"
     "indica outra.\n\n"
     "Exemplo:\n"
     "  caixora_host Fluxo 20 11.222.333/0001-81 1 \"\" 12,50 000545 20210325 009 652 7 \"\" 3 1\n",
     nullptr},
    {"Pausa", "<ms>", "espera entre duas chamadas",
     "Espera o número dado de milissegundos.\n\n"
     "Exemplo:\n"
     "  caixora_host Atv 11.222.333/0001-81 11.222.333/0001-81 1 1 + Pausa 3000 + Teste\n",
     nullptr},
    {"Pasta", "<pasta>", "muda o diretório atual, que a biblioteca consulta a cada chamada",
     "Muda o diretório atual deste programa. Vale para as chamadas que vêm depois na linha.\n\n"
     "Exemplo:\n"
     "  caixora_host Pasta C:\\caixa + Atv 11.222.333/0001-81 11.222.333/0001-81 1 1\n",
     nullptr},
    {"relatorio", "[--completo] [--saida <arquivo.html>] <log...>",
     "mostra logs como uma página, que abre em qualquer navegador",
     "Lê um ou mais Caixora.log, também os renomeados e em qualquer ordem, e grava relatorio.html\n"
     "na pasta atual: vendas em aberto, linha do tempo, chamadas com o que fazer em cada falha.\n"
     "CNPJs, documentos, cartões e telefones saem reduzidos; com --completo, inteiros.\n\n"
     "Exemplo:\n"
     "  caixora_host relatorio --saida C:\\caixa\\dia.html \"C:\\Lumetra\\Log\\Caixora*.log\"\n",
     PrintReport},
};

}  // namespace

std::span<const Verb> AllVerbs() { return kVerbs; }

const Verb* FindVerb(std::string_view name) {
  const auto* row = std::ranges::find(kVerbs, name, &Verb::name);
  return row == std::end(kVerbs) ? nullptr : row;
}

}  // namespace caixora
