// Caixora.dll para C# e VB.NET: .NET Framework 4.6.1 ou mais novo e .NET, em processo de 64 bits.
//
//   var caixora = new Caixora(new Configuracao
//   {
//       CnpjCliente = "12.345.678/0001-95",
//       CnpjParceiro = "11.222.333/0001-81",
//       Diario = "diario.txt"
//   });
//   var venda = caixora.VenderEConfirmar(Venda.CreditoVista(12.50m, 17), resultado =>
//   {
//       GravarVenda(resultado);
//       Imprimir(resultado.Comprovante);
//       return true; // false, ou uma exceção, desfaz a venda
//   });
//
// Inclua este arquivo no projeto, ou compile-o em CaixoraTef.dll com o Caixora.csproj ao lado. O
// projeto não pode se chamar "Caixora": o programa dele teria o nome da DLL nativa.
using System;
using System.Collections.Generic;
using System.ComponentModel;
using System.Diagnostics;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;
using System.Text.RegularExpressions;
using System.Threading;
using System.Threading.Tasks;

#pragma warning disable CS1591 // O que se chama como na DLL não é descrito de novo aqui.

namespace CaixoraTef
{
    public sealed class Configuracao
    {
        public string CnpjCliente { get; set; }
        public string CnpjParceiro { get; set; }
        public int Leitor { get; set; } = 1;

        /// <summary>Caminho da DLL. Sem ele, Caixora.dll é procurada junto do programa e, depois,
        /// como o Windows procura qualquer DLL.</summary>
        public string CaminhoDll { get; set; }

        /// <summary>Arquivo em que ficam as vendas sem desfecho; sem ele não há diário.</summary>
        public string Diario { get; set; }

        /// <summary>Quantas vezes se pede uma confirmação ou um desfazimento.</summary>
        public int Tentativas { get; set; } = 10;

        /// <summary>Pausa entre duas tentativas, em milissegundos.</summary>
        public int PausaMs { get; set; } = 2000;
    }

    /// <summary>O desfecho de uma venda aprovada.</summary>
    public enum Desfecho { Confirmar, Desfazer }

    /// <summary>Como terminou <see cref="Caixora.VenderEConfirmar"/>.</summary>
    public enum Situacao { Confirmada, Recusada, Desfeita }

    /// <summary>Até onde uma venda em aberto chegou.</summary>
    public enum EstadoVenda
    {
        /// <summary>Foi pedida; não se sabe o resultado. Desfaça.</summary>
        Iniciada,

        /// <summary>O GP aprovou. Confirme se o PDV a gravou; senão, desfaça.</summary>
        Aprovada,

        /// <summary>Falta confirmar.</summary>
        Confirmar,

        /// <summary>Falta desfazer.</summary>
        Desfazer
    }

    /// <summary>Onde um fluxo interativo terminou.</summary>
    public enum EtapaFluxo { Inicio, Consulta, Resposta, Finalizacao }

    public class CaixoraException : Exception
    {
        public CaixoraException(string mensagem, Exception causa = null) : base(mensagem, causa) { }
    }

    /// <summary>Uma confirmação ou um desfazimento foi recusado, e a DLL trataria a operação
    /// seguinte como se fosse ele. Repita o mesmo, ou chame
    /// <see cref="Caixora.EsquecerPendencia"/>.</summary>
    public sealed class PendenciaAbertaException : CaixoraException
    {
        internal PendenciaAbertaException(int cupom, Desfecho falta)
            : base($"o cupom {cupom} tem um desfecho recusado, falta " +
                $"{falta.ToString().ToLowerInvariant()}: repita-o antes de qualquer outra operação")
        {
            Cupom = cupom;
            Falta = falta;
        }

        public int Cupom { get; }

        /// <summary>O desfecho que foi recusado: só ele pode ser repetido.</summary>
        public Desfecho Falta { get; }
    }

    /// <summary>Uma venda está sem desfecho.</summary>
    public sealed class VendaEmAbertoException : CaixoraException
    {
        internal VendaEmAbertoException(VendaEmAberto venda)
            : base($"o cupom {venda.Cupom} está em aberto no diário " +
                $"({venda.Estado.ToString().ToLowerInvariant()}), falta " +
                (venda.Falta?.ToString().ToLowerInvariant() ?? "confirmar ou desfazer") +
                ": conclua-o com ConcluirVenda")
        {
            Cupom = venda.Cupom;
            Falta = venda.Falta;
        }

        internal VendaEmAbertoException(int cupom, Desfecho falta, string resposta, Exception causa)
            : base($"o cupom {cupom} está em aberto, falta " +
                $"{falta.ToString().ToLowerInvariant()}: {resposta}", causa)
        {
            Cupom = cupom;
            Falta = falta;
            Resposta = resposta;
        }

        public int Cupom { get; }

        /// <summary>O desfecho que não saiu; nulo quando cabe ao PDV escolher.</summary>
        public Desfecho? Falta { get; }

        /// <summary>Por que não saiu; nula quando nada foi pedido.</summary>
        public string Resposta { get; }
    }

    /// <summary>O GP aprovou outro valor ou outro cupom. A venda foi desfeita.</summary>
    public sealed class ValorDivergenteException : CaixoraException
    {
        internal ValorDivergenteException(int cupom, long centavos, Resultado resultado)
            : base($"cupom {cupom} de {centavos} centavos: o GP aprovou o cupom " +
                $"\"{resultado.Cupom}\" de \"{resultado.Campos[1]}\" centavos; foi desfeito o " +
                $"cupom pedido, {cupom}. Se a resposta é de outro cupom, verifique-o no GP")
        {
            Cupom = cupom;
            CentavosPedidos = centavos;
            Resultado = resultado;
        }

        public int Cupom { get; }
        public long CentavosPedidos { get; }
        public long? CentavosAprovados => Resultado.ValorCentavos;
        public Resultado Resultado { get; }
    }

    /// <summary>O diário não pôde ser lido ou gravado.</summary>
    public sealed class DiarioException : CaixoraException
    {
        internal DiarioException(string mensagem, Exception causa = null)
            : base(mensagem, causa)
        {
        }
    }

    /// <summary>O que uma função de pagamento devolveu.</summary>
    public sealed class Resultado
    {
        private const string FimDeLinha = "\r\n";

        private Resultado(string bruto)
        {
            Bruto = bruto;
            Mensagem = bruto;
            var campos = new string[15];
            for (var i = 0; i < campos.Length; i++)
                campos[i] = "";
            Campos = campos;
            Comprovante = new string[0];
            if (Comeca(bruto, "S;0;"))
            {
                Mensagem = bruto.Substring(4);
                return;
            }
            if (!Comeca(bruto, "S;1;") && !Comeca(bruto, "S;2;"))
                return;
            Codigo = bruto[2] - '0';
            var linhas = bruto.Substring(4).Split(new[] { FimDeLinha }, StringSplitOptions.None);
            Mensagem = linhas[0];
            var registro = linhas.Skip(1).FirstOrDefault(linha => Comeca(linha, "C;"));
            if (registro != null)
            {
                var partes = registro.Substring(2).Split(';');
                Array.Copy(partes, campos, Math.Min(partes.Length, campos.Length));
            }
            Comprovante = linhas.Skip(1).Where(linha => Comeca(linha, "I;"))
                .Select(linha => linha.Substring(2)).ToArray();
        }

        /// <summary>0: recusa, falha ou incerto; 1: aprovada, com comprovante; 2: sem.</summary>
        public int Codigo { get; }

        public string Mensagem { get; }

        /// <summary>As linhas do comprovante.</summary>
        public IReadOnlyList<string> Comprovante { get; }

        /// <summary>O texto inteiro, como veio.</summary>
        public string Bruto { get; }

        /// <summary>Os quinze campos, na ordem da DLL.</summary>
        public IReadOnlyList<string> Campos { get; }

        public string Cupom => Campos[0];
        public string Bandeira => Campos[2];
        public string Rede => Campos[3];
        public string Autorizacao => Campos[4];
        public string Nsu => Campos[5];
        public string Tipo => Campos[6];
        public string Parcelas => Campos[7];
        public string Controle => Campos[8];
        public string Campo170_000 => Campos[9];
        public string CodigoRede => Campos[10];
        public string Campo740_000 => Campos[11];
        public string Campo741_000 => Campos[12];
        public string Campo742_000 => Campos[13];
        public string Campo031_000 => Campos[14];

        /// <summary>O segundo campo; nulo quando não é um número.</summary>
        public long? ValorCentavos => Numero(Campos[1]);

