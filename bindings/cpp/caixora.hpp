/// Caixora.dll em C++20, em um só cabeçalho: carrega a DLL na execução e cuida do que ela deixa por
/// conta de quem a chama (BSTR, Windows-1252, centavos, confirmação, queda no meio da venda).
///
///   caixora_pdv::Caixora caixora({.cnpj_cliente = "12.345.678/0001-95",
///                                 .cnpj_parceiro = "11.222.333/0001-81",
///                                 .diario = L"diario.txt"});
///   caixora.AguardarGp(10);
///   const auto venda = caixora.VenderEConfirmar(
///       {Centavos{1250}, cupom, &Caixora::VendeCreditoVista},
///       [&](const Resultado& r) { GravarVenda(r); Imprimir(r.comprovante); });
///
/// Todo texto, de ida e de volta, é UTF-8. Precisa de caixora.h no caminho de inclusão e de
/// oleaut32 na ligação. Um uso errado lança ErroDeUso antes de qualquer chamada à DLL.
///
/// Cada chamada bloqueia sua thread, às vezes por minutos: use uma thread de trabalho. Vários
/// objetos, em várias threads, podem ser usados ao mesmo tempo: há uma só trava no processo.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
// Depois de windows.h, de que precisa.
#include <oleauto.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <concepts>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "caixora.h"

#ifdef _MSC_VER
#pragma comment(lib, "oleaut32")
#endif

namespace caixora_pdv {

static_assert(
    sizeof(void*) == 8,
    "Caixora.dll existe apenas em 64 bits: compile para x64. Um programa de 32 bits usa a "
    "ponte (caixora_host --ponte).");

// ---- Erros: what() é um texto em UTF-8 para o operador ou o log ----

struct Erro : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Argumento que não pode ser enviado; nada foi chamado.
struct ErroDeUso : Erro {
  using Erro::Erro;
};

/// A DLL não foi carregada, ou não tem uma das funções.
struct ErroDeCarga : Erro {
  using Erro::Erro;
};

/// O diário não pôde ser lido ou gravado.
struct ErroDeDiario : Erro {
  using Erro::Erro;
};

enum class Desfecho { confirmar, desfazer };

/// Um Confirmar ou Desfazimento foi recusado, e a DLL trataria a próxima operação como se fosse
/// ele. Repita o mesmo até passar; para desistir dele, Caixora::EsquecerPendencia.
struct PendenciaAberta : Erro {
  PendenciaAberta(std::int32_t cupom_pendente, Desfecho desfecho_que_falta)
      : Erro("Cupom " + std::to_string(cupom_pendente) + ": " +
             (desfecho_que_falta == Desfecho::confirmar ? "a confirmação foi recusada"
                                                        : "o desfazimento foi recusado") +
             " e ainda falta; repita antes de outra operação"),
        cupom(cupom_pendente),
        desfecho(desfecho_que_falta) {}
  std::int32_t cupom;
  Desfecho desfecho;
};

// ---- Números ----

/// Um inteiro de 32 bits. Recusa ao compilar um valor fracionário, e ao executar um que não cabe.
class Inteiro {
 public:
  template <std::integral T>
  requires(!std::same_as<T, bool>) constexpr Inteiro(T valor)
      : valor_(static_cast<std::int32_t>(valor)) {
    if (!std::in_range<std::int32_t>(valor))
      throw ErroDeUso(std::to_string(valor) + " não cabe em 32 bits");
  }
  Inteiro(bool) = delete;
  template <std::floating_point T>
  Inteiro(T) = delete;

  constexpr operator std::int32_t() const { return valor_; }

 private:
  std::int32_t valor_;
};

/// Um valor em centavos, de 0 a 214748364799. Não há como criá-lo de um double.
class Centavos {
 public:
  static constexpr std::int64_t maximo = 214'748'364'799;

  template <std::integral T>
  requires(!std::same_as<T, bool>) constexpr explicit Centavos(T valor)
      : valor_(static_cast<std::int64_t>(valor)) {
    if (std::cmp_less(valor, 0) || std::cmp_greater(valor, maximo))
      throw ErroDeUso("Valor fora de 0,00 a 2147483647,99");
  }
  explicit Centavos(bool) = delete;
  template <std::floating_point T>
  explicit Centavos(T) = delete;

  /// De "12", "12,5", "12,50" ou "12.50"; nada, se o texto é outro. "1.000" tem casas demais.
  static std::optional<Centavos> DoTexto(std::string_view texto) {
    constexpr std::string_view algarismos = "0123456789";
    const std::size_t marca = std::min(texto.find_first_of(",."), texto.size());
    const std::string_view casas = texto.substr(std::min(marca + 1, texto.size()));
    if (marca == 0 || marca > 10 || casas.size() > 2 || (casas.empty() && marca < texto.size()) ||
        texto.substr(0, marca).find_first_not_of(algarismos) != std::string_view::npos ||
        casas.find_first_not_of(algarismos) != std::string_view::npos)
      return std::nullopt;
    std::string numero = std::string(texto.substr(0, marca)).append(casas);
    numero.append(2 - casas.size(), '0');
    std::int64_t valor = 0;
    std::from_chars(numero.data(), numero.data() + numero.size(), valor);
    return valor <= maximo ? std::optional(Centavos(valor)) : std::nullopt;
  }

  constexpr std::int64_t Valor() const { return valor_; }
  /// Como a DLL o recebe.
  constexpr double Reais() const { return static_cast<double>(valor_) / 100.0; }
  /// "12,50".
  std::string Texto() const {
    const std::string centavos = std::to_string(valor_ % 100);
    return std::to_string(valor_ / 100) + (centavos.size() == 1 ? ",0" : ",") + centavos;
  }

  constexpr bool operator==(const Centavos&) const = default;

 private:
  std::int64_t valor_;
};

// ---- Textos: UTF-8 deste lado, Windows-1252 do lado da DLL ----

namespace interno {

/// De 0x80 a 0x9F; zero onde o Windows-1252 não tem caractere.
inline constexpr std::array<char32_t, 32> bytes_80_a_9f = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

inline void AnexarUtf8(std::string& texto, char32_t c) {
  const auto anexar = [&](char32_t byte) { texto += static_cast<char>(byte); };
  if (c < 0x80) return anexar(c);
  if (c < 0x800) {
    anexar(0xC0 | c >> 6);
  } else {
    if (c < 0x10000) {
      anexar(0xE0 | c >> 12);
    } else {
      anexar(0xF0 | c >> 18);
      anexar(0x80 | (c >> 12 & 0x3F));
    }
    anexar(0x80 | (c >> 6 & 0x3F));
  }
  anexar(0x80 | (c & 0x3F));
}

inline std::u32string DeUtf8(std::string_view nome, std::string_view texto) {
  constexpr std::size_t limite = 1 << 30;  // a API do Windows conta em int
  if (texto.empty()) return {};
  std::wstring unidades(std::min(texto.size(), limite), L'\0');
  const int tamanho = static_cast<int>(unidades.size());
  const int usadas = texto.size() > limite
                         ? 0
                         : ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, texto.data(),
                                                 tamanho, unidades.data(), tamanho);
  if (usadas == 0) throw ErroDeUso(std::string(nome) + ": o texto não é UTF-8 válido");
  unidades.resize(static_cast<std::size_t>(usadas));
  std::u32string caracteres;
  for (const wchar_t unidade : unidades) {
    const auto c = static_cast<char32_t>(unidade);
    if (c >= 0xDC00 && c <= 0xDFFF && !caracteres.empty())  // a segunda metade de um par
      caracteres.back() = 0x10000 + ((caracteres.back() - 0xD800) << 10) + (c - 0xDC00);
    else
      caracteres += c;
  }
  return caracteres;
}

inline void RecusarSeparador(std::string_view nome, std::string_view texto,
                             std::string_view separador) {
  if (texto.find(separador) != std::string_view::npos)
    throw ErroDeUso(std::string(nome) + ": o caractere \"" + std::string(separador) +
                    "\" separa os campos e não pode estar no texto");
}

}  // namespace interno

