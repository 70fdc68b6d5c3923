#include "simulators/gp_operations.h"

#include <algorithm>
#include <iterator>

#include "support/ansi.h"

namespace caixora::gp {
namespace {

constexpr std::string_view kApproved = u8"TRANSAÇÃO APROVADA"_ansi;

constexpr Operation kOperations[] = {
    {"CRT", "0", "10", true, "CREDITO", kApproved},
    {"CRT", "1", "20", true, "DEBITO", kApproved},
    {"CRT", "2F", "31", true, "FROTA", kApproved},
    {"CRT", "2", "30", true, "PRIVATE LABEL", kApproved},
    {"CRT", "4", "40", true, "LINK DE PAGAMENTO", "LINK GERADO"},
    {"CRT", "5", "50", true, "CARTEIRA DIGITAL PIX", kApproved},
    {"CRT", "6", "", true, "LINKS PAGOS", "LISTA DE LINKS PAGOS"},
    {"CRT", "7", "70", true, "PARCELEMAIS", kApproved},
    {"CRT", "", "10", true, "VENDA", kApproved},
    {"CNC", "", "90", true, "CANCELAMENTO", u8"CANCELAMENTO EFETUADO"_ansi},
    {"ADM", "REIMPRESSAO", "95", true, "REIMPRESSAO", u8"REIMPRESSÃO EFETUADA"_ansi},
    {"ADM", "MANUTLINKPGTO", "", false, "", u8"MANUTENÇÃO DE LINKS CONCLUÍDA"_ansi},
    {"ADM", "", "", true, "FUNCAO ADMINISTRATIVA", u8"FUNÇÃO CONCLUÍDA"_ansi},
    {"REL", "", "", true, "RELATORIO DE TRANSACOES", u8"RELATÓRIO EMITIDO"_ansi},
    {"CEL", "", "60", true, "RECARGA DE CELULAR", "RECARGA EFETUADA"},
    {"CPF", "", "", false, "", "CPF 12345678909"},
    {"CNPJ", "", "", false, "", "CNPJ 11222333000181"},
    {"CPFCNPJ", "", "", false, "", "DOCUMENTO 12345678909"},
    {"ATV", "", "", false, "", "GP ATIVO"},
};

}  // namespace

const Operation* FindOperation(const Request& request) {
  const std::string subtype = request.Subtype();
  const auto* found = std::ranges::find_if(kOperations, [&](const Operation& row) {
    return row.header == request.Header() && (row.subtype.empty() || row.subtype == subtype);
  });
  return found == std::end(kOperations) ? nullptr : found;
}

}  // namespace caixora::gp
