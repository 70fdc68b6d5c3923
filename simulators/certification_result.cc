#include "simulators/certification_result.h"

#include <algorithm>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "simulators/embedded.h"

namespace caixora::certification {
namespace {

struct Name {
  std::string_view step;     // of a step
  std::string_view overall;  // of the whole
  std::string_view id;       // in JSON and as a class of the page
};

// In the order of Verdict.
constexpr Name kNames[] = {
    {"não executado", "INCOMPLETO", "nao_executado"},
    {"passou", "APROVADO", "passou"},
    {"falhou", "REPROVADO", "falhou"},
    {"pulado", "", "pulado"},
};

const Name& NameOf(Verdict verdict) { return kNames[static_cast<std::size_t>(verdict)]; }

std::string_view OverallId(Verdict verdict) {
  return verdict == Verdict::kPassed   ? "aprovado"
         : verdict == Verdict::kFailed ? "reprovado"
                                       : "incompleto";
}

std::ptrdiff_t Count(const Certification& certification, Verdict verdict) {
  return std::ranges::count(certification.results(), verdict, &StepResult::verdict);
}

std::string Totals(const Certification& certification) {
  std::string text;
  for (const auto& [verdict, one, more] :
       std::initializer_list<std::tuple<Verdict, const char*, const char*>>{
           {Verdict::kPassed, "passou", "passaram"},
           {Verdict::kFailed, "falhou", "falharam"},
           {Verdict::kSkipped, "pulado", "pulados"},
           {Verdict::kNotRun, "não executado", "não executados"}}) {
    const std::ptrdiff_t count = Count(certification, verdict);
    if (count == 0) continue;
    text += (text.empty() ? "" : ", ") + std::to_string(count) + ' ' + (count == 1 ? one : more);
  }
  return text;
}

std::vector<std::pair<std::string_view, const std::string*>> Rows(
    const Circumstances& circumstances) {
  std::vector<std::pair<std::string_view, const std::string*>> rows;
  for (const auto& [name, value] : {std::pair{"Programa", &circumstances.program},
                                    {"Versão do arquivo", &circumstances.program_version},
                                    {"Caixora.dll", &circumstances.library_version},
                                    {"Máquina", &circumstances.machine},
                                    {"Início", &circumstances.started},
                                    {"Fim", &circumstances.ended}})
    if (!value->empty()) rows.emplace_back(name, value);
  return rows;
}

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        if (static_cast<unsigned char>(c) >= 0x20) escaped += c;
    }
  return escaped;
}

// Makes elements, their texts escaped.
class Markup {
 public:
  Markup& Open(std::string_view tag, std::string_view of_class = {}) {
    text_.append("<").append(tag);
    if (!of_class.empty()) text_.append(" class=\"").append(of_class).append("\"");
    text_ += '>';
    return *this;
  }
  Markup& Close(std::string_view tag) {
    text_.append("</").append(tag).append(">\n");
    return *this;
  }
  Markup& Element(std::string_view tag, std::string_view text, std::string_view of_class = {}) {
    Open(tag, of_class);
    text_ += Escaped(text);
    return Close(tag);
  }
  Markup& List(std::string_view of_class, const std::vector<std::string>& texts) {
    if (texts.empty()) return *this;
    Open("ul", of_class);
    for (const std::string& text : texts) Element("li", text);
    return Close("ul");
  }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

std::string FieldsOf(const Seen& seen) {
  std::string text;
  for (const auto& [key, value] : seen.fields)
    text += (text.empty() ? "" : "  ·  ") + key + " = " + value;
  return text;
}

std::string Identification(const Circumstances& circumstances) {
  Markup markup;
  for (const auto& [name, value] : Rows(circumstances))
    markup.Open("tr").Element("th", name).Element("td", *value).Close("tr");
  return markup.text();
}

std::string Summary(const Certification& certification) {
  Markup markup;
  for (std::size_t i = 0; i < certification.results().size(); ++i) {
    const StepResult& result = certification.results()[i];
    const Name& name = NameOf(result.verdict);
    markup.Open("tr")
        .Element("td", std::to_string(i + 1), "numero")
        .Open("td")
        .Element("span", certification.script().steps[i].title)
        .List("motivos", result.reasons)
        .Close("td")
        .Open("td")
        .Element("span", name.step, "marca " + std::string(name.id))
        .Close("td")
        .Close("tr");
  }
  return markup.text();
}

std::string Details(const Certification& certification) {
  Markup markup;
  for (std::size_t i = 0; i < certification.results().size(); ++i) {
    const StepResult& result = certification.results()[i];
    const Step& step = certification.script().steps[i];
    const Name& name = NameOf(result.verdict);
    if (result.verdict == Verdict::kNotRun && result.seen.empty()) continue;
    markup.Open("section").Open("h3").Element("span", std::to_string(i + 1) + ". " + step.title);
    markup.Element("span", name.step, "marca " + std::string(name.id)).Close("h3");
    for (const std::string& line : step.instructions) markup.Element("p", line, "faca");
    markup.List("motivos", result.reasons).List("notas", result.remarks);
    if (!result.seen.empty()) {
      markup.Open("table", "pedidos");
      for (const Seen& seen : result.seen) {
        markup.Open("tr").Element("td", seen.time, "hora").Open("td");
        markup.Element("div", seen.text).Element("div", FieldsOf(seen), "campos");
        if (!seen.answer.empty()) markup.Element("div", "GP: " + seen.answer, "resposta");
        markup.Close("td").Close("tr");
      }
      markup.Close("table");
    }
    markup.Close("section");
  }
  return markup.text();
}

}  // namespace

