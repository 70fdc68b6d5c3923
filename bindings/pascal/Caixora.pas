/// Caixora.dll para Delphi (XE2 ou mais novo, alvo Windows 64-bit) e Free Pascal (win64).
///
/// Estão aqui as 32 funções da DLL, com os nomes e a ordem de argumentos dela, e o que falta para
/// usá-las com segurança: LerResultado e LerTextoCaixora, que liberam o que a DLL aloca.
///
///   R := LerResultado(VendeCredito(CNPJ, CNPJParceiro, EmCentavos(49.90), Cupom, Leitor));
///   if R.Aprovada then
///   begin
///     // grave a venda e imprima R.Comprovante; depois confirme (ou desfaça)
///     R := LerResultado(Confirmar(CNPJ, CNPJParceiro, Cupom));
///     // se R.RespostaLocal for False, a confirmação não saiu: repita-a antes de qualquer outra
///     // operação (para desistir dela, chame Teste)
///   end;
///
/// Toda chamada bloqueia a thread até terminar. Use uma thread de trabalho, uma chamada por vez.
///
/// Um PDV fica melhor com CaixoraPdv.pas, que cuida de tudo isso e das quedas entre a venda e a
/// confirmação.
unit Caixora;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}
{$IF defined(MSWINDOWS) and not defined(WIN64)}
  {$MESSAGE FATAL 'Caixora.dll existe apenas em 64 bits: compile para Windows 64-bit.'}
{$IFEND}

interface

const
  CaixoraDll = 'Caixora.dll';

  // Códigos das funções interativas.
  QJ_SUCESSO            = 0;
  QJ_SEM_CAMINHO        = 30; // ConfigQJ.ini sem CAMINHO=<pasta>
  QJ_CAMINHO_VAZIO      = 31; // CAMINHO com valor vazio
  QJ_TREVIX_AUSENTE     = 32; // não há Trevix.exe legível na pasta
  QJ_TREVIX_NAO_EXECUTA = 33; // foi iniciado, mas não está em execução
  QJ_ERRO_AO_INICIAR    = 34; // falha ao iniciar
  QJ_SEM_ARQUIVO_RESP   = 35; // não foi possível criar o arquivo de resposta
  QJ_ERRO_RESP          = 36; // falha ao gravar ou trocar o arquivo de resposta
  QJ_SEM_CONFIG         = 37; // ConfigQJ.ini não pôde ser lido
  QJ_VALOR_INVALIDO     = 38; // valor fora da forma 0,00
  QJ_EMAIL_AUSENTE      = 39; // não há Email.exe na pasta do Trevix
  QJ_CNPJ_INVALIDO      = 40;
  QJ_EM_ATUALIZACAO     = 41; // o Trevix está sendo atualizado
  QJ_SEM_ADMINISTRADOR  = 42; // o programa não está elevado
  QJ_OUTRA_TRANSACAO    = 43; // um Trevix em execução não pôde ser encerrado

  // Posições de TResultadoTef.Campos.
  CAMPO_CUPOM       = 1;
  CAMPO_CENTAVOS    = 2;
  CAMPO_INSTITUICAO = 3;
  CAMPO_REDE        = 4;
  CAMPO_AUTORIZACAO = 5;
  CAMPO_NSU         = 6;
  CAMPO_TIPO        = 7;
  CAMPO_PARCELAS    = 8;
  CAMPO_CONTROLE    = 9;  // campo 800-007
  CAMPO_170_000     = 10;
  CAMPO_CODIGO_REDE = 11;
  CAMPO_740_000     = 12;
  CAMPO_741_000     = 13;
  CAMPO_742_000     = 14;
  CAMPO_031_000     = 15;