        /// <summary>A resposta é da própria DLL: o pedido de confirmação ou de desfazimento foi
        /// gravado. Vinda de outra operação, não é aprovação.</summary>
        public bool RespostaLocal =>
            Codigo == 2 && Mensagem == "COMANDO COM SUCESSO" && Parcelas == "1" &&
            Campos.Where((campo, i) => i != 0 && i != 7).All(campo => campo == "");

        public bool Aprovada => Codigo != 0 && !RespostaLocal;

        public static Resultado Interpretar(string bruto) =>
            new Resultado(bruto ?? throw new ArgumentNullException(nameof(bruto)));

        public override string ToString() => Bruto;

        // O GP aprovou exatamente o que se pediu?
        internal bool Corresponde(Venda venda) =>
            ValorCentavos == venda.Centavos && Numero(Cupom) == venda.Cupom;

        // Uma falha que não exclui que o GP tenha feito a venda. "GP NÃO ATIVO" vem antes do pedido
        // (depois de 1000 ms de espera) ou enquanto se aguarda a resposta (no mínimo 1300 ms).
        internal bool Incerto(long duracaoMs)
        {
            if (!Comeca(Bruto, "S;0;"))
                return true;
            switch (Mensagem)
            {
                case "GP NÃO ATIVO":
                    return duracaoMs >= 1250;
                case "GP NAO ATIVO":
                case "FALHA INTERNA, VERIFIQUE NO GP SE A OPERACAO FOI REALIZADA":
                    return true;
                default:
                    return false;
            }
        }

        private static bool Comeca(string texto, string inicio) =>
            texto.StartsWith(inicio, StringComparison.Ordinal);

        private static long? Numero(string texto) =>
            long.TryParse(texto, NumberStyles.None, CultureInfo.InvariantCulture, out var n)
                ? n
                : (long?)null;
    }

    /// <summary>O que <see cref="Caixora.VenderEConfirmar"/> fez.</summary>
    public sealed class ResultadoVenda
    {
        internal ResultadoVenda(Situacao situacao, Resultado resultado, string motivo)
        {
            Situacao = situacao;
            Resultado = resultado;
            Motivo = motivo;
        }

        public Situacao Situacao { get; }
        public Resultado Resultado { get; }

        /// <summary>Por que não foi confirmada; vazio quando foi.</summary>
        public string Motivo { get; }
    }

    /// <summary>Uma linha do diário.</summary>
    public sealed class VendaEmAberto
    {
        internal VendaEmAberto(int cupom, long centavos, EstadoVenda estado)
        {
            Cupom = cupom;
            Centavos = centavos;
            Estado = estado;
        }

        public int Cupom { get; }
        public long Centavos { get; }
        public EstadoVenda Estado { get; }

        /// <summary>O único desfecho que ainda cabe; nulo quando o PDV escolhe.</summary>
        public Desfecho? Falta
        {
            get
            {
                switch (Estado)
                {
                    case EstadoVenda.Aprovada: return null;
                    case EstadoVenda.Confirmar: return Desfecho.Confirmar;
                    default: return Desfecho.Desfazer;
                }
            }
        }
    }

    /// <summary>Um valor em reais. Escreve-se como decimal: 12.50m, ou 12m. Um inteiro, que poderia
    /// estar em centavos, não compila.</summary>
    public readonly struct Reais
    {
        private const string SoDecimal =
            "O valor é em reais, e decimal: 1250 centavos são 12.50m (12.5D no VB)";

        private Reais(decimal valor)
        {
            Valor = valor;
        }

        internal decimal Valor { get; }

        public static implicit operator Reais(decimal valor) => new Reais(valor);

        [Obsolete(SoDecimal, true)]
        public static implicit operator Reais(int valor) => throw new ArgumentException(SoDecimal);

        [Obsolete(SoDecimal, true)]
        public static implicit operator Reais(long valor) => throw new ArgumentException(SoDecimal);

        [Obsolete(SoDecimal, true)]
        public static implicit operator Reais(ulong valor) =>
            throw new ArgumentException(SoDecimal);
    }

    /// <summary>Um item de um link de pagamento.</summary>
    public sealed class ItemLink
    {
        public ItemLink(string codigo, string descricao, int quantidade, Reais unitario,
            Reais desconto, Reais total)
        {
            if (quantidade < 1)
                throw new ArgumentException($"sItens: a quantidade {quantidade} não é ao menos 1");
            Codigo = Texto.Sem("¬|", "sItens", codigo);
            Descricao = Texto.Sem("¬|", "sItens", descricao);
            Quantidade = quantidade;
            Unitario = Dinheiro.Centavos("sItens", unitario);
            Desconto = Dinheiro.Centavos("sItens", desconto);
            Total = Dinheiro.Centavos("sItens", total);
        }

        private string Codigo { get; }
        private string Descricao { get; }
        private int Quantidade { get; }
        private long Unitario { get; }
        private long Desconto { get; }
        private long Total { get; }

        public override string ToString() =>
            string.Join("¬", Codigo, Descricao,
                Quantidade.ToString(CultureInfo.InvariantCulture), Dinheiro.Escrever(Unitario),
                Dinheiro.Escrever(Desconto), Dinheiro.Escrever(Total));
    }

    /// <summary>Um item de uma venda de frota: de um a seis textos, não todos vazios.</summary>
    public sealed class ItemFrota
    {
        private readonly string texto;

        public ItemFrota(params string[] campos)
        {
            if (campos == null)
                throw new ArgumentNullException(nameof(campos));
            if (campos.Length > 6 || campos.All(string.IsNullOrEmpty))
                throw new ArgumentException("sItens: um item tem de um a seis textos");
            texto = string.Join("-",
                campos.Select(campo => Texto.Sem("-|", "sItens", campo)));
        }

        public override string ToString() => texto;
    }

    /// <summary>Uma venda a fazer, já verificada: função da DLL, valor em reais e cupom.</summary>
    public sealed class Venda
    {
        private Venda(Reais valor, int cupom, Func<Caixora, double, IntPtr> chamar)
        {
            Centavos = Dinheiro.Centavos("dValor", valor);
            if (Centavos == 0)
                throw new ArgumentException("dValor: uma venda tem ao menos um centavo");
            Caixora.ExigirCupom(cupom);
            Cupom = cupom;
            Chamar = caixora => chamar(caixora, Centavos / 100.0);
        }

        public int Cupom { get; }
        public long Centavos { get; }
        internal Func<Caixora, IntPtr> Chamar { get; }

        public static Venda Credito(Reais valor, int cupom) =>
            Simples(valor, cupom, dll => dll.VendeCredito);

        public static Venda CreditoVista(Reais valor, int cupom) =>
            Simples(valor, cupom, dll => dll.VendeCreditoVista);

        public static Venda CreditoParcLoja(int parcelas, Reais valor, int cupom) =>
            Parcelada(parcelas, valor, cupom, dll => dll.VendeCreditoParcLoja);

        public static Venda CreditoParcAdm(int parcelas, Reais valor, int cupom) =>
            Parcelada(parcelas, valor, cupom, dll => dll.VendeCreditoParcAdm);

        public static Venda Debito(Reais valor, int cupom) =>
            Simples(valor, cupom, dll => dll.VendeDebito);

        public static Venda DebitoAVista(Reais valor, int cupom) =>
            Simples(valor, cupom, dll => dll.VendeDebitoAVista);

        public static Venda MenuPrivate(Reais valor, int cupom) =>
            Simples(valor, cupom, dll => dll.MenuPrivate);

        public static Venda CarteiraDigitalPix(Reais valor, int cupom) =>
            Simples(valor, cupom, dll => dll.VendeCarteiraDigitalPix);

        public static Venda ParceleMais(Reais valor, int cupom) =>
            Simples(valor, cupom, dll => dll.ParceleMais);

        public static Venda FrotaCompleto(Reais valor, string km, string placa, string matricula,
            IEnumerable<ItemFrota> itens, int cupom)
        {
            var bytesKm = Texto.Codificar("sKM", km);
            var bytesPlaca = Texto.Codificar("sPlaca", placa);
            var bytesMatricula = Texto.Codificar("sMatricula", matricula);
            var bytesItens = Itens(itens, out var quantos);
            return new Venda(valor, cupom, (c, reais) => c.Dll.VendeFrotaCompleto(c.Cliente,
                c.Parceiro, reais, bytesKm, bytesPlaca, bytesMatricula, quantos, bytesItens, cupom,
                c.Leitor));
        }

        public static Venda LinkPagamento(int parcelas, Reais valor, int cupom,
            IEnumerable<ItemLink> itens, string campo011, string campo012)
        {
            ExigirParcelas(parcelas);
            var bytesItens = Itens(itens, out var quantos);
            var bytes011 = Texto.Codificar("sCampo011", campo011);
            var bytes012 = Texto.Codificar("sCampo012", campo012);
            return new Venda(valor, cupom, (c, reais) => c.Dll.LinkPagamento(c.Cliente, c.Parceiro,
                parcelas, reais, cupom, quantos, bytesItens, bytes011, bytes012, c.Leitor));
        }

