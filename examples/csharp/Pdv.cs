// Um PDV mínimo sobre bindings/csharp/Caixora.cs. Sem argumentos, faz cinco operações; com --cair,
// cai entre a aprovação e a confirmação; com --retomar, dá o desfecho ao que ficou em aberto.
using System;
using System.Diagnostics;
using System.IO;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;
using CaixoraTef;

internal static class Pdv
{
    // O console do Windows não está em UTF-8.
    private static readonly TextWriter Saida =
        new StreamWriter(Console.OpenStandardOutput(), new UTF8Encoding(false))
        {
            AutoFlush = true,
            NewLine = "\n"
        };

    private static Caixora caixora;

    private static int Main(string[] argumentos)
    {
        try
        {
            // trecho: abrir
            caixora = new Caixora(new Configuracao
            {
                CnpjCliente = "12.345.678/0001-95",
                CnpjParceiro = "11.222.333/0001-81",
                Leitor = 1,
                Diario = "diario.txt"
            });
            // fim do trecho
            if (argumentos.Contains("--cair"))
                Cair();
            else if (argumentos.Contains("--retomar"))
                Retomar();
            else
                Demonstrar();
            return 0;
        }
        catch (Exception erro)
        {
            Saida.WriteLine("Falha: " + erro.Message);
            return 1;
        }
    }

    private static void Demonstrar()
    {
        caixora.AguardarGp();
        Saida.WriteLine("GP ativo");

        Saida.WriteLine("== 1. Venda confirmada");
        // trecho: chamada
        Vender(Venda.CreditoVista(12.50m, 101));
        // fim do trecho

        Saida.WriteLine("== 2. Recusa");
        Vender(Venda.Debito(10.02m, 102));

        Saida.WriteLine("== 3. Link de pagamento com acentos");
        var itens = new[]
        {
            new ItemLink("7891", "CAFÉ TORRADO", 2, 10.50m, 0m, 21.00m),
            new ItemLink("7892", "AÇÚCAR", 1, 10.50m, 0m, 10.50m)
        };
        Vender(Venda.LinkPagamento(1, 31.50m, 103, itens, "Pão & Cia", ""));

        Saida.WriteLine("== 4. Venda desfeita");
        try
        {
            caixora.VenderEConfirmar(Venda.CreditoVista(40.00m, 104), resultado =>
            {
                MostrarAprovada(resultado);
                throw new InvalidOperationException("Impressora sem papel");
            });
        }
        catch (InvalidOperationException erro)
        {
            Saida.WriteLine(erro.Message);
            Saida.WriteLine("Cupom 104: desfeita");
        }

        Saida.WriteLine("== 5. Fluxo interativo");
        ConduzirFluxo();
    }

    // O PDV de verdade gravaria a venda e imprimiria o comprovante antes de devolver true.
    private static bool MostrarAprovada(Resultado resultado)
    {
        Saida.WriteLine($"Cupom {resultado.Cupom}: aprovada, {Reais(resultado.ValorCentavos)}, " +
            $"{resultado.Mensagem}, {resultado.Comprovante.Count} linhas de comprovante");
        return true;
    }

    // trecho: venda
    private static void Vender(Venda venda)
    {
        var fim = caixora.VenderEConfirmar(venda, MostrarAprovada);
        var situacao = fim.Situacao.ToString().ToLowerInvariant();
        Saida.WriteLine(fim.Situacao == Situacao.Confirmada
            ? $"Cupom {venda.Cupom}: {situacao}"
            : $"Cupom {venda.Cupom}: {situacao}, {fim.Motivo}");
    }
    // fim do trecho

    private static void ConduzirFluxo()
    {
        var inicio = new InicioFluxo(funcao: 20, valor: 12.50m, funcaoFim: 99)
        {
            Campo3 = 1,
            Campo6 = "000545",
            Campo7 = "20210325",
            Campo8 = "009",
            Campo9 = "652",
            Campo10 = 7
        };
        var fim = caixora.Fluxo(inicio, pergunta =>
        {
            var resposta = pergunta.Contains("parcelas") ? "3" : "1";
            Saida.WriteLine("Pergunta: " + pergunta);
            Saida.WriteLine("Resposta: " + resposta);
            return resposta;
        });
        if (!fim.Concluido)
            throw new InvalidOperationException($"fluxo não concluído: {fim.Codigo} {fim.Motivo}");
        Saida.WriteLine($"Retorno: STATUS {fim.Campos["STATUS"]}, VALOR {fim.Campos["VALOR"]}, " +
            fim.Campos["MENSAGEM"]);
    }

    private static void Cair()
    {
        Saida.WriteLine("== Queda");
        caixora.VenderEConfirmar(Venda.CreditoVista(20.00m, 105), resultado =>
        {
            MostrarAprovada(resultado);
            // Como uma falta de energia: nada mais é executado.
            return TerminateProcess(Process.GetCurrentProcess().Handle, 9);
        });
    }

    private static void Retomar()
    {
        Saida.WriteLine("== Retomada");
        // trecho: retomar
        var vendas = caixora.VendasEmAberto();
        if (vendas.Count == 0)
            Saida.WriteLine("Nada em aberto");
        foreach (var venda in vendas)
        {
            var estado = venda.Estado.ToString().ToLowerInvariant();
            Saida.WriteLine(
                $"Cupom {venda.Cupom}: em aberto ({estado}), {Reais(venda.Centavos)}");
            // Uma venda aprovada que estivesse gravada no PDV também seria confirmada.
            var confirmar = venda.Estado == EstadoVenda.Confirmar;
            caixora.ConcluirVenda(venda.Cupom, confirmar ? Desfecho.Confirmar : Desfecho.Desfazer);
            Saida.WriteLine($"Cupom {venda.Cupom}: {(confirmar ? "confirmada" : "desfeita")}");
        }
        // fim do trecho
    }

    private static string Reais(long? centavos)
    {
        return $"R$ {centavos / 100},{centavos % 100:00}";
    }

    [DllImport("kernel32.dll", ExactSpelling = true)]
    [return: MarshalAs(UnmanagedType.Bool)]
    private static extern bool TerminateProcess(IntPtr processo, uint codigo);
}
