#include "simulators/gp_operations.h"

#include <algorithm>
#include <iterator>

#include "support/ansi.h"

namespace caixora::gp {
namespace {

constexpr std::string_view kApproved = u8"TRANSAÇÃO APROVADA"_ansi;

constexpr Operation kOperations[] = {
    {"CRT", "0", "10", Posting::kSale, true, "CREDITO", kApproved},
    {"CRT", "1", "20", Posting::kSale, true, "DEBITO", kApproved},
    {"CRT", "2F", "31", Posting::kSale, true, "FROTA", kApproved},
    {"CRT", "2", "30", Posting::kSale, true, "PRIVATE LABEL", kApproved},
    {"CRT", "4", "40", Posting::kSale, true, "LINK DE PAGAMENTO", "LINK GERADO"},
    {"CRT", "5", "50", Posting::kSale, true, "CARTEIRA DIGITAL PIX", kApproved},
    {"CRT", "6", "", Posting::kNone, true, "LINKS PAGOS", "LISTA DE LINKS PAGOS"},
    {"CRT", "7", "70", Posting::kSale, true, "PARCELEMAIS", kApproved},
    {"CRT", "", "10", Posting::kSale, true, "VENDA", kApproved},
    {"CNC", "", "90", Posting::kFollowUp, true, "CANCELAMENTO", u8"CANCELAMENTO EFETUADO"_ansi},
    {"ADM", "REIMPRESSAO", "95", Posting::kNone, true, "REIMPRESSAO",
     u8"REIMPRESSÃO EFETUADA"_ansi},
    {"ADM", "MANUTLINKPGTO", "", Posting::kNone, false, "", u8"MANUTENÇÃO DE LINKS CONCLUÍDA"_ansi},
    {"ADM", "", "", Posting::kFollowUp, true, "FUNCAO ADMINISTRATIVA", u8"FUNÇÃO CONCLUÍDA"_ansi},
    {"REL", "", "", Posting::kNone, true, "RELATORIO DE TRANSACOES", u8"RELATÓRIO EMITIDO"_ansi},
    {"CEL", "", "60", Posting::kTopUp, true, "RECARGA DE CELULAR", "RECARGA EFETUADA"},
    {"CPF", "", "", Posting::kNone, false, "", "CPF 12345678909"},
    {"CNPJ", "", "", Posting::kNone, false, "", "CNPJ 11222333000181"},
    {"CPFCNPJ", "", "", Posting::kNone, false, "", "DOCUMENTO 12345678909"},
    {"ATV", "", "", Posting::kNone, false, "", "GP ATIVO"},
};

}  // namespace

const Operation* FindOperation(std::string_view header, std::string_view subtype) {
  const auto* found = std::ranges::find_if(kOperations, [&](const Operation& row) {
    return row.header == header && (row.subtype.empty() || row.subtype == subtype);
  });
  return found == std::end(kOperations) ? nullptr : found;
}

const Operation* FindOperation(const Request& request) {
  return FindOperation(request.Header(), request.Subtype());
}

}  // namespace caixora::gp
