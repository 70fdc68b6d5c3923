import java.io.BufferedReader;
import java.io.BufferedWriter;
import java.io.IOException;
import java.io.InputStreamReader;
import java.io.OutputStreamWriter;
import java.io.PrintStream;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Iterator;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.StringJoiner;
import java.util.function.Consumer;
import java.util.function.UnaryOperator;

/**
 * PDV de exemplo pela ponte: {@code java PdvPonte.java [comando da ponte...]}. Sem comando,
 * {@code caixora_host --ponte}. Só o JDK, 17 ou mais novo.
 *
 * <p>Não guarda diário, e por isso não tem --cair nem --retomar: um PDV de verdade grava a venda em
 * disco antes de fazê-la, como o exemplo em Python.
 */
public class PdvPonte {
  static final String CLIENTE = "12.345.678/0001-95";
  static final String PARCEIRO = "11.222.333/0001-81";
  static final int TENTATIVAS = 10;
  static final int PAUSA_MS = 2000;

  /** Algo que o operador precisa saber; o texto é para ele. */
  static class Erro extends RuntimeException {
    Erro(String texto) {
      super(texto);
    }
  }

  /** O processo filho: uma linha de JSON por chamada, uma chamada por vez. */
  static class Ponte implements AutoCloseable {
    private final Process processo;
    private final BufferedWriter entrada;
    private final BufferedReader saida;
    private int numero;
    private Integer pendente; // cupom de um desfecho recusado: a DLL responderia por ele

    Ponte(List<String> comando) throws IOException {
      processo = new ProcessBuilder(comando).redirectError(ProcessBuilder.Redirect.INHERIT).start();
      entrada = new BufferedWriter(
          new OutputStreamWriter(processo.getOutputStream(), StandardCharsets.UTF_8));
      saida = new BufferedReader(
          new InputStreamReader(processo.getInputStream(), StandardCharsets.UTF_8));
    }

    /** Os argumentos na ordem do cabeçalho: textos e inteiros. */
    Map<String, Object> chamar(String funcao, Object... args) {
      ++numero;
      StringJoiner lista = new StringJoiner(",", "[", "]");
      for (Object arg : args) lista.add(arg instanceof String texto ? Json.aspas(texto) : "" + arg);
      String linha;
      try {
        entrada.write("{\"id\":" + numero + ",\"funcao\":" + Json.aspas(funcao) + ",\"args\":"
            + lista + "}\n");
        entrada.flush();
        linha = saida.readLine();
      } catch (IOException erro) {
        throw new Erro("A ponte terminou: " + erro.getMessage());
      }
      if (linha == null) throw new Erro("A ponte terminou; o motivo está na saída de erro");
      Map<String, Object> resposta = new Json(linha).objeto();
      if (!Long.valueOf(numero).equals(resposta.get("id")))
        throw new Erro("A ponte respondeu a outro pedido");
      if (resposta.containsKey("erro")) throw new Erro((String) resposta.get("erro"));
      return resposta;
    }

    Map<String, Object> pagar(String funcao, Object... args) {
      exigirSemPendencia(null);
      return chamar(funcao, args);
    }

    /** Confirmar ou Desfazimento, até passar. */
    void concluir(String funcao, int cupom) throws InterruptedException {
      exigirSemPendencia(cupom);
      pendente = cupom;
      String mensagem = "";
      for (int tentativa = 0; tentativa < TENTATIVAS; ++tentativa) {
        if (tentativa > 0) Thread.sleep(PAUSA_MS);
        Map<String, Object> r = chamar(funcao, CLIENTE, PARCEIRO, cupom);
        if (ok(r)) {
          pendente = null;
          return;
        }
        mensagem = (String) r.get("mensagem");
      }
      throw new Erro("Cupom " + cupom + " em aberto, falta " + funcao + ": " + mensagem);
    }

    private void exigirSemPendencia(Integer cupom) {
      if (pendente != null && !pendente.equals(cupom))
        throw new Erro("Cupom " + pendente + ": repita o desfecho recusado");
    }

    /** O fim da entrada é o fim da ponte. */
    @Override
    public void close() throws IOException {
      entrada.close();
    }
  }

  /** Lê o que a ponte escreve: uma linha de JSON que sempre está bem formada. */
  static class Json {
    private final String texto;
    private int posicao;

    Json(String texto) {
      this.texto = texto;
    }

    static String aspas(String texto) {
      StringBuilder json = new StringBuilder("\"");
      for (char c : texto.toCharArray()) {
        if (c == '"' || c == '\\') json.append('\\');
        json.append(c < ' ' ? String.format("\\u%04x", (int) c) : String.valueOf(c));
      }
      return json.append('"').toString();
    }

