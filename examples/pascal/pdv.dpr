/// Um PDV inteiro em miniatura: venda confirmada, recusa, link, venda desfeita e fluxo interativo.
/// --cair vende e morre antes de confirmar; --retomar desfaz o que a queda deixou em aberto.
program pdv;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}
{$APPTYPE CONSOLE}

uses
  {$IFDEF FPC}SysUtils, Windows{$ELSE}System.SysUtils, Winapi.Windows{$ENDIF},
  Caixora in '..\..\bindings\pascal\Caixora.pas',
  CaixoraPdv in '..\..\bindings\pascal\CaixoraPdv.pas';

type
  TPdv = class
  private
    FCaixa: TCaixora;
    procedure MostrarAprovada(const Resultado: TResultado);
    procedure FicarSemPapel(const Resultado: TResultado);
    procedure Cair(const Resultado: TResultado);
    procedure Vender(const Venda: TVenda; AoAprovar: TAoAprovar);
    function Responder(const Pergunta: UnicodeString; var Resposta: UnicodeString): Boolean;
    procedure FluxoInterativo;
  public
    constructor Create;
    destructor Destroy; override;
    procedure Demonstrar;
    procedure Queda;
    procedure Retomada;
  end;

// O Output de cada compilador tem sua própria ideia de página de códigos e de fim de linha.
procedure Escrever(const Linha: UnicodeString);
var
  Bytes: RawByteString;
  Escritos: Cardinal;
begin
  Bytes := UTF8Encode(Linha + #10);
  WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), PAnsiChar(Bytes)^, Length(Bytes), Escritos, nil);
end;

function Numero(Valor: Int64): UnicodeString;
begin
  Result := UnicodeString(IntToStr(Valor));
end;

constructor TPdv.Create;
begin
  // trecho: abrir
  FCaixa := TCaixora.Create('12.345.678/0001-95', '11.222.333/0001-81');
  FCaixa.Diario := 'diario.txt';
  // fim do trecho
end;

destructor TPdv.Destroy;
begin
  FCaixa.Free;
  inherited;
end;

procedure TPdv.MostrarAprovada(const Resultado: TResultado);
var
  Valor: Int64;
begin
  Resultado.ValorCentavos(Valor);
  Escrever('Cupom ' + Resultado.Campos.Cupom + ': aprovada, R$ ' + Centavos(Valor).Texto + ', ' +
    Resultado.Mensagem + ', ' + Numero(Length(Resultado.Comprovante)) + ' linhas de comprovante');
end;

procedure TPdv.FicarSemPapel(const Resultado: TResultado);
begin
  MostrarAprovada(Resultado);
  raise Exception.Create('Impressora sem papel');
end;

procedure TPdv.Cair(const Resultado: TResultado);
begin
  MostrarAprovada(Resultado);
  TerminateProcess(GetCurrentProcess, 9);
end;

// trecho: venda
procedure TPdv.Vender(const Venda: TVenda; AoAprovar: TAoAprovar);
var
  Concluida: TVendaConcluida;
  Cupom: UnicodeString;
begin
  Concluida := FCaixa.VenderEConfirmar(Venda, AoAprovar);
  Cupom := 'Cupom ' + Numero(Venda.Cupom) + ': ';
  case Concluida.Situacao of
    svConfirmada: Escrever(Cupom + 'confirmada');
    svRecusada: Escrever(Cupom + 'recusada, ' + Concluida.Motivo);
    svDesfeita: Escrever(Cupom + 'desfeita, ' + Concluida.Motivo);
  end;
end;
// fim do trecho

function TPdv.Responder(const Pergunta: UnicodeString; var Resposta: UnicodeString): Boolean;
begin
  Resposta := '1';
  if Pos('parcelas', Pergunta) > 0 then
    Resposta := '3';
  Escrever('Pergunta: ' + Pergunta);
  Escrever('Resposta: ' + Resposta);
  Result := True;
end;

procedure TPdv.FluxoInterativo;
var
  Inicio: TInicioFluxo;
  Fluxo: TFluxo;