        private static Venda Simples(Reais valor, int cupom, Func<Dll, Dll.ComValor> funcao) =>
            new Venda(valor, cupom,
                (c, reais) => funcao(c.Dll)(c.Cliente, c.Parceiro, reais, cupom, c.Leitor));

        private static Venda Parcelada(int parcelas, Reais valor, int cupom,
            Func<Dll, Dll.ComParcelas> funcao)
        {
            ExigirParcelas(parcelas);
            return new Venda(valor, cupom, (c, reais) =>
                funcao(c.Dll)(c.Cliente, c.Parceiro, parcelas, reais, cupom, c.Leitor));
        }

        private static void ExigirParcelas(int parcelas)
        {
            if (parcelas < 1)
                throw new ArgumentException($"iParcelas: {parcelas} não é ao menos 1");
        }

        private static byte[] Itens<T>(IEnumerable<T> itens, out int quantos)
        {
            var textos = (itens ?? throw new ArgumentNullException(nameof(itens)))
                .Select(item => item.ToString()).ToArray();
            quantos = textos.Length;
            return Texto.Codificar("sItens", string.Join("|", textos));
        }
    }

    /// <summary>Os argumentos de um fluxo interativo. O que os campos querem dizer é assunto do
    /// Trevix.</summary>
    public sealed class InicioFluxo
    {
        /// <param name="funcao">Função do Trevix a executar.</param>
        /// <param name="valor">Valor em reais; 0 quando não há.</param>
        /// <param name="funcaoFim">Função de encerramento do Trevix; no simulado, 99.</param>
        public InicioFluxo(uint funcao, Reais valor, uint funcaoFim)
        {
            if (funcaoFim == funcao)
                throw new ArgumentException("funcaoFim: repetiria a transação, sem encerrá-la");
            Funcao = funcao;
            Centavos = Dinheiro.Centavos("sValor", valor);
            FuncaoFim = funcaoFim;
        }

        public uint Funcao { get; }
        public long Centavos { get; }
        public uint FuncaoFim { get; }
        public uint Campo3 { get; set; }
        public string Campo4 { get; set; } = "";
        public string Campo6 { get; set; } = "";
        public string Campo7 { get; set; } = "";
        public string Campo8 { get; set; } = "";
        public string Campo9 { get; set; } = "";
        public uint Campo10 { get; set; }

        // A chamada de Inicia ou de Finaliza, que têm os mesmos argumentos.
        internal Func<Dll.DoFluxo, uint, int> Preparar(byte[] cnpj)
        {
            var valor = Texto.Codificar("sValor", Dinheiro.Escrever(Centavos));
            var campo4 = Texto.CodificarFluxo("sCampo4", Campo4);
            var campo6 = Texto.CodificarFluxo("sCampo6", Campo6);
            var campo7 = Texto.CodificarFluxo("sCampo7", Campo7);
            var campo8 = Texto.CodificarFluxo("sCampo8", Campo8);
            var campo9 = Texto.CodificarFluxo("sCampo9", Campo9);
            var campo11 = Texto.Codificar("sCampo11", "");
            var campo3 = Campo3;
            var campo10 = Campo10;
            return (funcao, numero) => funcao(numero, cnpj, campo3, campo4, valor, campo6, campo7,
                campo8, campo9, campo10, campo11);
        }
    }

    public sealed class ResultadoFluxo
    {
        internal ResultadoFluxo(EtapaFluxo etapa, int codigo, string motivo, string retorno = "")
        {
            Etapa = etapa;
            Codigo = codigo;
            Motivo = motivo;
            Retorno = retorno;
            Concluido = etapa == EtapaFluxo.Finalizacao && (codigo == 0 || codigo == 39);
            var campos = new Dictionary<string, string>();
            foreach (var parte in retorno.Split('|'))
            {
                var separador = parte.IndexOf(':');
                if (separador > 0)
                    campos[parte.Substring(0, separador)] = parte.Substring(separador + 1);
            }
            Campos = campos;
        }

        /// <summary>O retorno chegou e o fluxo foi finalizado. Não quer dizer aprovação: isso está
        /// em <see cref="Campos"/>.</summary>
        public bool Concluido { get; }

        /// <summary>Código da função interativa que falhou, ou 0.</summary>
        public int Codigo { get; }

        public EtapaFluxo Etapa { get; }

        /// <summary>O texto com "[RETORNO]"; vazio quando não veio.</summary>
        public string Retorno { get; }

        /// <summary>As partes CHAVE:valor do retorno.</summary>
        public IReadOnlyDictionary<string, string> Campos { get; }

        /// <summary>Por que não terminou bem; vazio quando terminou.</summary>
        public string Motivo { get; }

        internal static string Significado(int codigo)
        {
            switch (codigo)
            {
                case 0: return "";
                case 30: return "ConfigQJ.ini não tem a linha CAMINHO=<pasta do Trevix>";
                case 31: return "a linha CAMINHO de ConfigQJ.ini está vazia";
                case 32: return "não há Trevix.exe legível na pasta";
                case 33: return "o Trevix foi iniciado e não está em execução";
                case 34: return "falha ao iniciar o Trevix";
                case 35: return "não foi possível criar o arquivo de resposta";
                case 36: return "falha ao gravar ou trocar o arquivo de resposta";
                case 37: return "ConfigQJ.ini não pôde ser lido no diretório atual";
                case 38: return "o valor não está na forma 0,00";
                case 39: return "não há Email.exe: a transação terminou, mas não foi enviada";
                case 40: return "CNPJ inválido";
                case 41: return "o Trevix está sendo atualizado";
                case 42: return "o programa não está sendo executado como administrador";
                case 43: return "um Trevix em execução não pôde ser encerrado";
                default: return "código desconhecido: " + codigo;
            }
        }
    }

    /// <summary>As operações da DLL. Todas bloqueiam a thread até terminar; as que acabam em Async
    /// o fazem em uma thread própria. O processo inteiro faz uma chamada por vez.</summary>
    public sealed class Caixora
    {
        // O estado da DLL é do processo inteiro: a trava e a pendência também.
        private static readonly object Trava = new object();
        private static int pendente;
        private static Desfecho desfechoPendente;
        private static int emAndamento; // o cupom da venda que ainda não teve o seu desfecho
        private static bool fluxoEmCurso;

        private readonly int tentativas;
        private readonly int pausaMs;
        private readonly Diario diario;

        public Caixora(Configuracao configuracao)
        {
            if (configuracao == null)
                throw new ArgumentNullException(nameof(configuracao));
            Cliente = Texto.Codificar("sCNPJCliente", configuracao.CnpjCliente);
            Parceiro = Texto.Codificar("sCNPJParceiro", configuracao.CnpjParceiro);
            Leitor = configuracao.Leitor;
            tentativas = configuracao.Tentativas;
            pausaMs = configuracao.PausaMs;
            if (Leitor < 1)
                throw new ArgumentException($"iLeitor: {Leitor} não é ao menos 1");
            if (tentativas < 1)
                throw new ArgumentException("Tentativas: ao menos uma");
            if (pausaMs < 0)
                throw new ArgumentException("PausaMs: não pode ser negativa");
            if (configuracao.Diario != null)
                diario = new Diario(Path.GetFullPath(configuracao.Diario));
            lock (Trava)
                Dll = Dll.Carregar(configuracao.CaminhoDll);
        }

        /// <summary>O cupom cuja confirmação, ou desfazimento, foi recusada; ou nulo.</summary>
        public static int? CupomPendente
        {
            get
            {
                var cupom = Volatile.Read(ref pendente);
                return cupom == 0 ? (int?)null : cupom;
            }
        }

        internal Dll Dll { get; }
        internal byte[] Cliente { get; }
        internal byte[] Parceiro { get; }
        internal int Leitor { get; }

        // ---- Vendas ----

        /// <summary>Só vende: quem chama confirma ou desfaz. Prefira VenderEConfirmar.</summary>
        public Resultado Vender(Venda venda)
        {
            if (venda == null)
                throw new ArgumentNullException(nameof(venda));
            return Pagar(() => venda.Chamar(this));
        }

        public Resultado VendeCredito(Reais valor, int cupom) =>
            Vender(Venda.Credito(valor, cupom));

        public Resultado VendeCreditoVista(Reais valor, int cupom) =>
            Vender(Venda.CreditoVista(valor, cupom));

        public Resultado VendeCreditoParcLoja(int parcelas, Reais valor, int cupom) =>
            Vender(Venda.CreditoParcLoja(parcelas, valor, cupom));