type
  /// Texto em Windows-1252. Um string é convertido ao ser passado; a conversão explícita
  /// TTexto1252(S) apenas cala o aviso do compilador. O que Windows-1252 não tem vira "?" sem erro.
  TTexto1252 = type AnsiString(1252);

  TResultadoTef = record
    Codigo: Integer;                        // 0 recusa, falha ou incerto, 1 com comprovante, 2 sem
    Mensagem: UnicodeString;
    Campos: array[1..15] of UnicodeString;  // vazios quando Codigo = 0
    Comprovante: array of UnicodeString;    // uma linha por elemento
    /// A resposta é da própria DLL: é o sucesso de Confirmar e de Desfazimento. Vinda de outra
    /// operação, NÃO é aprovação: havia uma confirmação pendente (veja docs/guia.md).
    function RespostaLocal: Boolean;
    /// Codigo 1 ou 2, e dado pelo GP.
    function Aprovada: Boolean;
  end;

/// Copia os bytes do BSTR, libera-o e devolve o texto marcado com a página 1252. Depois disto o
/// ponteiro não vale mais. Para ter um string: UnicodeString(LerTextoCaixora(P)).
function LerTextoCaixora(Texto: Pointer): RawByteString;

/// Separa o texto "S;...". Um texto de outra forma dá Codigo 0 e vai inteiro para Mensagem.
function InterpretarResultado(const S: RawByteString): TResultadoTef;

/// As duas coisas: lê, libera e separa o que uma função de pagamento devolveu.
function LerResultado(Texto: Pointer): TResultadoTef;

/// Uma consulta ao fluxo interativo: AguardaFuncaoQJInterativo, já lida e liberada. Faça uma pausa
/// entre as consultas: cada uma escreve no log.
function AguardaTextoQJ: UnicodeString;

/// Arredonda para centavos, meio centavo para cima. A DLL sozinha corta o que sobra, e mandaria uma
/// soma como 9.999999999999998 por R$ 1,00. Um valor negativo segue como está, e a DLL o recusa.
function EmCentavos(Valor: Currency): Double;

// As funções da DLL, importadas pelo nome.
//
// Texto que entra: um TTexto1252 chega à DLL como o ponteiro para os seus bytes terminados em
// zero; vazio, chega como nil, que a DLL trata como texto vazio.
//
// Texto que sai: um BSTR com BYTES Windows-1252, e não UTF-16. Por isso é Pointer: declarado como
// WideString, o Delphi leria dois bytes por letra. Entregue-o a LerResultado ou LerTextoCaixora.
// O PAnsiChar de Teste é constante e não se libera.
//
// Convenção de chamada: em Windows 64-bit há uma só, e cdecl e stdcall geram o mesmo código. Fica
// cdecl, a do cabeçalho C.