/// O texto do argumento `nome` em Windows-1252, ou ErroDeUso: um caractere que não existe lá não é
/// trocado por outro, e NUL, CR e LF cortariam o texto ou criariam linhas no pedido.
inline std::string ParaAnsi(std::string_view nome, std::string_view utf8) {
  const auto recusar = [&](char32_t c, const char* motivo) {
    char codigo[16];
    std::snprintf(codigo, sizeof codigo, "U+%04X", static_cast<unsigned>(c));
    std::string visivel;
    if (c >= 0xA0) interno::AnexarUtf8(visivel, c);
    throw ErroDeUso(std::string(nome) + ": o caractere " +
                    (visivel.empty() ? codigo : "\"" + visivel + "\" (" + codigo + ")") + motivo);
  };
  std::string ansi;
  for (const char32_t c : interno::DeUtf8(nome, utf8)) {
    if (c == 0 || c == '\r' || c == '\n') recusar(c, " não pode ser enviado");
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
      ansi += static_cast<char>(c);
      continue;
    }
    const auto achado = std::ranges::find(interno::bytes_80_a_9f, c);
    if (achado == interno::bytes_80_a_9f.end()) recusar(c, " não existe em Windows-1252");
    ansi += static_cast<char>(0x80 + (achado - interno::bytes_80_a_9f.begin()));
  }
  return ansi;
}

/// Idem para um texto do fluxo interativo, em que "¬" separa os campos.
inline std::string ParaAnsiInterativo(std::string_view nome, std::string_view utf8) {
  interno::RecusarSeparador(nome, utf8, "¬");
  return ParaAnsi(nome, utf8);
}

/// Decodifica qualquer byte: os cinco sem caractere viram o controle C1 de mesmo valor.
inline std::string ParaUtf8(std::string_view ansi) {
  std::string texto;
  for (const char byte : ansi) {
    char32_t c = static_cast<unsigned char>(byte);
    if (c >= 0x80 && c <= 0x9F && interno::bytes_80_a_9f[c - 0x80] != 0)
      c = interno::bytes_80_a_9f[c - 0x80];
    interno::AnexarUtf8(texto, c);
  }
  return texto;
}

/// Os bytes de um resultado da DLL, que é liberado aqui mesmo se a cópia falhar.
inline std::string Receber(CaixoraTexto texto) {
  struct Liberar {
    void operator()(wchar_t* bstr) const { ::SysFreeString(bstr); }
  };
  const std::unique_ptr<wchar_t, Liberar> dono(texto);
  return {reinterpret_cast<const char*>(texto), ::SysStringByteLen(texto)};
}

namespace interno {

/// Tira do começo de `resto`, e devolve, o que vem antes do separador (tudo, se não há).
inline std::string_view Tirar(std::string_view& resto, std::string_view separador) {
  const std::size_t fim = std::min(resto.find(separador), resto.size());
  const std::string_view pedaco = resto.substr(0, fim);
  resto.remove_prefix(std::min(fim + separador.size(), resto.size()));
  return pedaco;
}

/// Só algarismos, e que caibam.
inline std::optional<std::int64_t> Numero(std::string_view texto) {
  std::int64_t valor = 0;
  const char* const fim = texto.data() + texto.size();
  const auto [parada, erro] = std::from_chars(texto.data(), fim, valor);
  if (texto.starts_with('-') || erro != std::errc{} || parada != fim) return std::nullopt;
  return valor;
}

}  // namespace interno

// ---- Resultado de uma função de pagamento ----

struct [[nodiscard]] Resultado {
  int codigo = 0;  ///< 0 recusa, falha ou incerto, 1 aprovada com comprovante anunciado, 2 sem
  std::string mensagem;
  std::string cupom, valor_centavos, bandeira, rede, autorizacao, nsu, tipo, parcelas, controle,
      campo_170_000, codigo_rede, campo_740_000, campo_741_000, campo_742_000, campo_031_000;
  std::vector<std::string> comprovante;
  std::string bruto;  ///< o texto da DLL, em UTF-8

  /// "O pedido foi gravado": o sucesso de Confirmar e Desfazimento. Vinda de outra operação, NÃO é
  /// uma aprovação.
  bool RespostaLocal() const;
  bool Aprovada() const { return codigo > 0 && !RespostaLocal(); }
  /// Nada, se o campo não tem só algarismos.
  std::optional<std::int64_t> ValorCentavos() const { return interno::Numero(valor_centavos); }
};

struct Campo {
  std::string_view nome;
  std::string Resultado::*texto;
};

/// Os quinze campos, na ordem em que a DLL os devolve.
inline constexpr std::array<Campo, 15> campos = {{
    {"cupom", &Resultado::cupom},
    {"valor_centavos", &Resultado::valor_centavos},
    {"bandeira", &Resultado::bandeira},
    {"rede", &Resultado::rede},
    {"autorizacao", &Resultado::autorizacao},
    {"nsu", &Resultado::nsu},
    {"tipo", &Resultado::tipo},
    {"parcelas", &Resultado::parcelas},
    {"controle", &Resultado::controle},
    {"campo_170_000", &Resultado::campo_170_000},
    {"codigo_rede", &Resultado::codigo_rede},
    {"campo_740_000", &Resultado::campo_740_000},
    {"campo_741_000", &Resultado::campo_741_000},
    {"campo_742_000", &Resultado::campo_742_000},
    {"campo_031_000", &Resultado::campo_031_000},
}};

inline bool Resultado::RespostaLocal() const {
  return codigo == 2 && mensagem == "COMANDO COM SUCESSO" && parcelas == "1" &&
         std::ranges::all_of(campos, [this](const Campo& campo) {
           return campo.nome == "cupom" || campo.nome == "parcelas" || (this->*campo.texto).empty();
         });
}

/// Separa o texto, em UTF-8, de uma função de pagamento. Um de outra forma dá código 0 e vai
/// inteiro para a mensagem.
inline Resultado Interpretar(std::string texto) {
  Resultado resultado;
  std::string_view resto = texto;
  if (!resto.starts_with("S;0;") && !resto.starts_with("S;1;") && !resto.starts_with("S;2;")) {
    resultado.mensagem = resto;
  } else {
    resultado.codigo = resto[2] - '0';
    resto.remove_prefix(4);
    // A mensagem de uma recusa pode ter quebras de linha: é todo o resto.
    resultado.mensagem = resultado.codigo == 0 ? resto : interno::Tirar(resto, "\r\n");
    while (resultado.codigo != 0 && !resto.empty()) {
      std::string_view linha = interno::Tirar(resto, "\r\n");
      const std::string_view tipo = linha.substr(0, 2);
      linha.remove_prefix(tipo.size());
      if (tipo == "I;") resultado.comprovante.emplace_back(linha);
      if (tipo != "C;") continue;
      for (const Campo& campo : campos) resultado.*campo.texto = interno::Tirar(linha, ";");
    }
  }
  resultado.bruto = std::move(texto);
  return resultado;
}