    Map<String, Object> objeto() {
      Map<String, Object> campos = new LinkedHashMap<>();
      for (char c = texto.charAt(posicao++); c != '}'; c = texto.charAt(posicao++)) {
        if (texto.charAt(posicao) == '}') continue;
        String chave = cadeia();
        ++posicao; // os dois-pontos
        campos.put(chave, valor());
      }
      return campos;
    }

    private List<Object> lista() {
      List<Object> itens = new ArrayList<>();
      for (char c = texto.charAt(posicao++); c != ']'; c = texto.charAt(posicao++))
        if (texto.charAt(posicao) != ']') itens.add(valor());
      return itens;
    }

    private Object valor() {
      switch (texto.charAt(posicao)) {
        case '{': return objeto();
        case '[': return lista();
        case '"': return cadeia();
        default:
          int inicio = posicao;
          while (",]}".indexOf(texto.charAt(posicao)) < 0) ++posicao;
          String simples = texto.substring(inicio, posicao);
          return switch (simples) {
            case "true", "false" -> Boolean.valueOf(simples);
            case "null" -> null;
            default -> Long.valueOf(simples);
          };
      }
    }

    private String cadeia() {
      StringBuilder lida = new StringBuilder();
      ++posicao;
      for (char c = texto.charAt(posicao++); c != '"'; c = texto.charAt(posicao++)) {
        if (c != '\\') {
          lida.append(c);
          continue;
        }
        c = texto.charAt(posicao++);
        if (c == 'u') {
          lida.append((char) Integer.parseInt(texto.substring(posicao, posicao + 4), 16));
          posicao += 4;
        } else {
          int escape = "bfnrt".indexOf(c);
          lida.append(escape < 0 ? c : "\b\f\n\r\t".charAt(escape));
        }
      }
      return lida.toString();
    }
  }

  // ---- Venda com confirmação ----

  static boolean ok(Map<String, Object> resposta) {
    return Boolean.TRUE.equals(resposta.get("ok"));
  }

  /** Vende e dá à venda um desfecho, e um só. Devolve a situação, e o motivo se não confirmada. */
  static String venderEConfirmar(Ponte ponte, long centavos, int cupom,
      Consumer<Map<String, Object>> aoAprovar, String funcao, Object... args)
      throws InterruptedException {
    long inicio = System.nanoTime();
    Map<String, Object> r = ponte.pagar(funcao, args);
    long ms = (System.nanoTime() - inicio) / 1_000_000;
    String mensagem = (String) r.get("mensagem");
    if (!ok(r)) {
      if (negativaCerta(r, mensagem, ms)) return "recusada, " + mensagem;
      ponte.concluir("Desfazimento", cupom);
      return "desfeita, resultado incerto: " + mensagem;
    }
    Map<?, ?> campos = (Map<?, ?>) r.get("campos");
    if (!campos.get("valor_centavos").equals("" + centavos)
        || !List.of("", "" + cupom).contains(campos.get("cupom"))) {
      ponte.concluir("Desfazimento", cupom);
      throw new Erro("Cupom " + cupom + ": pedidos " + centavos + " centavos, aprovados \""
          + campos.get("valor_centavos") + "\"; a venda foi desfeita");
    }
    try {
      aoAprovar.accept(r);
    } catch (Throwable erro) {
      ponte.concluir("Desfazimento", cupom);
      throw erro;
    }
    ponte.concluir("Confirmar", cupom);
    return "confirmada";
  }

  /**
   * A venda com certeza não foi feita. Um "GP NÃO ATIVO" antes de 1250 ms veio sem que nada fosse
   * gravado; depois disso, o pedido pode ter sido atendido.
   */
  static boolean negativaCerta(Map<String, Object> r, String mensagem, long ms) {
    if (!((String) r.get("bruto")).startsWith("S;0;")) return false;
    if (mensagem.equals("GP NÃO ATIVO")) return ms < 1250;
    return !mensagem.equals("GP NAO ATIVO")
        && !mensagem.equals("FALHA INTERNA, VERIFIQUE NO GP SE A OPERACAO FOI REALIZADA");
  }

  static void aguardarGp(Ponte ponte) throws InterruptedException {
    for (int tentativa = 0; tentativa < 10; ++tentativa) {
      if (tentativa > 0) Thread.sleep(PAUSA_MS);
      if (ok(ponte.pagar("Atv", CLIENTE, PARCEIRO, 1, 1))) return;
    }
    throw new Erro("O GP não está ativo");
  }

  // ---- Fluxo interativo ----

