/// Faz o que manda cada linha de comandos.txt e anota como terminou junto das chamadas.
program provas;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}
{$APPTYPE CONSOLE}

uses
  {$IFDEF FPC}SysUtils, Windows{$ELSE}System.SysUtils, Winapi.Windows{$ENDIF},
  Caixora in '..\..\bindings\pascal\Caixora.pas',
  CaixoraPdv in '..\..\bindings\pascal\CaixoraPdv.pas';

type
  ErroDoPdv = class(Exception);

  TProvas = class
  private
    FCaixa: TCaixora;
    FPasso: UnicodeString;
    procedure AoAprovar(const Resultado: TResultado);
    function Responder(const Pergunta: UnicodeString; var Resposta: UnicodeString): Boolean;
    function Vender(Cupom: Integer): UnicodeString;
    function Link(const Descricao, Campo011: UnicodeString): UnicodeString;
    function Conversar(Funcao: Cardinal; const Campo4: UnicodeString): UnicodeString;
    function Juntas: UnicodeString;
    function Fazer(const Acao, A, B: UnicodeString): UnicodeString;
    procedure Provar(const Linha: UnicodeString);
  public
    procedure Rodar;
  end;

procedure Anotar(const Linha: UnicodeString);
var
  Arquivo: THandle;
  Bytes: RawByteString;
