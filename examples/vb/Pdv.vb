' Um PDV mínimo sobre CaixoraTef.dll, o assembly de bindings/csharp. Sem argumentos, faz cinco
' operações; com --cair, cai entre a aprovação e a confirmação; com --retomar, dá o desfecho ao que
' ficou em aberto.
Option Explicit On
Option Infer On
Option Strict On

Imports System
Imports System.Diagnostics
Imports System.IO
Imports System.Linq
Imports System.Runtime.InteropServices
Imports System.Text
Imports CaixoraTef
Imports Microsoft.VisualBasic

Module Pdv
    ' O console do Windows não está em UTF-8.
    Private ReadOnly Saida As New StreamWriter(
        Console.OpenStandardOutput(), New UTF8Encoding(False)) With {
        .AutoFlush = True,
        .NewLine = vbLf
    }

    Private caixora As Caixora

    Function Main(argumentos As String()) As Integer
        Try
            caixora = New Caixora(New Configuracao With {
                .CnpjCliente = "12.345.678/0001-95",
                .CnpjParceiro = "11.222.333/0001-81",
                .Leitor = 1,
                .Diario = "diario.txt"
            })
            If argumentos.Contains("--cair") Then
                Cair()
            ElseIf argumentos.Contains("--retomar") Then
                Retomar()
            Else
                Demonstrar()
            End If
            Return 0
        Catch erro As Exception
            Saida.WriteLine("Falha: " & erro.Message)
            Return 1
        End Try
    End Function

    Private Sub Demonstrar()
        caixora.AguardarGp()
        Saida.WriteLine("GP ativo")

        Saida.WriteLine("== 1. Venda confirmada")
        ' trecho: chamada
        Vender(Venda.CreditoVista(12.5D, 101))
        ' fim do trecho

        Saida.WriteLine("== 2. Recusa")
        Vender(Venda.Debito(10.02D, 102))

        Saida.WriteLine("== 3. Link de pagamento com acentos")
        Dim itens = {
            New ItemLink("7891", "CAFÉ TORRADO", 2, 10.5D, 0D, 21D),
            New ItemLink("7892", "AÇÚCAR", 1, 10.5D, 0D, 10.5D)
        }
        Vender(Venda.LinkPagamento(1, 31.5D, 103, itens, "Pão & Cia", ""))

        Saida.WriteLine("== 4. Venda desfeita")
        Try
            caixora.VenderEConfirmar(Venda.CreditoVista(40D, 104), AddressOf FalharAoImprimir)
        Catch erro As InvalidOperationException
            Saida.WriteLine(erro.Message)
            Saida.WriteLine("Cupom 104: desfeita")
        End Try

        Saida.WriteLine("== 5. Fluxo interativo")
        ConduzirFluxo()
    End Sub

    ' O PDV de verdade gravaria a venda e imprimiria o comprovante antes de devolver True.
    Private Function MostrarAprovada(resultado As Resultado) As Boolean
        Saida.WriteLine($"Cupom {resultado.Cupom}: aprovada, {Reais(resultado.ValorCentavos)}, " &
            $"{resultado.Mensagem}, {resultado.Comprovante.Count} linhas de comprovante")
        Return True
    End Function

    Private Function FalharAoImprimir(resultado As Resultado) As Boolean
        MostrarAprovada(resultado)
        Throw New InvalidOperationException("Impressora sem papel")
    End Function

    ' trecho: venda
    Private Sub Vender(venda As Venda)
        Dim fim = caixora.VenderEConfirmar(venda, AddressOf MostrarAprovada)
        Dim linha = $"Cupom {venda.Cupom}: {fim.Situacao.ToString().ToLowerInvariant()}"
        If fim.Situacao <> Situacao.Confirmada Then linha &= ", " & fim.Motivo
        Saida.WriteLine(linha)
    End Sub
    ' fim do trecho

    Private Sub ConduzirFluxo()
        Dim inicio As New InicioFluxo(funcao:=20, valor:=12.5D, funcaoFim:=99) With {
            .Campo3 = 1,
            .Campo6 = "000545",
            .Campo7 = "20210325",
            .Campo8 = "009",
            .Campo9 = "652",
            .Campo10 = 7
        }
        Dim fim = caixora.Fluxo(inicio,
            Function(pergunta)
                Dim resposta = If(pergunta.Contains("parcelas"), "3", "1")
                Saida.WriteLine("Pergunta: " & pergunta)
                Saida.WriteLine("Resposta: " & resposta)
                Return resposta
            End Function)
        If Not fim.Concluido Then
            Throw New InvalidOperationException($"fluxo não concluído: {fim.Codigo} {fim.Motivo}")
        End If
        Saida.WriteLine($"Retorno: STATUS {fim.Campos("STATUS")}, VALOR {fim.Campos("VALOR")}, " &
            fim.Campos("MENSAGEM"))
    End Sub

    Private Sub Cair()
        Saida.WriteLine("== Queda")
        caixora.VenderEConfirmar(Venda.CreditoVista(20D, 105),
            Function(resultado)
                MostrarAprovada(resultado)
                ' Como uma falta de energia: nada mais é executado.
                Return TerminateProcess(Process.GetCurrentProcess().Handle, 9)
            End Function)
    End Sub

    Private Sub Retomar()
        Saida.WriteLine("== Retomada")
        Dim vendas = caixora.VendasEmAberto()
        If vendas.Count = 0 Then Saida.WriteLine("Nada em aberto")
        For Each venda In vendas
            Dim estado = venda.Estado.ToString().ToLowerInvariant()
            Saida.WriteLine(
                $"Cupom {venda.Cupom}: em aberto ({estado}), {Reais(venda.Centavos)}")
            ' Uma venda aprovada que estivesse gravada no PDV também seria confirmada.
            Dim confirmar = venda.Estado = EstadoVenda.Confirmar
            caixora.ConcluirVenda(
                venda.Cupom, If(confirmar, Desfecho.Confirmar, Desfecho.Desfazer))
            Saida.WriteLine($"Cupom {venda.Cupom}: {If(confirmar, "confirmada", "desfeita")}")
        Next
    End Sub

    Private Function Reais(centavos As Long?) As String
        Return $"R$ {centavos \ 100},{centavos Mod 100:00}"
    End Function

    <DllImport("kernel32.dll", ExactSpelling:=True)>
    Private Function TerminateProcess(processo As IntPtr, codigo As UInteger) As Boolean
    End Function
End Module
