/**
 * Caixora.dll para Node.js: pagamentos (TEF).
 *
 * Toda função devolve uma promessa. As chamadas correm em outra thread, uma por vez no processo
 * inteiro, na ordem em que foram feitas. Argumentos errados rejeitam com `ArgumentoInvalido`, e
 * nada é enviado.
 */

/**
 * Centavos em um inteiro (1250, 1250n), ou reais em um texto com vírgula ou ponto ("12,50",
 * "12.5"). Um número com decimais é recusado.
 */
export type Valor = number | bigint | string;

export interface Configuracao {
  /** CNPJ do lojista: 14 dígitos, com ou sem pontuação. */
  cnpjCliente: string;
  /** CNPJ do fabricante do PDV. */
  cnpjParceiro: string;
  /** Número do leitor; 1 se ausente. */
  leitor?: number;
  /** Caminho da DLL; se ausente, "Caixora.dll" pela busca do Windows. Uma só por processo. */
  dll?: string;
  /** Arquivo do diário. Sem ele, não se sabe depois de uma queda o que ficou em aberto. */
  diario?: string;
  /** Quantas vezes um desfecho é tentado, e o GP, esperado; 10 se ausente. */
  tentativas?: number;
  /** Pausa entre tentativas; 2000 se ausente. */
  pausaMs?: number;
}

export interface Campos {
  readonly cupom: string;
  readonly valorCentavos: string;
  readonly bandeira: string;
  readonly rede: string;
  readonly autorizacao: string;
  readonly nsu: string;
  readonly tipo: string;
  readonly parcelas: string;
  /** Para `cancelar`. */
  readonly controle: string;
  readonly campo170_000: string;
  readonly codigoRede: string;
  readonly campo740_000: string;
  readonly campo741_000: string;
  readonly campo742_000: string;
  readonly campo031_000: string;
}

export class Resultado {
  constructor(bruto: string);
  /** 0 recusada, com falha ou incerta; 1 e 2 atendida. Veja `aprovada`. */
  readonly codigo: 0 | 1 | 2;
  readonly mensagem: string;
  readonly campos: Campos;
  /** As linhas do comprovante. */
  readonly comprovante: readonly string[];
  /** O texto da DLL, inteiro. */
  readonly bruto: string;
  /** O valor em um inteiro; null se não veio. */
  readonly valorCentavos: number | null;
  /** "O pedido foi gravado", dito pela própria DLL: a resposta de um desfecho, nunca uma venda. */
  readonly respostaLocal: boolean;
  readonly aprovada: boolean;
}

export interface ItemDoLink {
  codigo: string;
  descricao: string;
  quantidade: number;
  unitario: Valor;
  desconto: Valor;
  total: Valor;
}

/** De um a seis textos, sem "-" e sem "|". */
export type ItemDaFrota = readonly string[];

export interface VendaSimples {
  funcao:
    | 'vendeCredito'
    | 'vendeCreditoVista'
    | 'vendeDebito'
    | 'vendeDebitoAVista'
    | 'menuPrivate'
    | 'vendeCarteiraDigitalPix'
    | 'parceleMais';
  valor: Valor;
  cupom: number;
}

export interface VendaParcelada {
  funcao: 'vendeCreditoParcLoja' | 'vendeCreditoParcAdm';
  parcelas: number;
  valor: Valor;
  cupom: number;
}

export interface VendaFrota {
  funcao: 'vendeFrotaCompleto';
  valor: Valor;
  km: string;
  placa: string;
  matricula: string;
  itens: readonly ItemDaFrota[];
  cupom: number;
}

export interface VendaPorLink {
  funcao: 'linkPagamento';
  parcelas: number;
  valor: Valor;
  cupom: number;
  itens: readonly ItemDoLink[];
  campo011: string;
  campo012: string;
}

export type Venda = VendaSimples | VendaParcelada | VendaFrota | VendaPorLink;

