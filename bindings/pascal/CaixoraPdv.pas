/// Caixora.dll para o PDV: venda, registro e confirmação com os cuidados que o dinheiro pede. Para
/// Delphi (XE2 ou mais novo, Windows 64-bit) e Free Pascal 3.2 (win64). Leve também Caixora.pas.
///
///   Caixa := TCaixora.Create('12.345.678/0001-95', '11.222.333/0001-81');
///   Caixa.Diario := 'C:\PDV\diario.txt';
///   Caixa.AguardarGp(30);
///   Venda := Caixa.VenderEConfirmar(TVenda.VendeCredito(Reais(49.90), 17), Pdv.AoAprovar);
///   if Venda.Situacao = svConfirmada then ...
///
/// Ao abrir o PDV, percorra VendasEmAberto e encerre cada venda com ConcluirVenda: iniciada e
/// desfazer se desfazem, confirmar se confirma, aprovada se confirma apenas se o PDV a registrou.
/// Enquanto uma está em aberto, VenderEConfirmar não vende.
///
/// Toda chamada bloqueia a thread até terminar: use uma thread de trabalho. Os retornos de chamada
/// (AoAprovar, Perguntar) correm nessa mesma thread. Salve em UTF-8 com BOM os fontes com acentos.
unit CaixoraPdv;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}
{$IFNDEF WIN64}
  {$MESSAGE FATAL 'Caixora.dll existe apenas em 64 bits: compile para Windows 64-bit.'}
{$ENDIF}

interface

uses
  {$IFDEF FPC}SysUtils{$ELSE}System.SysUtils{$ENDIF}, Caixora;

const
  CENTAVOS_MAXIMO = 214748364799;

type
  TTextos = array of UnicodeString;

  /// Um valor em dinheiro, de 0 a CENTAVOS_MAXIMO, feito por Reais ou por Centavos.
  TValor = record
  private
    FCentavos: Int64;
  public
    /// '12,50', sem separador de milhar.
    function Texto: UnicodeString;
    property Centavos: Int64 read FCentavos;
  end;

  /// Os quinze campos da resposta, como o GP os escreveu.
  TCampos = record
    Cupom, ValorCentavos, Bandeira, Rede, Autorizacao, Nsu, Tipo, Parcelas, Controle, Campo170_000,
      CodigoRede, Campo740_000, Campo741_000, Campo742_000, Campo031_000: UnicodeString;
  end;

  TResultado = record
    Codigo: Integer; // 0 recusa, falha ou incerto, 1 com comprovante, 2 sem
    Mensagem: UnicodeString;
    Campos: TCampos;
    Comprovante: TTextos;
    Bruto: UnicodeString;
    /// A resposta é da própria DLL ("o pedido foi gravado"): é o sucesso de Confirmar e de
    /// Desfazimento. Vinda de outra operação, NÃO é aprovação.
    function RespostaLocal: Boolean;
    function Aprovada: Boolean;
    /// False se o campo não é um número inteiro.
    function ValorCentavos(out Centavos: Int64): Boolean;
  end;

  TEstadoVenda = (evIniciada, evAprovada, evConfirmar, evDesfazer);
  TDesfecho = (dsConfirmar, dsDesfazer);

  /// Uma linha do diário.
  TVendaAberta = record
    Cupom: Integer;
    Centavos: Int64;
    Estado: TEstadoVenda;
  end;
  TVendasAbertas = array of TVendaAberta;

  TSituacao = (svConfirmada, svRecusada, svDesfeita);

  TVendaConcluida = record
    Situacao: TSituacao;
    Resultado: TResultado;
    Motivo: UnicodeString;
  end;

  ECaixora = class(Exception)
  private
    FMensagem: UnicodeString;
  public
    constructor Create(const AMensagem: UnicodeString);
    /// O texto inteiro. Message, no Free Pascal, só guarda o que cabe na página do sistema.
    property Mensagem: UnicodeString read FMensagem;
  end;

  /// Uma chamada que não cabe agora, como outra operação durante VenderEConfirmar. Nada foi feito.
  EUsoErrado = class(ECaixora);

  /// Texto, valor, cupom ou outro argumento que não pode ser enviado. Nada foi feito.
  EArgumentoInvalido = class(EUsoErrado);

  /// A DLL não pôde ser carregada.
  ECaixoraDll = class(ECaixora);

  /// O diário não pôde ser lido ou gravado.
  EDiario = class(ECaixora);

  /// AguardarGp esgotou as tentativas.
  EGpInativo = class(ECaixora);

  ECaixoraCupom = class(ECaixora)
  private
    FCupom: Integer;
  public
    constructor Create(ACupom: Integer; const AMensagem: UnicodeString);
    property Cupom: Integer read FCupom;
  end;

  /// Um Confirmar ou Desfazimento foi recusado, e a DLL responderia à próxima operação como se
  /// fosse ele. Repita o mesmo desfecho (por ConcluirVenda, se o cupom está no diário) ou desista
  /// dele: EsquecerPendencia.
  EPendenciaAberta = class(ECaixoraCupom)
  private
    FDesfecho: TDesfecho;
  public
    property Desfecho: TDesfecho read FDesfecho;
  end;

  /// O cupom está no diário sem desfecho: Estado diz até onde foi, ou que desfecho falta.
  EVendaEmAberto = class(ECaixoraCupom)
  private
    FEstado: TEstadoVenda;
    FUltimaMensagem: UnicodeString;
  public
    property Estado: TEstadoVenda read FEstado;
    property UltimaMensagem: UnicodeString read FUltimaMensagem;
  end;

  /// O GP aprovou outro valor ou outro cupom. O cupom pedido foi desfeito; se a resposta é de
  /// outro, verifique-o no GP.
  EValorDivergente = class(ECaixoraCupom)
  private
    FPedido: TValor;
    FResultado: TResultado;
  public
    property Pedido: TValor read FPedido;
    property Resultado: TResultado read FResultado;
  end;

  TItemLink = record
    Codigo, Descricao: UnicodeString;
    Quantidade: Integer;
    Unitario, Desconto, Total: TValor;
  end;

  /// Até seis textos.
  TItemFrota = TTextos;

  // Os argumentos que uma função da DLL leva.
  TForma = (foValor, foParcelas, foFrota, foLink, foCancelar, foLeitor, foReimpressao,
    foCupomLeitor, foCupom);

  /// Uma venda a fazer: TVenda.VendeCredito(Reais(49.90), 17).
  TVenda = record
  private
    FNome: AnsiString; // a função da DLL; vazio em um TVenda que ninguém preencheu
    FForma: TForma;
    FValor: TValor;
    FCupom, FParcelas, FItens: Integer;
    FTextos: array[0..3] of RawByteString;
    class function Pedido(const Nome: AnsiString; Forma: TForma; Cupom: Integer): TVenda; static;
    class function Nova(const Nome: AnsiString; Forma: TForma; const Valor: TValor;
      Cupom: Integer; Parcelas: Integer = 0): TVenda; static;
  public
    class function VendeCredito(const Valor: TValor; Cupom: Integer): TVenda; static;
    class function VendeCreditoVista(const Valor: TValor; Cupom: Integer): TVenda; static;
    class function VendeCreditoParcLoja(Parcelas: Integer; const Valor: TValor;
      Cupom: Integer): TVenda; static;
    class function VendeCreditoParcAdm(Parcelas: Integer; const Valor: TValor;
      Cupom: Integer): TVenda; static;
    class function VendeDebito(const Valor: TValor; Cupom: Integer): TVenda; static;
    class function VendeDebitoAVista(const Valor: TValor; Cupom: Integer): TVenda; static;
    class function MenuPrivate(const Valor: TValor; Cupom: Integer): TVenda; static;
    class function VendeCarteiraDigitalPix(const Valor: TValor; Cupom: Integer): TVenda; static;
    class function ParceleMais(const Valor: TValor; Cupom: Integer): TVenda; static;
    class function VendeFrotaCompleto(const Valor: TValor;
      const KM, Placa, Matricula: UnicodeString; const Itens: array of TItemFrota;
      Cupom: Integer): TVenda; static;
    class function LinkPagamento(Parcelas: Integer; const Valor: TValor; Cupom: Integer;
      const Itens: array of TItemLink; const Campo011, Campo012: UnicodeString): TVenda; static;
    property Valor: TValor read FValor;
    property Cupom: Integer read FCupom;
  end;

  /// Registre a venda e imprima o comprovante. Uma exceção desfaz a venda e segue para quem vendeu.
  TAoAprovar = procedure(const Resultado: TResultado) of object;

  /// Os argumentos do fluxo interativo: TInicioFluxo.Novo, e depois os campos que a função usa.
  TInicioFluxo = record
    Funcao: Cardinal;
    Valor: TValor;
    Campo3: Cardinal;
    Campo4, Campo6, Campo7, Campo8, Campo9: UnicodeString;
    Campo10: Cardinal;
    FuncaoFim: Cardinal;
    /// FuncaoFim é o número que o Trevix instalado usa para o encerramento (no simulado, 99).
    class function Novo(AFuncao: Cardinal; const AValor: TValor;
      AFuncaoFim: Cardinal): TInicioFluxo; static;
  end;

  TEtapaFluxo = (efInicia, efAguarda, efPergunta, efContinua, efFinaliza);

  TCampoFluxo = record
    Chave, Valor: UnicodeString;
  end;

  TFluxo = record
    Concluido: Boolean;     // houve retorno, e o encerramento deu 0 ou 39
    Codigo: Integer;        // QJ_SUCESSO ou o código da função que falhou
    Etapa: TEtapaFluxo;     // até onde foi
    Retorno: UnicodeString; // o texto [RETORNO], inteiro
    Campos: array of TCampoFluxo;
    Motivo: UnicodeString;
    /// O valor da parte |CHAVE:valor| do retorno; vazio se ela não veio.
    function Campo(const Chave: UnicodeString): UnicodeString;
  end;

  /// False cancela o fluxo. Uma exceção o cancela e segue para quem o chamou.
  TPerguntar = function(const Pergunta: UnicodeString; var Resposta: UnicodeString): Boolean
    of object;
  /// Consultada a cada espera sem pergunta: True cancela o fluxo.
  TDeveCancelar = function: Boolean of object;

  TCaixora = class
  private
    FCNPJCliente, FCNPJParceiro: RawByteString;
    FLeitor, FTentativas, FPausaMs: Integer;
    FDiario: UnicodeString;
    procedure SetDiario(const Valor: UnicodeString);
    procedure SetTentativas(Valor: Integer);
    procedure SetPausaMs(Valor: Integer);
    procedure ExigirDiario;
    procedure ExigirForaDoDiario(Cupom: Integer);
    function ChamarDll(const Pedido: TVenda; Endereco: Pointer): Pointer;
    function ChamarNaVenda(const Pedido: TVenda; out Duracao: Int64): TResultado;
    function Chamar(const Pedido: TVenda): TResultado;
    function DarDesfecho(Cupom: Integer; Desfecho: TDesfecho): TResultado;
    procedure Encerrar(Cupom: Integer; Desfecho: TDesfecho; const Causa: UnicodeString);
    function Conduzir(const Venda: TVenda; AoAprovar: TAoAprovar): TVendaConcluida;
  public
    /// Carrega a DLL, uma vez por processo.
    constructor Create(const CNPJCliente, CNPJParceiro: UnicodeString;
      const Dll: UnicodeString = CaixoraDll);

    property Leitor: Integer read FLeitor write FLeitor;             // 1
    /// Arquivo em que as vendas em aberto sobrevivem a uma queda. Vazio: não há diário.
    property Diario: UnicodeString read FDiario write SetDiario;
    /// De um desfecho recusado, até VenderEConfirmar e ConcluirVenda desistirem dele.
    property Tentativas: Integer read FTentativas write SetTentativas; // 10
    property PausaMs: Integer read FPausaMs write SetPausaMs;          // 2000, entre tentativas

    /// Vende, chama AoAprovar e confirma; se algo falha no caminho, desfaz. Toda venda termina com
    /// um desfecho só, ou em EVendaEmAberto. Enquanto ela não termina, outra operação, de qualquer
    /// thread e também de AoAprovar, é EUsoErrado.
    function VenderEConfirmar(const Venda: TVenda; AoAprovar: TAoAprovar): TVendaConcluida;
    function VendasEmAberto: TVendasAbertas;
    /// Dá o desfecho a uma venda do diário e a tira dele. Só de uma venda aprovada ele se escolhe.
    procedure ConcluirVenda(Cupom: Integer; Desfecho: TDesfecho);
    /// Chama Atv até o GP responder. Para a abertura do dia.
    procedure AguardarGp(Vezes: Integer);
    /// Desiste de um Confirmar ou Desfazimento recusado.
    procedure EsquecerPendencia;
    /// O fluxo interativo inteiro, do início ao encerramento ou cancelamento.
    function Fluxo(const Inicio: TInicioFluxo; Perguntar: TPerguntar;
      DeveCancelar: TDeveCancelar = nil): TFluxo;

    // As funções de pagamento da DLL. Uma venda feita por aqui espera o Confirmar ou o Desfazimento
    // de quem a fez.
    function Vender(const Venda: TVenda): TResultado;
    function VendeCredito(const Valor: TValor; Cupom: Integer): TResultado;
    function VendeCreditoVista(const Valor: TValor; Cupom: Integer): TResultado;
    function VendeCreditoParcLoja(Parcelas: Integer; const Valor: TValor;
      Cupom: Integer): TResultado;
    function VendeCreditoParcAdm(Parcelas: Integer; const Valor: TValor;
      Cupom: Integer): TResultado;
    function VendeDebito(const Valor: TValor; Cupom: Integer): TResultado;
    function VendeDebitoAVista(const Valor: TValor; Cupom: Integer): TResultado;
    function MenuPrivate(const Valor: TValor; Cupom: Integer): TResultado;
    function VendeCarteiraDigitalPix(const Valor: TValor; Cupom: Integer): TResultado;
    function ParceleMais(const Valor: TValor; Cupom: Integer): TResultado;
    function VendeFrotaCompleto(const Valor: TValor; const KM, Placa, Matricula: UnicodeString;
      const Itens: array of TItemFrota; Cupom: Integer): TResultado;
    function LinkPagamento(Parcelas: Integer; const Valor: TValor; Cupom: Integer;
      const Itens: array of TItemLink; const Campo011, Campo012: UnicodeString): TResultado;
    function ListarLinkPagamentoPago(const Valor: TValor; Cupom: Integer): TResultado;
    function ManutencaoLinkPagamento: TResultado;
    /// De uma venda feita por aqui; o de uma que está no diário cabe a ConcluirVenda.
    function Confirmar(Cupom: Integer): TResultado;
    function Desfazimento(Cupom: Integer): TResultado;
    /// Centavos(0): sem valor.
    function Cancelar(const Valor: TValor; Cupom: Integer;
      const Controle: UnicodeString): TResultado;
    function Reimpressao: TResultado;
    function ReimpressaoDireto(const NSU, Data: UnicodeString; Cupom: Integer): TResultado;
    /// Centavos(0): sem valor.
    function Adm(const Valor: TValor; Cupom: Integer): TResultado;
    function Relatorio(Cupom: Integer): TResultado;
    function RecargaCelular(Cupom: Integer): TResultado;
    function Atv(Cupom: Integer): TResultado;
    function SolicitarCPF(Cupom: Integer): TResultado;
    function SolicitarCNPJ(Cupom: Integer): TResultado;
    function SolicitarDocumento(Cupom: Integer): TResultado;
    function Teste: UnicodeString;
  end;