  /** Conduz o fluxo e devolve as partes CHAVE:valor do retorno. Uma resposta nula o cancela. */
  static Map<String, String> fluxo(Ponte ponte, int funcaoFim, Object[] args,
      UnaryOperator<String> perguntar) throws InterruptedException {
    exigir(ponte.chamar("IniciaFuncaoQJInterativo", args));
    String texto;
    try {
      while (true) {
        Map<String, Object> r = ponte.chamar("AguardaFuncaoQJInterativo");
        texto = (String) r.get("texto");
        if (!ok(r)) throw new Erro(texto);
        if (texto.contains("[RETORNO]")) break;
        if (texto.isEmpty()) {
          Thread.sleep(200);
          continue;
        }
        String resposta = perguntar.apply(texto);
        if (resposta == null) throw new Erro("cancelado pelo operador");
        exigir(ponte.chamar("ContinuaFuncaoQJInterativo", resposta));
      }
    } catch (Throwable erro) {
      ponte.chamar("CancelarFluxoQJInterativo");
      throw erro;
    }
    Object[] fim = args.clone();
    fim[0] = funcaoFim;
    Map<String, Object> r = ponte.chamar("FinalizaFuncaoQJInterativo", fim);
    // 39: concluído, só o envio não foi feito.
    if (!Long.valueOf(39).equals(r.get("codigo"))) exigir(r);
    Map<String, String> campos = new LinkedHashMap<>();
    for (String parte : texto.split("\\|")) {
      String[] par = parte.split(":", 2);
      if (par.length == 2) campos.put(par[0], par[1]);
    }
    return campos;
  }

  static void exigir(Map<String, Object> resposta) {
    if (!ok(resposta)) throw new Erro((String) resposta.get("mensagem"));
  }

  // ---- O PDV ----

  static PrintStream tela = new PrintStream(System.out, true, StandardCharsets.UTF_8);

  static void mostrarAprovada(int cupom, String valor, Map<String, Object> r) {
    tela.print("Cupom " + cupom + ": aprovada, R$ " + valor + ", " + r.get("mensagem") + ", "
        + ((List<?>) r.get("comprovante")).size() + " linhas de comprovante\n");
  }

  static void vender(Ponte ponte, String valor, int cupom, String funcao, Object... args)
      throws InterruptedException {
    long centavos = Long.parseLong(valor.replace(",", ""));
    tela.print("Cupom " + cupom + ": " + venderEConfirmar(ponte, centavos, cupom,
        r -> mostrarAprovada(cupom, valor, r), funcao, args) + "\n");
  }

  static void umDia(Ponte ponte) throws InterruptedException {
    aguardarGp(ponte);
    tela.print("GP ativo\n== 1. Venda confirmada\n");
    vender(ponte, "12,50", 101, "VendeCreditoVista", CLIENTE, PARCEIRO, "12,50", 101, 1);
    tela.print("== 2. Recusa\n");
    vender(ponte, "10,02", 102, "VendeDebito", CLIENTE, PARCEIRO, "10,02", 102, 1);
    tela.print("== 3. Link de pagamento com acentos\n");
    vender(ponte, "31,50", 103, "LinkPagamento", CLIENTE, PARCEIRO, 1, "31,50", 103, 2,
        "7891¬CAFÉ TORRADO¬2¬10,50¬0,00¬21,00|7892¬AÇÚCAR¬1¬10,50¬0,00¬10,50", "Pão & Cia", "", 1);
    tela.print("== 4. Venda desfeita\n");
    class SemPapel extends RuntimeException {}
    try {
      venderEConfirmar(ponte, 4000, 104, r -> {
        mostrarAprovada(104, "40,00", r);
        throw new SemPapel();
      }, "VendeCreditoVista", CLIENTE, PARCEIRO, "40,00", 104, 1);
    } catch (SemPapel erro) {
      tela.print("Impressora sem papel\nCupom 104: desfeita\n");
    }
    tela.print("== 5. Fluxo interativo\n");
    Iterator<String> respostas = Arrays.asList("3", "1").iterator();
    Object[] inicio = {20, CLIENTE, 1, "", "12,50", "000545", "20210325", "009", "652", 7, ""};
    Map<String, String> campos = fluxo(ponte, 99, inicio, pergunta -> {
      String resposta = respostas.hasNext() ? respostas.next() : null;
      tela.print("Pergunta: " + pergunta + "\nResposta: " + resposta + "\n");
      return resposta;
    });
    tela.print("Retorno: STATUS " + campos.get("STATUS") + ", VALOR " + campos.get("VALOR") + ", "
        + campos.get("MENSAGEM") + "\n");
  }

  public static void main(String[] args) throws Exception {
    List<String> comando = args.length > 0 ? List.of(args) : List.of("caixora_host", "--ponte");
    try (Ponte ponte = new Ponte(comando)) {
      umDia(ponte);
    } catch (Erro erro) {
      System.err.println(erro.getMessage());
      System.exit(1);
    }
  }
}
