// Faz o que manda cada linha de comandos.txt e anota como terminou junto das chamadas.
#include <fstream>
#include <sstream>
#include <thread>
#include <typeinfo>

#include "caixora.hpp"

using namespace caixora_pdv;

namespace {

struct ErroDoPdv : std::exception {};

const Configuracao configuracao{.cnpj_cliente = "11",
                                .cnpj_parceiro = "22",
                                .diario = L"diario.txt",
                                .tentativas = 3,
                                .pausa = std::chrono::milliseconds(1)};
Caixora caixora(configuracao);

void Anotar(const std::string& linha) {
  std::ofstream("chamadas.txt", std::ios::binary | std::ios::app) << linha << '\n';
}

std::string Texto(const std::string& texto) {  // "u+81" é um caractere
  if (!texto.starts_with("u+")) return texto;
  std::string caractere;
  interno::AnexarUtf8(caractere, static_cast<char32_t>(std::stoul(texto.substr(2), nullptr, 16)));
  return caractere;
}

std::string Resumo(const Resultado& r) { return std::to_string(r.codigo) + " " + r.mensagem; }

std::string Link(const std::string& descricao, const std::string& campo011) {
  const ItemDeLink item{"7", descricao, 1, Centavos{1}, Centavos{0}, Centavos{1050}};
  return Resumo(caixora.LinkPagamento(2, Centavos{1010}, 30, {item}, campo011, ""));
}

std::string Vender(int cupom, const std::string& depois) {
  const auto fim = caixora.VenderEConfirmar({Centavos{1250}, cupom, &Caixora::VendeCreditoVista},
                                            [&](const Resultado& resultado) {
                                              Anotar("aprovada, " + resultado.comprovante.back());
                                              if (depois == "falha") throw ErroDoPdv();
                                              if (depois == "esquecer") caixora.EsquecerPendencia();
                                              if (depois == "teste") caixora.Teste();
                                              if (depois == "trancar")
                                                std::filesystem::create_directory("diario.txt.tmp");
                                            });
  const char* const nomes[] = {"confirmada ", "recusada ", "desfeita "};
  return nomes[static_cast<int>(fim.situacao)] + fim.motivo;
}

std::string Conversar(std::uint32_t funcao, const std::string& resposta,
                      const std::string& campo4) {
  const InicioDeFluxo inicio{funcao, Centavos{1205}, 3, campo4, "6", "7", "8", "9", 10, 99};
  auto fim = caixora.Fluxo(inicio, [&](const std::string&) -> std::optional<std::string> {
    if (resposta == "falha") throw ErroDoPdv();
    return resposta == "nada" ? std::nullopt : std::optional(resposta);
  });
  return (fim.concluido ? "concluído " : "não concluído ") + std::to_string(fim.codigo) + " " +
         fim.campos["MENSAGEM"];
}

std::string Fazer(const std::string& acao, const std::string& a, const std::string& b) {
  const int n = std::atoi(a.c_str());
  if (acao == "aguardar") return caixora.AguardarGp(n), "feito";
  if (acao == "vender") return Vender(n, b);
  if (acao == "confirmar") return caixora.ConcluirVenda(n, Desfecho::confirmar), "feito";
  if (acao == "desfazer") return caixora.ConcluirVenda(n, Desfecho::desfazer), "feito";
  if (acao == "esquecer") return caixora.EsquecerPendencia(), "feito";
  if (acao == "atv") return Resumo(caixora.Atv(n));
  if (acao == "confirmacao") return Resumo(caixora.Confirmar(n));
  if (acao == "desfazimento") return Resumo(caixora.Desfazimento(n));
  if (acao == "parcelas") return Resumo(caixora.VendeCreditoParcLoja(n, Centavos{1010}, 30));
  if (acao == "centavos") return Resumo(caixora.VendeCredito(Centavos{std::stoll(a)}, 30));
  if (acao == "campo011") return Link("ação", Texto(a));
  if (acao == "itens") return Link(Texto(a), "");
  if (acao == "campo4") return Conversar(20, "1", a);
  if (acao == "fluxo") return Conversar(static_cast<std::uint32_t>(n), b, "");
  if (acao == "reais") {
    if (const auto valor = Centavos::DoTexto(a)) return Resumo(caixora.VendeCredito(*valor, 30));
    throw ErroDeUso("valor");
  }
  std::jthread outra([] { std::ignore = Caixora(configuracao).Atv(25); });
  return Resumo(caixora.Atv(25));
}

}  // namespace

int main() {
  std::ifstream comandos("comandos.txt", std::ios::binary);
  for (std::string linha; std::getline(comandos, linha);) {
    Anotar("> " + linha);
    std::istringstream partes(linha);
    std::string acao, a, b;
    partes >> acao >> a >> b;
    try {
      Anotar("= " + Fazer(acao, a, b));
    } catch (const std::exception& erro) {
      Anotar("! " + std::string(typeid(erro).name()) + ": " + erro.what());
    }
  }
}