export interface VendaConcluida {
  /**
   * `recusada`: nada foi vendido. `desfeita`: o resultado era incerto, e o GP recebeu o
   * desfazimento.
   */
  situacao: 'confirmada' | 'recusada' | 'desfeita';
  resultado: Resultado;
  motivo: string;
}

export interface VendaNoDiario {
  cupom: number;
  valorCentavos: number;
  /**
   * Depois de uma queda: `iniciada` e `desfazer` pedem "desfazer"; `confirmar` pede "confirmar";
   * `aprovada` pede "confirmar" só se os registros do PDV têm a venda.
   */
  estado: 'iniciada' | 'aprovada' | 'confirmar' | 'desfazer';
}

export interface InicioDoFluxo {
  funcao: number;
  valor: Valor;
  campo3: number;
  campo4: string;
  campo6: string;
  campo7: string;
  campo8: string;
  campo9: string;
  campo10: number;
  /** A função de encerramento do companheiro; a da venda começaria outra venda. */
  funcaoFim: number;
}

export interface ResultadoDoFluxo {
  /** O retorno veio e o encerramento foi feito (ao menos sem o envio, código 39). */
  concluido: boolean;
  /** O código da função interativa em que terminou; 0 se nenhuma falhou. */
  codigo: number;
  etapa: 'inicia' | 'aguarda' | 'pergunta' | 'continua' | 'finaliza';
  /** O texto do retorno; vazio se não veio. Pode ter vindo mesmo sem `concluido`. */
  retorno: string;
  /** As partes `CHAVE:valor` do retorno. */
  campos: Record<string, string>;
  /** Por que não foi concluído. */
  motivo: string;
}

/** A resposta à pergunta; null ou undefined cancela o fluxo. */
export type Perguntar = (
  pergunta: string,
  opcoes: { signal: AbortSignal | undefined }
) => string | null | undefined | Promise<string | null | undefined>;

export class Caixora {
  constructor(configuracao: Configuracao);

  /**
   * Vende, chama `aoAprovar` (grave a venda e imprima ali) e confirma. Se `aoAprovar` rejeita, ou
   * devolve false, a venda é desfeita e o erro dela segue adiante. Rejeita com `VendaEmAberto`
   * (também se outra venda está em aberto no diário), `ValorDivergente`, `PendenciaAberta` ou
   * `DiarioErro`. Até o desfecho, qualquer outra operação rejeita com `ArgumentoInvalido`, também
   * de dentro de `aoAprovar`.
   */
  venderEConfirmar(
    venda: Venda,
    aoAprovar: (resultado: Resultado) => unknown
  ): Promise<VendaConcluida>;

  /** As vendas sem desfecho no diário. Consulte-as ao abrir o PDV. */
  vendasEmAberto(): Promise<VendaNoDiario[]>;

  /**
   * Leva o desfecho de uma venda do diário ao GP; rejeita com `VendaEmAberto` se não conseguir. Só
   * uma `aprovada` deixa a escolha: `iniciada` e `desfazer` são desfeitas; `confirmar`, confirmada.
   */
  concluirVenda(cupom: number, desfecho: 'confirmar' | 'desfazer'): Promise<void>;

  /** Espera o GP atender, para a abertura do dia; rejeita se ele não atender. */
  aguardarGp(tentativas?: number): Promise<Resultado>;

  /**
   * Conduz o fluxo interativo. O `signal` o cancela a qualquer momento até o retorno chegar, também
   * durante uma pergunta.
   */
  fluxo(
    inicio: InicioDoFluxo,
    perguntar: Perguntar,
    opcoes?: { signal?: AbortSignal }
  ): Promise<ResultadoDoFluxo>;

  /** Desiste de repetir um desfecho recusado, que impede as outras operações. */
  esquecerPendencia(): Promise<void>;