/// A venda que voltou com este resultado, não aprovado, com certeza não foi feita. Antes de 1250
/// ms, um "GP NÃO ATIVO" veio sem que nada fosse gravado (a DLL espera 1000 ms antes de gravar);
/// depois disso, o pedido pode ter sido atendido.
inline bool NegativaCerta(const Resultado& resultado, std::chrono::steady_clock::duration duracao) {
  if (!resultado.bruto.starts_with("S;0;")) return false;
  if (resultado.mensagem == "GP NÃO ATIVO") return duracao < std::chrono::milliseconds(1250);
  return resultado.mensagem != "GP NAO ATIVO" &&
         resultado.mensagem != "FALHA INTERNA, VERIFIQUE NO GP SE A OPERACAO FOI REALIZADA";
}

/// O significado de um código das funções interativas.
inline std::string_view SignificadoQj(std::int32_t codigo) {
  static constexpr std::pair<std::int32_t, std::string_view> significados[] = {
      {CAIXORA_QJ_SUCESSO, "sucesso"},
      {CAIXORA_QJ_SEM_CAMINHO, "ConfigQJ.ini não tem a linha CAMINHO"},
      {CAIXORA_QJ_CAMINHO_VAZIO, "CAMINHO sem pasta"},
      {CAIXORA_QJ_TREVIX_AUSENTE, "Trevix.exe não encontrado"},
      {CAIXORA_QJ_TREVIX_NAO_EXECUTA, "Trevix.exe não está em execução"},
      {CAIXORA_QJ_ERRO_AO_INICIAR, "erro ao iniciar Trevix.exe"},
      {CAIXORA_QJ_SEM_ARQUIVO_RESP, "arquivo de resposta não pôde ser criado"},
      {CAIXORA_QJ_ERRO_RESP, "erro ao gravar ou trocar o arquivo de resposta"},
      {CAIXORA_QJ_SEM_CONFIG, "ConfigQJ.ini não pôde ser lido"},
      {CAIXORA_QJ_VALOR_INVALIDO, "valor fora do formato 0,00"},
      {CAIXORA_QJ_EMAIL_AUSENTE, "Email.exe não encontrado"},
      {CAIXORA_QJ_CNPJ_INVALIDO, "CNPJ inválido"},
      {CAIXORA_QJ_EM_ATUALIZACAO, "Trevix.exe em atualização"},
      {CAIXORA_QJ_SEM_ADMINISTRADOR, "é preciso executar como administrador"},
      {CAIXORA_QJ_OUTRA_TRANSACAO, "Trevix.exe em execução não pôde ser encerrado"},
  };
  const auto* achado =
      std::ranges::find(significados, codigo, [](const auto& s) { return s.first; });
  return achado == std::end(significados) ? "código desconhecido" : achado->second;
}

// ---- A DLL ----

/// A DLL carregada. Fica carregada até o fim do processo, como o estado que ela guarda.
class Biblioteca {
 public:
  /// Um nome sem pasta segue a busca usual do Windows; com pasta, é relativo à pasta atual.
  explicit Biblioteca(const std::filesystem::path& dll) {
    const auto caminho = dll.has_parent_path() ? std::filesystem::absolute(dll) : dll;
    modulo_ = ::LoadLibraryW(caminho.c_str());
    if (modulo_ != nullptr) return;
    const DWORD erro = ::GetLastError();
    const std::u8string nome = dll.u8string();
    throw ErroDeCarga(std::string(nome.begin(), nome.end()) + ": " + Motivo(erro));
  }

  /// Nulo, se a DLL não tem a função.
  FARPROC Procurar(const char* nome) const { return ::GetProcAddress(modulo_, nome); }

  template <class F>
  F* Achar(const char* nome) const {
    const FARPROC funcao = Procurar(nome);
    if (funcao == nullptr) throw ErroDeCarga(std::string("A DLL não tem a função ") + nome);
    return reinterpret_cast<F*>(reinterpret_cast<void (*)()>(funcao));
  }

 private:
  static std::string Motivo(DWORD erro) {
    const std::string codigo = " (erro " + std::to_string(erro) + ")";
    if (erro == ERROR_MOD_NOT_FOUND)
      return "a DLL, ou outra de que ela precisa, não foi encontrada" + codigo;
    if (erro == ERROR_BAD_EXE_FORMAT) return "não é uma DLL de Windows 64-bit" + codigo;
    return "a DLL não pôde ser carregada" + codigo;
  }

  HMODULE modulo_;
};

namespace interno {

struct Pendencia {
  std::int32_t cupom;
  Desfecho desfecho;
  bool operator==(const Pendencia&) const = default;
};

struct VendaEmAndamento {
  std::int32_t cupom;
  std::thread::id vendedora = {};  // a thread que ainda pode chamar a venda, uma vez
};

/// O estado da DLL é do processo, e o que se sabe dele também.
struct Estado {
  std::mutex trava;                   // durante cada chamada
  std::optional<Pendencia> pendente;  // o desfecho recusado
  std::optional<VendaEmAndamento> venda;
};
inline Estado estado;

/// Só o mesmo desfecho do mesmo cupom pode seguir.
inline void RecusarPendencia(const std::optional<Pendencia>& permitido = {}) {
  if (estado.pendente && estado.pendente != permitido)
    throw PendenciaAberta(estado.pendente->cupom, estado.pendente->desfecho);
}

inline void RecusarVendaEmAndamento() {
  if (estado.venda)
    throw ErroDeUso("há uma venda em andamento: cupom " + std::to_string(estado.venda->cupom));
}

/// Do começo da venda ao seu desfecho, nada mais chega ao GP.
class Reserva {
 public:
  explicit Reserva(std::int32_t cupom, const std::optional<Pendencia>& permitido = {}) {
    const std::lock_guard dono(estado.trava);
    RecusarVendaEmAndamento();
    RecusarPendencia(permitido);
    estado.venda = {cupom};
  }
  ~Reserva() {
    const std::lock_guard dono(estado.trava);
    estado.venda.reset();
  }
  Reserva(const Reserva&) = delete;
  Reserva& operator=(const Reserva&) = delete;