/// Mais de duas casas decimais é erro: nada é arredondado.
function Reais(Valor: Currency): TValor;
function Centavos(Valor: Int64): TValor;

function ItemLink(const Codigo, Descricao: UnicodeString; Quantidade: Integer;
  const Unitario, Desconto, Total: TValor): TItemLink;
function ItemFrota(const Textos: array of UnicodeString): TItemFrota;

/// 'iniciada', 'aprovada', 'confirmar' ou 'desfazer', como no diário.
function NomeDoEstado(Estado: TEstadoVenda): UnicodeString;

implementation

uses
  {$IFDEF FPC}Windows{$ELSE}Winapi.Windows{$ENDIF};

type
  TFnValor = function(Cliente, Parceiro: PAnsiChar; Valor: Double; Cupom, Leitor: Integer): Pointer;
    cdecl;
  TFnParcelas = function(Cliente, Parceiro: PAnsiChar; Parcelas: Integer; Valor: Double;
    Cupom, Leitor: Integer): Pointer; cdecl;
  TFnFrota = function(Cliente, Parceiro: PAnsiChar; Valor: Double; KM, Placa, Matricula: PAnsiChar;
    QtdeItens: Integer; Itens: PAnsiChar; Cupom, Leitor: Integer): Pointer; cdecl;
  TFnLink = function(Cliente, Parceiro: PAnsiChar; Parcelas: Integer; Valor: Double;
    Cupom, QtdeItens: Integer; Itens, Campo011, Campo012: PAnsiChar; Leitor: Integer): Pointer;
    cdecl;
  TFnCancelar = function(Cliente, Parceiro: PAnsiChar; Valor: Double; Cupom: Integer;
    Controle: PAnsiChar; Leitor: Integer): Pointer; cdecl;
  TFnLeitor = function(Cliente, Parceiro: PAnsiChar; Leitor: Integer): Pointer; cdecl;
  TFnReimpressao = function(Cliente, Parceiro, NSU, Data: PAnsiChar;
    Cupom, Leitor: Integer): Pointer; cdecl;
  TFnCupomLeitor = function(Cliente, Parceiro: PAnsiChar; Cupom, Leitor: Integer): Pointer; cdecl;
  TFnCupom = function(Cliente, Parceiro: PAnsiChar; Cupom: Integer): Pointer; cdecl;
  TFnTeste = function: PAnsiChar; cdecl;
  TFnFluxo = function(Funcao: Cardinal; CNPJ: PAnsiChar; Campo3: Cardinal;
    Campo4, Valor, Campo6, Campo7, Campo8, Campo9: PAnsiChar; Campo10: Cardinal;
    Campo11: PAnsiChar): Integer; cdecl;
  TFnAguarda = function: Pointer; cdecl;
  TFnContinua = function(Informacao: PAnsiChar): Integer; cdecl;
  TFnCancela = function: Integer; cdecl;

  TTextosFluxo = record
    CNPJ, Campo4, Valor, Campo6, Campo7, Campo8, Campo9: RawByteString;
  end;