begin
  Inicio := TInicioFluxo.Novo(20, Centavos(1250), 99);
  Inicio.Campo3 := 1;
  Inicio.Campo6 := '000545';
  Inicio.Campo7 := '20210325';
  Inicio.Campo8 := '009';
  Inicio.Campo9 := '652';
  Inicio.Campo10 := 7;
  Fluxo := FCaixa.Fluxo(Inicio, Responder);
  if not Fluxo.Concluido then
    raise ECaixora.Create('fluxo interativo: ' + Fluxo.Motivo);
  Escrever('Retorno: STATUS ' + Fluxo.Campo('STATUS') + ', VALOR ' + Fluxo.Campo('VALOR') + ', ' +
    Fluxo.Campo('MENSAGEM'));
end;

procedure TPdv.Demonstrar;
begin
  FCaixa.AguardarGp(10);
  Escrever('GP ativo');
  Escrever('== 1. Venda confirmada');
  // trecho: chamada
  Vender(TVenda.VendeCreditoVista(Reais(12.50), 101), MostrarAprovada);
  // fim do trecho
  Escrever('== 2. Recusa');
  Vender(TVenda.VendeDebito(Centavos(1002), 102), MostrarAprovada);
  Escrever('== 3. Link de pagamento com acentos');
  Vender(TVenda.LinkPagamento(1, Centavos(3150), 103,
    [ItemLink('7891', 'CAFÉ TORRADO', 2, Reais(10.50), Reais(0), Reais(21)),
     ItemLink('7892', 'AÇÚCAR', 1, Reais(10.50), Reais(0), Reais(10.50))],
    'Pão & Cia', ''), MostrarAprovada);
  Escrever('== 4. Venda desfeita');
  try
    Vender(TVenda.VendeCreditoVista(Centavos(4000), 104), FicarSemPapel);
  except
    on E: ECaixora do
      raise;
    on E: Exception do // o erro do próprio PDV volta depois de a venda ser desfeita
    begin
      Escrever(UnicodeString(E.Message));
      Escrever('Cupom 104: desfeita');
    end;
  end;
  Escrever('== 5. Fluxo interativo');
  FluxoInterativo;
end;

procedure TPdv.Queda;
begin
  Escrever('== Queda');
  Vender(TVenda.VendeCreditoVista(Centavos(2000), 105), Cair);
end;

procedure TPdv.Retomada;
var
  Abertas: TVendasAbertas;
  Cupom: UnicodeString;
  I: Integer;
begin
  Escrever('== Retomada');
  Abertas := FCaixa.VendasEmAberto;
  if Length(Abertas) = 0 then
    Escrever('Nada em aberto');
  for I := 0 to High(Abertas) do
  begin
    Cupom := 'Cupom ' + Numero(Abertas[I].Cupom) + ': ';
    Escrever(Cupom + 'em aberto (' + NomeDoEstado(Abertas[I].Estado) + '), R$ ' +
      Centavos(Abertas[I].Centavos).Texto);
    // Este PDV não registra vendas: só confirma a que já ia ser confirmada.
    if Abertas[I].Estado = evConfirmar then
    begin
      FCaixa.ConcluirVenda(Abertas[I].Cupom, dsConfirmar);
      Escrever(Cupom + 'confirmada');
    end
    else
    begin
      FCaixa.ConcluirVenda(Abertas[I].Cupom, dsDesfazer);
      Escrever(Cupom + 'desfeita');
    end;
  end;
end;

var
  Programa: TPdv;
begin
  SetConsoleOutputCP(CP_UTF8);
  try
    Programa := TPdv.Create;
    try
      if ParamStr(1) = '--cair' then
        Programa.Queda
      else if ParamStr(1) = '--retomar' then
        Programa.Retomada
      else
        Programa.Demonstrar;
    finally
      Programa.Free;
    end;
  except
    on E: ECaixora do
    begin
      Escrever(UnicodeString(E.ClassName) + ': ' + E.Mensagem);
      Halt(1);
    end;
    on E: Exception do
    begin
      Escrever(UnicodeString(E.ClassName) + ': ' + UnicodeString(E.Message));
      Halt(1);
    end;
  end;
end.