  void PermitirVenda() {
    const std::lock_guard dono(estado.trava);
    estado.venda->vendedora = std::this_thread::get_id();
  }
  /// Verdadeiro, se nenhuma venda chegou à DLL. A permissão acaba aqui.
  bool RetirarPermissao() {
    const std::lock_guard dono(estado.trava);
    return std::exchange(estado.venda->vendedora, {}) != std::thread::id{};
  }
};

struct FecharHandle {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<HANDLE, FecharHandle>;

}  // namespace interno

// ---- Diário: as vendas em aberto, em disco ----

enum class EstadoDaVenda { iniciada, aprovada, confirmar, desfazer };

inline constexpr std::array<std::string_view, 4> nomes_de_estado = {"iniciada", "aprovada",
                                                                    "confirmar", "desfazer"};

inline std::string_view Nome(EstadoDaVenda estado) {
  return nomes_de_estado[static_cast<std::size_t>(estado)];
}

/// O que falta a uma venda que parou neste estado.
inline std::string_view Falta(EstadoDaVenda estado) {
  constexpr std::array<std::string_view, 4> faltas = {"desfazer", "confirmar ou desfazer",
                                                      "confirmar", "desfazer"};
  return faltas[static_cast<std::size_t>(estado)];
}

struct VendaNoDiario {
  std::int32_t cupom;
  Centavos valor;
  EstadoDaVenda estado;
};

/// A venda do cupom ainda não tem desfecho. `estado` diz onde ela parou (confirmar e desfazer: o
/// desfecho que falta), `ultima_mensagem`, a última recusa da DLL. A exceção em curso quando esta
/// foi lançada (a da função ao_aprovar, por exemplo) fica em nested_ptr().
struct VendaEmAberto : Erro, std::nested_exception {
  VendaEmAberto(std::int32_t cupom_aberto, EstadoDaVenda onde_parou, std::string mensagem)
      : Erro("Cupom " + std::to_string(cupom_aberto) + " em aberto (" +
             std::string(Nome(onde_parou)) + "; falta " + std::string(Falta(onde_parou)) + ")" +
             (mensagem.empty() ? "" : ": " + mensagem)),
        cupom(cupom_aberto),
        estado(onde_parou),
        ultima_mensagem(std::move(mensagem)) {}
  std::int32_t cupom;
  EstadoDaVenda estado;
  std::string ultima_mensagem;
};

/// O arquivo do diário. Cada mudança o troca inteiro, de uma vez, e já gravado no disco. Sem
/// caminho, nada é guardado.
class Diario {
 public:
  explicit Diario(const std::filesystem::path& caminho)
      : caminho_(caminho.empty() ? caminho : std::filesystem::absolute(caminho)) {}

  bool Existe() const { return !caminho_.empty(); }

  std::vector<VendaNoDiario> Ler() const {
    const std::lock_guard dono(trava_);
    return LerArquivo();
  }

  /// Nada, se a venda não está em aberto.
  std::optional<EstadoDaVenda> Estado(std::int32_t cupom) const {
    const auto vendas = Ler();
    const auto aberta = std::ranges::find(vendas, cupom, &VendaNoDiario::cupom);
    return aberta == vendas.end() ? std::nullopt : std::optional(aberta->estado);
  }

  void Iniciar(std::int32_t cupom, Centavos valor) {
    Mudar([&](std::vector<VendaNoDiario>& vendas) {
      if (!vendas.empty())
        throw VendaEmAberto(vendas.front().cupom, vendas.front().estado,
                            "conclua-a antes de vender");
      vendas.push_back({cupom, valor, EstadoDaVenda::iniciada});
    });
  }

  void Marcar(std::int32_t cupom, EstadoDaVenda estado) {
    Mudar([&](std::vector<VendaNoDiario>& vendas) {
      for (VendaNoDiario& venda : vendas)
        if (venda.cupom == cupom) venda.estado = estado;
    });
  }

  void Remover(std::int32_t cupom) {
    Mudar([&](std::vector<VendaNoDiario>& vendas) {
      std::erase_if(vendas, [&](const VendaNoDiario& venda) { return venda.cupom == cupom; });
    });
  }

 private:
  static constexpr std::string_view cabecalho = "caixora-diario 1";

  template <class Mudanca>
  void Mudar(Mudanca mudanca) {
    if (!Existe()) return;
    const std::lock_guard dono(trava_);
    std::vector<VendaNoDiario> vendas = LerArquivo();
    mudanca(vendas);
    vendas.empty() ? Apagar() : Gravar(vendas);
  }

  [[noreturn]] void Falhar(const std::string& texto) const {
    const std::u8string nome = caminho_.u8string();
    throw ErroDeDiario(texto + ": " + std::string(nome.begin(), nome.end()));
  }

  [[noreturn]] void FalharNoWindows(const char* texto) const {
    const DWORD erro = ::GetLastError();
    Falhar(texto + (" (erro " + std::to_string(erro) + ")"));
  }

  static interno::Handle Abrir(const std::filesystem::path& caminho, DWORD acesso, DWORD modo) {
    const HANDLE arquivo = ::CreateFileW(caminho.c_str(), acesso,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                         nullptr, modo, FILE_ATTRIBUTE_NORMAL, nullptr);
    return interno::Handle(arquivo == INVALID_HANDLE_VALUE ? nullptr : arquivo);
  }

  std::vector<VendaNoDiario> LerArquivo() const {
    const interno::Handle arquivo = Abrir(caminho_, GENERIC_READ, OPEN_EXISTING);
    if (!arquivo && ::GetLastError() == ERROR_FILE_NOT_FOUND) return {};
    if (!arquivo) FalharNoWindows("O diário não pôde ser lido");
    std::string texto;
    char parte[4096];
    for (DWORD lidos = 1; lidos != 0; texto.append(parte, lidos))
      if (!::ReadFile(arquivo.get(), parte, sizeof parte, &lidos, nullptr))
        FalharNoWindows("O diário não pôde ser lido");
    if (!texto.ends_with('\n')) Falhar("diário ilegível");
    std::string_view resto = texto;
    if (TirarLinha(resto) != cabecalho) Falhar("diário ilegível");
    std::vector<VendaNoDiario> vendas;
    while (!resto.empty()) vendas.push_back(LerLinha(TirarLinha(resto), vendas));
    return vendas;
  }

  static std::string_view TirarLinha(std::string_view& resto) {
    std::string_view linha = interno::Tirar(resto, "\n");
    if (linha.ends_with('\r')) linha.remove_suffix(1);
    return linha;
  }

  VendaNoDiario LerLinha(std::string_view linha, const std::vector<VendaNoDiario>& vendas) const {
    const auto cupom = interno::Numero(interno::Tirar(linha, ";"));
    const auto valor = interno::Numero(interno::Tirar(linha, ";"));
    const auto estado = std::ranges::find(nomes_de_estado, linha);
    if (!cupom || *cupom < 1 || *cupom > INT32_MAX || !valor || *valor < 1 ||
        *valor > Centavos::maximo || estado == nomes_de_estado.end() ||
        std::ranges::find(vendas, *cupom, &VendaNoDiario::cupom) != vendas.end())
      Falhar("diário ilegível");
    return {static_cast<std::int32_t>(*cupom), Centavos(*valor),
            static_cast<EstadoDaVenda>(estado - nomes_de_estado.begin())};
  }