  vendeCredito(valor: Valor, cupom: number): Promise<Resultado>;
  vendeCreditoVista(valor: Valor, cupom: number): Promise<Resultado>;
  vendeCreditoParcLoja(parcelas: number, valor: Valor, cupom: number): Promise<Resultado>;
  vendeCreditoParcAdm(parcelas: number, valor: Valor, cupom: number): Promise<Resultado>;
  vendeDebito(valor: Valor, cupom: number): Promise<Resultado>;
  vendeDebitoAVista(valor: Valor, cupom: number): Promise<Resultado>;
  menuPrivate(valor: Valor, cupom: number): Promise<Resultado>;
  vendeCarteiraDigitalPix(valor: Valor, cupom: number): Promise<Resultado>;
  parceleMais(valor: Valor, cupom: number): Promise<Resultado>;
  vendeFrotaCompleto(
    valor: Valor,
    km: string,
    placa: string,
    matricula: string,
    itens: readonly ItemDaFrota[],
    cupom: number
  ): Promise<Resultado>;
  linkPagamento(
    parcelas: number,
    valor: Valor,
    cupom: number,
    itens: readonly ItemDoLink[],
    campo011: string,
    campo012: string
  ): Promise<Resultado>;
  listarLinkPagamentoPago(valor: Valor, cupom: number): Promise<Resultado>;
  manutencaoLinkPagamento(): Promise<Resultado>;
  /**
   * Grava o pedido e não espera o GP; repita até que a resposta seja `respostaLocal`. Um cupom do
   * diário é recusado: use `concluirVenda`.
   */
  confirmar(cupom: number): Promise<Resultado>;
  /** Como `confirmar`. */
  desfazimento(cupom: number): Promise<Resultado>;
  /** Sem valor, passe 0; sem controle, passe "". */
  cancelar(valor: Valor, cupom: number, controle: string): Promise<Resultado>;
  reimpressao(): Promise<Resultado>;
  /** `data` como "25/03/2021". */
  reimpressaoDireto(nsu: string, data: string, cupom: number): Promise<Resultado>;
  /** Sem valor, passe 0. */
  adm(valor: Valor, cupom: number): Promise<Resultado>;
  relatorio(cupom: number): Promise<Resultado>;
  recargaCelular(cupom: number): Promise<Resultado>;
  /** "O GP está aí?" */
  atv(cupom: number): Promise<Resultado>;
  solicitarCPF(cupom: number): Promise<Resultado>;
  solicitarCNPJ(cupom: number): Promise<Resultado>;
  solicitarDocumento(cupom: number): Promise<Resultado>;
  /** Devolve "OK". */
  teste(): Promise<string>;
}

export class CaixoraErro extends Error {}

/**
 * Um uso errado: um argumento que não pode ser enviado, ou uma operação durante outra venda. A
 * mensagem diz qual e por quê, e nada é enviado.
 */
export class ArgumentoInvalido extends CaixoraErro {}

/** O diário não pôde ser lido ou gravado, ou não está na configuração. */
export class DiarioErro extends CaixoraErro {}

/** Um desfecho recusado: a DLL responderia à próxima operação como se fosse ele. */
export class PendenciaAberta extends CaixoraErro {
  readonly cupom: number;
  /** O que falta: só ele, para este cupom, é aceito. */
  readonly desfecho: 'confirmar' | 'desfazer';
}

export class VendaEmAberto extends CaixoraErro {
  readonly cupom: number;
  /** O estado no diário; a mensagem diz o que falta. */
  readonly estado: VendaNoDiario['estado'];
  readonly ultimaMensagem: string;
  /** O erro que levou ao desfazimento, se houve um. */
  readonly cause?: unknown;
}

/**
 * O GP aprovou outro valor ou outro cupom. O desfazimento foi para o cupom pedido: confira no GP o
 * que a resposta traz, se é outro.
 */
export class ValorDivergente extends CaixoraErro {
  readonly cupom: number;
  readonly valorPedido: number;
  readonly valorAprovado: number | null;
  readonly resultado: Resultado;
}