const
  NAO_CHAMADA = -1;

  // Abaixo disto a DLL terminou na pausa de 1000 ms, sem gravar o pedido; depois de gravá-lo, ela
  // espera ao menos mais 300 ms.
  MS_PEDIDO_GRAVADO = 1250;

  PAUSA_DO_FLUXO = 200;

  ESTADOS: array[TEstadoVenda] of UnicodeString = ('iniciada', 'aprovada', 'confirmar', 'desfazer');
  FALTA: array[TEstadoVenda] of UnicodeString = ('desfazer', 'confirmar ou desfazer', 'confirmar',
    'desfazer');
  ESTADO_DO_DESFECHO: array[TDesfecho] of TEstadoVenda = (evConfirmar, evDesfazer);
  FUNCAO_DO_DESFECHO: array[TDesfecho] of AnsiString = ('Confirmar', 'Desfazimento');

  CABECALHO_DIARIO = 'caixora-diario 1';
  TAMANHO_MAXIMO_DIARIO = 1 shl 20;
  TROCAR_E_ESPERAR_O_DISCO = 1 or 8; // MOVEFILE_REPLACE_EXISTING e MOVEFILE_WRITE_THROUGH

  // O que os bytes 80 a 9F são; zero nos cinco que não são caracteres.
  ALTOS_1252: array[$80..$9F] of Word = (
    $20AC, 0, $201A, $0192, $201E, $2026, $2020, $2021, $02C6, $2030, $0160, $2039, $0152, 0, $017D,
    0, 0, $2018, $2019, $201C, $201D, $2022, $2013, $2014, $02DC, $2122, $0161, $203A, $0153, 0,
    $017E, $0178);

var
  // O estado da DLL é do processo inteiro, e o que se guarda sobre ele também. Trava o protege;
  // TravaDiario, à parte, para que ler o diário não espere o GP.
  Trava, TravaDiario: TRTLCriticalSection;
  Biblioteca: HMODULE = 0;
  CaminhoBiblioteca: UnicodeString = '';
  CupomPendente: Integer = 0;
  DesfechoPendente: TDesfecho;
  CupomEmVenda: Integer = 0; // de VenderEConfirmar ou ConcluirVenda
  FluxoEmCurso: Boolean = False;

function GetTickCount64: UInt64; stdcall; external 'kernel32.dll' name 'GetTickCount64';

// Textos

function Numero(Valor: Int64): UnicodeString;
begin
  Result := UnicodeString(IntToStr(Valor));
end;

function TextoDe(Texto: PAnsiChar): UnicodeString;
begin
  Result := UnicodeString(AnsiString(Texto));
end;

function ErroDoWindows(Erro: Cardinal): UnicodeString;
begin
  Result := UnicodeString(Trim(SysErrorMessage(Integer(Erro)))) + ' (' + Numero(Erro) + ')';
end;

function TextoDaExcecao(Excecao: TObject): UnicodeString;
begin
  if Excecao is ECaixora then
    Result := ECaixora(Excecao).Mensagem
  else if Excecao is Exception then
    Result := UnicodeString(Exception(Excecao).Message)
  else
    Result := 'exceção sem mensagem';
end;

function DoisAlgarismos(Valor: Integer): UnicodeString;
begin
  Result := Numero(Valor);
  if Valor < 10 then
    Result := '0' + Result;
end;

// "😀" (U+1F600); dos caracteres de controle, apenas U+000D.
function Descrever(const Texto: UnicodeString; Posicao: Integer): UnicodeString;
var
  Ponto: Cardinal;
  Unidades: Integer;
begin
  Ponto := Ord(Texto[Posicao]);
  Unidades := 1;
  if (Ponto >= $D800) and (Ponto <= $DBFF) and (Posicao < Length(Texto)) and
    (Ord(Texto[Posicao + 1]) >= $DC00) and (Ord(Texto[Posicao + 1]) <= $DFFF) then
  begin
    Ponto := $10000 + (Ponto - $D800) * $400 + (Ord(Texto[Posicao + 1]) - $DC00);
    Unidades := 2;
  end;
  Result := 'U+' + UnicodeString(IntToHex(Integer(Ponto), 4));
  if (Ponto >= $20) and ((Ponto < $7F) or (Ponto > $9F)) then
    Result := '"' + Copy(Texto, Posicao, Unidades) + '" (' + Result + ')';
end;

// Zero se Windows-1252 não tem o caractere. Compara números: um literal #$80 é lido na página de
// códigos de cada compilador.
function ByteDe(Caractere: WideChar): Byte;
var
  Codigo, I: Integer;
begin
  Result := 0;
  Codigo := Ord(Caractere);
  if (Codigo < $80) or ((Codigo >= $A0) and (Codigo <= $FF)) then
    Result := Byte(Codigo)
  else
    for I := Low(ALTOS_1252) to High(ALTOS_1252) do
      if Codigo = ALTOS_1252[I] then
        Result := Byte(I);
end;

// A conversão implícita para AnsiString trocaria por "?" o que Windows-1252 não tem.
function Codificar(const Argumento, Texto: UnicodeString;
  const Proibidos: UnicodeString = ''): RawByteString;
var
  I: Integer;
  Problema: UnicodeString;