std::string Text(const Certification& certification, const Circumstances& circumstances) {
  std::string text = certification.script().title + ": " +
                     std::string(NameOf(certification.Overall()).overall) + " (" +
                     Totals(certification) + ")\n";
  for (const auto& [name, value] : Rows(circumstances))
    text += "  " + std::string(name) + ": " + *value + '\n';
  for (std::size_t i = 0; i < certification.results().size(); ++i) {
    const StepResult& result = certification.results()[i];
    text += (i < 9 ? " " : "") + std::to_string(i + 1) + ". " +
            certification.script().steps[i].title + ": " +
            std::string(NameOf(result.verdict).step) + '\n';
    for (const std::string& reason : result.reasons) text += "      " + reason + '\n';
  }
  return text;
}

nlohmann::ordered_json Json(const Certification& certification,
                            const Circumstances& circumstances) {
  using nlohmann::ordered_json;
  ordered_json json = {{"roteiro", certification.script().title},
                       {"resultado", OverallId(certification.Overall())},
                       {"programa", circumstances.program},
                       {"versao_do_arquivo", circumstances.program_version},
                       {"versao_da_dll", circumstances.library_version},
                       {"maquina", circumstances.machine},
                       {"inicio", circumstances.started},
                       {"fim", circumstances.ended},
                       {"passos", ordered_json::array()}};
  for (std::size_t i = 0; i < certification.results().size(); ++i) {
    const StepResult& result = certification.results()[i];
    const Step& step = certification.script().steps[i];
    ordered_json seen = ordered_json::array();
    for (const Seen& event : result.seen) {
      ordered_json fields = ordered_json::object();
      for (const auto& [key, value] : event.fields) fields[key] = value;
      seen.push_back({{"hora", event.time},
                      {"texto", event.text},
                      {"campos", std::move(fields)},
                      {"resposta", event.answer}});
    }
    json["passos"].push_back({{"id", step.id},
                              {"titulo", step.title},
                              {"resultado", NameOf(result.verdict).id},
                              {"motivos", result.reasons},
                              {"notas", result.remarks},
                              {"pedidos", std::move(seen)}});
  }
  return json;
}

std::string Page(const Certification& certification, const Circumstances& circumstances) {
  const Verdict overall = certification.Overall();
  const std::pair<std::string_view, std::string> places[] = {
      {"TITULO", Escaped(certification.script().title)},
      {"CLASSE", std::string(OverallId(overall))},
      {"RESULTADO", std::string(NameOf(overall).overall)},
      {"TOTAIS", Escaped(Totals(certification))},
      {"IDENTIFICACAO", Identification(circumstances)},
      {"RESUMO", Summary(certification)},
      {"DETALHES", Details(certification)},
  };
  // One pass over the template: what is put in is not looked at again.
  std::string page;
  std::string_view rest = kCertificationPage;
  for (std::size_t at; (at = rest.find("{{")) != rest.npos;) {
    page.append(rest.substr(0, at));
    const std::size_t end = rest.find("}}", at);
    const auto* place = std::ranges::find(places, rest.substr(at + 2, end - at - 2),
                                          &std::pair<std::string_view, std::string>::first);
    if (place != std::end(places)) page.append(place->second);
    rest.remove_prefix(end + 2);
  }
  return page.append(rest);
}

}  // namespace caixora::certification