  void Gravar(const std::vector<VendaNoDiario>& vendas) const {
    std::string texto = std::string(cabecalho) + "\n";
    for (const VendaNoDiario& venda : vendas)
      texto += std::to_string(venda.cupom) + ";" + std::to_string(venda.valor.Valor()) + ";" +
               std::string(Nome(venda.estado)) + "\n";
    std::filesystem::path provisorio = caminho_;
    provisorio += L".tmp";
    {
      const interno::Handle arquivo = Abrir(provisorio, GENERIC_WRITE, CREATE_ALWAYS);
      DWORD gravados = 0;
      if (!arquivo ||
          !::WriteFile(arquivo.get(), texto.data(), static_cast<DWORD>(texto.size()), &gravados,
                       nullptr) ||
          gravados != texto.size() || !::FlushFileBuffers(arquivo.get()))
        FalharNoWindows("O diário não pôde ser gravado");
    }
    Insistir([&] {
      return ::MoveFileExW(provisorio.c_str(), caminho_.c_str(),
                           MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    });
  }

  void Apagar() const {
    Insistir([&] {
      return ::DeleteFileW(caminho_.c_str()) || ::GetLastError() == ERROR_FILE_NOT_FOUND;
    });
  }

  /// Um antivírus ou uma cópia de segurança pode ter o arquivo aberto por um instante.
  template <class Acao>
  void Insistir(Acao acao) const {
    for (int tentativa = 1; !acao(); ++tentativa) {
      if (tentativa == 20) FalharNoWindows("O diário não pôde ser gravado");
      ::Sleep(50);
    }
  }

  std::filesystem::path caminho_;
  // De todo o processo: dois objetos podem usar o mesmo arquivo.
  inline static std::mutex trava_;
};

// ---- Venda com confirmação ----

class Caixora;

/// A venda que VenderEConfirmar faz: `chamar` é uma função de venda (&Caixora::VendeCreditoVista)
/// ou uma lambda que passa adiante o valor e o cupom que recebe:
///   [&](Caixora& c, Centavos valor, Inteiro cupom) {
///     return c.VendeCreditoParcLoja(3, valor, cupom);
///   }
struct Venda {
  Centavos valor;
  Inteiro cupom;
  std::function<Resultado(Caixora&, Centavos, Inteiro)> chamar;
};

enum class Situacao { confirmada, recusada, desfeita };

struct VendaConcluida {
  Situacao situacao;
  Resultado resultado;
  std::string motivo;  ///< vazio, se confirmada
};

/// O GP aprovou outro valor, ou outro cupom. O desfazimento foi para o cupom pedido: confira no GP
/// o que a resposta traz, se é outro.
struct ValorDivergente : Erro {
  ValorDivergente(Centavos valor, std::int32_t cupom_pedido, Resultado resultado)
      : Erro("Cupom " + std::to_string(cupom_pedido) + ": pedidos " +
             std::to_string(valor.Valor()) + " centavos, mas a resposta traz \"" +
             resultado.valor_centavos + "\" centavos e o cupom \"" + resultado.cupom +
             "\". O desfazimento foi enviado ao cupom " + std::to_string(cupom_pedido) +
             "; se a resposta é de outro cupom, confira-o no GP"),
        valor_pedido(valor),
        cupom(cupom_pedido),
        resposta(std::move(resultado)) {}
  Centavos valor_pedido;
  std::int32_t cupom;
  Resultado resposta;
};

// ---- Itens ----

/// Item de um link de pagamento. Os textos não podem ter "¬" nem "|".
struct ItemDeLink {
  std::string codigo, descricao;
  Inteiro quantidade;
  Centavos unitario, desconto, total;
};

/// Item de uma venda de frota: até seis textos sem "-" nem "|".
using ItemDeFrota = std::vector<std::string>;

// ---- Fluxo interativo ----

struct InicioDeFluxo {
  std::uint32_t funcao;
  Centavos valor;
  std::uint32_t campo3 = 0;
  std::string campo4 = {}, campo6 = {}, campo7 = {}, campo8 = {}, campo9 = {};
  std::uint32_t campo10 = 0;
  /// A função de encerramento do Trevix (no simulado, 99). Com a da venda, outra começaria: por
  /// isso é obrigatória.
  std::optional<std::uint32_t> funcao_fim = {};
};

/// A função em que o fluxo terminou.
enum class Etapa { inicia, aguarda, continua, finaliza };

struct [[nodiscard]] ResultadoDeFluxo {
  /// Houve retorno e o encerramento deu 0, ou 39 (só o envio não foi feito). Não quer dizer que a
  /// transação foi aprovada: isso está em `campos`.
  bool concluido = false;
  std::int32_t codigo = 0;
  Etapa etapa = Etapa::inicia;
  std::string retorno;
  std::map<std::string, std::string> campos = {};  ///< as partes CHAVE:valor do retorno
  std::string motivo;                              ///< por que não foi concluído
};

/// Recebe a pergunta e dá a resposta, ou nada para cancelar. Uma exceção cancela e segue adiante.
using Perguntar = std::function<std::optional<std::string>(const std::string&)>;

// ---- O objeto ----

struct Configuracao {
  std::string cnpj_cliente, cnpj_parceiro;
  Inteiro leitor = 1;
  std::filesystem::path dll = L"Caixora.dll";
  std::filesystem::path diario = {};  ///< sem ele, uma queda no meio da venda não deixa registro
  int tentativas = 10;                ///< de confirmar ou desfazer
  std::chrono::milliseconds pausa{2000};
};

class Caixora {
 public:
  explicit Caixora(const Configuracao& configuracao)
      : dll_(Biblioteca(configuracao.dll)),
        cliente_(ParaAnsi("cnpj_cliente", configuracao.cnpj_cliente)),
        parceiro_(ParaAnsi("cnpj_parceiro", configuracao.cnpj_parceiro)),
        leitor_(configuracao.leitor),
        tentativas_(configuracao.tentativas),
        pausa_(configuracao.pausa),
        diario_(configuracao.diario) {
    if (tentativas_ < 1) throw ErroDeUso("tentativas: ao menos 1");
  }

  // Vendas: o valor é de ao menos um centavo; o cupom, de ao menos 1.

  Resultado VendeCredito(Centavos valor, Inteiro cupom) {
    return Vender(dll_.VendeCredito, valor, cupom);
  }
  Resultado VendeCreditoVista(Centavos valor, Inteiro cupom) {
    return Vender(dll_.VendeCreditoVista, valor, cupom);
  }
  Resultado VendeCreditoParcLoja(Inteiro parcelas, Centavos valor, Inteiro cupom) {
    return Parcelar(dll_.VendeCreditoParcLoja, parcelas, valor, cupom);
  }
  Resultado VendeCreditoParcAdm(Inteiro parcelas, Centavos valor, Inteiro cupom) {
    return Parcelar(dll_.VendeCreditoParcAdm, parcelas, valor, cupom);
  }
  Resultado VendeDebito(Centavos valor, Inteiro cupom) {
    return Vender(dll_.VendeDebito, valor, cupom);
  }
  Resultado VendeDebitoAVista(Centavos valor, Inteiro cupom) {
    return Vender(dll_.VendeDebitoAVista, valor, cupom);
  }
  Resultado MenuPrivate(Centavos valor, Inteiro cupom) {
    return Vender(dll_.MenuPrivate, valor, cupom);
  }
  Resultado VendeCarteiraDigitalPix(Centavos valor, Inteiro cupom) {
    return Vender(dll_.VendeCarteiraDigitalPix, valor, cupom);
  }
  Resultado ParceleMais(Centavos valor, Inteiro cupom) {
    return Vender(dll_.ParceleMais, valor, cupom);
  }
  Resultado VendeFrotaCompleto(Centavos valor, std::string_view km, std::string_view placa,
                               std::string_view matricula, const std::vector<ItemDeFrota>& itens,
                               Inteiro cupom) {
    VerificarVenda(valor, cupom);
    return Pagar(dll_.VendeFrotaCompleto, valor.Reais(), ParaAnsi("sKM", km).c_str(),
                 ParaAnsi("sPlaca", placa).c_str(), ParaAnsi("sMatricula", matricula).c_str(),
                 Quantidade(itens), ParaAnsi("sItens", Juntar(itens)).c_str(), cupom, leitor_);
  }

  // Links de pagamento