        public Resultado VendeCreditoParcAdm(int parcelas, Reais valor, int cupom) =>
            Vender(Venda.CreditoParcAdm(parcelas, valor, cupom));

        public Resultado VendeDebito(Reais valor, int cupom) =>
            Vender(Venda.Debito(valor, cupom));

        public Resultado VendeDebitoAVista(Reais valor, int cupom) =>
            Vender(Venda.DebitoAVista(valor, cupom));

        public Resultado MenuPrivate(Reais valor, int cupom) =>
            Vender(Venda.MenuPrivate(valor, cupom));

        public Resultado VendeCarteiraDigitalPix(Reais valor, int cupom) =>
            Vender(Venda.CarteiraDigitalPix(valor, cupom));

        public Resultado ParceleMais(Reais valor, int cupom) =>
            Vender(Venda.ParceleMais(valor, cupom));

        public Resultado VendeFrotaCompleto(Reais valor, string km, string placa,
            string matricula, IEnumerable<ItemFrota> itens, int cupom) =>
            Vender(Venda.FrotaCompleto(valor, km, placa, matricula, itens, cupom));

        public Resultado LinkPagamento(int parcelas, Reais valor, int cupom,
            IEnumerable<ItemLink> itens, string campo011, string campo012) =>
            Vender(Venda.LinkPagamento(parcelas, valor, cupom, itens, campo011, campo012));

        // ---- Depois da venda ----

        /// <summary>Confirma uma venda que não está no diário. O sucesso é uma
        /// <see cref="Resultado.RespostaLocal"/>.</summary>
        public Resultado Confirmar(int cupom) =>
            EncerrarAvulsa(cupom, Desfecho.Confirmar);

        /// <summary>Desfaz uma venda que não está no diário; responde como Confirmar.</summary>
        public Resultado Desfazimento(int cupom) =>
            EncerrarAvulsa(cupom, Desfecho.Desfazer);

        /// <summary>Desiste de uma confirmação, ou de um desfazimento, que foi recusada.</summary>
        public void EsquecerPendencia()
        {
            lock (Trava)
            {
                ExigirSemVenda();
                Dll.Teste();
                pendente = 0;
            }
        }

        /// <summary>Cancela uma transação confirmada. Valor 0: não vai no pedido.</summary>
        public Resultado Cancelar(Reais valor, int cupom, string controle)
        {
            var reais = Dinheiro.Centavos("dValor", valor) / 100.0;
            var bytes = Texto.Codificar("sControle", controle);
            return Pagar(() => Dll.Cancelar(Cliente, Parceiro, reais, cupom, bytes, Leitor));
        }

        public Resultado Reimpressao() =>
            Pagar(() => Dll.Reimpressao(Cliente, Parceiro, Leitor));

        /// <param name="nsu">NSU da transação.</param>
        /// <param name="data">Data dela, como em 25/03/2021.</param>
        /// <param name="cupom">Cupom desta operação.</param>
        public Resultado ReimpressaoDireto(string nsu, string data, int cupom)
        {
            var bytesNsu = Texto.Codificar("sNSU", nsu);
            var bytesData = Texto.Codificar("data", data);
            return Pagar(() => Dll.ReimpressaoDireto(Cliente, Parceiro, bytesNsu, bytesData, cupom,
                Leitor));
        }

        // ---- Administração ----

        /// <summary>Abre o menu administrativo do GP. Valor 0: não vai no pedido.</summary>
        public Resultado Adm(Reais valor, int cupom)
        {
            var reais = Dinheiro.Centavos("dValor", valor) / 100.0;
            return Pagar(() => Dll.Adm(Cliente, Parceiro, reais, cupom, Leitor));
        }

        public Resultado Relatorio(int cupom) =>
            Pagar(() => Dll.Relatorio(Cliente, Parceiro, cupom, Leitor));

        public Resultado RecargaCelular(int cupom) =>
            Pagar(() => Dll.RecargaCelular(Cliente, Parceiro, cupom, Leitor));

        public Resultado Atv(int cupom) =>
            Pagar(() => Dll.Atv(Cliente, Parceiro, cupom, Leitor));

        public Resultado SolicitarCPF(int cupom) =>
            Pagar(() => Dll.SolicitarCPF(Cliente, Parceiro, cupom));

        public Resultado SolicitarCNPJ(int cupom) =>
            Pagar(() => Dll.SolicitarCNPJ(Cliente, Parceiro, cupom));

        public Resultado SolicitarDocumento(int cupom) =>
            Pagar(() => Dll.SolicitarDocumento(Cliente, Parceiro, cupom));

        public Resultado ManutencaoLinkPagamento() =>
            Pagar(() => Dll.ManutencaoLinkPagamento(Cliente, Parceiro, Leitor));

        public Resultado ListarLinkPagamentoPago(Reais valor, int cupom)
        {
            var reais = Dinheiro.Centavos("dValor", valor) / 100.0;
            return Pagar(() => Dll.ListarLinkPagamentoPago(Cliente, Parceiro, reais, cupom,
                Leitor));
        }

        /// <summary>Devolve "OK". Não fala com o GP.</summary>
        public string Teste()
        {
            lock (Trava)
            {
                ExigirSemVenda();
                ExigirSemPendencia();
                return Marshal.PtrToStringAnsi(Dll.Teste());
            }
        }

        /// <summary>Espera pelo GP, que a primeira chamada inicia, na abertura do dia.</summary>
        /// <param name="tentativas">0: as da configuração.</param>
        public Resultado AguardarGp(int tentativas = 0)
        {
            var quantas = tentativas > 0 ? tentativas : this.tentativas;
            for (var i = 1; ; i++)
            {
                var resultado = Atv(1);
                if (resultado.Aprovada)
                    return resultado;
                if (i == quantas)
                    throw new CaixoraException("o GP não está ativo: " + resultado.Mensagem);
                Thread.Sleep(pausaMs);
            }
        }

        // ---- Venda completa ----

        /// <summary>Vende, chama <paramref name="aoAprovar"/> e dá à venda um desfecho.</summary>
        /// <param name="venda">O que vender.</param>
        /// <param name="aoAprovar">Grava a venda e imprime o comprovante. Com true, a venda é
        /// confirmada; com false, ou uma exceção (que segue para quem chamou), desfeita.</param>
        /// <exception cref="VendaEmAbertoException">Há uma venda em aberto no diário e nada foi
        /// vendido, ou o desfecho não saiu: <see cref="ConcluirVenda"/>.</exception>
        /// <exception cref="InvalidOperationException">Há uma venda em andamento. Até o desfecho
        /// dela, toda operação que chega ao GP é recusada, também dentro de
        /// <paramref name="aoAprovar"/>.</exception>
        /// <exception cref="ValorDivergenteException">O GP aprovou outra coisa.</exception>
        /// <exception cref="PendenciaAbertaException">Falta o desfecho de outra venda.</exception>
        /// <exception cref="DiarioException">O diário não pôde ser lido ou gravado.</exception>
        public ResultadoVenda VenderEConfirmar(Venda venda, Func<Resultado, bool> aoAprovar)
        {
            if (venda == null)
                throw new ArgumentNullException(nameof(venda));
            if (aoAprovar == null)
                throw new ArgumentNullException(nameof(aoAprovar));
            Ocupar(venda.Cupom, () =>
            {
                ExigirSemPendencia();
                diario?.Iniciar(venda);
            });
            try
            {
                return VenderEConcluir(venda, aoAprovar);
            }
            finally
            {
                Desocupar();
            }
        }

        /// <summary>As vendas do diário, que uma queda ou uma falha deixou sem desfecho.
        /// Consulte-as ao abrir o PDV.</summary>
        public IReadOnlyList<VendaEmAberto> VendasEmAberto()
        {
            if (diario == null)
                throw new InvalidOperationException("não há diário na configuração");
            return diario.Ler();
        }

        /// <summary>Dá o desfecho a uma venda em aberto e a tira do diário.</summary>
        /// <exception cref="VendaEmAbertoException">O desfecho não saiu.</exception>
        /// <exception cref="InvalidOperationException">O estado da venda pede o outro desfecho, ou
        /// há uma venda em andamento.</exception>
        public void ConcluirVenda(int cupom, Desfecho desfecho)
        {
            VendaEmAberto venda = null;
            Ocupar(cupom, () =>
            {
                venda = VendasEmAberto().FirstOrDefault(aberta => aberta.Cupom == cupom);
                if (venda == null)
                    throw new ArgumentException($"iCupom: {cupom} não está em aberto no diário");
                if (venda.Falta != null && venda.Falta != desfecho)
                    throw new InvalidOperationException($"o cupom {cupom} está no diário como " +
                        $"{venda.Estado.ToString().ToLowerInvariant()}: só cabe " +
                        venda.Falta.ToString().ToLowerInvariant());
                ExigirSemPendencia(cupom, desfecho);
            });
            try
            {
                Concluir(cupom, venda.Centavos, desfecho);
            }
            finally
            {
                Desocupar();
            }
        }

