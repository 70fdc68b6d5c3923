' Os comandos de provas.cs, com a venda, o valor e o fluxo feitos daqui, em outra thread.
Option Explicit On
Option Strict On

Imports System
Imports System.Threading.Tasks
Imports CaixoraTef

Friend NotInheritable Class ProvasVb
    Inherits Provas

    Public Shared Sub Main()
        Call New ProvasVb().Rodar()
    End Sub

    Protected Overrides Function Vender(cupom As Integer, aoAprovar As Action(Of Resultado)) _
        As ResultadoVenda
        Return Caixora.VenderEConfirmarAsync(Venda.CreditoVista(12.5D, cupom),
            Function(resultado)
                aoAprovar(resultado)
                Return Task.FromResult(True)
            End Function).GetAwaiter().GetResult()
    End Function

    Protected Overrides Function VendeCredito(valor As Decimal) As Resultado
        Return Caixora.VendeCreditoAsync(valor, 30).GetAwaiter().GetResult()
    End Function

    Protected Overrides Function Conversar(inicio As InicioFluxo, responder As Func(Of String)) _
        As ResultadoFluxo
        Return Caixora.FluxoAsync(inicio,
            Function(pergunta) Task.FromResult(responder())).GetAwaiter().GetResult()
    End Function
End Class
