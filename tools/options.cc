#include "tools/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <memory>
#include <string_view>
#include <variant>

#include "caixora.hpp"
#include "tools/arguments.h"
#include "tools/names.h"
#include "tools/vocabulary.h"

namespace caixora {
namespace {

using caixora_pdv::ErroDeUso;

constexpr std::string_view kHelpVerb = "ajuda";

bool AsksForHelp(std::string_view word) {
  constexpr std::string_view kWords[] = {"--ajuda", "-h", "/?", "--help"};
  return std::ranges::find(kWords, word) != std::end(kWords);
}

// The description says how the tool is used.
class Formatter : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App*, std::string) const override { return {}; }
};

std::string Footer() {
  std::string text =
      "Uma função é uma da biblioteca (--lista mostra todas) ou uma desta ferramenta:\n";
  for (const Verb& verb : AllVerbs())
    text.append("  ").append(verb.name).append(": ").append(verb.summary).append("\n");
  return text +
         "\nO nome pode ser escrito em maiúsculas ou minúsculas. Os argumentos de cada uma, com "
         "um\n"
         "exemplo: caixora_host ajuda <função>, ou caixora_host <função> --ajuda.\n\n"
         "Valores são em reais: 12,50, 12.50 ou 12. São recusados 1.000, 10,999, 1e2, +1 e -1.\n\n"
         "Ctrl-C cancela um fluxo. Durante outra chamada, avisa: o resultado ficaria incerto. Um\n"
         "segundo encerra a ferramenta sem ele.\n\n"
         "Código de saída (de várias chamadas, o maior; relatorio e diagnostico têm os seus):\n" +
         ExitStatusHelp() +
         "A ponte termina com 0; com 1, se a saída foi fechada ou a biblioteca a encerrou.\n";
}

void DescribeOptions(CLI::App& app, Options& options, std::string& finish) {
  app.formatter(std::make_shared<Formatter>());
  app.option_defaults()->group("Opções");
  app.set_help_flag("-h,--ajuda,--help", "esta ajuda; também /?")->group("Opções");
  app.add_option("--dll", options.library,
                 "a biblioteca; sem ela, Caixora.dll ao lado deste programa")
      ->type_name("<arquivo>");
  app.add_option("--funcao-fim", finish,
                 "a função com que Fluxo encerra; sem ela, 99, a do Trevix simulado")
      ->type_name("<n>");
  app.add_flag("--bruto", options.raw, "só os bytes de cada resultado e uma quebra de linha");
  app.add_flag("--json", options.json, "cada resultado como um objeto JSON, em uma linha");
  app.add_flag("--ponte", options.bridge, "pedidos em JSON na entrada, respostas na saída");
  app.add_flag("--lista", options.list, "as funções com seus argumentos");
  app.add_flag("--versao", options.version, "as versões desta ferramenta e da biblioteca");
  // From the first function on nothing is an option, whatever it begins with.
  app.prefix_command();
  app.allow_windows_style_options(false);
}

[[noreturn]] void RefuseOption(const CLI::App& app, const std::string& option) {
  std::vector<std::string> names;
  for (const CLI::Option* const known : app.get_options())
    for (const std::string& name : known->get_lnames()) names.push_back("--" + name);
  const std::vector<std::string_view> views(names.begin(), names.end());
  throw ErroDeUso("Opção desconhecida: " + option + "." + Suggestion(option, views) +
                  " Todas: caixora_host --ajuda");
}

// The help that the commands ask for; empty when they ask for none. The arguments of a function may
// be any text: only where it is the first and last one is it a question.
std::string HelpAskedFor(const std::vector<std::string>& commands) {
  const std::string name = Resolve(commands.front());
  if (name == kHelpVerb) {
    if (commands.size() > 2) throw ErroDeUso("ajuda: falta uma função só");
    return commands.size() == 2 ? HelpFor(commands[1]) : std::string();
  }
  const Verb* const verb = FindVerb(name);
  const bool options = verb != nullptr && verb->run != nullptr;
  if (!options && commands.size() != 2) return {};
  const bool asked = std::any_of(commands.begin() + 1, commands.end(), AsksForHelp);
  return asked ? HelpFor(name) : std::string();
}

}  // namespace

void ParseOptions(std::span<const std::string> arguments, Options& options) {
  std::string finish;
  CLI::App app(
      "caixora_host: o console da biblioteca Caixora.dll, de pagamentos com cartão (TEF).\n"
      "Chama as suas funções pela linha de comando e mostra o que elas devolvem.\n\n"
      "  caixora_host [opções] <função> [argumentos] [+ <função> ...]\n"
      "  caixora_host [opções] --ponte",
      "caixora_host");
  DescribeOptions(app, options, finish);
  app.footer(Footer());
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    options.help = app.help();
    return;
  } catch (const CLI::ParseError&) {
    throw ErroDeUso("Opção inválida, repetida ou sem o seu valor; veja caixora_host --ajuda");
  }
  if (options.raw + options.json + options.bridge + options.list + options.version > 1)
    throw ErroDeUso("--bruto, --json, --ponte, --lista e --versao não se combinam");
  options.commands = app.remaining();
  const bool empty = options.commands.empty();
  if (empty && !options.bridge && !options.list && !options.version) options.help_status = kUsage;
  if (options.help_status == kUsage || (!empty && AsksForHelp(options.commands.front()))) {
    options.help = app.help();
    return;
  }
  if (!finish.empty()) {
    const ParsedNumber number = ParseWhole(finish, 0, UINT32_MAX);
    if (const auto* const wrong = std::get_if<std::string>(&number))
      throw ErroDeUso("--funcao-fim: \"" + finish + "\" " + *wrong);
    options.finish = static_cast<std::uint32_t>(std::get<std::int64_t>(number));
  }
  if (empty) return;
  if (options.commands.front().starts_with("-")) RefuseOption(app, options.commands.front());
  if (options.bridge || options.list || options.version)
    throw ErroDeUso("--ponte, --lista e --versao não aceitam funções na linha de comando");
  options.help = HelpAskedFor(options.commands);
  const std::string name = Resolve(options.commands.front());
  if (options.help.empty() && name == kHelpVerb) options.help = app.help();
  const Verb* const verb = FindVerb(name);
  if (!options.help.empty() || verb == nullptr || verb->run == nullptr) return;
  // Its options may stand before its name as well.
  options.verb = verb;
  options.verb_arguments.assign(arguments.begin(), arguments.end());
  options.verb_arguments.erase(options.verb_arguments.end() - std::ssize(options.commands));
}

}  // namespace caixora