        // ---- Fluxo interativo ----

        /// <summary>Conduz um fluxo interativo até o fim.</summary>
        /// <param name="inicio">Os argumentos.</param>
        /// <param name="perguntar">Recebe a pergunta e devolve a resposta, ou nulo para
        /// cancelar.</param>
        /// <param name="cancelar">Cancela o fluxo enquanto não há pergunta.</param>
        public ResultadoFluxo Fluxo(InicioFluxo inicio, Func<string, string> perguntar,
            CancellationToken cancelar = default(CancellationToken))
        {
            if (inicio == null)
                throw new ArgumentNullException(nameof(inicio));
            if (perguntar == null)
                throw new ArgumentNullException(nameof(perguntar));
            var chamar = inicio.Preparar(Cliente);
            int codigo;
            lock (Trava)
            {
                ExigirSemVenda();
                ExigirSemPendencia();
                if (fluxoEmCurso)
                    throw new InvalidOperationException("já há um fluxo interativo em curso");
                codigo = chamar(Dll.IniciaFuncaoQJInterativo, inicio.Funcao);
                if (codigo != 0)
                    return Falha(EtapaFluxo.Inicio, codigo);
                fluxoEmCurso = true;
            }
            try
            {
                var fim = Conversar(perguntar, cancelar, out var retorno);
                if (fim != null)
                    return fim;
                lock (Trava)
                    codigo = chamar(Dll.FinalizaFuncaoQJInterativo, inicio.FuncaoFim);
                return Falha(EtapaFluxo.Finalizacao, codigo, retorno);
            }
            finally
            {
                lock (Trava)
                    fluxoEmCurso = false;
            }
        }

        /// <summary>Ajuda de desenvolvimento: abre o Trevix de uma pasta fixa.</summary>
        public int ConfiguraIntTefInterativo()
        {
            lock (Trava)
                return Dll.ConfiguraIntTefInterativo();
        }

        // ---- Em outra thread ----

        public Task<Resultado> VenderAsync(Venda venda) =>
            EmThread(() => Vender(venda));

        public Task<Resultado> VendeCreditoAsync(Reais valor, int cupom) =>
            VenderAsync(Venda.Credito(valor, cupom));

        public Task<Resultado> VendeCreditoVistaAsync(Reais valor, int cupom) =>
            VenderAsync(Venda.CreditoVista(valor, cupom));

        public Task<Resultado> VendeCreditoParcLojaAsync(int parcelas, Reais valor, int cupom) =>
            VenderAsync(Venda.CreditoParcLoja(parcelas, valor, cupom));

        public Task<Resultado> VendeCreditoParcAdmAsync(int parcelas, Reais valor, int cupom) =>
            VenderAsync(Venda.CreditoParcAdm(parcelas, valor, cupom));

        public Task<Resultado> VendeDebitoAsync(Reais valor, int cupom) =>
            VenderAsync(Venda.Debito(valor, cupom));

        public Task<Resultado> VendeDebitoAVistaAsync(Reais valor, int cupom) =>
            VenderAsync(Venda.DebitoAVista(valor, cupom));

        public Task<Resultado> MenuPrivateAsync(Reais valor, int cupom) =>
            VenderAsync(Venda.MenuPrivate(valor, cupom));

        public Task<Resultado> VendeCarteiraDigitalPixAsync(Reais valor, int cupom) =>
            VenderAsync(Venda.CarteiraDigitalPix(valor, cupom));

        public Task<Resultado> ParceleMaisAsync(Reais valor, int cupom) =>
            VenderAsync(Venda.ParceleMais(valor, cupom));

        public Task<Resultado> VendeFrotaCompletoAsync(Reais valor, string km, string placa,
            string matricula, IEnumerable<ItemFrota> itens, int cupom) =>
            VenderAsync(Venda.FrotaCompleto(valor, km, placa, matricula, itens, cupom));

        public Task<Resultado> LinkPagamentoAsync(int parcelas, Reais valor, int cupom,
            IEnumerable<ItemLink> itens, string campo011, string campo012) =>
            VenderAsync(
                Venda.LinkPagamento(parcelas, valor, cupom, itens, campo011, campo012));

        public Task<Resultado> ConfirmarAsync(int cupom) =>
            EmThread(() => Confirmar(cupom));

        public Task<Resultado> DesfazimentoAsync(int cupom) =>
            EmThread(() => Desfazimento(cupom));

        public Task<Resultado> CancelarAsync(Reais valor, int cupom, string controle) =>
            EmThread(() => Cancelar(valor, cupom, controle));

        public Task<Resultado> ReimpressaoAsync() =>
            EmThread(Reimpressao);

        public Task<Resultado> AdmAsync(Reais valor, int cupom) =>
            EmThread(() => Adm(valor, cupom));

        public Task<Resultado> AguardarGpAsync(int tentativas = 0) =>
            EmThread(() => AguardarGp(tentativas));

        public Task ConcluirVendaAsync(int cupom, Desfecho desfecho) =>
            EmThread(() =>
            {
                ConcluirVenda(cupom, desfecho);
                return true;
            });

        /// <summary><see cref="VenderEConfirmar"/> em outra thread; <paramref name="aoAprovar"/>
        /// volta à da tela, quando se parte dela. Espere com await: Wait ou Result, na thread da
        /// tela, travariam o PDV com a venda aprovada.</summary>
        public Task<ResultadoVenda> VenderEConfirmarAsync(Venda venda,
            Func<Resultado, Task<bool>> aoAprovar)
        {
            if (aoAprovar == null)
                throw new ArgumentNullException(nameof(aoAprovar));
            var contexto = SynchronizationContext.Current;
            return EmThread(() => VenderEConfirmar(venda,
                resultado => NoContexto(contexto, () => aoAprovar(resultado))));
        }

        /// <summary><see cref="Fluxo"/> em outra thread; <paramref name="perguntar"/> volta à da
        /// tela, quando se parte dela.</summary>
        public Task<ResultadoFluxo> FluxoAsync(InicioFluxo inicio,
            Func<string, Task<string>> perguntar,
            CancellationToken cancelar = default(CancellationToken))
        {
            if (perguntar == null)
                throw new ArgumentNullException(nameof(perguntar));
            var contexto = SynchronizationContext.Current;
            return EmThread(() => Fluxo(inicio,
                pergunta => NoContexto(contexto, () => perguntar(pergunta)), cancelar));
        }

        // ---- Por dentro ----

        internal static void ExigirCupom(int cupom)
        {
            if (cupom < 1)
                throw new ArgumentException($"iCupom: {cupom} não é ao menos 1");
        }

        // Durante uma pendência, só o mesmo desfecho do mesmo cupom pode seguir.
        private static void ExigirSemPendencia(int cupom = 0, Desfecho? desfecho = null)
        {
            if (pendente != 0 && (pendente != cupom || desfechoPendente != desfecho))
                throw new PendenciaAbertaException(pendente, desfechoPendente);
        }

        private static void ExigirSemVenda()
        {
            if (emAndamento != 0)
                throw new InvalidOperationException(
                    $"há uma venda em andamento: cupom {emAndamento}");
        }

        // Até Desocupar, nenhuma outra operação chega ao GP.
        private static void Ocupar(int cupom, Action verificar)
        {
            lock (Trava)
            {
                ExigirSemVenda();
                verificar();
                emAndamento = cupom;
            }
        }

        private static void Desocupar()
        {
            lock (Trava)
                emAndamento = 0;
        }

        private static Resultado Receber(Func<IntPtr> funcao) =>
            Resultado.Interpretar(Texto.Receber(funcao()));

        private static Resultado Pagar(Func<IntPtr> funcao)
        {
            lock (Trava)
            {
                ExigirSemVenda();
                ExigirSemPendencia();
                return Receber(funcao);
            }
        }

        private Resultado EncerrarAvulsa(int cupom, Desfecho desfecho)
        {
            ExigirCupom(cupom);
            lock (Trava)
            {
                ExigirSemVenda();
                ExigirSemPendencia(cupom, desfecho);
                if (diario != null && diario.Ler().Any(aberta => aberta.Cupom == cupom))
                    throw new InvalidOperationException(
                        $"o cupom {cupom} está em aberto no diário: use ConcluirVenda");
                return Encerrar(cupom, desfecho);
            }
        }