  Resultado LinkPagamento(Inteiro parcelas, Centavos valor, Inteiro cupom,
                          const std::vector<ItemDeLink>& itens, std::string_view campo011,
                          std::string_view campo012) {
    VerificarVenda(valor, cupom);
    VerificarParcelas(parcelas);
    return Pagar(dll_.LinkPagamento, parcelas, valor.Reais(), cupom, Quantidade(itens),
                 ParaAnsi("sItens", Juntar(itens)).c_str(), ParaAnsi("sCampo011", campo011).c_str(),
                 ParaAnsi("sCampo012", campo012).c_str(), leitor_);
  }
  Resultado ListarLinkPagamentoPago(Centavos valor, Inteiro cupom) {
    return Pagar(dll_.ListarLinkPagamentoPago, valor.Reais(), cupom, leitor_);
  }
  Resultado ManutencaoLinkPagamento() { return Pagar(dll_.ManutencaoLinkPagamento, leitor_); }

  // Depois da venda

  /// Passou, se a resposta é RespostaLocal(). Recusado, repita antes de qualquer outra operação:
  /// até lá elas lançam PendenciaAberta. Um cupom do diário é recusado: use ConcluirVenda.
  Resultado Confirmar(Inteiro cupom) { return DesfechoDireto(cupom, Desfecho::confirmar); }
  /// Como Confirmar.
  Resultado Desfazimento(Inteiro cupom) { return DesfechoDireto(cupom, Desfecho::desfazer); }
  /// Um valor zero não é enviado. `controle` é o da venda, ou vazio.
  Resultado Cancelar(Centavos valor, Inteiro cupom, std::string_view controle) {
    return Pagar(dll_.Cancelar, valor.Reais(), cupom, ParaAnsi("sControle", controle).c_str(),
                 leitor_);
  }
  Resultado Reimpressao() { return Pagar(dll_.Reimpressao, leitor_); }
  /// A data é como "25/03/2021".
  Resultado ReimpressaoDireto(std::string_view nsu, std::string_view data, Inteiro cupom) {
    return Pagar(dll_.ReimpressaoDireto, ParaAnsi("sNSU", nsu).c_str(),
                 ParaAnsi("data", data).c_str(), cupom, leitor_);
  }

  // Administração

  /// Um valor zero não é enviado.
  Resultado Adm(Centavos valor, Inteiro cupom) {
    return Pagar(dll_.Adm, valor.Reais(), cupom, leitor_);
  }
  Resultado Relatorio(Inteiro cupom) { return Pagar(dll_.Relatorio, cupom, leitor_); }
  Resultado RecargaCelular(Inteiro cupom) { return Pagar(dll_.RecargaCelular, cupom, leitor_); }
  Resultado Atv(Inteiro cupom) { return Pagar(dll_.Atv, cupom, leitor_); }
  Resultado SolicitarCPF(Inteiro cupom) { return Pagar(dll_.SolicitarCPF, cupom); }
  Resultado SolicitarCNPJ(Inteiro cupom) { return Pagar(dll_.SolicitarCNPJ, cupom); }
  Resultado SolicitarDocumento(Inteiro cupom) { return Pagar(dll_.SolicitarDocumento, cupom); }

  /// "OK". Com um desfecho pendente lança PendenciaAberta: a DLL o esqueceria sem aviso.
  std::string Teste() {
    const std::lock_guard dono(interno::estado.trava);
    interno::RecusarVendaEmAndamento();
    interno::RecusarPendencia();
    return dll_.Teste();
  }

  /// Desiste do desfecho recusado, que fica por fazer no GP: as operações voltam a ser aceitas.
  void EsquecerPendencia() {
    const std::lock_guard dono(interno::estado.trava);
    interno::RecusarVendaEmAndamento();
    dll_.Teste();
    interno::estado.pendente.reset();
  }

  /// Para a abertura do caixa: chama Atv até o GP responder, e lança Erro se ele não responde. A
  /// DLL inicia um GP fechado.
  void AguardarGp(int tentativas) {
    std::string mensagem;
    for (int tentativa = 1; tentativa <= tentativas; ++tentativa) {
      if (tentativa > 1) std::this_thread::sleep_for(pausa_);
      const Resultado resultado = Atv(1);
      if (resultado.Aprovada()) return;
      mensagem = resultado.mensagem;
    }
    throw Erro("O GP não está ativo: " + mensagem);
  }

  // ---- Venda com confirmação ----

  /// Vende e dá à venda um desfecho, e um só: confirma-a depois que `ao_aprovar` a registra e
  /// imprime, ou a desfaz se `ao_aprovar` lança uma exceção (que segue adiante), se o valor não
  /// confere (ValorDivergente) ou se não se sabe o que houve. Se nem isso passa, lança
  /// VendaEmAberto, e a venda fica no diário. Com outra venda em aberto no diário, não começa.
  ///
  /// Até o desfecho, qualquer outra operação, também de outra thread ou de dentro de `ao_aprovar`,
  /// lança ErroDeUso. Por isso `venda.chamar` chama uma venda só, na thread em que foi chamada.
  template <std::invocable<const Resultado&> F>
  VendaConcluida VenderEConfirmar(const Venda& venda, F&& ao_aprovar) {
    static_assert(std::is_void_v<std::invoke_result_t<F&, const Resultado&>>,
                  "ao_aprovar avisa uma falha com uma exceção, e não com o que devolve");
    VerificarVenda(venda.valor, venda.cupom);
    interno::Reserva reserva(venda.cupom);
    diario_.Iniciar(venda.cupom, venda.valor);
    const auto [resultado, duracao] = ChamarVenda(venda, reserva);
    if (!resultado.Aprovada()) {
      if (NegativaCerta(resultado, duracao)) {
        diario_.Remover(venda.cupom);
        return {Situacao::recusada, resultado, resultado.mensagem};
      }
      Concluir(venda.cupom, Desfecho::desfazer);
      return {Situacao::desfeita, resultado, "resultado incerto: " + resultado.mensagem};
    }
    if (resultado.ValorCentavos() != venda.valor.Valor() ||
        interno::Numero(resultado.cupom) != venda.cupom) {
      Concluir(venda.cupom, Desfecho::desfazer);
      throw ValorDivergente(venda.valor, venda.cupom, resultado);
    }
    try {
      diario_.Marcar(venda.cupom, EstadoDaVenda::aprovada);
      std::invoke(ao_aprovar, resultado);
    } catch (...) {
      Concluir(venda.cupom, Desfecho::desfazer);
      throw;
    }
    Concluir(venda.cupom, Desfecho::confirmar);
    return {Situacao::confirmada, resultado, ""};
  }

  /// As vendas que uma queda ou uma recusa deixou sem desfecho. Ao abrir o caixa, dê um a cada uma
  /// com ConcluirVenda: iniciada e desfazer, desfaça; confirmar, confirme; aprovada, confirme só se
  /// a venda está nos seus registros, senão desfaça.
  std::vector<VendaNoDiario> VendasEmAberto() const {
    ExigirDiario();
    return diario_.Ler();
  }

