#include "exchange/operations.h"

#include <algorithm>

namespace caixora {
namespace {

// In ascending order of codes. GPs in the field and the scripts of support staff know these records
// and lines byte for byte. Hence labels that end in a blank and others that do not, names that
// differ from the export's, an "iExibirTela" that no operation has, a second blank in the header of
// 98, and the last line that is missing from 22 and 95 (whose records end in a line end).
//
// clang-format off
constexpr Operation kOperations[] = {
    // code, line in the log, record
    {0,
     "[METODO] VendeCredito: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - dValor:{dValor} - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = CRT|001-000 = {iCupom}|003-000 = {dValor}|800-001 = 0|800-005 = {sCNPJCliente}|"
     "800-006 = {iLeitor}|999-999 = 0"},
    {1,
     "[METODO] VendeCreditoVista: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - dValor:{dValor} - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = CRT|001-000 = {iCupom}|003-000 = {dValor}|800-001 = 0|800-002 = 0|"
     "800-005 = {sCNPJCliente}|800-006 = {iLeitor}|999-999 = 0"},
    {2,
     "[METODO] VendeCreditoParcLoja: sCNPJCliente:{sCNPJCliente}"
     " - sCNPJParceiro:{sCNPJParceiro} - iParcelas:{iParcelas} - dValor:{dValor}"
     " - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = CRT|001-000 = {iCupom}|003-000 = {dValor}|800-001 = 0|800-002 = 1|800-003 = 1|"
     "800-004 = {iParcelas}|800-005 = {sCNPJCliente}|800-006 = {iLeitor}|999-999 = 0"},
    {3,
     "[METODO] VendeCreditoParcAdm: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - iParcelas:{iParcelas} - dValor:{dValor} - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = CRT|001-000 = {iCupom}|003-000 = {dValor}|800-001 = 0|800-002 = 1|800-003 = 0|"
     "800-004 = {iParcelas}|800-005 = {sCNPJCliente}|800-006 = {iLeitor}|999-999 = 0"},
    {4,
     "[METODO] VendeDebito: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - dValor:{dValor} - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = CRT|001-000 = {iCupom}|003-000 = {dValor}|800-001 = 1|800-005 = {sCNPJCliente}|"
     "800-006 = {iLeitor}|999-999 = 0"},
    {5,
     "[METODO] Cancelar: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - dValor:{dValor} - iCupom:{iCupom} - sControle:{sControle} - iLeitor:{iLeitor}",
     "000-000 = CNC|001-000 = {iCupom}|<003-000 = {dValor}|>800-005 = {sCNPJCliente}|"
     "800-006 = {iLeitor}|<800-007 = {sControle}|>999-999 = 0"},
    {6,
     "[METODO] Reimpressao: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - iLeitor:{iLeitor}",
     "000-000 = ADM|000-001 = REIMPRESSAO|800-005 = {sCNPJCliente}|800-006 = {iLeitor}|"
     "999-999 = 0"},
    {11,
     "[METODO] Adm: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - dValor:{dValor} - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = ADM|001-000 = {iCupom}|<003-000 = {dValor}|>800-005 = {sCNPJCliente}|"
     "800-006 = {iLeitor}|999-999 = 0"},
    {12,
     "[METODO] Relatorio:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro} - iCupom:{iCupom}"
     " - iLeitor:{iLeitor}",
     "000-000 = REL|001-000 = {iCupom}|003-000 = {dValor}|800-005 = {sCNPJCliente}|"
     "800-006 = {iLeitor}|999-999 = 0"},
    {14,
     "[METODO] MenuPrivate: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - dValor:{dValor} - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = CRT|001-000 = {iCupom}|003-000 = {dValor}|800-001 = 2|800-005 = {sCNPJCliente}|"
     "800-006 = {iLeitor}|999-999 = 0"},
    {15,
     "[METODO] SolicitarCPF:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro} - iCupom:{iCupom}",
     "000-000 = CPF|800-008 = 0|999-999 = 0"},
    {20,
     "[METODO] VendeDebitoAVista: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - dValor:{dValor} - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = CRT|001-000 = {iCupom}|003-000 = {dValor}|800-001 = 1|800-002 = 0|"
     "800-005 = {sCNPJCliente}|800-006 = {iLeitor}|999-999 = 0"},
    {21,
     "[METODO] RecargaCelular: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - dValor:{dValor} - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = CEL|001-000 = {iCupom}|800-005 = {sCNPJCliente}|800-006 = {iLeitor}|999-999 = 0"},
    {22,
     "[METODO] LinkPagamento: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - iParcelas:{iParcelas} - dValor:{dValor} - iCupom:{iCupom} - iQtdeItens:{iQtdeItens}"
     " - Itens:{sItens} - iLeitor:{iLeitor}",
     "000-000 = CRT|001-000 = {iCupom}|003-000 = {dValor}|{*link}800-001 = 4|"
     "800-011 = {sCampo011}|800-012 = {sCampo012}|800-010 = {iParcelas}|",
     Extra::kLogsRecord},
    {23,
     "[METODO] Carteira Digital/Pix: sCNPJCliente:{sCNPJCliente}"
     " - sCNPJParceiro:{sCNPJParceiro} - dValor:{dValor} - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = CRT|001-000 = {iCupom}|003-000 = {dValor}|800-001 = 5|800-005 = {sCNPJCliente}|"
     "800-006 = {iLeitor}|999-999 = 0"},
    {24,
     "[METODO] Listar LinkPago Pago: sCNPJCliente:{sCNPJCliente}"
     " - sCNPJParceiro:{sCNPJParceiro} - dValor:{dValor} - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = CRT|001-000 = {iCupom}|003-000 = {dValor}|800-001 = 6|800-006 = {iLeitor}|"
     "999-999 = 0"},
    {25,
     "[METODO] FrotaCompleto: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - dValor:{dValor} - sKM: {sKM} - sPlaca: {sPlaca} - sMatricula: {sMatricula}"
     " - iQtdeItens: {iQtdeItens} - iCupom:{iCupom} - sItens: {sItens} - iLeitor:{iLeitor}",
     "000-000 = CRT|001-000 = {iCupom}|003-000 = {dValor}|"
     "<250-000 = {sKM}|><250-001 = {sPlaca}|><250-002 = {sMatricula}|>{*frota}"
     "800-001 = 2|800-006 = {iLeitor}|999-999 = 0"},
    {26,
     "[METODO] ReimpressaoDireto: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - sNSU:{sNSU} - data: {data} - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = ADM|000-001 = REIMPRESSAO|012-000 = {sNSU}|022-000 = {data}|"
     "800-005 = {sCNPJCliente}|800-006 = {iLeitor}|999-999 = 0"},
    {27,
     "[METODO] SolicitarCNPJ:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro} - iCupom:{iCupom}"
     " - iExibirTela:0",
     "000-000 = CNPJ|800-008 = 0|999-999 = 0"},
    {28,
     "[METODO] SolicitarDocumento:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - iCupom:{iCupom} - iExibirTela:0",
     "000-000 = CPFCNPJ|800-008 = 0|999-999 = 0"},
    {29,
     "[METODO] ParceleMais: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - iParcelas:{iParcelas} - dValor:{dValor} - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = CRT|001-000 = {iCupom}|003-000 = {dValor}|800-001 = 7|800-002 = 0|"
     "800-005 = {sCNPJCliente}|800-006 = {iLeitor}|999-999 = 0"},
    {30,
     "[METODO] ManutencaoLinkPagamento: sCNPJCliente:{sCNPJCliente}"
     " - sCNPJParceiro:{sCNPJParceiro} - iLeitor:{iLeitor}",
     "000-000 = ADM|000-001 = MANUTLINKPGTO|800-006 = {iLeitor}|999-999 = 0"},
    {95,
     "",
     "000-000 = CRT|001-000 = {iCupom}|"},
    {97,
     "[METODO] Atv: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - iCupom:{iCupom} - iLeitor:{iLeitor}",
     "000-000 = ATV|001-000 = {iCupom}|999-999 = 0",
     Extra::kLiveness},
    {98,
     "[METODO] Confirmar: sCNPJCliente:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro}"
     " - iCupom:{iCupom}",
     "000-000 =  CNF|001-000 = {iCupom}|800-005 = {sCNPJCliente}|999-999 = 0"},
    {99,
     "[METODO] Desfazimento:{sCNPJCliente} - sCNPJParceiro:{sCNPJParceiro} - iCupom:{iCupom}",
     "000-000 = NCN|001-000 = {iCupom}|800-005 = {sCNPJCliente}|999-999 = 0"},
};
// clang-format on

constexpr bool IsKey(std::string_view key) {
  if (key.size() != 7 || key[3] != '-') return false;
  return std::count_if(key.begin(), key.end(), [](char c) { return c >= '0' && c <= '9'; }) == 6;
}

// One header first, well-formed lines, optional ones whole, no key twice, an end of one kind or the
// other.
constexpr bool IsRecord(std::string_view text) {
  if (!text.starts_with("000-000 = ")) return false;
  if (!text.ends_with("999-999 = 0") && !text.ends_with('|')) return false;
  for (std::size_t i = 1; i < text.size(); ++i)
    if (text[i] == '>' && text[i - 1] != '|') return false;
  for (std::string_view rest = text; !rest.empty();) {
    if (rest.starts_with("{*")) rest.remove_prefix(rest.find('}') + 1);  // items bring their keys
    if (rest.starts_with('<') || rest.starts_with('>')) {
      rest.remove_prefix(1);
      continue;
    }
    const std::string_view line = rest.substr(0, rest.find('|'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    const std::string_view key = line.substr(0, 7);
    if (!IsKey(key) || line.substr(7, 3) != " = ") return false;
    if (text.find(key) != text.rfind(key)) return false;
  }
  return true;
}

constexpr bool TableIsSound() {
  std::int32_t last = -1;
  for (const Operation& operation : kOperations) {
    if (operation.code <= last || !IsRecord(operation.request.text())) return false;
    for (const Part& part : operation.log_line.parts())
      if (part.optional) return false;  // the log shows empty arguments as well
    last = operation.code;
  }
  return true;
}
static_assert(TableIsSound());

}  // namespace

const Operation* FindOperation(std::int32_t code) {
  if (code >= 7 && code <= 10) code = 11;  // the administrative menu under its older numbers
  for (const Operation& operation : kOperations)
    if (operation.code == code) return &operation;
  return nullptr;
}

}  // namespace caixora
