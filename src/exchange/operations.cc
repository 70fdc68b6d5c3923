#include "exchange/operations.h"

#include <algorithm>

namespace caixora {
namespace {

// clang-format off

// Lines that several records share.
constexpr Line kCRT        {"000-000", "CRT"};
constexpr Line kADM        {"000-000", "ADM"};
constexpr Line kCupom      {"001-000", Value::kCupom};
constexpr Line kValor      {"003-000", Value::kValor};
constexpr Line kValorSeHa  {"003-000", Value::kValor, When::kWithAmount};
constexpr Line kCliente    {"800-005", Value::kCliente};
constexpr Line kLeitor     {"800-006", Value::kLeitor};
constexpr Line kParcelas   {"800-004", Value::kParcelas};
constexpr Line kFim        {"999-999", "0"};

// Labels behind the client's CNPJ. Some end in a blank and others do not; support staff search logs
// for them as they stand.
constexpr LogLabel kParceiro{" - sCNPJParceiro:", Value::kParceiro};
constexpr LogLabel kLogCupom{" - iCupom:",        Value::kCupom};
constexpr LogLabel kLogLeitor{" - iLeitor:",      Value::kLeitor};
constexpr LogLabel kLogValor{" - dValor:",        Value::kValor};
constexpr LogLabel kLogParcelas{" - iParcelas:",  Value::kParcelas};

constexpr std::array kVenda      {kParceiro, kLogValor, kLogCupom, kLogLeitor};
constexpr std::array kParcelada  {kParceiro, kLogParcelas, kLogValor, kLogCupom, kLogLeitor};
constexpr std::array kCancelar   {kParceiro, kLogValor, kLogCupom, LogLabel{" - sControle:", Value::kControle}, kLogLeitor};
constexpr std::array kSoLeitor   {kParceiro, kLogLeitor};
constexpr std::array kSoCupom    {kParceiro, kLogCupom};
constexpr std::array kCupomLeitor{kParceiro, kLogCupom, kLogLeitor};
// No operation has the argument "iExibirTela"; its 0 is part of the label.
constexpr std::array kDocumento  {kParceiro, kLogCupom, LogLabel{" - iExibirTela:0", Value::kNone}};
constexpr std::array kLink       {kParceiro, kLogParcelas, kLogValor, kLogCupom, LogLabel{" - iQtdeItens:", Value::kQtdeItens},
                                  LogLabel{" - Itens:", Value::kItens}, kLogLeitor};
constexpr std::array kFrota      {kParceiro, kLogValor, LogLabel{" - sKM: ", Value::kKM}, LogLabel{" - sPlaca: ", Value::kPlaca},
                                  LogLabel{" - sMatricula: ", Value::kMatricula}, LogLabel{" - iQtdeItens: ", Value::kQtdeItens},
                                  kLogCupom, LogLabel{" - sItens: ", Value::kItens}, kLogLeitor};
constexpr std::array kReimpressao{kParceiro, LogLabel{" - sNSU:", Value::kNSU}, LogLabel{" - data: ", Value::kData}, kLogCupom, kLogLeitor};

// In ascending order of codes. GPs in the field and the scripts of support staff know these records
// and lines byte for byte. Hence a terminator that is missing from 22 and 95, the second blank behind
// the equals sign of 98, and heads that differ from the export's name.
constexpr Operation kOperations[] = {
  { 0,  0, "[METODO] VendeCredito: sCNPJCliente:",            kVenda,
    {kCRT, kCupom, kValor, {"800-001", "0"}, kCliente, kLeitor, kFim}},
  { 1,  1, "[METODO] VendeCreditoVista: sCNPJCliente:",       kVenda,
    {kCRT, kCupom, kValor, {"800-001", "0"}, {"800-002", "0"}, kCliente, kLeitor, kFim}},
  { 2,  2, "[METODO] VendeCreditoParcLoja: sCNPJCliente:",    kParcelada,
    {kCRT, kCupom, kValor, {"800-001", "0"}, {"800-002", "1"}, {"800-003", "1"}, kParcelas, kCliente, kLeitor, kFim}},
  { 3,  3, "[METODO] VendeCreditoParcAdm: sCNPJCliente:",     kParcelada,
    {kCRT, kCupom, kValor, {"800-001", "0"}, {"800-002", "1"}, {"800-003", "0"}, kParcelas, kCliente, kLeitor, kFim}},
  { 4,  4, "[METODO] VendeDebito: sCNPJCliente:",             kVenda,
    {kCRT, kCupom, kValor, {"800-001", "1"}, kCliente, kLeitor, kFim}},
  { 5,  5, "[METODO] Cancelar: sCNPJCliente:",                kCancelar,
    {{"000-000", "CNC"}, kCupom, kValorSeHa, kCliente, kLeitor, {"800-007", Value::kControle, When::kNotEmpty}, kFim}},
  { 6,  6, "[METODO] Reimpressao: sCNPJCliente:",             kSoLeitor,
    {kADM, {"000-001", "REIMPRESSAO"}, kCliente, kLeitor, kFim}},
  { 7, 11, "[METODO] Adm: sCNPJCliente:",                     kVenda,
    {kADM, kCupom, kValorSeHa, kCliente, kLeitor, kFim}},
  {12, 12, "[METODO] Relatorio:",                             kCupomLeitor,
    {{"000-000", "REL"}, kCupom, kValor, kCliente, kLeitor, kFim}},
  {14, 14, "[METODO] MenuPrivate: sCNPJCliente:",             kVenda,
    {kCRT, kCupom, kValor, {"800-001", "2"}, kCliente, kLeitor, kFim}},
  {15, 15, "[METODO] SolicitarCPF:",                          kSoCupom,
    {{"000-000", "CPF"}, {"800-008", "0"}, kFim}},
  {20, 20, "[METODO] VendeDebitoAVista: sCNPJCliente:",       kVenda,
    {kCRT, kCupom, kValor, {"800-001", "1"}, {"800-002", "0"}, kCliente, kLeitor, kFim}},
  {21, 21, "[METODO] RecargaCelular: sCNPJCliente:",          kVenda,
    {{"000-000", "CEL"}, kCupom, kCliente, kLeitor, kFim}},
  {22, 22, "[METODO] LinkPagamento: sCNPJCliente:",           kLink,
    {kCRT, kCupom, kValor, Line(AppendLinkItems), {"800-001", "4"}, {"800-011", Value::kCampo011}, {"800-012", Value::kCampo012},
     {"800-010", Value::kParcelas}}, Extra::kLogsRecord},
  {23, 23, "[METODO] Carteira Digital/Pix: sCNPJCliente:",    kVenda,
    {kCRT, kCupom, kValor, {"800-001", "5"}, kCliente, kLeitor, kFim}},
  {24, 24, "[METODO] Listar LinkPago Pago: sCNPJCliente:",    kVenda,
    {kCRT, kCupom, kValor, {"800-001", "6"}, kLeitor, kFim}},
  {25, 25, "[METODO] FrotaCompleto: sCNPJCliente:",           kFrota,
    {kCRT, kCupom, kValor, {"250-000", Value::kKM, When::kNotEmpty}, {"250-001", Value::kPlaca, When::kNotEmpty},
     {"250-002", Value::kMatricula, When::kNotEmpty}, Line(AppendFleetItems), {"800-001", "2"}, kLeitor, kFim}},
  {26, 26, "[METODO] ReimpressaoDireto: sCNPJCliente:",       kReimpressao,
    {kADM, {"000-001", "REIMPRESSAO"}, {"012-000", Value::kNSU}, {"022-000", Value::kData}, kCliente, kLeitor, kFim}},
  {27, 27, "[METODO] SolicitarCNPJ:",                         kDocumento,
    {{"000-000", "CNPJ"}, {"800-008", "0"}, kFim}},
  {28, 28, "[METODO] SolicitarDocumento:",                    kDocumento,
    {{"000-000", "CPFCNPJ"}, {"800-008", "0"}, kFim}},
  {29, 29, "[METODO] ParceleMais: sCNPJCliente:",             kParcelada,
    {kCRT, kCupom, kValor, {"800-001", "7"}, {"800-002", "0"}, kCliente, kLeitor, kFim}},
  {30, 30, "[METODO] ManutencaoLinkPagamento: sCNPJCliente:", kSoLeitor,
    {kADM, {"000-001", "MANUTLINKPGTO"}, kLeitor, kFim}},
  {95, 95, {},                                                {},
    {kCRT, kCupom}},
  {97, 97, "[METODO] Atv: sCNPJCliente:",                     kCupomLeitor,
    {{"000-000", "ATV"}, kCupom, kFim}, Extra::kLiveness},
  {98, 98, "[METODO] Confirmar: sCNPJCliente:",               kSoCupom,
    {{"000-000", " CNF"}, kCupom, kCliente, kFim}},
  {99, 99, "[METODO] Desfazimento:",                          kSoCupom,
    {{"000-000", "NCN"}, kCupom, kCliente, kFim}},
};

// clang-format on

constexpr bool IsKey(std::string_view key) {
  if (key.size() != 7 || key[3] != '-') return false;
  return std::count_if(key.begin(), key.end(), [](char c) { return c >= '0' && c <= '9'; }) == 6;
}

// A table that could not be meant does not compile: ascending codes, one header first, well-formed
// keys, none twice, each line with exactly one source.
constexpr bool TableIsSound() {
  std::int32_t last = -1;
  for (const Operation& operation : kOperations) {
    if (operation.first_code <= last || operation.last_code < operation.first_code) return false;
    last = operation.last_code;
    if (operation.record.begin()->key != "000-000") return false;
    for (const Line& line : operation.record) {
      if (line.key.empty()) continue;  // an item block
      const bool unique = std::count_if(operation.record.begin(), operation.record.end(),
                                        [&](const Line& o) { return o.key == line.key; }) == 1;
      if (!IsKey(line.key) || !unique) return false;
      if (line.text.empty() == (line.value == Value::kNone)) return false;
    }
  }
  return true;
}
static_assert(TableIsSound());

}  // namespace

const Operation* FindOperation(std::int32_t code) {
  for (const Operation& operation : kOperations)
    if (code >= operation.first_code && code <= operation.last_code) return &operation;
  return nullptr;
}

}  // namespace caixora
