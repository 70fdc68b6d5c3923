#include "tools/functions.h"

#include <algorithm>
#include <array>
#include <type_traits>
#include <utility>

namespace caixora {
namespace {

template <class P>
consteval Type TypeOf() {
  if (std::is_same_v<P, const char*>) return Type::kText;
  if (std::is_same_v<P, std::int32_t>) return Type::kInteger;
  if (std::is_same_v<P, std::uint32_t>) return Type::kNatural;
  if (std::is_same_v<P, double>) return Type::kAmount;
  throw "a parameter of an unknown type";
}

template <class... P>
constexpr std::array<Type, sizeof...(P)> kTypes = {TypeOf<P>()...};

template <class P>
P Pass(const Value& value) {
  if constexpr (std::is_same_v<P, const char*>)
    return std::get<std::string>(value).c_str();
  else
    return std::get<P>(value);
}

template <class R, class... P>
Returned Call(Address address, const std::vector<Value>& values) {
  const auto function = reinterpret_cast<R (*)(P...)>(address);
  return [&]<std::size_t... I>(std::index_sequence<I...>) {
    return Returned(function(Pass<P>(values.at(I))...));
  }
  (std::index_sequence_for<P...>{});
}

// Types come from the header, so that a changed declaration changes the call with it.
template <class R, class... P>
consteval Function MakeRow(std::type_identity<R(P...)>, Kind kind, const char* name,
                           std::string_view parameters, std::string_view summary) {
  const auto blanks = static_cast<std::size_t>(std::ranges::count(parameters, ' '));
  if ((parameters.empty() ? 0 : blanks + 1) != sizeof...(P)) throw "names do not match types";
  return {name, kind, parameters, summary, kTypes<P...>, Call<R, P...>};
}

#define CAIXORA_SALE "sCNPJCliente sCNPJParceiro dValor iCupom iLeitor"
#define CAIXORA_FLOW \
  "uFuncao sCNPJ uCampo3 sCampo4 sValor sCampo6 sCampo7 sCampo8 sCampo9 uCampo10 sCampo11"
#define CAIXORA_ROW(kind, name, parameters, summary) \
  MakeRow(std::type_identity<decltype(name)>{}, Kind::kind, #name, parameters, summary)

constexpr Function kFunctions[] = {
    CAIXORA_ROW(kSale, VendeCredito, CAIXORA_SALE, "venda no crédito; o GP pergunta a forma"),
    CAIXORA_ROW(kSale, VendeCreditoVista, CAIXORA_SALE, "venda no crédito à vista"),
    CAIXORA_ROW(kSale, VendeCreditoParcLoja,
                "sCNPJCliente sCNPJParceiro iParcelas dValor iCupom iLeitor",
                "venda no crédito parcelada pela loja"),
    CAIXORA_ROW(kSale, VendeCreditoParcAdm,
                "sCNPJCliente sCNPJParceiro iParcelas dValor iCupom iLeitor",
                "venda no crédito parcelada pela administradora"),
    CAIXORA_ROW(kSale, VendeDebito, CAIXORA_SALE, "venda no débito; o GP pergunta a forma"),
    CAIXORA_ROW(kSale, VendeDebitoAVista, CAIXORA_SALE, "venda no débito à vista"),
    CAIXORA_ROW(kSale, MenuPrivate, CAIXORA_SALE, "venda pelo menu private label do GP"),
    CAIXORA_ROW(kSale, VendeCarteiraDigitalPix, CAIXORA_SALE, "venda com carteira digital ou Pix"),
    CAIXORA_ROW(kSale, ParceleMais, CAIXORA_SALE, "venda no programa ParceleMais"),
    CAIXORA_ROW(kSale, VendeFrotaCompleto,
                "sCNPJCliente sCNPJParceiro dValor sKM sPlaca sMatricula iQtdeItens sItens iCupom "
                "iLeitor",
                "venda de frota, com os itens"),
    CAIXORA_ROW(kSale, LinkPagamento,
                "sCNPJCliente sCNPJParceiro iParcelas dValor iCupom iQtdeItens sItens sCampo011 "
                "sCampo012 iLeitor",
                "cria um link de pagamento"),
    CAIXORA_ROW(kPayment, ListarLinkPagamentoPago, CAIXORA_SALE, "lista os links já pagos"),
    CAIXORA_ROW(kPayment, ManutencaoLinkPagamento, "sCNPJCliente sCNPJParceiro iLeitor",
                "abre no GP a manutenção de links"),
    CAIXORA_ROW(kOutcome, Confirmar, "sCNPJCliente sCNPJParceiro iCupom",
                "confirma a venda do cupom, sem esperar o GP"),
    CAIXORA_ROW(kOutcome, Desfazimento, "sCNPJCliente sCNPJParceiro iCupom",
                "desfaz a venda do cupom, sem esperar o GP"),
    CAIXORA_ROW(kPayment, Cancelar, "sCNPJCliente sCNPJParceiro dValor iCupom sControle iLeitor",
                "cancela uma transação já confirmada"),
    CAIXORA_ROW(kPayment, Reimpressao, "sCNPJCliente sCNPJParceiro iLeitor",
                "abre no GP o menu de reimpressão"),
    CAIXORA_ROW(kPayment, ReimpressaoDireto, "sCNPJCliente sCNPJParceiro sNSU data iCupom iLeitor",
                "reimprime a transação de um NSU e uma data"),
    CAIXORA_ROW(kPayment, Adm, CAIXORA_SALE, "abre o menu administrativo do GP"),
    CAIXORA_ROW(kPayment, Relatorio, "sCNPJCliente sCNPJParceiro iCupom iLeitor",
                "relatório de transações do GP"),
    CAIXORA_ROW(kPayment, RecargaCelular, "sCNPJCliente sCNPJParceiro iCupom iLeitor",
                "recarga de celular"),
    CAIXORA_ROW(kPayment, Atv, "sCNPJCliente sCNPJParceiro iCupom iLeitor",
                "pergunta se o GP está ativo; inicia um GP fechado"),
    CAIXORA_ROW(kPayment, SolicitarCPF, "sCNPJCliente sCNPJParceiro iCupom",
                "o GP pede o CPF ao cliente"),
    CAIXORA_ROW(kPayment, SolicitarCNPJ, "sCNPJCliente sCNPJParceiro iCupom",
                "o GP pede o CNPJ ao cliente"),
    CAIXORA_ROW(kPayment, SolicitarDocumento, "sCNPJCliente sCNPJParceiro iCupom",
                "o GP pede o CPF ou o CNPJ ao cliente"),
    CAIXORA_ROW(kTest, Teste, "",
                "devolve OK e esquece a confirmação pendente; não toca em arquivo"),
    CAIXORA_ROW(kInteractive, IniciaFuncaoQJInterativo, CAIXORA_FLOW,
                "inicia um fluxo interativo no Trevix"),
    CAIXORA_ROW(kInteractive, AguardaFuncaoQJInterativo, "",
                "consulta, uma vez, a próxima pergunta do Trevix"),
    CAIXORA_ROW(kInteractive, ContinuaFuncaoQJInterativo, "sInformacao",
                "responde à última pergunta do Trevix"),
    CAIXORA_ROW(kInteractive, FinalizaFuncaoQJInterativo, CAIXORA_FLOW,
                "encerra o fluxo que teve retorno"),
    CAIXORA_ROW(kInteractive, CancelarFluxoQJInterativo, "", "abandona o fluxo"),
    CAIXORA_ROW(kInteractive, ConfiguraIntTefInterativo, "",
                "auxílio de desenvolvimento: abre o Trevix de uma pasta fixa"),
};

}  // namespace

std::span<const Function> AllFunctions() { return kFunctions; }

const Function* FindFunction(std::string_view name) {
  const auto* row = std::ranges::find(kFunctions, name, &Function::name);
  return row == std::end(kFunctions) ? nullptr : row;
}

std::vector<std::string_view> ParameterNames(const Function& function) {
  std::vector<std::string_view> names;
  for (std::string_view rest = function.parameters; !rest.empty();) {
    const std::size_t size = std::min(rest.find(' '), rest.size());
    names.push_back(rest.substr(0, size));
    rest.remove_prefix(std::min(size + 1, rest.size()));
  }
  return names;
}

std::int32_t LeastFor(const Function& function, std::string_view parameter) {
  // A sale and its outcome are found by their coupon.
  const bool counted = function.kind == Kind::kSale || function.kind == Kind::kOutcome;
  return counted && parameter == "iCupom" ? 1 : INT32_MIN;
}

std::string WrongValues(const Function& function, std::span<const std::string_view> names,
                        std::span<const Value> values) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (function.kind == Kind::kSale && function.types[i] == Type::kAmount &&
        std::get<double>(values[i]) == 0)
      return std::string(names[i]) + ": uma venda é de ao menos um centavo";
    if (names[i] != "iQtdeItens") continue;
    // The library ignores items beyond the count, and all of them without one, and says nothing.
    const auto& items = std::get<std::string>(values[i + 1]);
    const auto sent = items.empty() ? 0 : std::ranges::count(items, '|') + 1;
    if (std::get<std::int32_t>(values[i]) != sent)
      return "iQtdeItens: sItens tem " + std::to_string(sent);
  }
  return {};
}

}  // namespace caixora