begin
  Bytes := UTF8Encode(Linha + #10);
  if FileExists('chamadas.txt') then
    Arquivo := FileOpen('chamadas.txt', fmOpenWrite)
  else
    Arquivo := FileCreate('chamadas.txt');
  FileSeek(Arquivo, 0, 2);
  FileWrite(Arquivo, PAnsiChar(Bytes)^, Length(Bytes));
  FileClose(Arquivo);
end;

function Numero(Valor: Int64): UnicodeString;
begin
  Result := UnicodeString(IntToStr(Valor));
end;

function Resumo(const Resultado: TResultado): UnicodeString;
begin
  Result := Numero(Resultado.Codigo) + ' ' + Resultado.Mensagem;
end;

// 'u+81' é um caractere.
function Caractere(const Texto: UnicodeString): UnicodeString;
var
  Ponto: Integer;
begin
  Result := Texto;
  if Copy(Texto, 1, 2) <> 'u+' then
    Exit;
  Ponto := StrToInt('$' + string(Copy(Texto, 3, 6)));
  if Ponto < $10000 then
    Result := WideChar(Ponto)
  else
    Result := UnicodeString(WideChar($D7C0 + Ponto shr 10)) + WideChar($DC00 or Ponto and $3FF);
end;

function NovaCaixa: TCaixora;
begin
  Result := TCaixora.Create('11', '22');
  Result.Diario := 'diario.txt';
  Result.Tentativas := 3;
  Result.PausaMs := 1;
end;

function OutraAtv(Parametro: Pointer): {$IFDEF FPC}PtrInt{$ELSE}Integer{$ENDIF};
begin
  NovaCaixa.Atv(25);
  Result := 0;
end;

procedure TProvas.AoAprovar(const Resultado: TResultado);
begin
  Anotar('aprovada, ' + Resultado.Comprovante[High(Resultado.Comprovante)]);
  if FPasso = 'falha' then
    raise ErroDoPdv.Create('');
  if FPasso = 'esquecer' then
    FCaixa.EsquecerPendencia;
  if FPasso = 'teste' then
    FCaixa.Teste;
  if FPasso = 'trancar' then
    CreateDir('diario.txt.tmp');
end;

function TProvas.Vender(Cupom: Integer): UnicodeString;
const
  NOMES: array[TSituacao] of UnicodeString = ('confirmada ', 'recusada ', 'desfeita ');
var
  Fim: TVendaConcluida;
begin
  Fim := FCaixa.VenderEConfirmar(TVenda.VendeCreditoVista(Centavos(1250), Cupom), AoAprovar);
  Result := NOMES[Fim.Situacao] + Fim.Motivo;
end;

function TProvas.Link(const Descricao, Campo011: UnicodeString): UnicodeString;
begin
  Result := Resumo(FCaixa.LinkPagamento(2, Reais(10.10), 30,
    [ItemLink('7', Descricao, 1, Centavos(1), Centavos(0), Reais(10.50))], Campo011, ''));
end;

function TProvas.Responder(const Pergunta: UnicodeString; var Resposta: UnicodeString): Boolean;
begin
  if FPasso = 'falha' then
    raise ErroDoPdv.Create('');
  Resposta := FPasso;
  Result := FPasso <> 'nada';
end;

function TProvas.Conversar(Funcao: Cardinal; const Campo4: UnicodeString): UnicodeString;
var
  Inicio: TInicioFluxo;
  Fim: TFluxo;
begin
  Inicio := TInicioFluxo.Novo(Funcao, Reais(12.05), 99);
  Inicio.Campo3 := 3;
  Inicio.Campo4 := Campo4;
  Inicio.Campo6 := '6';
  Inicio.Campo7 := '7';
  Inicio.Campo8 := '8';
  Inicio.Campo9 := '9';
  Inicio.Campo10 := 10;
  Fim := FCaixa.Fluxo(Inicio, Responder);
  Result := 'concluído ' + Numero(Fim.Codigo) + ' ' + Fim.Campo('MENSAGEM');
  if not Fim.Concluido then
    Result := 'não ' + Result;
end;

function TProvas.Juntas: UnicodeString;
var
  Outra: THandle;
  Id: TThreadID;
begin
  Outra := BeginThread(nil, 0, OutraAtv, nil, 0, Id);
  Result := Resumo(FCaixa.Atv(25));
  WaitForSingleObject(Outra, INFINITE);
end;

function TProvas.Fazer(const Acao, A, B: UnicodeString): UnicodeString;
var
  N: Int64;
begin
  N := StrToInt64Def(string(A), 0);
  FPasso := B;
  Result := 'feito';
  if Acao = 'aguardar' then FCaixa.AguardarGp(N)
  else if Acao = 'vender' then Result := Vender(N)
  else if Acao = 'confirmar' then FCaixa.ConcluirVenda(N, dsConfirmar)
  else if Acao = 'desfazer' then FCaixa.ConcluirVenda(N, dsDesfazer)
  else if Acao = 'esquecer' then FCaixa.EsquecerPendencia
  else if Acao = 'atv' then Result := Resumo(FCaixa.Atv(N))
  else if Acao = 'confirmacao' then Result := Resumo(FCaixa.Confirmar(N))
  else if Acao = 'desfazimento' then Result := Resumo(FCaixa.Desfazimento(N))
  else if Acao = 'parcelas' then
    Result := Resumo(FCaixa.VendeCreditoParcLoja(N, Reais(10.10), 30))
  else if Acao = 'centavos' then Result := Resumo(FCaixa.VendeCredito(Centavos(N), 30))
  else if Acao = 'reais' then
    Result := Resumo(FCaixa.VendeCredito(Reais(StrToCurr(string(A))), 30))
  else if Acao = 'campo011' then Result := Link('ação', Caractere(A))
  else if Acao = 'itens' then Result := Link(Caractere(A), '')
  else if Acao = 'campo4' then Result := Conversar(20, A)
  else if Acao = 'fluxo' then Result := Conversar(N, '')
  else Result := Juntas;
end;

function Parte(var Resto: UnicodeString): UnicodeString;
begin
  Result := Copy(Resto, 1, Pos(' ', Resto) - 1);
  Delete(Resto, 1, Length(Result) + 1);
end;

procedure TProvas.Provar(const Linha: UnicodeString);
var
  Resto, Acao, A: UnicodeString;
begin
  Anotar('> ' + Linha);
  Resto := Linha + '   ';
  Acao := Parte(Resto);
  A := Parte(Resto);
  try
    Anotar('= ' + Fazer(Acao, A, Parte(Resto)));
  except
    on E: ECaixora do
      Anotar('! ' + UnicodeString(E.ClassName) + ': ' + E.Mensagem);
    on E: Exception do
      Anotar('! ' + UnicodeString(E.ClassName) + ': ' + UnicodeString(E.Message));
  end;
end;

procedure TProvas.Rodar;
var
  Comandos: TextFile;
  Linha: RawByteString;
begin
  FCaixa := NovaCaixa;
  AssignFile(Comandos, 'comandos.txt');
  Reset(Comandos);
  while not Eof(Comandos) do
  begin
    ReadLn(Comandos, Linha);
    Provar(UTF8ToString(Linha));
  end;
end;

begin
  DefaultFormatSettings.DecimalSeparator := ',';
  TProvas.Create.Rodar;
end.
