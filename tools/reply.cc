#include "tools/reply.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <nlohmann/json.hpp>

#include "caixora.hpp"
#include "programs/console.h"
#include "tools/failures.h"

namespace caixora {
namespace {

constexpr std::array<std::string_view, caixora_pdv::campos.size()> kTitles = {
    "Cupom",         "Valor",         "Bandeira",          "Rede",
    "Autorização",   "NSU",           "Tipo de transação", "Parcelas",
    "Controle",      "Campo 170-000", "Código da rede",    "Campo 740-000",
    "Campo 741-000", "Campo 742-000", "Campo 031-000"};

bool IsResult(const Reply& reply) {
  return reply.kind != Kind::kTest && reply.kind != Kind::kInteractive;
}

caixora_pdv::Resultado ResultOf(const Reply& reply) {
  return caixora_pdv::Interpretar(caixora_pdv::ParaUtf8(reply.text));
}

bool IsSuccess(Kind kind, const caixora_pdv::Resultado& result) {
  return result.Aprovada() || (kind == Kind::kOutcome && result.RespostaLocal());
}

// It is known what happened, and with that what to do.
bool IsCertain(const Reply& reply, const caixora_pdv::Resultado& result) {
  return result.RespostaLocal() ||
         caixora_pdv::NegativaCerta(result, std::chrono::milliseconds(reply.milliseconds));
}

std::string_view Outcome(Kind kind, const caixora_pdv::Resultado& result, bool certain) {
  if (result.RespostaLocal())
    return kind == Kind::kOutcome ? "pedido gravado (resposta local)"
                                  : "RESPOSTA LOCAL, que não é uma aprovação";
  if (result.codigo == 0) return certain ? "recusada ou com falha" : "RESULTADO INCERTO";
  const bool sale = kind == Kind::kSale;
  if (result.codigo == 1) return sale ? "aprovada, com comprovante" : "feita, com comprovante";
  return sale ? "aprovada, sem comprovante" : "feita, sem comprovante";
}

// What others wrote must not steer the console.
std::string Visible(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; }, ' ');
  return text;
}

// Empty when it is no failure.
std::string Remedy(std::string_view result) {
  const Failure* const failure = FindByResult(result);
  if (failure == nullptr) return {};
  return "  " + std::string(failure->meaning) + "\n  " + std::string(failure->remedy) + "\n";
}

// As the GP wrote it where that is no number of cents.
std::string InReais(const caixora_pdv::Resultado& result) {
  const auto cents = result.ValorCentavos();
  const bool fits = cents && *cents <= caixora_pdv::Centavos::maximo;
  return fits ? "R$ " + caixora_pdv::Centavos(*cents).Texto() : result.valor_centavos;
}

std::string Decoded(const Reply& reply, const caixora_pdv::Resultado& result) {
  const bool certain = IsCertain(reply, result);
  std::string text(Outcome(reply.kind, result, certain));
  if (result.bruto.starts_with("S;")) text += " (S;" + std::to_string(result.codigo) + ")";
  text += "\n";
  const auto add = [&](std::string_view title, const std::string& value) {
    if (!value.empty()) text.append("  ").append(title).append(": ").append(Visible(value)) += '\n';
  };
  add("Mensagem", result.mensagem);
  for (std::size_t i = 0; i < kTitles.size(); ++i) {
    const std::string& value = result.*caixora_pdv::campos[i].texto;
    add(kTitles[i], kTitles[i] == "Valor" ? InReais(result) : value);
  }
  for (const std::string& line : result.comprovante) text += "  | " + Visible(line) + "\n";
  if (reply.Succeeded()) return text;
  if (certain) return text + Remedy(result.bruto);
  if (reply.kind == Kind::kOutcome)
    return text + "  Não se sabe se o GP recebeu o pedido. Repita a chamada antes de outra.\n";
  return text +
         "  O GP pode ter feito a operação. Uma venda se desfaz:\n"
         "  Desfazimento, com o mesmo cupom. Outra operação se verifica no GP.\n";
}

}  // namespace

bool Reply::Succeeded() const {
  if (code) return *code == CAIXORA_QJ_SUCESSO;
  if (IsResult(*this)) return IsSuccess(kind, ResultOf(*this));
  return !text.starts_with("[ERROABORTAR]");
}

ExitStatus Reply::Status() const {
  return StatusOf(kind, Succeeded(), IsResult(*this) && ResultOf(*this).RespostaLocal());
}

void PrintDecoded(std::string_view name, const Reply& reply) {
  std::string text = "== " + std::string(name) + ": ";
  const std::string utf8 = caixora_pdv::ParaUtf8(reply.text);
  if (IsResult(reply))
    text += Decoded(reply, ResultOf(reply));
  else if (reply.code)
    text +=
        utf8 + " (" + std::string(caixora_pdv::SignificadoQj(*reply.code)) + ")\n" + Remedy(utf8);
  else
    text += (utf8.empty() ? "nada ainda" : Visible(utf8)) + "\n" + Remedy(utf8);
  Print(text);
}

nlohmann::ordered_json ToJson(const nlohmann::json& id, const Reply& reply) {
  nlohmann::ordered_json json = {{"id", id}};
  if (reply.code) {
    json["ok"] = reply.Succeeded();
    json["codigo"] = *reply.code;
    json["mensagem"] = caixora_pdv::SignificadoQj(*reply.code);
  } else if (IsResult(reply)) {
    const caixora_pdv::Resultado result = ResultOf(reply);
    json["ok"] = IsSuccess(reply.kind, result);
    json["codigo"] = result.codigo;
    json["mensagem"] = result.mensagem;
    for (const caixora_pdv::Campo& field : caixora_pdv::campos)
      json["campos"][std::string(field.nome)] = result.*field.texto;
    json["comprovante"] = result.comprovante;
    json["local"] = result.RespostaLocal();
    json["bruto"] = result.bruto;
    json["ms"] = reply.milliseconds;
  } else {
    json["ok"] = reply.Succeeded();
    json["texto"] = caixora_pdv::ParaUtf8(reply.text);
  }
  return json;
}

nlohmann::ordered_json ErrorToJson(const nlohmann::json& id, std::string_view error) {
  return {{"id", id}, {"ok", false}, {"erro", error}};
}

}  // namespace caixora
