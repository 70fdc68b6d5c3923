// PDV de exemplo: venda confirmada, recusa, link de pagamento, venda desfeita e fluxo interativo.
//
//    pdv              as cinco operações
//    pdv --cair       vende e morre antes de confirmar (código de saída 9)
//    pdv --retomar    desfaz o que uma queda deixou em aberto
#include <fcntl.h>
#include <io.h>

#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "caixora.hpp"

namespace {

using caixora_pdv::Caixora;
using caixora_pdv::Centavos;
using caixora_pdv::Desfecho;
using caixora_pdv::Inteiro;
using caixora_pdv::ItemDeLink;
using caixora_pdv::Resultado;
using caixora_pdv::Situacao;
using caixora_pdv::Venda;

void MostrarAprovada(const Venda& venda, const Resultado& resultado) {
  std::cout << "Cupom " << venda.cupom << ": aprovada, R$ " << venda.valor.Texto() << ", "
            << resultado.mensagem << ", " << resultado.comprovante.size()
            << " linhas de comprovante" << std::endl;
}

// trecho: venda
void Vender(Caixora& caixora, const Venda& venda) {
  const auto fim = caixora.VenderEConfirmar(
      venda, [&](const Resultado& resultado) { MostrarAprovada(venda, resultado); });
  std::cout << "Cupom " << venda.cupom << ": ";
  switch (fim.situacao) {
    case Situacao::confirmada:
      std::cout << "confirmada\n";
      break;
    case Situacao::recusada:
      std::cout << "recusada, " << fim.motivo << "\n";
      break;
    case Situacao::desfeita:
      std::cout << "desfeita, " << fim.motivo << "\n";
      break;
  }
}
// fim do trecho

void VenderSemPapel(Caixora& caixora, const Venda& venda) {
  struct SemPapel : std::runtime_error {
    using std::runtime_error::runtime_error;
  };
  try {
    caixora.VenderEConfirmar(venda, [&](const Resultado& resultado) {
      MostrarAprovada(venda, resultado);
      throw SemPapel("Impressora sem papel");
    });
  } catch (const SemPapel& erro) {
    std::cout << erro.what() << "\nCupom " << venda.cupom << ": desfeita\n";
  }
}

void Conversar(Caixora& caixora) {
  int perguntas = 0;
  auto fim = caixora.Fluxo({.funcao = 20,
                            .valor = Centavos{1250},
                            .campo3 = 1,
                            .campo6 = "000545",
                            .campo7 = "20210325",
                            .campo8 = "009",
                            .campo9 = "652",
                            .campo10 = 7,
                            .funcao_fim = 99},
                           [&](const std::string& pergunta) {
                             const std::string resposta = ++perguntas == 1 ? "3" : "1";
                             std::cout << "Pergunta: " << pergunta << "\nResposta: " << resposta
                                       << std::endl;
                             return resposta;
                           });
  if (!fim.concluido) throw caixora_pdv::Erro("Fluxo interrompido: " + fim.motivo);
  std::cout << "Retorno: STATUS " << fim.campos["STATUS"] << ", VALOR " << fim.campos["VALOR"]
            << ", " << fim.campos["MENSAGEM"] << "\n";
}

void UmDia(Caixora& caixora) {
  // trecho: chamada
  caixora.AguardarGp(10);
  std::cout << "GP ativo\n== 1. Venda confirmada\n";
  Vender(caixora, {Centavos{1250}, 101, &Caixora::VendeCreditoVista});
  // fim do trecho
  std::cout << "== 2. Recusa\n";
  Vender(caixora, {Centavos{1002}, 102, &Caixora::VendeDebito});
  std::cout << "== 3. Link de pagamento com acentos\n";
  const std::vector<ItemDeLink> itens = {
      {"7891", "CAFÉ TORRADO", 2, Centavos{1050}, Centavos{0}, Centavos{2100}},
      {"7892", "AÇÚCAR", 1, Centavos{1050}, Centavos{0}, Centavos{1050}}};
  Vender(caixora, {Centavos{3150}, 103, [&](Caixora& c, Centavos valor, Inteiro cupom) {
                     return c.LinkPagamento(1, valor, cupom, itens, "Pão & Cia", "");
                   }});
  std::cout << "== 4. Venda desfeita\n";
  VenderSemPapel(caixora, {Centavos{4000}, 104, &Caixora::VendeCreditoVista});
  std::cout << "== 5. Fluxo interativo\n";
  Conversar(caixora);
}

void Cair(Caixora& caixora) {
  std::cout << "== Queda\n";
  const Venda venda{Centavos{2000}, 105, &Caixora::VendeCreditoVista};
  caixora.VenderEConfirmar(venda, [&](const Resultado& resultado) {
    MostrarAprovada(venda, resultado);
    ::TerminateProcess(::GetCurrentProcess(), 9);
  });
}

void Retomar(Caixora& caixora) {
  std::cout << "== Retomada\n";
  const auto abertas = caixora.VendasEmAberto();
  if (abertas.empty()) std::cout << "Nada em aberto\n";
  for (const auto& venda : abertas) {
    std::cout << "Cupom " << venda.cupom << ": em aberto (" << Nome(venda.estado) << "), R$ "
              << venda.valor.Texto() << std::endl;
    // Este PDV não guarda as vendas: nenhuma aprovada está nos seus registros.
    const bool confirmar = venda.estado == caixora_pdv::EstadoDaVenda::confirmar;
    caixora.ConcluirVenda(venda.cupom, confirmar ? Desfecho::confirmar : Desfecho::desfazer);
    std::cout << "Cupom " << venda.cupom << (confirmar ? ": confirmada\n" : ": desfeita\n");
  }
}

}  // namespace

int main(int argc, char** argv) {
  ::SetConsoleOutputCP(CP_UTF8);
  ::_setmode(::_fileno(stdout), _O_BINARY);
  try {
    // trecho: abrir
    Caixora caixora({.cnpj_cliente = "12.345.678/0001-95",
                     .cnpj_parceiro = "11.222.333/0001-81",
                     .diario = L"diario.txt"});
    // fim do trecho
    const std::string_view modo = argc > 1 ? argv[1] : "";
    if (modo == "--cair") {
      Cair(caixora);
    } else if (modo == "--retomar") {
      Retomar(caixora);
    } else if (modo.empty()) {
      UmDia(caixora);
    } else {
      std::cerr << "Uso: pdv [--cair | --retomar]\n";
      return 2;
    }
    return 0;
  } catch (const std::exception& erro) {
    std::cout.flush();
    std::cerr << erro.what() << "\n";
    return 1;
  }
}
