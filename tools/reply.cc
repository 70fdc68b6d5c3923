#include "tools/reply.h"

#include <array>
#include <nlohmann/json.hpp>

#include "caixora.hpp"
#include "programs/console.h"

namespace caixora {
namespace {

constexpr std::array<std::string_view, caixora_pdv::campos.size()> kTitles = {"Cupom",
                                                                              "Valor em centavos",
                                                                              "Bandeira",
                                                                              "Rede",
                                                                              "Autorização",
                                                                              "NSU",
                                                                              "Tipo de transação",
                                                                              "Parcelas",
                                                                              "Controle",
                                                                              "Campo 170-000",
                                                                              "Código da rede",
                                                                              "Campo 740-000",
                                                                              "Campo 741-000",
                                                                              "Campo 742-000",
                                                                              "Campo 031-000"};

bool IsResult(const Reply& reply) {
  return reply.kind != Kind::kTest && reply.kind != Kind::kInteractive;
}

caixora_pdv::Resultado ResultOf(const Reply& reply) {
  return caixora_pdv::Interpretar(caixora_pdv::ParaUtf8(reply.text));
}

bool IsSuccess(Kind kind, const caixora_pdv::Resultado& result) {
  return result.Aprovada() || (kind == Kind::kOutcome && result.RespostaLocal());
}

}  // namespace

bool Reply::Succeeded() const {
  if (code) return *code == CAIXORA_QJ_SUCESSO;
  if (IsResult(*this)) return IsSuccess(kind, ResultOf(*this));
  return !text.starts_with("[ERROABORTAR]");
}

void PrintDecoded(std::string_view name, const Reply& reply) {
  Print("== " + std::string(name) + "\n" + caixora_pdv::ParaUtf8(reply.text));
  if (reply.code) return Print(" (" + std::string(caixora_pdv::SignificadoQj(*reply.code)) + ")\n");
  Print("\n");
  if (!IsResult(reply)) return;
  const caixora_pdv::Resultado result = ResultOf(reply);
  if (result.codigo == 0) return;
  Print("  Mensagem: " + result.mensagem + "\n");
  for (std::size_t i = 0; i < kTitles.size(); ++i)
    Print("  " + std::string(kTitles[i]) + ": " + result.*caixora_pdv::campos[i].texto + "\n");
  for (const std::string& line : result.comprovante) Print("  | " + line + "\n");
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
