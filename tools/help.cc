#include "tools/help.h"

#include <algorithm>
#include <string_view>

namespace caixora {
namespace {

struct Parameter {
  std::string_view name;
  std::string_view example;
  std::string_view meaning;
};

constexpr Parameter kParameters[] = {
    {"sCNPJCliente", "12.345.678/0001-95",
     "CNPJ do lojista; \".\", \"-\" e \"/\" são dispensáveis"},
    {"sCNPJParceiro", "11.222.333/0001-81", "CNPJ do fabricante do PDV"},
    {"dValor", "12,50", "valor, como 12,50, 12.50 ou 12; sem separador de milhar"},
    {"iCupom", "17", "número que identifica a transação para o GP; nunca use um duas vezes"},
    {"iLeitor", "1", "número do leitor (terminal)"},
    {"iParcelas", "3", "número de parcelas, ao menos 1"},
    {"sKM", "45000", "hodômetro; vazio não é enviado"},
    {"sPlaca", "ABC1D23", "placa; vazia não é enviada"},
    {"sMatricula", "1001", "matrícula do motorista; vazia não é enviada"},
    {"iQtdeItens", "1", "quantos itens há em sItens"},
    {"sItens", "", "itens separados por \"|\"; vazio, com iQtdeItens 0, para nenhum"},
    {"sCampo011", "", "texto livre; pode ser vazio"},
    {"sCampo012", "", "texto livre; pode ser vazio"},
    {"sControle", "", "o campo \"Controle\" do resultado da venda; vazio não é enviado"},
    {"sNSU", "2193177", "NSU da transação"},
    {"data", "25/03/2021", "data da transação"},
    {"sInformacao", "1", "a resposta, como o Trevix a espera; sem \"¬\""},
    {"uFuncao", "20", "número da função do Trevix"},
    {"sCNPJ", "11.222.333/0001-81", "CNPJ do lojista"},
    {"uCampo3", "1", "número, para o Trevix"},
    {"sCampo4", "", "texto, para o Trevix"},
    {"sValor", "12,50", "valor em reais, com vírgula e duas casas no fim; sem separador de milhar"},
    {"sCampo6", "000545", "texto, para o Trevix; com um \"*\" o encerramento não envia"},
    {"sCampo7", "20210325", "texto, para o Trevix e o envio"},
    {"sCampo8", "009", "texto, para o Trevix e o envio"},
    {"sCampo9", "652", "texto, para o Trevix e o envio"},
    {"uCampo10", "7", "número, para o Trevix"},
    {"sCampo11", "", "aceito e não usado"},
};

// Where a function means something else by a name, or needs more than its parameters say.
struct Special {
  std::string_view function;
  Parameter parameter;
};

constexpr Special kSpecial[] = {
    {"VendeFrotaCompleto",
     {"sItens", "1-DIESEL S10-40-6.25-0-250.00",
      "itens separados por \"|\", cada um de até seis campos separados por \"-\""}},
    {"LinkPagamento",
     {"sItens", "7891¬CAFE¬2¬13,50¬0¬27,00",
      "itens separados por \"|\", cada um de seis campos separados por \"¬\": dois textos, "
      "quantidade e três números"}},
    {"Adm", {"dValor", "0", "valor, como 12,50; 0 não é enviado"}},
    {"Cancelar", {"dValor", "12,50", "valor, como 12,50; 0 não é enviado"}},
    {"FinalizaFuncaoQJInterativo",
     {"uFuncao", "99",
      "número da função de encerramento do Trevix; o do início faria outra venda"}},
};

// A name without a row ends the compilation where constants need it, and the test where not.
const Parameter& Meaning(const Function& function, std::string_view name) {
  for (const Special& row : kSpecial)
    if (row.function == function.name && row.parameter.name == name) return row.parameter;
  return *std::ranges::find(kParameters, name, &Parameter::name);
}

std::string_view TypeName(Type type) {
  switch (type) {
    case Type::kText:
      return "texto";
    case Type::kInteger:
      return "inteiro";
    case Type::kNatural:
      return "inteiro, de 0 em diante";
    case Type::kAmount:
      break;
  }
  return "reais";
}

std::string_view ReturnHelp(const Function& function) {
  constexpr std::string_view kText = "AguardaFuncaoQJInterativo";
  switch (function.kind) {
    case Kind::kSale:
      return "  S;0;<mensagem>  recusada, com falha ou incerta\n"
             "  S;1;...         aprovada, o GP anunciou comprovante\n"
             "  S;2;...         aprovada, o GP não anunciou comprovante\n"
             "  S;2;COMANDO COM SUCESSO, sem NSU, é uma resposta local: não é uma aprovação.\n"
             "  Incertas, e a desfazer: a resposta local, GP NAO ATIVO, FALHA INTERNA, VERIFIQUE\n"
             "  e um GP NÃO ATIVO que veio depois de o pedido ser gravado.\n"
             "  Depois de uma aprovação: Confirmar, ou Desfazimento, com o mesmo cupom.\n";
    case Kind::kOutcome:
      return "  S;2;COMANDO COM SUCESSO  o pedido foi gravado; o GP não é esperado\n"
             "  S;0;<mensagem>           não foi: repita antes de qualquer outra operação\n";
    case Kind::kPayment:
      return "  S;0;<mensagem>  recusada ou com falha\n"
             "  S;1;... ou S;2;...  feita, com ou sem comprovante anunciado\n";
    case Kind::kTest:
      return "  OK\n";
    case Kind::kInteractive:
      break;
  }
  return function.name == kText
             ? "  uma pergunta; um texto vazio: nada ainda; um com [RETORNO]: o fluxo terminou;\n"
               "  um que começa por [ERROABORTAR]#: abandone o fluxo\n"
             : "  0: sucesso; outro código: o seu significado é mostrado\n";
}

std::string Quoted(std::string_view argument) {
  const bool plain = !argument.empty() && argument.find_first_of(" |") == std::string_view::npos;
  return plain ? std::string(argument) : "\"" + std::string(argument) + "\"";
}

// A name and what it takes.
std::string Heading(std::string_view name, std::string_view parameters) {
  return std::string(name) + (parameters.empty() ? "" : " ") + std::string(parameters) + "\n";
}

}  // namespace

std::string Example(const Function& function) {
  std::string line = "caixora_host " + std::string(function.name);
  for (const std::string_view name : ParameterNames(function))
    line += " " + Quoted(Meaning(function, name).example);
  return line;
}

std::string FunctionHelp(const Function& function) {
  std::string text =
      Heading(function.name, function.parameters) + "  " + std::string(function.summary) + "\n";
  const std::vector<std::string_view> names = ParameterNames(function);
  if (!names.empty()) text += "\nArgumentos:\n";
  for (std::size_t i = 0; i < names.size(); ++i)
    text.append("  ")
        .append(names[i])
        .append(" (")
        .append(TypeName(function.types[i]))
        .append(")\n      ")
        .append(Meaning(function, names[i]).meaning)
        .append("\n");
  text.append("\nDevolve:\n").append(ReturnHelp(function));
  return text + "\nExemplo:\n  " + Example(function) + "\n";
}

std::string VerbHelp(const Verb& verb) {
  return Heading(verb.name, verb.parameters) + "  " + std::string(verb.summary) + "\n\n" +
         std::string(verb.help);
}

std::string ListOfAll(std::span<const Verb> verbs) {
  std::string text;
  const auto add = [&](const auto& row) {
    text += Heading(row.name, row.parameters) + "    " + std::string(row.summary) + "\n";
  };
  std::ranges::for_each(AllFunctions(), add);
  std::ranges::for_each(verbs, add);
  return text;
}

}  // namespace caixora
