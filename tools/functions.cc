#include "tools/functions.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <type_traits>
#include <utility>

namespace caixora {
namespace {

Reply Decode(std::int32_t code) { return {Kind::kInteractive, code, std::to_string(code)}; }
Reply Decode(const char* text) { return {Kind::kTest, std::nullopt, text}; }
Reply Decode(CaixoraTexto text) {
  return {Kind::kPayment, std::nullopt, caixora_pdv::Receber(text)};
}

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
Reply Call(FARPROC address, const std::vector<Value>& values) {
  const auto function = reinterpret_cast<R (*)(P...)>(reinterpret_cast<void (*)()>(address));
  return [&]<std::size_t... I>(std::index_sequence<I...>) {
    return Decode(function(Pass<P>(values.at(I))...));
  }
  (std::index_sequence_for<P...>{});
}

// Types come from the header, so that a changed declaration changes the call with it.
template <class R, class... P>
consteval Function MakeRow(std::type_identity<R(P...)>, Kind kind, const char* name,
                           std::string_view parameters) {
  const auto blanks = static_cast<std::size_t>(std::ranges::count(parameters, ' '));
  if ((parameters.empty() ? 0 : blanks + 1) != sizeof...(P)) throw "names do not match types";
  return {name, kind, parameters, kTypes<P...>, Call<R, P...>};
}

#define CAIXORA_SALE "sCNPJCliente sCNPJParceiro dValor iCupom iLeitor"
#define CAIXORA_FLOW \
  "uFuncao sCNPJ uCampo3 sCampo4 sValor sCampo6 sCampo7 sCampo8 sCampo9 uCampo10 sCampo11"
#define CAIXORA_ROW(kind, name, parameters) \
  MakeRow(std::type_identity<decltype(name)>{}, Kind::kind, #name, parameters)

constexpr Function kFunctions[] = {
    CAIXORA_ROW(kSale, VendeCredito, CAIXORA_SALE),
    CAIXORA_ROW(kSale, VendeCreditoVista, CAIXORA_SALE),
    CAIXORA_ROW(kSale, VendeCreditoParcLoja,
                "sCNPJCliente sCNPJParceiro iParcelas dValor iCupom iLeitor"),
    CAIXORA_ROW(kSale, VendeCreditoParcAdm,
                "sCNPJCliente sCNPJParceiro iParcelas dValor iCupom iLeitor"),
    CAIXORA_ROW(kSale, VendeDebito, CAIXORA_SALE),
    CAIXORA_ROW(kSale, VendeDebitoAVista, CAIXORA_SALE),
    CAIXORA_ROW(kSale, MenuPrivate, CAIXORA_SALE),
    CAIXORA_ROW(kSale, VendeCarteiraDigitalPix, CAIXORA_SALE),
    CAIXORA_ROW(kSale, ParceleMais, CAIXORA_SALE),
    CAIXORA_ROW(kSale, VendeFrotaCompleto,
                "sCNPJCliente sCNPJParceiro dValor sKM sPlaca sMatricula iQtdeItens sItens iCupom "
                "iLeitor"),
    CAIXORA_ROW(kSale, LinkPagamento,
                "sCNPJCliente sCNPJParceiro iParcelas dValor iCupom iQtdeItens sItens sCampo011 "
                "sCampo012 iLeitor"),
    CAIXORA_ROW(kPayment, ListarLinkPagamentoPago, CAIXORA_SALE),
    CAIXORA_ROW(kPayment, ManutencaoLinkPagamento, "sCNPJCliente sCNPJParceiro iLeitor"),
    CAIXORA_ROW(kOutcome, Confirmar, "sCNPJCliente sCNPJParceiro iCupom"),
    CAIXORA_ROW(kOutcome, Desfazimento, "sCNPJCliente sCNPJParceiro iCupom"),
    CAIXORA_ROW(kPayment, Cancelar, "sCNPJCliente sCNPJParceiro dValor iCupom sControle iLeitor"),
    CAIXORA_ROW(kPayment, Reimpressao, "sCNPJCliente sCNPJParceiro iLeitor"),
    CAIXORA_ROW(kPayment, ReimpressaoDireto, "sCNPJCliente sCNPJParceiro sNSU data iCupom iLeitor"),
    CAIXORA_ROW(kPayment, Adm, CAIXORA_SALE),
    CAIXORA_ROW(kPayment, Relatorio, "sCNPJCliente sCNPJParceiro iCupom iLeitor"),
    CAIXORA_ROW(kPayment, RecargaCelular, "sCNPJCliente sCNPJParceiro iCupom iLeitor"),
    CAIXORA_ROW(kPayment, Atv, "sCNPJCliente sCNPJParceiro iCupom iLeitor"),
    CAIXORA_ROW(kPayment, SolicitarCPF, "sCNPJCliente sCNPJParceiro iCupom"),
    CAIXORA_ROW(kPayment, SolicitarCNPJ, "sCNPJCliente sCNPJParceiro iCupom"),
    CAIXORA_ROW(kPayment, SolicitarDocumento, "sCNPJCliente sCNPJParceiro iCupom"),
    CAIXORA_ROW(kTest, Teste, ""),
    CAIXORA_ROW(kInteractive, IniciaFuncaoQJInterativo, CAIXORA_FLOW),
    CAIXORA_ROW(kInteractive, AguardaFuncaoQJInterativo, ""),
    CAIXORA_ROW(kInteractive, ContinuaFuncaoQJInterativo, "sInformacao"),
    CAIXORA_ROW(kInteractive, FinalizaFuncaoQJInterativo, CAIXORA_FLOW),
    CAIXORA_ROW(kInteractive, CancelarFluxoQJInterativo, ""),
    CAIXORA_ROW(kInteractive, ConfiguraIntTefInterativo, ""),
};

}  // namespace

std::span<const Function> AllFunctions() { return kFunctions; }

const Function* FindFunction(std::string_view name) {
  const auto* row = std::ranges::find(kFunctions, name, &Function::name);
  return row == std::end(kFunctions) ? nullptr : row;
}

std::vector<std::string_view> ParameterNames(const Function& function) {
  std::vector<std::string_view> names;
  for (std::string_view rest = function.parameters; !rest.empty();)
    names.push_back(caixora_pdv::interno::Tirar(rest, " "));
  return names;
}

FARPROC AddressOf(const caixora_pdv::Biblioteca& library, const Function& function) {
  const FARPROC address = library.Procurar(function.name);
  if (address == nullptr)
    throw caixora_pdv::ErroDeUso(std::string("A biblioteca não tem a função ") + function.name);
  return address;
}

std::string EncodeText(Kind kind, std::string_view parameter, std::string_view utf8) {
  return kind == Kind::kInteractive ? caixora_pdv::ParaAnsiInterativo(parameter, utf8)
                                    : caixora_pdv::ParaAnsi(parameter, utf8);
}

Reply CallFunction(const Function& function, FARPROC address, const std::vector<Value>& values) {
  const auto start = std::chrono::steady_clock::now();
  Reply reply = function.call(address, values);
  const auto elapsed = std::chrono::steady_clock::now() - start;
  reply.kind = function.kind;
  reply.milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count();
  return reply;
}

}  // namespace caixora