begin
  Result := '';
  SetLength(Result, Length(Texto));
  for I := 1 to Length(Texto) do
  begin
    Problema := '';
    if (Texto[I] = #0) or (Texto[I] = #10) or (Texto[I] = #13) or
      (Pos(Texto[I], Proibidos) > 0) then
      Problema := ' não é permitido aqui'
    else if ByteDe(Texto[I]) = 0 then
      Problema := ' não existe em Windows-1252';
    if Problema <> '' then
      raise EArgumentoInvalido.Create(
        Argumento + ': o caractere ' + Descrever(Texto, I) + Problema);
    Result[I] := AnsiChar(ByteDe(Texto[I]));
  end;
end;

function Decodificar(const Bytes: RawByteString): UnicodeString;
var
  I: Integer;
  Unidade: Word;
begin
  Result := '';
  SetLength(Result, Length(Bytes));
  for I := 1 to Length(Bytes) do
  begin
    Unidade := Ord(Bytes[I]);
    if (Unidade >= Low(ALTOS_1252)) and (Unidade <= High(ALTOS_1252)) and
      (ALTOS_1252[Unidade] <> 0) then
      Unidade := ALTOS_1252[Unidade];
    Result[I] := WideChar(Unidade);
  end;
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

// Apenas algarismos, e não mais de 18: cabe em um Int64.
function LerNumero(const Texto: UnicodeString; out Valor: Int64): Boolean;
var
  I: Integer;
begin
  Valor := 0;
  Result := (Texto <> '') and (Length(Texto) <= 18);
  for I := 1 to Length(Texto) do
  begin
    Result := Result and (Texto[I] >= '0') and (Texto[I] <= '9');
    if not Result then
      Exit;
    Valor := Valor * 10 + Ord(Texto[I]) - Ord('0');
  end;
end;

// Exceções

constructor ECaixora.Create(const AMensagem: UnicodeString);
begin
  inherited Create(string(AMensagem));
  FMensagem := AMensagem;
end;

constructor ECaixoraCupom.Create(ACupom: Integer; const AMensagem: UnicodeString);
begin
  inherited Create('Cupom ' + Numero(ACupom) + ': ' + AMensagem);
  FCupom := ACupom;
end;

function VendaEmAberto(Cupom: Integer; Estado: TEstadoVenda;
  const Mensagem, UltimaMensagem: UnicodeString): EVendaEmAberto;
begin
  Result := EVendaEmAberto.Create(Cupom, Mensagem);
  Result.FEstado := Estado;
  Result.FUltimaMensagem := UltimaMensagem;
end;

// Valores

function Centavos(Valor: Int64): TValor;
begin
  if (Valor < 0) or (Valor > CENTAVOS_MAXIMO) then
    raise EArgumentoInvalido.Create('valor fora de 0 a ' + Numero(CENTAVOS_MAXIMO) +
      ' centavos: ' + Numero(Valor));
  Result.FCentavos := Valor;
end;

function Reais(Valor: Currency): TValor;
var
  DecimosDeMilesimo: Int64;
begin
  DecimosDeMilesimo := PInt64(@Valor)^; // é o que um Currency guarda
  if DecimosDeMilesimo mod 100 <> 0 then
    raise EArgumentoInvalido.Create('valor com mais de duas casas decimais: ' +
      UnicodeString(CurrToStr(Valor)));
  Result := Centavos(DecimosDeMilesimo div 100);
end;

function TValor.Texto: UnicodeString;
begin
  Result := Numero(FCentavos div 100) + ',' + DoisAlgarismos(FCentavos mod 100);
end;

// Resultados

function Interpretar(const Texto: UnicodeString): TResultado;
var
  Resto, Inicio, Linha: UnicodeString;
begin
  Result := Default(TResultado);
  Result.Bruto := Texto;
  Result.Mensagem := Texto;
  Inicio := Copy(Texto, 1, 4);
  if (Inicio <> 'S;0;') and (Inicio <> 'S;1;') and (Inicio <> 'S;2;') then
    Exit;
  Result.Codigo := Ord(Inicio[3]) - Ord('0');
  Resto := Copy(Texto, 5, Length(Texto));
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
      Result.Campos.Cupom := Proximo(Linha, ';');
      Result.Campos.ValorCentavos := Proximo(Linha, ';');
      Result.Campos.Bandeira := Proximo(Linha, ';');
      Result.Campos.Rede := Proximo(Linha, ';');
      Result.Campos.Autorizacao := Proximo(Linha, ';');
      Result.Campos.Nsu := Proximo(Linha, ';');
      Result.Campos.Tipo := Proximo(Linha, ';');
      Result.Campos.Parcelas := Proximo(Linha, ';');
      Result.Campos.Controle := Proximo(Linha, ';');
      Result.Campos.Campo170_000 := Proximo(Linha, ';');
      Result.Campos.CodigoRede := Proximo(Linha, ';');
      Result.Campos.Campo740_000 := Proximo(Linha, ';');
      Result.Campos.Campo741_000 := Proximo(Linha, ';');
      Result.Campos.Campo742_000 := Proximo(Linha, ';');
      Result.Campos.Campo031_000 := Proximo(Linha, ';');
    end
    else if Copy(Linha, 1, 2) = 'I;' then
    begin
      SetLength(Result.Comprovante, Length(Result.Comprovante) + 1);
      Result.Comprovante[High(Result.Comprovante)] := Copy(Linha, 3, Length(Linha));
    end;
  end;
end;

function TResultado.RespostaLocal: Boolean;
begin
  Result := (Codigo = 2) and (Mensagem = 'COMANDO COM SUCESSO') and (Campos.Parcelas = '1') and
    (Campos.ValorCentavos + Campos.Bandeira + Campos.Rede + Campos.Autorizacao + Campos.Nsu +
    Campos.Tipo + Campos.Controle + Campos.Campo170_000 + Campos.CodigoRede + Campos.Campo740_000 +
    Campos.Campo741_000 + Campos.Campo742_000 + Campos.Campo031_000 = '');
end;

function TResultado.Aprovada: Boolean;
begin
  Result := (Codigo > 0) and not RespostaLocal;
end;

function TResultado.ValorCentavos(out Centavos: Int64): Boolean;
begin
  Result := LerNumero(Campos.ValorCentavos, Centavos);
end;

// O GP certamente não fez a venda? Na dúvida, False: a venda será desfeita.
function CertamenteRecusada(const Resultado: TResultado; Duracao: Int64): Boolean;
begin
  Result := (Copy(Resultado.Bruto, 1, 4) = 'S;0;') and (Resultado.Mensagem <> 'GP NAO ATIVO') and
    (Resultado.Mensagem <> 'FALHA INTERNA, VERIFIQUE NO GP SE A OPERACAO FOI REALIZADA') and
    ((Resultado.Mensagem <> 'GP NÃO ATIVO') or (Duracao < MS_PEDIDO_GRAVADO));
end;

// Vazio se o GP aprovou o que foi pedido.
function Divergencia(const Venda: TVenda; const Resultado: TResultado): UnicodeString;
var
  Aprovado: Int64;
  OutroValor, OutroCupom: Boolean;
begin
  Result := '';
  OutroValor := not Resultado.ValorCentavos(Aprovado) or (Aprovado <> Venda.FValor.Centavos);
  OutroCupom := not LerNumero(Resultado.Campos.Cupom, Aprovado) or (Aprovado <> Venda.FCupom);
  if not OutroValor and not OutroCupom then
    Exit;
  Result := 'pedidos ' + Numero(Venda.FValor.Centavos) + ' centavos, aprovados "' +
    Resultado.Campos.ValorCentavos + '", do cupom "' + Resultado.Campos.Cupom +
    '"; o desfazimento é do cupom pedido';
  if OutroCupom then
    Result := Result + ': verifique no GP o da resposta';
end;

// Diário

function NomeDoEstado(Estado: TEstadoVenda): UnicodeString;
begin
  Result := ESTADOS[Estado];
end;

function LerArquivo(const Caminho: UnicodeString; out Conteudo: RawByteString): Boolean;
var
  Arquivo: THandle;
  Tamanho, Lidos, Erro: Cardinal;
begin
  Conteudo := '';
  Arquivo := CreateFileW(PWideChar(Caminho), GENERIC_READ, FILE_SHARE_READ, nil, OPEN_EXISTING,
    0, 0);
  if Arquivo = INVALID_HANDLE_VALUE then
  begin
    Erro := GetLastError;
    Result := False;
    if Erro = ERROR_FILE_NOT_FOUND then
      Exit;
    raise EDiario.Create('o diário ' + Caminho + ' não pôde ser lido: ' + ErroDoWindows(Erro));
  end;
  try
    Tamanho := GetFileSize(Arquivo, nil);
    if Tamanho > TAMANHO_MAXIMO_DIARIO then
      raise EDiario.Create('diário ilegível: ' + Caminho + ' é grande demais');
    SetLength(Conteudo, Tamanho);
    Lidos := 0;
    if (Tamanho > 0) and
      (not ReadFile(Arquivo, PAnsiChar(Conteudo)^, Tamanho, Lidos, nil) or (Lidos <> Tamanho)) then
      raise EDiario.Create('o diário ' + Caminho + ' não pôde ser lido: ' +
        ErroDoWindows(GetLastError));
  finally
    CloseHandle(Arquivo);
  end;
  Result := True;
end;

function LerLinha(Linha: UnicodeString; out Venda: TVendaAberta): Boolean;
var
  Cupom: Int64;
  Estado: TEstadoVenda;
begin
  Result := LerNumero(Proximo(Linha, ';'), Cupom) and (Cupom >= 1) and (Cupom <= MaxInt) and
    LerNumero(Proximo(Linha, ';'), Venda.Centavos) and (Venda.Centavos >= 1) and
    (Venda.Centavos <= CENTAVOS_MAXIMO);
  if not Result then
    Exit;
  Venda.Cupom := Integer(Cupom);
  Result := False;
  for Estado := Low(TEstadoVenda) to High(TEstadoVenda) do
    if ESTADOS[Estado] = Linha then
    begin
      Venda.Estado := Estado;
      Result := True;
    end;
end;

function Procurar(const Vendas: TVendasAbertas; Cupom: Integer): Integer;
begin
  Result := High(Vendas);
  while (Result >= 0) and (Vendas[Result].Cupom <> Cupom) do
    Dec(Result);
end;

function LerDiario(const Caminho: UnicodeString): TVendasAbertas;
var
  Conteudo: RawByteString;
  Resto, Linha: UnicodeString;
  Venda: TVendaAberta;
  NumeroDaLinha: Integer;
begin
  Result := nil;
  if not LerArquivo(Caminho, Conteudo) then
    Exit;
  if (Conteudo = '') or (Conteudo[Length(Conteudo)] <> #10) then
    raise EDiario.Create('diário ilegível: ' + Caminho + ' foi cortado');
  Resto := Decodificar(Conteudo);
  NumeroDaLinha := 0;
  repeat
    Linha := Proximo(Resto, #10);
    Inc(NumeroDaLinha);
    if (Linha <> '') and (Linha[Length(Linha)] = #13) then
      SetLength(Linha, Length(Linha) - 1);
    if NumeroDaLinha = 1 then
    begin
      if Linha <> CABECALHO_DIARIO then
        raise EDiario.Create('diário ilegível: ' + Caminho + ' não começa por "' +
          CABECALHO_DIARIO + '"');
    end
    else if not LerLinha(Linha, Venda) or (Procurar(Result, Venda.Cupom) >= 0) then
      raise EDiario.Create('diário ilegível: linha ' + Numero(NumeroDaLinha) + ' de ' + Caminho)
    else
    begin
      SetLength(Result, Length(Result) + 1);
      Result[High(Result)] := Venda;
    end;
  until Resto = '';
end;

procedure GravarArquivo(const Caminho: UnicodeString; const Conteudo: RawByteString);
var
  Arquivo: THandle;
  Gravados: Cardinal;
  Gravou: Boolean;
begin
  Arquivo := CreateFileW(PWideChar(Caminho), GENERIC_WRITE, 0, nil, CREATE_ALWAYS,
    FILE_ATTRIBUTE_NORMAL, 0);
  Gravou := Arquivo <> INVALID_HANDLE_VALUE;
  if Gravou then
  begin
    Gravou := WriteFile(Arquivo, PAnsiChar(Conteudo)^, Length(Conteudo), Gravados, nil) and
      (Integer(Gravados) = Length(Conteudo)) and FlushFileBuffers(Arquivo);
    Gravou := CloseHandle(Arquivo) and Gravou;
  end;
  if not Gravou then
    raise EDiario.Create(Caminho + ' não pôde ser gravado: ' + ErroDoWindows(GetLastError));
end;

procedure GravarDiario(const Caminho: UnicodeString; const Vendas: TVendasAbertas);
var
  Texto: UnicodeString;
  I: Integer;
begin
  if Length(Vendas) = 0 then
  begin
    if not DeleteFileW(PWideChar(Caminho)) and (GetLastError <> ERROR_FILE_NOT_FOUND) then
      raise EDiario.Create('o diário ' + Caminho + ' não pôde ser apagado: ' +
        ErroDoWindows(GetLastError));
    Exit;
  end;
  Texto := CABECALHO_DIARIO + #10;
  for I := 0 to High(Vendas) do
    Texto := Texto + Numero(Vendas[I].Cupom) + ';' + Numero(Vendas[I].Centavos) + ';' +
      ESTADOS[Vendas[I].Estado] + #10;
  GravarArquivo(Caminho + '.tmp', UTF8Encode(Texto));
  // Em um passo só: a qualquer momento há em disco um diário inteiro, o antigo ou o novo.
  if not MoveFileExW(PWideChar(Caminho + '.tmp'), PWideChar(Caminho),
    TROCAR_E_ESPERAR_O_DISCO) then
    raise EDiario.Create('o diário ' + Caminho + ' não pôde ser trocado: ' +
      ErroDoWindows(GetLastError));
end;

procedure AbrirNoDiario(const Caminho: UnicodeString; const Venda: TVenda);
var
  Vendas: TVendasAbertas;
begin
  if Caminho = '' then
    Exit;
  EnterCriticalSection(TravaDiario);
  try
    Vendas := LerDiario(Caminho);
    if Length(Vendas) > 0 then
      raise VendaEmAberto(Vendas[0].Cupom, Vendas[0].Estado, 'está em aberto no diário (' +
        ESTADOS[Vendas[0].Estado] + '): falta ' + FALTA[Vendas[0].Estado] +
        ', com ConcluirVenda, antes de outra venda', '');
    SetLength(Vendas, 1);
    Vendas[0].Cupom := Venda.FCupom;
    Vendas[0].Centavos := Venda.FValor.Centavos;
    Vendas[0].Estado := evIniciada;
    GravarDiario(Caminho, Vendas);
  finally
    LeaveCriticalSection(TravaDiario);
  end;
end;

procedure AnotarNoDiario(const Caminho: UnicodeString; Cupom: Integer; Estado: TEstadoVenda);
var
  Vendas: TVendasAbertas;
  I: Integer;
begin
  if Caminho = '' then
    Exit;
  EnterCriticalSection(TravaDiario);
  try
    Vendas := LerDiario(Caminho);
    I := Procurar(Vendas, Cupom);
    if I < 0 then
      raise EDiario.Create('o cupom ' + Numero(Cupom) + ' não está em aberto em ' + Caminho);
    if Vendas[I].Estado = Estado then
      Exit;
    Vendas[I].Estado := Estado;
    GravarDiario(Caminho, Vendas);
  finally
    LeaveCriticalSection(TravaDiario);
  end;
end;

procedure TirarDoDiario(const Caminho: UnicodeString; Cupom: Integer);
var
  Vendas: TVendasAbertas;
  I: Integer;
begin
  if Caminho = '' then
    Exit;
  EnterCriticalSection(TravaDiario);
  try
    Vendas := LerDiario(Caminho);
    I := Procurar(Vendas, Cupom);
    if I < 0 then
      Exit;
    while I < High(Vendas) do
    begin
      Vendas[I] := Vendas[I + 1];
      Inc(I);
    end;
    SetLength(Vendas, High(Vendas));
    GravarDiario(Caminho, Vendas);
  finally
    LeaveCriticalSection(TravaDiario);
  end;
end;

// Itens

function ItemLink(const Codigo, Descricao: UnicodeString; Quantidade: Integer;
  const Unitario, Desconto, Total: TValor): TItemLink;
begin
  Result.Codigo := Codigo;
  Result.Descricao := Descricao;
  Result.Quantidade := Quantidade;
  Result.Unitario := Unitario;
  Result.Desconto := Desconto;
  Result.Total := Total;
end;

function ItemFrota(const Textos: array of UnicodeString): TItemFrota;
var
  I: Integer;
begin
  Result := nil;
  SetLength(Result, Length(Textos));
  for I := 0 to High(Textos) do
    Result[I] := Textos[I];
end;

procedure Acrescentar(var Itens: UnicodeString; const Item: UnicodeString);
begin
  if Itens <> '' then
    Itens := Itens + '|';
  Itens := Itens + Item;
end;

function JuntarLink(const Itens: array of TItemLink): RawByteString;
var
  Texto: UnicodeString;
  I: Integer;
begin
  Texto := '';
  for I := 0 to High(Itens) do
  begin
    Codificar('sItens', Itens[I].Codigo + Itens[I].Descricao, '¬|');
    if Itens[I].Quantidade < 1 then
      raise EArgumentoInvalido.Create('sItens: quantidade menor que 1 no item ' + Numero(I + 1));
    Acrescentar(Texto, Itens[I].Codigo + '¬' + Itens[I].Descricao + '¬' +
      Numero(Itens[I].Quantidade) + '¬' + Itens[I].Unitario.Texto + '¬' +
      Itens[I].Desconto.Texto + '¬' + Itens[I].Total.Texto);
  end;
  Result := Codificar('sItens', Texto);
end;

function JuntarFrota(const Itens: array of TItemFrota): RawByteString;
var
  Texto, Item, Conteudo: UnicodeString;
  I, J: Integer;
begin
  Texto := '';
  for I := 0 to High(Itens) do
  begin
    Item := '';
    Conteudo := '';
    for J := 0 to High(Itens[I]) do
    begin
      Conteudo := Conteudo + Itens[I][J];
      if J > 0 then
        Item := Item + '-';
      Item := Item + Itens[I][J];
    end;
    Codificar('sItens', Conteudo, '-|');
    if (Conteudo = '') or (Length(Itens[I]) > 6) then
      raise EArgumentoInvalido.Create('sItens: o item ' + Numero(I + 1) +
        ' deve ter de um a seis textos, não todos vazios');
    Acrescentar(Texto, Item);
  end;
  Result := Codificar('sItens', Texto);
end;

// Vendas

class function TVenda.Pedido(const Nome: AnsiString; Forma: TForma; Cupom: Integer): TVenda;
begin
  Result := Default(TVenda);
  Result.FNome := Nome;
  Result.FForma := Forma;
  Result.FCupom := Cupom;
end;

procedure ExigirCupom(Cupom: Integer);
begin
  if Cupom < 1 then
    raise EArgumentoInvalido.Create('iCupom: deve ser 1 ou mais: ' + Numero(Cupom));
end;

class function TVenda.Nova(const Nome: AnsiString; Forma: TForma; const Valor: TValor;
  Cupom, Parcelas: Integer): TVenda;
begin
  ExigirCupom(Cupom);
  if Centavos(Valor.Centavos).Centavos = 0 then // e recusa um TValor que ninguém preencheu
    raise EArgumentoInvalido.Create('dValor: uma venda é de ao menos 1 centavo');
  Result := Pedido(Nome, Forma, Cupom);
  Result.FValor := Valor;
  Result.FParcelas := Parcelas;
end;

class function TVenda.VendeCredito(const Valor: TValor; Cupom: Integer): TVenda;
begin
  Result := Nova('VendeCredito', foValor, Valor, Cupom);
end;

class function TVenda.VendeCreditoVista(const Valor: TValor; Cupom: Integer): TVenda;
begin
  Result := Nova('VendeCreditoVista', foValor, Valor, Cupom);
end;

procedure ExigirParcelas(Parcelas: Integer);
begin
  if Parcelas < 1 then
    raise EArgumentoInvalido.Create('iParcelas: deve ser 1 ou mais: ' + Numero(Parcelas));
end;

class function TVenda.VendeCreditoParcLoja(Parcelas: Integer; const Valor: TValor;
  Cupom: Integer): TVenda;
begin
  ExigirParcelas(Parcelas);
  Result := Nova('VendeCreditoParcLoja', foParcelas, Valor, Cupom, Parcelas);
end;

class function TVenda.VendeCreditoParcAdm(Parcelas: Integer; const Valor: TValor;
  Cupom: Integer): TVenda;
begin
  ExigirParcelas(Parcelas);
  Result := Nova('VendeCreditoParcAdm', foParcelas, Valor, Cupom, Parcelas);
end;

class function TVenda.VendeDebito(const Valor: TValor; Cupom: Integer): TVenda;
begin
  Result := Nova('VendeDebito', foValor, Valor, Cupom);
end;

class function TVenda.VendeDebitoAVista(const Valor: TValor; Cupom: Integer): TVenda;
begin
  Result := Nova('VendeDebitoAVista', foValor, Valor, Cupom);
end;

class function TVenda.MenuPrivate(const Valor: TValor; Cupom: Integer): TVenda;
begin
  Result := Nova('MenuPrivate', foValor, Valor, Cupom);
end;

class function TVenda.VendeCarteiraDigitalPix(const Valor: TValor; Cupom: Integer): TVenda;
begin
  Result := Nova('VendeCarteiraDigitalPix', foValor, Valor, Cupom);
end;

class function TVenda.ParceleMais(const Valor: TValor; Cupom: Integer): TVenda;
begin
  Result := Nova('ParceleMais', foValor, Valor, Cupom);
end;

class function TVenda.VendeFrotaCompleto(const Valor: TValor;
  const KM, Placa, Matricula: UnicodeString; const Itens: array of TItemFrota;
  Cupom: Integer): TVenda;
begin
  Result := Nova('VendeFrotaCompleto', foFrota, Valor, Cupom);
  Result.FTextos[0] := Codificar('sKM', KM);
  Result.FTextos[1] := Codificar('sPlaca', Placa);
  Result.FTextos[2] := Codificar('sMatricula', Matricula);
  Result.FItens := Length(Itens);
  Result.FTextos[3] := JuntarFrota(Itens);
end;

class function TVenda.LinkPagamento(Parcelas: Integer; const Valor: TValor; Cupom: Integer;
  const Itens: array of TItemLink; const Campo011, Campo012: UnicodeString): TVenda;
begin
  ExigirParcelas(Parcelas);
  Result := Nova('LinkPagamento', foLink, Valor, Cupom, Parcelas);
  Result.FItens := Length(Itens);
  Result.FTextos[0] := JuntarLink(Itens);
  Result.FTextos[1] := Codificar('sCampo011', Campo011);
  Result.FTextos[2] := Codificar('sCampo012', Campo012);
end;

// A DLL

procedure CarregarDll(const Caminho: UnicodeString);
var
  Erro: Cardinal;
  Texto: UnicodeString;
begin
  EnterCriticalSection(Trava);
  try
    if Biblioteca <> 0 then
    begin
      // Duas cópias da DLL não saberiam uma da outra.
      if CaminhoBiblioteca <> Caminho then
        raise ECaixoraDll.Create('a DLL já foi carregada de ' + CaminhoBiblioteca +
          ': não pode ser também de ' + Caminho);
      Exit;
    end;
    Biblioteca := LoadLibraryW(PWideChar(Caminho));
    if Biblioteca = 0 then
    begin
      Erro := GetLastError;
      case Erro of
        ERROR_MOD_NOT_FOUND: Texto := 'não foi encontrada (ponha-a na pasta do programa)';
        ERROR_BAD_EXE_FORMAT: Texto := 'não é uma DLL de Windows 64-bit';
      else
        Texto := 'não pôde ser carregada';
      end;
      raise ECaixoraDll.Create(Caminho + ' ' + Texto + ': ' + ErroDoWindows(Erro));
    end;
    CaminhoBiblioteca := Caminho;
  finally
    LeaveCriticalSection(Trava);
  end;
end;

function Funcao(const Nome: AnsiString): Pointer;
begin
  Result := Pointer(GetProcAddress(Biblioteca, PAnsiChar(Nome)));
  if Result = nil then
    raise ECaixoraDll.Create(CaminhoBiblioteca + ' não tem a função ' + TextoDe(PAnsiChar(Nome)));
end;

// As duas, com a trava.

procedure RecusarVendaEmCurso;
begin
  if CupomEmVenda <> 0 then
    raise EUsoErrado.Create('há uma venda em andamento: cupom ' + Numero(CupomEmVenda));
end;

// Só o mesmo desfecho do mesmo cupom passa; um CupomPermitido 0 é o das outras operações.
procedure RecusarPendencia(CupomPermitido: Integer = 0; Desfecho: TDesfecho = dsConfirmar);
var
  Pendencia: EPendenciaAberta;
begin
  if (CupomPendente = 0) or
    ((CupomPendente = CupomPermitido) and (DesfechoPendente = Desfecho)) then
    Exit;
  Pendencia := EPendenciaAberta.Create(CupomPendente, 'falta ' +
    ESTADOS[ESTADO_DO_DESFECHO[DesfechoPendente]] +
    ', que foi recusado e precisa ser repetido antes de outra operação');
  Pendencia.FDesfecho := DesfechoPendente;
  raise Pendencia;
end;

procedure OcuparVenda(Cupom: Integer; CupomPermitido: Integer = 0;
  Desfecho: TDesfecho = dsConfirmar);
begin
  EnterCriticalSection(Trava);
  try
    RecusarVendaEmCurso;
    RecusarPendencia(CupomPermitido, Desfecho);
    CupomEmVenda := Cupom;
  finally
    LeaveCriticalSection(Trava);
  end;
end;

procedure LiberarVenda;
begin
  EnterCriticalSection(Trava);
  CupomEmVenda := 0;
  LeaveCriticalSection(Trava);
end;

// TCaixora: configuração

constructor TCaixora.Create(const CNPJCliente, CNPJParceiro, Dll: UnicodeString);
begin
  inherited Create;
  FCNPJCliente := Codificar('sCNPJCliente', CNPJCliente);
  FCNPJParceiro := Codificar('sCNPJParceiro', CNPJParceiro);
  FLeitor := 1;
  FTentativas := 10;
  FPausaMs := 2000;
  CarregarDll(Dll);
end;

procedure TCaixora.SetDiario(const Valor: UnicodeString);
begin
  FDiario := Valor;
  // Absoluto: o diretório atual pode mudar depois.
  if Valor <> '' then
    FDiario := ExpandFileName(Valor);
end;

procedure TCaixora.SetTentativas(Valor: Integer);
begin
  if Valor < 1 then
    raise EArgumentoInvalido.Create('Tentativas: deve ser 1 ou mais: ' + Numero(Valor));
  FTentativas := Valor;
end;

procedure TCaixora.SetPausaMs(Valor: Integer);
begin
  if Valor < 0 then
    raise EArgumentoInvalido.Create('PausaMs: não pode ser negativa: ' + Numero(Valor));
  FPausaMs := Valor;
end;

procedure TCaixora.ExigirDiario;
begin
  if FDiario = '' then
    raise EDiario.Create('não há diário: informe a propriedade Diario');
end;

procedure TCaixora.ExigirForaDoDiario(Cupom: Integer);
begin
  if (FDiario <> '') and (Procurar(VendasEmAberto, Cupom) >= 0) then
    raise EUsoErrado.Create('o cupom ' + Numero(Cupom) +
      ' está em aberto no diário: use ConcluirVenda');
end;

// TCaixora: chamadas

function TCaixora.ChamarDll(const Pedido: TVenda; Endereco: Pointer): Pointer;
var
  Cliente, Parceiro: PAnsiChar;
  Textos: array[0..3] of PAnsiChar;
  I: Integer;
  Valor: Double;
begin
  Result := nil;
  Cliente := PAnsiChar(FCNPJCliente);
  Parceiro := PAnsiChar(FCNPJParceiro);
  Valor := Pedido.FValor.Centavos / 100;
  for I := 0 to 3 do
    Textos[I] := PAnsiChar(Pedido.FTextos[I]);
  case Pedido.FForma of
    foValor:
      Result := TFnValor(Endereco)(Cliente, Parceiro, Valor, Pedido.FCupom, FLeitor);
    foParcelas:
      Result := TFnParcelas(Endereco)(Cliente, Parceiro, Pedido.FParcelas, Valor, Pedido.FCupom,
        FLeitor);
    foFrota:
      Result := TFnFrota(Endereco)(Cliente, Parceiro, Valor, Textos[0], Textos[1], Textos[2],
        Pedido.FItens, Textos[3], Pedido.FCupom, FLeitor);
    foLink:
      Result := TFnLink(Endereco)(Cliente, Parceiro, Pedido.FParcelas, Valor, Pedido.FCupom,
        Pedido.FItens, Textos[0], Textos[1], Textos[2], FLeitor);
    foCancelar:
      Result := TFnCancelar(Endereco)(Cliente, Parceiro, Valor, Pedido.FCupom, Textos[0], FLeitor);
    foLeitor:
      Result := TFnLeitor(Endereco)(Cliente, Parceiro, FLeitor);
    foReimpressao:
      Result := TFnReimpressao(Endereco)(Cliente, Parceiro, Textos[0], Textos[1], Pedido.FCupom,
        FLeitor);
    foCupomLeitor:
      Result := TFnCupomLeitor(Endereco)(Cliente, Parceiro, Pedido.FCupom, FLeitor);
    foCupom:
      Result := TFnCupom(Endereco)(Cliente, Parceiro, Pedido.FCupom);
  end;
end;

// Duracao é NAO_CHAMADA enquanto a DLL não foi chamada.
function TCaixora.ChamarNaVenda(const Pedido: TVenda; out Duracao: Int64): TResultado;
var
  Desfecho: TDesfecho;
  EhDesfecho: Boolean;
  Endereco, Texto: Pointer;
  Inicio: UInt64;
begin
  Duracao := NAO_CHAMADA;
  if Pedido.FNome = '' then
    raise EArgumentoInvalido.Create('a venda não foi preenchida');
  Desfecho := dsConfirmar;
  if Pedido.FNome = FUNCAO_DO_DESFECHO[dsDesfazer] then
    Desfecho := dsDesfazer;
  EhDesfecho := Pedido.FNome = FUNCAO_DO_DESFECHO[Desfecho];
  EnterCriticalSection(Trava);
  try
    if EhDesfecho then
      RecusarPendencia(Pedido.FCupom, Desfecho)
    else
      RecusarPendencia;
    Endereco := Funcao(Pedido.FNome);
    if EhDesfecho then
    begin
      CupomPendente := Pedido.FCupom;
      DesfechoPendente := Desfecho;
    end;
    Duracao := 0;
    Inicio := GetTickCount64;
    Texto := ChamarDll(Pedido, Endereco);
    Duracao := Int64(GetTickCount64 - Inicio);
    Result := Interpretar(Decodificar(LerTextoCaixora(Texto)));
    if EhDesfecho and (Result.Codigo > 0) then
      CupomPendente := 0;
  finally
    LeaveCriticalSection(Trava);
  end;
end;

function TCaixora.Chamar(const Pedido: TVenda): TResultado;
var
  Duracao: Int64;
begin
  EnterCriticalSection(Trava);
  try
    RecusarVendaEmCurso;
    Result := ChamarNaVenda(Pedido, Duracao);
  finally
    LeaveCriticalSection(Trava);
  end;
end;

function TCaixora.DarDesfecho(Cupom: Integer; Desfecho: TDesfecho): TResultado;
begin
  ExigirCupom(Cupom);
  EnterCriticalSection(Trava);
  try
    RecusarVendaEmCurso; // é o que há a dizer de um cupom que está no diário por causa dela
    ExigirForaDoDiario(Cupom);
    Result := Chamar(TVenda.Pedido(FUNCAO_DO_DESFECHO[Desfecho], foCupom, Cupom));
  finally
    LeaveCriticalSection(Trava);
  end;
end;

function TCaixora.Vender(const Venda: TVenda): TResultado;
begin
  Result := Chamar(Venda);
end;

function TCaixora.VendeCredito(const Valor: TValor; Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.VendeCredito(Valor, Cupom));
end;

function TCaixora.VendeCreditoVista(const Valor: TValor; Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.VendeCreditoVista(Valor, Cupom));
end;

function TCaixora.VendeCreditoParcLoja(Parcelas: Integer; const Valor: TValor;
  Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.VendeCreditoParcLoja(Parcelas, Valor, Cupom));
end;

function TCaixora.VendeCreditoParcAdm(Parcelas: Integer; const Valor: TValor;
  Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.VendeCreditoParcAdm(Parcelas, Valor, Cupom));
end;

function TCaixora.VendeDebito(const Valor: TValor; Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.VendeDebito(Valor, Cupom));
end;

function TCaixora.VendeDebitoAVista(const Valor: TValor; Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.VendeDebitoAVista(Valor, Cupom));
end;

function TCaixora.MenuPrivate(const Valor: TValor; Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.MenuPrivate(Valor, Cupom));
end;

function TCaixora.VendeCarteiraDigitalPix(const Valor: TValor; Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.VendeCarteiraDigitalPix(Valor, Cupom));
end;

function TCaixora.ParceleMais(const Valor: TValor; Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.ParceleMais(Valor, Cupom));
end;

function TCaixora.VendeFrotaCompleto(const Valor: TValor; const KM, Placa, Matricula: UnicodeString;
  const Itens: array of TItemFrota; Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.VendeFrotaCompleto(Valor, KM, Placa, Matricula, Itens, Cupom));
end;

function TCaixora.LinkPagamento(Parcelas: Integer; const Valor: TValor; Cupom: Integer;
  const Itens: array of TItemLink; const Campo011, Campo012: UnicodeString): TResultado;
begin
  Result := Chamar(TVenda.LinkPagamento(Parcelas, Valor, Cupom, Itens, Campo011, Campo012));
end;

function TCaixora.ListarLinkPagamentoPago(const Valor: TValor; Cupom: Integer): TResultado;
var
  Pedido: TVenda;
begin
  Pedido := TVenda.Pedido('ListarLinkPagamentoPago', foValor, Cupom);
  Pedido.FValor := Centavos(Valor.Centavos);
  Result := Chamar(Pedido);
end;

function TCaixora.ManutencaoLinkPagamento: TResultado;
begin
  Result := Chamar(TVenda.Pedido('ManutencaoLinkPagamento', foLeitor, 0));
end;

function TCaixora.Confirmar(Cupom: Integer): TResultado;
begin
  Result := DarDesfecho(Cupom, dsConfirmar);
end;

function TCaixora.Desfazimento(Cupom: Integer): TResultado;
begin
  Result := DarDesfecho(Cupom, dsDesfazer);
end;

function TCaixora.Cancelar(const Valor: TValor; Cupom: Integer;
  const Controle: UnicodeString): TResultado;
var
  Pedido: TVenda;
begin
  Pedido := TVenda.Pedido('Cancelar', foCancelar, Cupom);
  Pedido.FValor := Centavos(Valor.Centavos);
  Pedido.FTextos[0] := Codificar('sControle', Controle);
  Result := Chamar(Pedido);
end;

function TCaixora.Reimpressao: TResultado;
begin
  Result := Chamar(TVenda.Pedido('Reimpressao', foLeitor, 0));
end;

function TCaixora.ReimpressaoDireto(const NSU, Data: UnicodeString; Cupom: Integer): TResultado;
var
  Pedido: TVenda;
begin
  Pedido := TVenda.Pedido('ReimpressaoDireto', foReimpressao, Cupom);
  Pedido.FTextos[0] := Codificar('sNSU', NSU);
  Pedido.FTextos[1] := Codificar('data', Data);
  Result := Chamar(Pedido);
end;

function TCaixora.Adm(const Valor: TValor; Cupom: Integer): TResultado;
var
  Pedido: TVenda;
begin
  Pedido := TVenda.Pedido('Adm', foValor, Cupom);
  Pedido.FValor := Centavos(Valor.Centavos);
  Result := Chamar(Pedido);
end;

function TCaixora.Relatorio(Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.Pedido('Relatorio', foCupomLeitor, Cupom));
end;

function TCaixora.RecargaCelular(Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.Pedido('RecargaCelular', foCupomLeitor, Cupom));
end;

function TCaixora.Atv(Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.Pedido('Atv', foCupomLeitor, Cupom));
end;

function TCaixora.SolicitarCPF(Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.Pedido('SolicitarCPF', foCupom, Cupom));
end;

function TCaixora.SolicitarCNPJ(Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.Pedido('SolicitarCNPJ', foCupom, Cupom));
end;

function TCaixora.SolicitarDocumento(Cupom: Integer): TResultado;
begin
  Result := Chamar(TVenda.Pedido('SolicitarDocumento', foCupom, Cupom));
end;

function TCaixora.Teste: UnicodeString;
begin
  EnterCriticalSection(Trava);
  try
    RecusarVendaEmCurso;
    RecusarPendencia; // Teste a apagaria sem que ninguém o tivesse decidido
    Result := TextoDe(TFnTeste(Funcao('Teste'))());
  finally
    LeaveCriticalSection(Trava);
  end;
end;

procedure TCaixora.EsquecerPendencia;
begin
  EnterCriticalSection(Trava);
  try
    RecusarVendaEmCurso; // ela ainda repete o desfecho
    TFnTeste(Funcao('Teste'))();
    CupomPendente := 0;
  finally
    LeaveCriticalSection(Trava);
  end;
end;

procedure TCaixora.AguardarGp(Vezes: Integer);
var
  Tentativa: Integer;
  Resultado: TResultado;
begin
  for Tentativa := 1 to Vezes do
  begin
    if Tentativa > 1 then
      Sleep(FPausaMs);
    Resultado := Atv(1);
    if Resultado.Aprovada then
      Exit;
  end;
  raise EGpInativo.Create('o GP não respondeu: ' + Resultado.Mensagem);
end;

// TCaixora: venda e desfecho

procedure TCaixora.Encerrar(Cupom: Integer; Desfecho: TDesfecho; const Causa: UnicodeString);
var
  Tentativa: Integer;
  Resultado: TResultado;
  Estado: TEstadoVenda;
  Duracao: Int64;
  Texto: UnicodeString;
begin
  Estado := ESTADO_DO_DESFECHO[Desfecho];
  try
    AnotarNoDiario(FDiario, Cupom, Estado);
  except
    on EDiario do; // o estado anterior, que ficou, leva ao mesmo desfecho; o erro volta ao tirar
  end;
  for Tentativa := 1 to FTentativas do
  begin
    if Tentativa > 1 then
      Sleep(FPausaMs);
    Resultado := ChamarNaVenda(TVenda.Pedido(FUNCAO_DO_DESFECHO[Desfecho], foCupom, Cupom),
      Duracao);
    if Resultado.Codigo > 0 then
    begin
      try
        TirarDoDiario(FDiario, Cupom);
      except
        on E: EDiario do
          raise EDiario.Create('cupom ' + Numero(Cupom) + ': "' + ESTADOS[Estado] +
            '" foi feito, mas o cupom ficou no diário: ' + E.Mensagem);
      end;
      Exit;
    end;
  end;
  Texto := 'falta ' + ESTADOS[Estado] + ' (' + Resultado.Mensagem + ')';
  if Causa <> '' then
    Texto := Texto + '; seria desfeito por: ' + Causa;
  raise VendaEmAberto(Cupom, Estado, Texto, Resultado.Mensagem);
end;

function TCaixora.Conduzir(const Venda: TVenda; AoAprovar: TAoAprovar): TVendaConcluida;
var
  Duracao: Int64;
  Texto: UnicodeString;
  Divergente: EValorDivergente;
begin
  AbrirNoDiario(FDiario, Venda);
  try
    Result.Resultado := ChamarNaVenda(Venda, Duracao);
  except
    if Duracao = NAO_CHAMADA then
      TirarDoDiario(FDiario, Venda.FCupom)
    else
      Encerrar(Venda.FCupom, dsDesfazer, TextoDaExcecao(ExceptObject));
    raise;
  end;

  if not Result.Resultado.Aprovada then
  begin
    Result.Motivo := Result.Resultado.Mensagem;
    if CertamenteRecusada(Result.Resultado, Duracao) then
    begin
      Result.Situacao := svRecusada;
      TirarDoDiario(FDiario, Venda.FCupom);
    end
    else
    begin
      Result.Situacao := svDesfeita;
      Result.Motivo := 'resultado incerto: ' + Result.Motivo;
      Encerrar(Venda.FCupom, dsDesfazer, Result.Motivo);
    end;
    Exit;
  end;

  Texto := Divergencia(Venda, Result.Resultado);
  if Texto <> '' then
  begin
    Encerrar(Venda.FCupom, dsDesfazer, Texto);
    Divergente := EValorDivergente.Create(Venda.FCupom, Texto);
    Divergente.FPedido := Venda.FValor;
    Divergente.FResultado := Result.Resultado;
    raise Divergente;
  end;

  try
    AnotarNoDiario(FDiario, Venda.FCupom, evAprovada);
    AoAprovar(Result.Resultado);
  except
    Encerrar(Venda.FCupom, dsDesfazer, TextoDaExcecao(ExceptObject));
    raise;
  end;
  Encerrar(Venda.FCupom, dsConfirmar, '');
  Result.Situacao := svConfirmada;
  Result.Motivo := '';
end;

function TCaixora.VenderEConfirmar(const Venda: TVenda; AoAprovar: TAoAprovar): TVendaConcluida;
begin
  if not Assigned(AoAprovar) then
    raise EArgumentoInvalido.Create('AoAprovar não foi informado');
  if Venda.FNome = '' then
    raise EArgumentoInvalido.Create('a venda não foi preenchida');
  OcuparVenda(Venda.FCupom);
  try
    Result := Conduzir(Venda, AoAprovar);
  finally
    LiberarVenda;
  end;
end;

function TCaixora.VendasEmAberto: TVendasAbertas;
begin
  ExigirDiario;
  EnterCriticalSection(TravaDiario);
  try
    Result := LerDiario(FDiario);
  finally
    LeaveCriticalSection(TravaDiario);
  end;
end;

procedure TCaixora.ConcluirVenda(Cupom: Integer; Desfecho: TDesfecho);
var
  Vendas: TVendasAbertas;
  I: Integer;
begin
  ExigirDiario;
  ExigirCupom(Cupom);
  OcuparVenda(Cupom, Cupom, Desfecho);
  try
    Vendas := VendasEmAberto;
    I := Procurar(Vendas, Cupom);
    if I < 0 then
      raise EArgumentoInvalido.Create('cupom: ' + Numero(Cupom) + ' não está em aberto no diário');
    if Pos(ESTADOS[ESTADO_DO_DESFECHO[Desfecho]], FALTA[Vendas[I].Estado]) = 0 then
      raise EUsoErrado.Create('o cupom ' + Numero(Cupom) + ' está no diário como "' +
        ESTADOS[Vendas[I].Estado] + '": só se pode ' + FALTA[Vendas[I].Estado]);
    AnotarNoDiario(FDiario, Cupom, ESTADO_DO_DESFECHO[Desfecho]);
    Encerrar(Cupom, Desfecho, '');
  finally
    LiberarVenda;
  end;
end;

// TCaixora: fluxo interativo

class function TInicioFluxo.Novo(AFuncao: Cardinal; const AValor: TValor;
  AFuncaoFim: Cardinal): TInicioFluxo;
begin
  Result := Default(TInicioFluxo);
  Result.Funcao := AFuncao;
  Result.Valor := AValor;
  Result.FuncaoFim := AFuncaoFim;
end;

function TFluxo.Campo(const Chave: UnicodeString): UnicodeString;
var
  I: Integer;
begin
  Result := '';
  for I := 0 to High(Campos) do
    if Campos[I].Chave = Chave then
      Result := Campos[I].Valor;
end;

procedure SepararRetorno(var Fluxo: TFluxo);
var
  Resto, Parte: UnicodeString;
  Ultimo: Integer;
begin
  Resto := Fluxo.Retorno;
  while Resto <> '' do
  begin
    Parte := Proximo(Resto, '|');
    if Pos(':', Parte) = 0 then
      Continue;
    Ultimo := Length(Fluxo.Campos);
    SetLength(Fluxo.Campos, Ultimo + 1);
    Fluxo.Campos[Ultimo].Chave := Proximo(Parte, ':');
    Fluxo.Campos[Ultimo].Valor := Parte;
  end;
end;

function MotivoDoCodigo(Codigo: Integer): UnicodeString;
begin
  case Codigo of
    QJ_SUCESSO: Result := '';
    QJ_SEM_CAMINHO: Result := 'não há CAMINHO em ConfigQJ.ini';
    QJ_CAMINHO_VAZIO: Result := 'o CAMINHO de ConfigQJ.ini está vazio';
    QJ_TREVIX_AUSENTE: Result := 'não há Trevix.exe legível na pasta do CAMINHO';
    QJ_TREVIX_NAO_EXECUTA: Result := 'o Trevix foi iniciado e não está em execução';
    QJ_ERRO_AO_INICIAR: Result := 'falha ao iniciar o Trevix';
    QJ_SEM_ARQUIVO_RESP: Result := 'não foi possível criar o arquivo de resposta';
    QJ_ERRO_RESP: Result := 'falha ao gravar ou trocar o arquivo de resposta';
    QJ_SEM_CONFIG: Result := 'ConfigQJ.ini não pôde ser lido no diretório atual';
    QJ_VALOR_INVALIDO: Result := 'o valor não está na forma 0,00';
    QJ_EMAIL_AUSENTE: Result := 'não há Email.exe na pasta do Trevix: o envio não foi feito';
    QJ_CNPJ_INVALIDO: Result := 'o CNPJ do cliente é inválido';
    QJ_EM_ATUALIZACAO: Result := 'o Trevix está sendo atualizado';
    QJ_SEM_ADMINISTRADOR: Result := 'o programa não está sendo executado como administrador';
    QJ_OUTRA_TRANSACAO: Result := 'um Trevix em execução não pôde ser encerrado';
  else
    Result := 'código desconhecido';
  end;
  if Codigo <> QJ_SUCESSO then
    Result := Result + ' (' + Numero(Codigo) + ')';
end;

function IniciarOuFinalizar(const Nome: AnsiString; NumeroDaFuncao: Cardinal;
  const Inicio: TInicioFluxo; const Textos: TTextosFluxo): Integer;
begin
  EnterCriticalSection(Trava);
  try
    Result := TFnFluxo(Funcao(Nome))(NumeroDaFuncao, PAnsiChar(Textos.CNPJ), Inicio.Campo3,
      PAnsiChar(Textos.Campo4), PAnsiChar(Textos.Valor), PAnsiChar(Textos.Campo6),
      PAnsiChar(Textos.Campo7), PAnsiChar(Textos.Campo8), PAnsiChar(Textos.Campo9), Inicio.Campo10,
      nil);
  finally
    LeaveCriticalSection(Trava);
  end;
end;

function Aguarda: UnicodeString;
begin
  EnterCriticalSection(Trava);
  try
    Result := Decodificar(LerTextoCaixora(TFnAguarda(Funcao('AguardaFuncaoQJInterativo'))()));
  finally
    LeaveCriticalSection(Trava);
  end;
end;

function Continua(const Resposta: UnicodeString): Integer;
var
  Bytes: RawByteString;
begin
  Bytes := Codificar('sInformacao', Resposta, '¬');
  EnterCriticalSection(Trava);
  try
    Result := TFnContinua(Funcao('ContinuaFuncaoQJInterativo'))(PAnsiChar(Bytes));
  finally
    LeaveCriticalSection(Trava);
  end;
end;

function CancelaFluxo: Integer;
begin
  EnterCriticalSection(Trava);
  try
    Result := TFnCancela(Funcao('CancelarFluxoQJInterativo'))();
  finally
    LeaveCriticalSection(Trava);
  end;
end;

procedure Desistir(var Fluxo: TFluxo; const Motivo: UnicodeString);
var
  Codigo: Integer;
begin
  Fluxo.Motivo := Motivo;
  Codigo := CancelaFluxo;
  if Codigo = QJ_SUCESSO then
    Exit;
  Fluxo.Motivo := Fluxo.Motivo + '; o cancelamento falhou: ' + MotivoDoCodigo(Codigo);
  if Fluxo.Codigo = QJ_SUCESSO then
    Fluxo.Codigo := Codigo;
end;

// True quando o retorno veio; senão, o fluxo já foi cancelado.
function Conversar(var Fluxo: TFluxo; Perguntar: TPerguntar;
  DeveCancelar: TDeveCancelar): Boolean;
const
  ABORTAR = '[ERROABORTAR]#';
  PELO_PDV = 'cancelado pelo PDV';
var
  Texto, Resposta: UnicodeString;
begin
  Result := False;
  repeat
    Fluxo.Etapa := efAguarda;
    Texto := Aguarda;
    if Texto = '' then
    begin
      if Assigned(DeveCancelar) and DeveCancelar() then
      begin
        Desistir(Fluxo, PELO_PDV);
        Exit;
      end;
      Sleep(PAUSA_DO_FLUXO);
      Continue;
    end;
    if Pos(ABORTAR, Texto) = 1 then
    begin
      Desistir(Fluxo, Copy(Texto, Length(ABORTAR) + 1, Length(Texto)));
      Exit;
    end;
    if Pos('[RETORNO]', Texto) > 0 then
    begin
      Fluxo.Retorno := Texto;
      Result := True;
      Exit;
    end;
    Fluxo.Etapa := efPergunta;
    Resposta := '';
    if not Perguntar(Texto, Resposta) then
    begin
      Desistir(Fluxo, PELO_PDV);
      Exit;
    end;
    Fluxo.Etapa := efContinua;
    Fluxo.Codigo := Continua(Resposta);
  until Fluxo.Codigo <> QJ_SUCESSO;
  Desistir(Fluxo, MotivoDoCodigo(Fluxo.Codigo));
end;

procedure OcuparFluxo;
begin
  EnterCriticalSection(Trava);
  try
    RecusarVendaEmCurso;
    RecusarPendencia;
    if FluxoEmCurso then
      raise EUsoErrado.Create('já há um fluxo interativo em curso');
    FluxoEmCurso := True;
  finally
    LeaveCriticalSection(Trava);
  end;
end;

function TCaixora.Fluxo(const Inicio: TInicioFluxo; Perguntar: TPerguntar;
  DeveCancelar: TDeveCancelar): TFluxo;
var
  Textos: TTextosFluxo;
begin
  if not Assigned(Perguntar) then
    raise EArgumentoInvalido.Create('Perguntar não foi informado');
  if Inicio.FuncaoFim = Inicio.Funcao then
    raise EArgumentoInvalido.Create('FuncaoFim igual a Funcao começaria outra transação');
  Textos.CNPJ := FCNPJCliente;
  Textos.Campo4 := Codificar('sCampo4', Inicio.Campo4, '¬');
  Textos.Valor := Codificar('sValor', Centavos(Inicio.Valor.Centavos).Texto);
  Textos.Campo6 := Codificar('sCampo6', Inicio.Campo6, '¬');
  Textos.Campo7 := Codificar('sCampo7', Inicio.Campo7, '¬');
  Textos.Campo8 := Codificar('sCampo8', Inicio.Campo8, '¬');
  Textos.Campo9 := Codificar('sCampo9', Inicio.Campo9, '¬');

  Result := Default(TFluxo);
  OcuparFluxo;
  try
    Result.Etapa := efInicia;
    Result.Codigo := IniciarOuFinalizar('IniciaFuncaoQJInterativo', Inicio.Funcao, Inicio, Textos);
    Result.Motivo := MotivoDoCodigo(Result.Codigo);
    if Result.Codigo <> QJ_SUCESSO then
      Exit;
    try
      if not Conversar(Result, Perguntar, DeveCancelar) then
        Exit;
    except
      CancelaFluxo;
      raise;
    end;
    SepararRetorno(Result);
    Result.Etapa := efFinaliza;
    Result.Codigo := IniciarOuFinalizar('FinalizaFuncaoQJInterativo', Inicio.FuncaoFim, Inicio,
      Textos);
    Result.Motivo := MotivoDoCodigo(Result.Codigo);
    Result.Concluido := (Result.Codigo = QJ_SUCESSO) or (Result.Codigo = QJ_EMAIL_AUSENTE);
  finally
    EnterCriticalSection(Trava);
    FluxoEmCurso := False;
    LeaveCriticalSection(Trava);
  end;
end;

initialization
  InitializeCriticalSection(Trava);
  InitializeCriticalSection(TravaDiario);

end.