// Vendas
function VendeCredito(const sCNPJCliente, sCNPJParceiro: TTexto1252; dValor: Double;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'VendeCredito';
function VendeCreditoVista(const sCNPJCliente, sCNPJParceiro: TTexto1252; dValor: Double;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'VendeCreditoVista';
function VendeCreditoParcLoja(const sCNPJCliente, sCNPJParceiro: TTexto1252; iParcelas: Integer;
  dValor: Double; iCupom, iLeitor: Integer): Pointer; cdecl;
  external CaixoraDll name 'VendeCreditoParcLoja';
function VendeCreditoParcAdm(const sCNPJCliente, sCNPJParceiro: TTexto1252; iParcelas: Integer;
  dValor: Double; iCupom, iLeitor: Integer): Pointer; cdecl;
  external CaixoraDll name 'VendeCreditoParcAdm';
function VendeDebito(const sCNPJCliente, sCNPJParceiro: TTexto1252; dValor: Double;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'VendeDebito';
function VendeDebitoAVista(const sCNPJCliente, sCNPJParceiro: TTexto1252; dValor: Double;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'VendeDebitoAVista';
function MenuPrivate(const sCNPJCliente, sCNPJParceiro: TTexto1252; dValor: Double;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'MenuPrivate';
function VendeCarteiraDigitalPix(const sCNPJCliente, sCNPJParceiro: TTexto1252; dValor: Double;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'VendeCarteiraDigitalPix';
function ParceleMais(const sCNPJCliente, sCNPJParceiro: TTexto1252; dValor: Double;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'ParceleMais';
function VendeFrotaCompleto(const sCNPJCliente, sCNPJParceiro: TTexto1252; dValor: Double;
  const sKM, sPlaca, sMatricula: TTexto1252; iQtdeItens: Integer; const sItens: TTexto1252;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'VendeFrotaCompleto';

// Links de pagamento
function LinkPagamento(const sCNPJCliente, sCNPJParceiro: TTexto1252; iParcelas: Integer;
  dValor: Double; iCupom, iQtdeItens: Integer; const sItens, sCampo011, sCampo012: TTexto1252;
  iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'LinkPagamento';
function ListarLinkPagamentoPago(const sCNPJCliente, sCNPJParceiro: TTexto1252; dValor: Double;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'ListarLinkPagamentoPago';
function ManutencaoLinkPagamento(const sCNPJCliente, sCNPJParceiro: TTexto1252;
  iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'ManutencaoLinkPagamento';

// Depois da venda
function Confirmar(const sCNPJCliente, sCNPJParceiro: TTexto1252; iCupom: Integer): Pointer; cdecl;
  external CaixoraDll name 'Confirmar';
function Desfazimento(const sCNPJCliente, sCNPJParceiro: TTexto1252; iCupom: Integer): Pointer;
  cdecl; external CaixoraDll name 'Desfazimento';
function Cancelar(const sCNPJCliente, sCNPJParceiro: TTexto1252; dValor: Double; iCupom: Integer;
  const sControle: TTexto1252; iLeitor: Integer): Pointer; cdecl;
  external CaixoraDll name 'Cancelar';
function Reimpressao(const sCNPJCliente, sCNPJParceiro: TTexto1252; iLeitor: Integer): Pointer;
  cdecl; external CaixoraDll name 'Reimpressao';
function ReimpressaoDireto(const sCNPJCliente, sCNPJParceiro, sNSU, data: TTexto1252;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'ReimpressaoDireto';

// Administração
function Adm(const sCNPJCliente, sCNPJParceiro: TTexto1252; dValor: Double;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'Adm';
function Relatorio(const sCNPJCliente, sCNPJParceiro: TTexto1252;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'Relatorio';
function RecargaCelular(const sCNPJCliente, sCNPJParceiro: TTexto1252;
  iCupom, iLeitor: Integer): Pointer; cdecl; external CaixoraDll name 'RecargaCelular';
// Um GP que roda e não responde é esperado sem limite de tempo.
function Atv(const sCNPJCliente, sCNPJParceiro: TTexto1252; iCupom, iLeitor: Integer): Pointer;
  cdecl; external CaixoraDll name 'Atv';
function SolicitarCPF(const sCNPJCliente, sCNPJParceiro: TTexto1252; iCupom: Integer): Pointer;
  cdecl; external CaixoraDll name 'SolicitarCPF';
function SolicitarCNPJ(const sCNPJCliente, sCNPJParceiro: TTexto1252; iCupom: Integer): Pointer;
  cdecl; external CaixoraDll name 'SolicitarCNPJ';
function SolicitarDocumento(const sCNPJCliente, sCNPJParceiro: TTexto1252;
  iCupom: Integer): Pointer; cdecl; external CaixoraDll name 'SolicitarDocumento';
// Também apaga uma confirmação pendente.
function Teste: PAnsiChar; cdecl; external CaixoraDll name 'Teste';

// Fluxo interativo
function IniciaFuncaoQJInterativo(uFuncao: Cardinal; const sCNPJ: TTexto1252; uCampo3: Cardinal;
  const sCampo4, sValor, sCampo6, sCampo7, sCampo8, sCampo9: TTexto1252; uCampo10: Cardinal;
  const sCampo11: TTexto1252): Integer; cdecl; external CaixoraDll name 'IniciaFuncaoQJInterativo';
function AguardaFuncaoQJInterativo: Pointer; cdecl;
  external CaixoraDll name 'AguardaFuncaoQJInterativo';
function ContinuaFuncaoQJInterativo(const sInformacao: TTexto1252): Integer; cdecl;
  external CaixoraDll name 'ContinuaFuncaoQJInterativo';
function FinalizaFuncaoQJInterativo(uFuncao: Cardinal; const sCNPJ: TTexto1252; uCampo3: Cardinal;
  const sCampo4, sValor, sCampo6, sCampo7, sCampo8, sCampo9: TTexto1252; uCampo10: Cardinal;
  const sCampo11: TTexto1252): Integer; cdecl;
  external CaixoraDll name 'FinalizaFuncaoQJInterativo';
function CancelarFluxoQJInterativo: Integer; cdecl;
  external CaixoraDll name 'CancelarFluxoQJInterativo';
function ConfiguraIntTefInterativo: Integer; cdecl;
  external CaixoraDll name 'ConfiguraIntTefInterativo';

implementation

function SysStringByteLen(Texto: Pointer): Cardinal; stdcall;
  external 'oleaut32.dll' name 'SysStringByteLen';
procedure SysFreeString(Texto: Pointer); stdcall; external 'oleaut32.dll' name 'SysFreeString';

function LerTextoCaixora(Texto: Pointer): RawByteString;
var
  Tamanho: Integer;
begin
  Result := '';
  try
    Tamanho := Integer(SysStringByteLen(Texto)); // 0 para nil
    SetLength(Result, Tamanho);
    if Tamanho > 0 then
      Move(Texto^, Result[1], Tamanho);
  finally
    SysFreeString(Texto);
  end;
  SetCodePage(Result, 1252, False); // apenas marca a página: os bytes já são 1252
end;

// Tira de Resto, e devolve, o que vem antes de Separador (tudo, se ele não aparece).
function Proximo(var Resto: UnicodeString; const Separador: UnicodeString): UnicodeString;
var
  Tamanho: Integer;
begin
  Tamanho := Pos(Separador, Resto) - 1;
  if Tamanho < 0 then
    Tamanho := Length(Resto);
  Result := Copy(Resto, 1, Tamanho);
  Delete(Resto, 1, Tamanho + Length(Separador));
end;

function InterpretarResultado(const S: RawByteString): TResultadoTef;
var
  Resto, Inicio, Linha: UnicodeString;
  I: Integer;
begin
  Resto := UnicodeString(S);
  Result.Codigo := 0;
  Result.Mensagem := Resto;
  for I := Low(Result.Campos) to High(Result.Campos) do
    Result.Campos[I] := '';
  Result.Comprovante := nil;
  Inicio := Copy(Resto, 1, 4);
  if (Inicio <> 'S;0;') and (Inicio <> 'S;1;') and (Inicio <> 'S;2;') then
    Exit;
  Result.Codigo := Ord(Inicio[3]) - Ord('0');
  Delete(Resto, 1, 4);
  Result.Mensagem := Resto; // a mensagem de uma recusa é todo o resto
  if Result.Codigo = 0 then
    Exit;
  Result.Mensagem := Proximo(Resto, #13#10);
  while Resto <> '' do
  begin
    Linha := Proximo(Resto, #13#10);
    if Copy(Linha, 1, 2) = 'C;' then
    begin
      Delete(Linha, 1, 2);
      for I := Low(Result.Campos) to High(Result.Campos) do
        Result.Campos[I] := Proximo(Linha, ';');
    end
    else if Copy(Linha, 1, 2) = 'I;' then
    begin
      SetLength(Result.Comprovante, Length(Result.Comprovante) + 1);
      Result.Comprovante[High(Result.Comprovante)] := Copy(Linha, 3, Length(Linha));
    end;
  end;
end;

function LerResultado(Texto: Pointer): TResultadoTef;
begin
  Result := InterpretarResultado(LerTextoCaixora(Texto));
end;

function AguardaTextoQJ: UnicodeString;
begin
  Result := UnicodeString(LerTextoCaixora(AguardaFuncaoQJInterativo()));
end;

function EmCentavos(Valor: Currency): Double;
begin
  Result := Valor;
  // Um Currency é um Int64 em décimos de milésimo: assim a conta é exata em todo compilador.
  if Valor > 0 then
    Result := ((PInt64(@Valor)^ + 50) div 100) / 100;
end;

function TResultadoTef.RespostaLocal: Boolean;
begin
  Result := (Codigo = 2) and (Mensagem = 'COMANDO COM SUCESSO') and (Campos[CAMPO_NSU] = '');
end;

function TResultadoTef.Aprovada: Boolean;
begin
  Result := (Codigo > 0) and not RespostaLocal;
end;

end.