        private Resultado Encerrar(int cupom, Desfecho desfecho)
        {
            lock (Trava)
            {
                // Vale também para uma chamada cujo resultado não se chegue a ler.
                desfechoPendente = desfecho;
                pendente = cupom;
                var resultado = Receber(() => desfecho == Desfecho.Confirmar
                    ? Dll.Confirmar(Cliente, Parceiro, cupom)
                    : Dll.Desfazimento(Cliente, Parceiro, cupom));
                if (Saiu(resultado))
                    pendente = 0;
                return resultado;
            }
        }

        private ResultadoVenda VenderEConcluir(Venda venda, Func<Resultado, bool> aoAprovar)
        {
            Resultado resultado;
            var relogio = new Stopwatch();
            lock (Trava)
            {
                relogio.Start();
                resultado = Receber(() => venda.Chamar(this));
                relogio.Stop();
            }
            if (!resultado.Aprovada)
            {
                if (resultado.Incerto(relogio.ElapsedMilliseconds))
                {
                    Concluir(venda.Cupom, venda.Centavos, Desfecho.Desfazer);
                    return new ResultadoVenda(Situacao.Desfeita, resultado,
                        "resultado incerto: " + resultado.Mensagem);
                }
                diario?.Remover(venda.Cupom);
                return new ResultadoVenda(Situacao.Recusada, resultado, resultado.Mensagem);
            }
            if (!resultado.Corresponde(venda))
            {
                var erro = new ValorDivergenteException(venda.Cupom, venda.Centavos, resultado);
                Concluir(venda.Cupom, venda.Centavos, Desfecho.Desfazer, erro);
                throw erro;
            }
            bool gravada;
            try
            {
                diario?.Marcar(venda.Cupom, venda.Centavos, EstadoVenda.Aprovada);
                gravada = aoAprovar(resultado);
            }
            catch (Exception erro)
            {
                Concluir(venda.Cupom, venda.Centavos, Desfecho.Desfazer, erro);
                throw;
            }
            if (!gravada)
            {
                Concluir(venda.Cupom, venda.Centavos, Desfecho.Desfazer);
                return new ResultadoVenda(Situacao.Desfeita, resultado, "o PDV não gravou a venda");
            }
            Concluir(venda.Cupom, venda.Centavos, Desfecho.Confirmar);
            return new ResultadoVenda(Situacao.Confirmada, resultado, "");
        }

        private static bool Saiu(Resultado resultado) =>
            resultado.RespostaLocal || resultado.Aprovada;

        // O desfecho não espera pelo diário: se este não puder ser gravado, o estado que ficou nele
        // leva ao mesmo desfecho na retomada.
        private void Concluir(int cupom, long centavos, Desfecho desfecho, Exception causa = null)
        {
            try
            {
                diario?.Marcar(cupom, centavos, desfecho == Desfecho.Confirmar
                    ? EstadoVenda.Confirmar
                    : EstadoVenda.Desfazer);
            }
            catch (DiarioException erro)
            {
                causa = causa ?? erro;
            }
            for (var i = 1; ; i++)
            {
                var resultado = Encerrar(cupom, desfecho);
                if (Saiu(resultado))
                    break;
                if (i == tentativas)
                    throw new VendaEmAbertoException(cupom, desfecho, resultado.Mensagem, causa);
                Thread.Sleep(pausaMs);
            }
            try
            {
                diario?.Remover(cupom);
            }
            catch (DiarioException erro)
            {
                var qual = desfecho.ToString().ToLowerInvariant();
                throw new DiarioException(
                    $"o cupom {cupom} já teve o seu desfecho ({qual}), mas {erro.Message}",
                    causa ?? erro);
            }
        }

        // O fim do fluxo, quando não há o que finalizar; nulo, com o retorno, quando há.
        private ResultadoFluxo Conversar(Func<string, string> perguntar, CancellationToken cancelar,
            out string retorno)
        {
            retorno = null;
            try
            {
                while (!cancelar.IsCancellationRequested)
                {
                    string texto;
                    lock (Trava)
                        texto = Texto.Receber(Dll.AguardaFuncaoQJInterativo());
                    const string Abortar = "[ERROABORTAR]#";
                    if (texto == "")
                    {
                        cancelar.WaitHandle.WaitOne(200);
                        continue;
                    }
                    if (texto.StartsWith(Abortar, StringComparison.Ordinal))
                        return Abandonar(EtapaFluxo.Consulta, texto.Substring(Abortar.Length));
                    if (texto.Contains("[RETORNO]"))
                    {
                        retorno = texto;
                        return null;
                    }
                    var resposta = perguntar(texto);
                    if (resposta == null)
                        return Abandonar(EtapaFluxo.Resposta, "cancelado pelo operador");
                    var bytes = Texto.CodificarFluxo("sInformacao", resposta);
                    int codigo;
                    lock (Trava)
                        codigo = Dll.ContinuaFuncaoQJInterativo(bytes);
                    if (codigo != 0)
                    {
                        Abandonar(EtapaFluxo.Resposta, "");
                        return Falha(EtapaFluxo.Resposta, codigo);
                    }
                }
            }
            catch
            {
                Abandonar(EtapaFluxo.Resposta, "");
                throw;
            }
            return Abandonar(EtapaFluxo.Consulta, "cancelado pelo operador");
        }

        private ResultadoFluxo Abandonar(EtapaFluxo etapa, string motivo)
        {
            int codigo;
            lock (Trava)
                codigo = Dll.CancelarFluxoQJInterativo();
            if (codigo != 0)
                motivo += "; o cancelamento falhou: " + ResultadoFluxo.Significado(codigo);
            return new ResultadoFluxo(etapa, codigo, motivo);
        }

        private static ResultadoFluxo Falha(EtapaFluxo etapa, int codigo, string retorno = "") =>
            new ResultadoFluxo(etapa, codigo, ResultadoFluxo.Significado(codigo), retorno);

        private static Task<T> EmThread<T>(Func<T> funcao) =>
            Task.Factory.StartNew(funcao, CancellationToken.None,
                TaskCreationOptions.LongRunning, TaskScheduler.Default);

        private static T NoContexto<T>(SynchronizationContext contexto, Func<Task<T>> funcao)
        {
            if (contexto == null)
                return funcao().GetAwaiter().GetResult();
            var fim = new TaskCompletionSource<T>();
            contexto.Post(async _ =>
            {
                try
                {
                    fim.SetResult(await funcao());
                }
                catch (Exception erro)
                {
                    fim.SetException(erro);
                }
            }, null);
            return fim.Task.GetAwaiter().GetResult();
        }
    }

    // Valores em centavos, que a DLL recebe como reais.
    internal static class Dinheiro
    {
        public const long MaximoCentavos = 214748364799;

        private const decimal Maximo = MaximoCentavos / 100m;

        public static long Centavos(string nome, Reais reais)
        {
            var valor = reais.Valor;
            if (valor < 0 || valor > Maximo)
                throw new ArgumentException(
                    $"{nome}: {Exato(valor)} não está entre 0 e {Exato(Maximo)}");
            var centavos = valor * 100;
            if (decimal.Truncate(centavos) != centavos)
                throw new ArgumentException(
                    $"{nome}: {Exato(valor)} tem mais de duas casas decimais");
            return (long)centavos;
        }

        public static string Escrever(long centavos) =>
            string.Format(CultureInfo.InvariantCulture, "{0},{1:00}", centavos / 100,
                centavos % 100);

        private static string Exato(decimal valor) =>
            valor.ToString(CultureInfo.InvariantCulture).Replace('.', ',');
    }

    // Windows-1252, que no .NET só existe com um pacote à parte.
    internal static class Texto
    {
        // Os bytes de 80 a 9F; os cinco sem caractere valem o controle de mesmo número.
        private const string De80A9F =
            "€\u0081‚ƒ„…†‡ˆ‰Š‹Œ\u008DŽ\u008F\u0090‘’“”•–—˜™š›œ\u009DžŸ";

        // Com o zero do fim.
        public static byte[] Codificar(string nome, string texto)
        {
            // Estes encerrariam o texto, ou criariam linhas no pedido.
            Sem("\0\r\n", nome, texto);
            var bytes = new byte[texto.Length + 1];
            for (var i = 0; i < texto.Length; i++)
            {
                var letra = texto[i];
                var alta = letra < '\u00A0' ? -1 : De80A9F.IndexOf(letra);
                if (alta >= 0)
                    bytes[i] = (byte)(0x80 + alta);
                else if (letra < '\u0080' || letra >= '\u00A0' && letra <= '\u00FF')
                    bytes[i] = (byte)letra;
                else
                    throw new ArgumentException(
                        $"{nome}: o caractere {Descrever(texto, i)} não existe em Windows-1252");
            }
            return bytes;
        }