  /// Confirma ou desfaz uma venda em aberto e a tira do diário, ou lança VendaEmAberto. Só uma
  /// aprovada deixa a escolha: iniciada e desfazer são desfeitas; confirmar, confirmada.
  void ConcluirVenda(Inteiro cupom, Desfecho desfecho) {
    ExigirDiario();
    const interno::Reserva reserva(cupom, interno::Pendencia{cupom, desfecho});
    const auto estado = diario_.Estado(cupom);
    if (!estado)
      throw ErroDeUso("Cupom " + std::to_string(cupom) + ": não está em aberto no diário");
    if (*estado != EstadoDaVenda::aprovada &&
        (*estado == EstadoDaVenda::confirmar) != (desfecho == Desfecho::confirmar))
      throw ErroDeUso("Cupom " + std::to_string(cupom) + ": está no diário como " +
                      std::string(Nome(*estado)) + ", e só se pode " + std::string(Falta(*estado)));
    Concluir(cupom, desfecho);
  }

  // ---- Fluxo interativo ----

  /// Conduz o fluxo até o fim. `parada` o cancela mesmo enquanto não há pergunta.
  ResultadoDeFluxo Fluxo(const InicioDeFluxo& inicio, const Perguntar& perguntar,
                         const std::stop_token& parada = {}) {
    if (!inicio.funcao_fim) throw ErroDeUso("funcao_fim: falta a função de encerramento");
    if (*inicio.funcao_fim == inicio.funcao)
      throw ErroDeUso("funcao_fim: a mesma função começaria outra transação");
    const std::string valor = inicio.valor.Texto();
    const std::string campo4 = ParaAnsiInterativo("sCampo4", inicio.campo4);
    const std::string campo6 = ParaAnsiInterativo("sCampo6", inicio.campo6);
    const std::string campo7 = ParaAnsiInterativo("sCampo7", inicio.campo7);
    const std::string campo8 = ParaAnsiInterativo("sCampo8", inicio.campo8);
    const std::string campo9 = ParaAnsiInterativo("sCampo9", inicio.campo9);
    const auto chamar = [&](auto* funcao, std::uint32_t numero) {
      return funcao(numero, cliente_.c_str(), inicio.campo3, campo4.c_str(), valor.c_str(),
                    campo6.c_str(), campo7.c_str(), campo8.c_str(), campo9.c_str(), inicio.campo10,
                    "");
    };
    ResultadoDeFluxo fim;
    {
      const std::lock_guard dono(interno::estado.trava);
      interno::RecusarVendaEmAndamento();
      interno::RecusarPendencia();
      fim.codigo = chamar(dll_.IniciaFuncaoQJInterativo, inicio.funcao);
    }
    if (fim.codigo != CAIXORA_QJ_SUCESSO) {
      fim.motivo = SignificadoQj(fim.codigo);
      return fim;
    }
    try {
      if (!Conversar(fim, perguntar, parada)) return fim;
    } catch (...) {
      Travado(dll_.CancelarFluxoQJInterativo);
      throw;
    }
    fim.etapa = Etapa::finaliza;
    const std::lock_guard dono(interno::estado.trava);
    fim.codigo = chamar(dll_.FinalizaFuncaoQJInterativo, *inicio.funcao_fim);
    fim.concluido = fim.codigo == CAIXORA_QJ_SUCESSO || fim.codigo == CAIXORA_QJ_EMAIL_AUSENTE;
    if (fim.codigo != CAIXORA_QJ_SUCESSO) fim.motivo = SignificadoQj(fim.codigo);
    return fim;
  }

 private:
  /// Todas as funções, já na carga: descobrir depois de uma aprovação que falta Confirmar seria
  /// tarde.
  struct Funcoes {
    explicit Funcoes(const Biblioteca& biblioteca) : dll(biblioteca) {}
    Biblioteca dll;
#define CAIXORA_PDV_FUNCAO(nome) decltype(&::nome) nome = dll.Achar<decltype(::nome)>(#nome)
    CAIXORA_PDV_FUNCAO(VendeCredito);
    CAIXORA_PDV_FUNCAO(VendeCreditoVista);
    CAIXORA_PDV_FUNCAO(VendeCreditoParcLoja);
    CAIXORA_PDV_FUNCAO(VendeCreditoParcAdm);
    CAIXORA_PDV_FUNCAO(VendeDebito);
    CAIXORA_PDV_FUNCAO(VendeDebitoAVista);
    CAIXORA_PDV_FUNCAO(MenuPrivate);
    CAIXORA_PDV_FUNCAO(VendeCarteiraDigitalPix);
    CAIXORA_PDV_FUNCAO(ParceleMais);
    CAIXORA_PDV_FUNCAO(VendeFrotaCompleto);
    CAIXORA_PDV_FUNCAO(LinkPagamento);
    CAIXORA_PDV_FUNCAO(ListarLinkPagamentoPago);
    CAIXORA_PDV_FUNCAO(ManutencaoLinkPagamento);
    CAIXORA_PDV_FUNCAO(Confirmar);
    CAIXORA_PDV_FUNCAO(Desfazimento);
    CAIXORA_PDV_FUNCAO(Cancelar);
    CAIXORA_PDV_FUNCAO(Reimpressao);
    CAIXORA_PDV_FUNCAO(ReimpressaoDireto);
    CAIXORA_PDV_FUNCAO(Adm);
    CAIXORA_PDV_FUNCAO(Relatorio);
    CAIXORA_PDV_FUNCAO(RecargaCelular);
    CAIXORA_PDV_FUNCAO(Atv);
    CAIXORA_PDV_FUNCAO(SolicitarCPF);
    CAIXORA_PDV_FUNCAO(SolicitarCNPJ);
    CAIXORA_PDV_FUNCAO(SolicitarDocumento);
    CAIXORA_PDV_FUNCAO(Teste);
    CAIXORA_PDV_FUNCAO(IniciaFuncaoQJInterativo);
    CAIXORA_PDV_FUNCAO(AguardaFuncaoQJInterativo);
    CAIXORA_PDV_FUNCAO(ContinuaFuncaoQJInterativo);
    CAIXORA_PDV_FUNCAO(FinalizaFuncaoQJInterativo);
    CAIXORA_PDV_FUNCAO(CancelarFluxoQJInterativo);
#undef CAIXORA_PDV_FUNCAO
  };

  template <class... P, class... A>
  Resultado Pagar(CaixoraTexto (*funcao)(const char*, const char*, P...), A... argumentos) {
    const std::lock_guard dono(interno::estado.trava);
    auto& venda = interno::estado.venda;
    if (!venda || venda->vendedora != std::this_thread::get_id())
      interno::RecusarVendaEmAndamento();
    interno::RecusarPendencia();
    if (venda) venda->vendedora = {};
    return Interpretar(
        ParaUtf8(Receber(funcao(cliente_.c_str(), parceiro_.c_str(), argumentos...))));
  }

  template <class F>
  Resultado Vender(F funcao, Centavos valor, Inteiro cupom) {
    VerificarVenda(valor, cupom);
    return Pagar(funcao, valor.Reais(), cupom, leitor_);
  }

  template <class F>
  Resultado Parcelar(F funcao, Inteiro parcelas, Centavos valor, Inteiro cupom) {
    VerificarVenda(valor, cupom);
    VerificarParcelas(parcelas);
    return Pagar(funcao, parcelas, valor.Reais(), cupom, leitor_);
  }

  Resultado DesfechoDireto(std::int32_t cupom, Desfecho desfecho) {
    VerificarCupom(cupom);
    const std::lock_guard dono(interno::estado.trava);
    interno::RecusarVendaEmAndamento();
    if (diario_.Existe() && diario_.Estado(cupom))
      throw ErroDeUso("Cupom " + std::to_string(cupom) +
                      ": está em aberto no diário; use ConcluirVenda");
    return DarDesfecho(cupom, desfecho);
  }

