// Faz o que manda cada linha de comandos.txt e anota como terminou junto das chamadas.
using System;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Threading.Tasks;
using CaixoraTef;

public sealed class ErroDoPdv : Exception { }

/// <summary>O que cada linguagem do .NET faz a seu modo fica para ela.</summary>
public abstract class Provas
{
    private readonly Configuracao configuracao = new Configuracao
    {
        CnpjCliente = "11", CnpjParceiro = "22", Diario = "diario.txt", Tentativas = 3, PausaMs = 1
    };

    protected Caixora Caixora { get; private set; }

    protected abstract ResultadoVenda Vender(int cupom, Action<Resultado> aoAprovar);
    protected abstract Resultado VendeCredito(decimal valor);
    protected abstract ResultadoFluxo Conversar(InicioFluxo inicio, Func<string> responder);

    public void Rodar()
    {
        Caixora = new Caixora(configuracao);
        foreach (var linha in File.ReadAllLines("comandos.txt"))
        {
            Anotar("> " + linha);
            var partes = (linha + "  ").Split(' ');
            try
            {
                Anotar("= " + Fazer(partes[0], partes[1], partes[2]));
            }
            catch (Exception erro)
            {
                Anotar($"! {erro.GetType().Name}: {erro.Message}");
            }
        }
    }

    private static void Anotar(string linha) => File.AppendAllText("chamadas.txt", linha + "\n");

    private string Fazer(string acao, string a, string b)
    {
        int.TryParse(a, out var n);
        switch (acao)
        {
            case "aguardar":
                Caixora.AguardarGp(n);
                return "feito";
            case "vender":
                var fim = Vender(n, resultado =>
                {
                    Anotar("aprovada, " + resultado.Comprovante.Last());
                    if (b == "falha")
                        throw new ErroDoPdv();
                    if (b == "esquecer")
                        Caixora.EsquecerPendencia();
                    if (b == "teste")
                        Caixora.Teste();
                    if (b == "trancar")
                        Directory.CreateDirectory("diario.txt.tmp");
                });
                return fim.Situacao.ToString().ToLowerInvariant() + " " + fim.Motivo;
            case "confirmar":
                Caixora.ConcluirVenda(n, Desfecho.Confirmar);
                return "feito";
            case "desfazer":
                Caixora.ConcluirVenda(n, Desfecho.Desfazer);
                return "feito";
            case "esquecer":
                Caixora.EsquecerPendencia();
                return "feito";
            case "atv": return Resumo(Caixora.Atv(n));
            case "confirmacao": return Resumo(Caixora.Confirmar(n));
            case "desfazimento": return Resumo(Caixora.Desfazimento(n));
            case "parcelas": return Resumo(Caixora.VendeCreditoParcLoja(n, 10.10m, 30));
            case "centavos": return Resumo(VendeCredito(Numero(a) / 100));
            case "reais": return Resumo(VendeCredito(Numero(a)));
            case "campo011": return Link("ação", Caractere(a));
            case "itens": return Link(Caractere(a), "");
            case "campo4": return Conversar(20, "1", a);
            case "fluxo": return Conversar((uint)n, b, "");
        }
        var outra = Task.Run(() => new Caixora(configuracao).Atv(25));
        Caixora.Atv(25);
        return Resumo(outra.Result);
    }

    private string Conversar(uint funcao, string resposta, string campo4)
    {
        var inicio = new InicioFluxo(funcao, 12.05m, 99)
        {
            Campo3 = 3, Campo4 = campo4, Campo6 = "6", Campo7 = "7", Campo8 = "8", Campo9 = "9",
            Campo10 = 10
        };
        var fim = Conversar(inicio, () =>
            resposta == "falha" ? throw new ErroDoPdv() : resposta == "nada" ? null : resposta);
        fim.Campos.TryGetValue("MENSAGEM", out var mensagem);
        return $"{(fim.Concluido ? "" : "não ")}concluído {fim.Codigo} {mensagem}";
    }

    private string Link(string descricao, string campo011) =>
        Resumo(Caixora.LinkPagamento(2, 10.10m, 30,
            new[] { new ItemLink("7", descricao, 1, 0.01m, 0m, 10.50m) }, campo011, ""));

    private static string Resumo(Resultado r) => r.Codigo + " " + r.Mensagem;

    private static decimal Numero(string texto) =>
        decimal.Parse(texto.Replace(',', '.'), CultureInfo.InvariantCulture);

    // "u+81" é um caractere.
    private static string Caractere(string texto) =>
        texto.StartsWith("u+", StringComparison.Ordinal)
            ? char.ConvertFromUtf32(Convert.ToInt32(texto.Substring(2), 16))
            : texto;
}

internal sealed class ProvasCSharp : Provas
{
    private static void Main() => new ProvasCSharp().Rodar();

    protected override ResultadoVenda Vender(int cupom, Action<Resultado> aoAprovar) =>
        Caixora.VenderEConfirmar(Venda.CreditoVista(12.50m, cupom), resultado =>
        {
            aoAprovar(resultado);
            return true;
        });

    protected override Resultado VendeCredito(decimal valor) => Caixora.VendeCredito(valor, 30);

    protected override ResultadoFluxo Conversar(InicioFluxo inicio, Func<string> responder) =>
        Caixora.Fluxo(inicio, pergunta => responder());
}