        // Para os textos do fluxo interativo, em que "¬" separa os campos.
        public static byte[] CodificarFluxo(string nome, string texto) =>
            Codificar(nome, Sem("¬", nome, texto));

        public static string Sem(string proibidos, string nome, string texto)
        {
            if (texto == null)
                throw new ArgumentNullException(nome);
            var onde = texto.IndexOfAny(proibidos.ToCharArray());
            if (onde >= 0)
                throw new ArgumentException(
                    $"{nome}: o caractere {Descrever(texto, onde)} não é permitido aqui");
            return texto;
        }

        // Lê um BSTR de bytes e o libera.
        public static string Receber(IntPtr bstr)
        {
            try
            {
                var bytes = new byte[SysStringByteLen(bstr)];
                if (bytes.Length > 0)
                    Marshal.Copy(bstr, bytes, 0, bytes.Length);
                return new string(bytes.Select(Decodificar).ToArray());
            }
            finally
            {
                SysFreeString(bstr);
            }
        }

        private static char Decodificar(byte valor) =>
            valor >= 0x80 && valor <= 0x9F ? De80A9F[valor - 0x80] : (char)valor;

        private static string Descrever(string texto, int onde)
        {
            var par = char.IsSurrogatePair(texto, onde);
            var codigo = par ? char.ConvertToUtf32(texto, onde) : texto[onde];
            var nome = "U+" + codigo.ToString("X4", CultureInfo.InvariantCulture);
            return !par && (char.IsControl(texto, onde) || char.IsSurrogate(texto, onde))
                ? nome
                : $"\"{texto.Substring(onde, par ? 2 : 1)}\" ({nome})";
        }

        [DllImport("oleaut32.dll", ExactSpelling = true)]
        private static extern uint SysStringByteLen(IntPtr bstr);

        [DllImport("oleaut32.dll", ExactSpelling = true)]
        private static extern void SysFreeString(IntPtr bstr);
    }

    // As vendas sem desfecho, em um arquivo que se troca inteiro a cada mudança.
    internal sealed class Diario
    {
        private const string Cabecalho = "caixora-diario 1";

        private static readonly object Trava = new object();
        private static readonly Regex Linha = new Regex(
            @"\A([1-9][0-9]{0,9});([1-9][0-9]{0,11});(iniciada|aprovada|confirmar|desfazer)\z");

        private readonly string caminho;

        public Diario(string caminho)
        {
            this.caminho = caminho;
        }

        public void Iniciar(Venda venda)
        {
            lock (Trava)
            {
                var vendas = Ler();
                if (vendas.Count > 0)
                    throw new VendaEmAbertoException(vendas[0]);
                vendas.Add(new VendaEmAberto(venda.Cupom, venda.Centavos, EstadoVenda.Iniciada));
                Gravar(vendas);
            }
        }

        public void Marcar(int cupom, long centavos, EstadoVenda estado)
        {
            lock (Trava)
            {
                var vendas = Ler();
                var onde = vendas.FindIndex(aberta => aberta.Cupom == cupom);
                if (onde < 0)
                    onde = vendas.Count;
                else
                    vendas.RemoveAt(onde);
                vendas.Insert(onde, new VendaEmAberto(cupom, centavos, estado));
                Gravar(vendas);
            }
        }

        public void Remover(int cupom)
        {
            lock (Trava)
            {
                var vendas = Ler();
                vendas.RemoveAll(aberta => aberta.Cupom == cupom);
                Gravar(vendas);
            }
        }

        public List<VendaEmAberto> Ler()
        {
            lock (Trava)
            {
                try
                {
                    return Interpretar(Encoding.ASCII.GetString(File.ReadAllBytes(caminho)));
                }
                catch (FileNotFoundException)
                {
                    return new List<VendaEmAberto>();
                }
                catch (Exception erro) when (DeArquivo(erro))
                {
                    throw new DiarioException($"diário ilegível ({caminho}): {erro.Message}", erro);
                }
            }
        }

        private List<VendaEmAberto> Interpretar(string texto)
        {
            var linhas = texto.Split('\n')
                .Select(linha => linha.EndsWith("\r", StringComparison.Ordinal)
                    ? linha.Remove(linha.Length - 1)
                    : linha)
                .ToArray();
            // Depois do último fim de linha vem um texto vazio; sem ele, o arquivo foi cortado.
            if (linhas[0] != Cabecalho || !texto.EndsWith("\n", StringComparison.Ordinal))
                throw new DiarioException($"diário ilegível ({caminho})");
            var vendas = new List<VendaEmAberto>();
            foreach (var linha in linhas.Skip(1).Take(linhas.Length - 2))
            {
                var partes = Linha.Match(linha).Groups;
                if (!int.TryParse(partes[1].Value, NumberStyles.None, CultureInfo.InvariantCulture,
                        out var cupom) || vendas.Any(aberta => aberta.Cupom == cupom) ||
                    !long.TryParse(partes[2].Value, NumberStyles.None,
                        CultureInfo.InvariantCulture, out var centavos) ||
                    centavos > Dinheiro.MaximoCentavos)
                    throw new DiarioException($"diário ilegível ({caminho}): \"{linha}\"");
                vendas.Add(new VendaEmAberto(cupom, centavos,
                    (EstadoVenda)Enum.Parse(typeof(EstadoVenda), partes[3].Value, true)));
            }
            return vendas;
        }

        private void Gravar(List<VendaEmAberto> vendas)
        {
            try
            {
                if (vendas.Count == 0)
                {
                    File.Delete(caminho);
                    return;
                }
                var texto = Cabecalho + "\n" + string.Concat(vendas.Select(venda => string.Format(
                    CultureInfo.InvariantCulture, "{0};{1};{2}\n", venda.Cupom, venda.Centavos,
                    venda.Estado.ToString().ToLowerInvariant())));
                var bytes = Encoding.ASCII.GetBytes(texto);
                var provisorio = caminho + ".tmp";
                using (var arquivo = new FileStream(provisorio, FileMode.Create, FileAccess.Write))
                {
                    arquivo.Write(bytes, 0, bytes.Length);
                    arquivo.Flush(true);
                }
                if (!MoveFileExW(provisorio, caminho, SubstituirJa))
                    throw new Win32Exception();
            }
            catch (Exception erro) when (DeArquivo(erro))
            {
                throw new DiarioException(
                    $"o diário não pôde ser gravado ({caminho}): {erro.Message}", erro);
            }
        }

        private static bool DeArquivo(Exception erro) =>
            erro is IOException || erro is UnauthorizedAccessException ||
                erro is Win32Exception;

        // MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH
        private const uint SubstituirJa = 1 | 8;

        [DllImport("kernel32.dll", ExactSpelling = true, CharSet = CharSet.Unicode,
            SetLastError = true)]
        [return: MarshalAs(UnmanagedType.Bool)]
        private static extern bool MoveFileExW(string de, string para, uint opcoes);
    }

    // A DLL carregada. As funções são tomadas dela pelo endereço: com DllImport, o .NET daria
    // preferência a uma Caixora.dll ao lado do programa, e não à do caminho pedido.
    internal sealed class Dll
    {
        private const CallingConvention Convencao = CallingConvention.Cdecl;

        private static Dll unica;

        private readonly IntPtr modulo;

        public readonly ComValor VendeCredito;
        public readonly ComValor VendeCreditoVista;
        public readonly ComParcelas VendeCreditoParcLoja;
        public readonly ComParcelas VendeCreditoParcAdm;
        public readonly ComValor VendeDebito;
        public readonly ComValor VendeDebitoAVista;
        public readonly ComValor MenuPrivate;
        public readonly ComValor VendeCarteiraDigitalPix;
        public readonly ComValor ParceleMais;
        public readonly DeFrota VendeFrotaCompleto;
        public readonly DeLink LinkPagamento;
        public readonly ComValor ListarLinkPagamentoPago;
        public readonly ComNumero ManutencaoLinkPagamento;
        public readonly ComNumero Confirmar;
        public readonly ComNumero Desfazimento;
        public readonly DeCancelar Cancelar;
        public readonly ComNumero Reimpressao;
        public readonly DeReimpressao ReimpressaoDireto;
        public readonly ComValor Adm;
        public readonly ComCupom Relatorio;
        public readonly ComCupom RecargaCelular;
        public readonly ComCupom Atv;
        public readonly ComNumero SolicitarCPF;
        public readonly ComNumero SolicitarCNPJ;
        public readonly ComNumero SolicitarDocumento;
        public readonly SemArgumentos Teste;
        public readonly DoFluxo IniciaFuncaoQJInterativo;
        public readonly SemArgumentos AguardaFuncaoQJInterativo;
        public readonly DaResposta ContinuaFuncaoQJInterativo;
        public readonly DoFluxo FinalizaFuncaoQJInterativo;
        public readonly SoCodigo CancelarFluxoQJInterativo;
        public readonly SoCodigo ConfiguraIntTefInterativo;