  /// Com a trava.
  Resultado DarDesfecho(std::int32_t cupom, Desfecho desfecho) {
    const interno::Pendencia este{cupom, desfecho};
    interno::RecusarPendencia(este);
    interno::estado.pendente = este;  // até prova em contrário, mesmo se a cópia da resposta falha
    const auto funcao = desfecho == Desfecho::confirmar ? dll_.Confirmar : dll_.Desfazimento;
    Resultado resultado =
        Interpretar(ParaUtf8(Receber(funcao(cliente_.c_str(), parceiro_.c_str(), cupom))));
    if (resultado.codigo != 0) interno::estado.pendente.reset();
    return resultado;
  }

  template <class R, class... P, class... A>
  static R Travado(R (*funcao)(P...), A... argumentos) {
    const std::lock_guard dono(interno::estado.trava);
    return funcao(argumentos...);
  }

  static void VerificarCupom(std::int32_t cupom) {
    if (cupom < 1) throw ErroDeUso("cupom: " + std::to_string(cupom) + " não é de 1 em diante");
  }
  static void VerificarVenda(Centavos valor, std::int32_t cupom) {
    if (valor.Valor() < 1) throw ErroDeUso("valor: uma venda é de ao menos um centavo");
    VerificarCupom(cupom);
    const std::lock_guard dono(interno::estado.trava);
    const auto& venda = interno::estado.venda;
    if (venda && venda->cupom != cupom) interno::RecusarVendaEmAndamento();
  }
  static void VerificarParcelas(std::int32_t parcelas) {
    if (parcelas < 1) throw ErroDeUso("parcelas: ao menos 1");
  }
  void ExigirDiario() const {
    if (!diario_.Existe()) throw ErroDeUso("diario: nenhum foi configurado");
  }

  template <class Item>
  static std::int32_t Quantidade(const std::vector<Item>& itens) {
    return Inteiro(itens.size());
  }

  static std::string Juntar(const std::vector<ItemDeLink>& itens) {
    std::string texto;
    for (const ItemDeLink& item : itens) {
      for (const std::string& livre : {item.codigo, item.descricao})
        for (const char* separador : {"¬", "|"})
          interno::RecusarSeparador("sItens", livre, separador);
      if (item.quantidade < 1) throw ErroDeUso("sItens: a quantidade é de ao menos 1");
      texto += (texto.empty() ? "" : "|") + item.codigo + "¬" + item.descricao + "¬" +
               std::to_string(item.quantidade) + "¬" + item.unitario.Texto() + "¬" +
               item.desconto.Texto() + "¬" + item.total.Texto();
    }
    return texto;
  }

  static std::string Juntar(const std::vector<ItemDeFrota>& itens) {
    std::string texto;
    for (const ItemDeFrota& item : itens) {
      if (item.size() > 6) throw ErroDeUso("sItens: um item tem no máximo seis textos");
      // Um item só, e vazio, seria ignorado sem aviso.
      if (item.empty() || item.front().empty())
        throw ErroDeUso("sItens: falta o primeiro texto de um item");
      if (!texto.empty()) texto += '|';
      for (std::size_t i = 0; i < item.size(); ++i) {
        for (const char* separador : {"-", "|"})
          interno::RecusarSeparador("sItens", item[i], separador);
        texto += (i == 0 ? "" : "-") + item[i];
      }
    }
    return texto;
  }

  std::pair<Resultado, std::chrono::steady_clock::duration> ChamarVenda(const Venda& venda,
                                                                        interno::Reserva& reserva) {
    reserva.PermitirVenda();
    try {
      const auto inicio = std::chrono::steady_clock::now();
      Resultado resultado = venda.chamar(*this, venda.valor, venda.cupom);
      const auto duracao = std::chrono::steady_clock::now() - inicio;
      reserva.RetirarPermissao();
      return {std::move(resultado), duracao};
    } catch (...) {
      // Se nada chegou à DLL, não há venda; senão, ela pode ter sido feita.
      reserva.RetirarPermissao() ? diario_.Remover(venda.cupom)
                                 : Concluir(venda.cupom, Desfecho::desfazer);
      throw;
    }
  }

  void Concluir(std::int32_t cupom, Desfecho desfecho) {
    const bool confirmar = desfecho == Desfecho::confirmar;
    const auto estado = confirmar ? EstadoDaVenda::confirmar : EstadoDaVenda::desfazer;
    try {
      diario_.Marcar(cupom, estado);
    } catch (const ErroDeDiario&) {
      // O desfecho não espera pelo disco: o estado que ficou no diário leva ao mesmo.
    }
    std::string mensagem;
    for (int tentativa = 1; tentativa <= tentativas_; ++tentativa) {
      if (tentativa > 1) std::this_thread::sleep_for(pausa_);
      std::unique_lock dono(interno::estado.trava);
      const Resultado resultado = DarDesfecho(cupom, desfecho);
      dono.unlock();
      if (resultado.codigo != 0) return diario_.Remover(cupom);
      mensagem = resultado.mensagem;
    }
    throw VendaEmAberto(cupom, estado, mensagem);
  }

  /// Falso, se o fluxo acabou sem retorno; `fim` diz por quê.
  bool Conversar(ResultadoDeFluxo& fim, const Perguntar& perguntar, const std::stop_token& parada) {
    const auto cancelar = [&](std::string_view motivo) {
      const std::int32_t codigo = Travado(dll_.CancelarFluxoQJInterativo);
      fim.motivo = motivo;
      if (codigo != CAIXORA_QJ_SUCESSO)
        fim.motivo += "; o cancelamento falhou: " + std::string(SignificadoQj(codigo));
      return false;
    };
    while (true) {
      fim.etapa = Etapa::aguarda;
      if (parada.stop_requested()) return cancelar("cancelado pelo operador");
      const std::string texto = ParaUtf8(Receber(Travado(dll_.AguardaFuncaoQJInterativo)));
      if (texto.empty()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        continue;
      }
      if (texto.starts_with("[ERROABORTAR]#"))
        return cancelar(std::string_view(texto).substr(texto.find('#') + 1));
      if (texto.find("[RETORNO]") != std::string::npos) {
        fim.retorno = texto;
        SepararRetorno(fim);
        return true;
      }
      const std::optional<std::string> resposta = perguntar(texto);
      if (!resposta) return cancelar("cancelado pelo operador");
      fim.etapa = Etapa::continua;
      fim.codigo = Travado(dll_.ContinuaFuncaoQJInterativo,
                           ParaAnsiInterativo("sInformacao", *resposta).c_str());
      if (fim.codigo != CAIXORA_QJ_SUCESSO) return cancelar(SignificadoQj(fim.codigo));
    }
  }

  static void SepararRetorno(ResultadoDeFluxo& fim) {
    for (std::string_view resto = fim.retorno; !resto.empty();) {
      std::string_view parte = interno::Tirar(resto, "|");
      if (parte.find(':') == std::string_view::npos) continue;
      const std::string chave(interno::Tirar(parte, ":"));
      fim.campos[chave] = parte;
    }
  }

  Funcoes dll_;
  std::string cliente_, parceiro_;
  std::int32_t leitor_;
  int tentativas_;
  std::chrono::milliseconds pausa_;
  Diario diario_;
};

}  // namespace caixora_pdv