        private Dll(IntPtr modulo)
        {
            this.modulo = modulo;
            VendeCredito = Funcao<ComValor>(nameof(VendeCredito));
            VendeCreditoVista = Funcao<ComValor>(nameof(VendeCreditoVista));
            VendeCreditoParcLoja = Funcao<ComParcelas>(nameof(VendeCreditoParcLoja));
            VendeCreditoParcAdm = Funcao<ComParcelas>(nameof(VendeCreditoParcAdm));
            VendeDebito = Funcao<ComValor>(nameof(VendeDebito));
            VendeDebitoAVista = Funcao<ComValor>(nameof(VendeDebitoAVista));
            MenuPrivate = Funcao<ComValor>(nameof(MenuPrivate));
            VendeCarteiraDigitalPix = Funcao<ComValor>(nameof(VendeCarteiraDigitalPix));
            ParceleMais = Funcao<ComValor>(nameof(ParceleMais));
            VendeFrotaCompleto = Funcao<DeFrota>(nameof(VendeFrotaCompleto));
            LinkPagamento = Funcao<DeLink>(nameof(LinkPagamento));
            ListarLinkPagamentoPago = Funcao<ComValor>(nameof(ListarLinkPagamentoPago));
            ManutencaoLinkPagamento = Funcao<ComNumero>(nameof(ManutencaoLinkPagamento));
            Confirmar = Funcao<ComNumero>(nameof(Confirmar));
            Desfazimento = Funcao<ComNumero>(nameof(Desfazimento));
            Cancelar = Funcao<DeCancelar>(nameof(Cancelar));
            Reimpressao = Funcao<ComNumero>(nameof(Reimpressao));
            ReimpressaoDireto = Funcao<DeReimpressao>(nameof(ReimpressaoDireto));
            Adm = Funcao<ComValor>(nameof(Adm));
            Relatorio = Funcao<ComCupom>(nameof(Relatorio));
            RecargaCelular = Funcao<ComCupom>(nameof(RecargaCelular));
            Atv = Funcao<ComCupom>(nameof(Atv));
            SolicitarCPF = Funcao<ComNumero>(nameof(SolicitarCPF));
            SolicitarCNPJ = Funcao<ComNumero>(nameof(SolicitarCNPJ));
            SolicitarDocumento = Funcao<ComNumero>(nameof(SolicitarDocumento));
            Teste = Funcao<SemArgumentos>(nameof(Teste));
            IniciaFuncaoQJInterativo = Funcao<DoFluxo>(nameof(IniciaFuncaoQJInterativo));
            AguardaFuncaoQJInterativo = Funcao<SemArgumentos>(nameof(AguardaFuncaoQJInterativo));
            ContinuaFuncaoQJInterativo = Funcao<DaResposta>(nameof(ContinuaFuncaoQJInterativo));
            FinalizaFuncaoQJInterativo = Funcao<DoFluxo>(nameof(FinalizaFuncaoQJInterativo));
            CancelarFluxoQJInterativo = Funcao<SoCodigo>(nameof(CancelarFluxoQJInterativo));
            ConfiguraIntTefInterativo = Funcao<SoCodigo>(nameof(ConfiguraIntTefInterativo));
        }

        [UnmanagedFunctionPointer(Convencao)]
        public delegate IntPtr ComValor(byte[] sCNPJCliente, byte[] sCNPJParceiro, double dValor,
            int iCupom, int iLeitor);

        [UnmanagedFunctionPointer(Convencao)]
        public delegate IntPtr ComParcelas(byte[] sCNPJCliente, byte[] sCNPJParceiro, int iParcelas,
            double dValor, int iCupom, int iLeitor);

        [UnmanagedFunctionPointer(Convencao)]
        public delegate IntPtr DeFrota(byte[] sCNPJCliente, byte[] sCNPJParceiro, double dValor,
            byte[] sKM, byte[] sPlaca, byte[] sMatricula, int iQtdeItens, byte[] sItens, int iCupom,
            int iLeitor);

        [UnmanagedFunctionPointer(Convencao)]
        public delegate IntPtr DeLink(byte[] sCNPJCliente, byte[] sCNPJParceiro, int iParcelas,
            double dValor, int iCupom, int iQtdeItens, byte[] sItens, byte[] sCampo011,
            byte[] sCampo012, int iLeitor);

        [UnmanagedFunctionPointer(Convencao)]
        public delegate IntPtr DeCancelar(byte[] sCNPJCliente, byte[] sCNPJParceiro, double dValor,
            int iCupom, byte[] sControle, int iLeitor);

        [UnmanagedFunctionPointer(Convencao)]
        public delegate IntPtr DeReimpressao(byte[] sCNPJCliente, byte[] sCNPJParceiro, byte[] sNSU,
            byte[] data, int iCupom, int iLeitor);

        [UnmanagedFunctionPointer(Convencao)]
        public delegate IntPtr ComCupom(byte[] sCNPJCliente, byte[] sCNPJParceiro, int iCupom,
            int iLeitor);

        // O número é o cupom ou o leitor.
        [UnmanagedFunctionPointer(Convencao)]
        public delegate IntPtr ComNumero(byte[] sCNPJCliente, byte[] sCNPJParceiro, int numero);

        [UnmanagedFunctionPointer(Convencao)]
        public delegate IntPtr SemArgumentos();

        [UnmanagedFunctionPointer(Convencao)]
        public delegate int DoFluxo(uint uFuncao, byte[] sCNPJ, uint uCampo3, byte[] sCampo4,
            byte[] sValor, byte[] sCampo6, byte[] sCampo7, byte[] sCampo8, byte[] sCampo9,
            uint uCampo10, byte[] sCampo11);

        [UnmanagedFunctionPointer(Convencao)]
        public delegate int DaResposta(byte[] sInformacao);

        [UnmanagedFunctionPointer(Convencao)]
        public delegate int SoCodigo();

        public static Dll Carregar(string caminho)
        {
            if (unica != null && caminho == null)
                return unica;
            if (Environment.OSVersion.Platform != PlatformID.Win32NT)
                throw new CaixoraException("Caixora.dll existe apenas para Windows");
            if (IntPtr.Size != 8)
                throw new CaixoraException("Caixora.dll existe apenas em 64 bits, e este " +
                    "processo é de 32: compile o programa para x64 (ou, em Any CPU, desmarque " +
                    "\"Preferir 32 bits\")");
            var modulo = Abrir(caminho ?? Procurar());
            if (unica == null)
                unica = new Dll(modulo);
            else if (unica.modulo != modulo)
                throw new CaixoraException($"outra Caixora.dll, e não {caminho}, já está em uso");
            return unica;
        }

        private static string Procurar()
        {
            const string nome = "Caixora.dll";
            var aoLado = Path.Combine(AppDomain.CurrentDomain.BaseDirectory, nome);
            return File.Exists(aoLado) ? aoLado : nome;
        }

        private static IntPtr Abrir(string caminho)
        {
            var comPasta = Path.GetFileName(caminho) != caminho;
            var modulo = LoadLibraryW(comPasta ? Path.GetFullPath(caminho) : caminho);
            if (modulo == IntPtr.Zero)
            {
                var erro = new Win32Exception();
                var motivo = erro.NativeErrorCode == ArquivoDeOutroTipo
                    ? "não é uma DLL de 64 bits (x64)"
                    : erro.Message;
                throw new CaixoraException($"{caminho} não pôde ser carregada: {motivo}", erro);
            }
            return modulo;
        }

        private T Funcao<T>(string nome)
        {
            var endereco = GetProcAddress(modulo, nome);
            if (endereco == IntPtr.Zero)
                throw new CaixoraException($"a Caixora.dll carregada não tem a função {nome}: é " +
                    "outra DLL com o mesmo nome, ou de outra versão");
            return Marshal.GetDelegateForFunctionPointer<T>(endereco);
        }

        // ERROR_BAD_EXE_FORMAT
        private const int ArquivoDeOutroTipo = 193;

        [DllImport("kernel32.dll", ExactSpelling = true, CharSet = CharSet.Unicode,
            SetLastError = true)]
        private static extern IntPtr LoadLibraryW(string caminho);

        [DllImport("kernel32.dll", ExactSpelling = true, CharSet = CharSet.Ansi,
            BestFitMapping = false)]
        private static extern IntPtr GetProcAddress(IntPtr modulo, string nome);
    }
}
