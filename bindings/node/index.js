'use strict';

/**
 * Caixora.dll para Node.js 18 ou mais novo (Windows, 64 bits). As assinaturas e o que cada uma
 * promete estão em index.d.ts.
 *
 *   const { Caixora } = require('caixora');
 *   const caixora = new Caixora({ cnpjCliente, cnpjParceiro, diario: 'diario.txt' });
 *   const { situacao } = await caixora.venderEConfirmar(
 *     { funcao: 'vendeCreditoVista', valor: 1250, cupom: 101 },
 *     async (resultado) => { await gravar(resultado); await imprimir(resultado.comprovante); });
 *
 * As chamadas correm em outra thread, uma por vez no processo inteiro; o laço de eventos não para.
 */

const fs = require('node:fs/promises');
const path = require('node:path');
const { setTimeout: pausa } = require('node:timers/promises');
const { inspect, promisify } = require('node:util');
const { isMainThread } = require('node:worker_threads');
const koffi = require('koffi');

const INT32_MAXIMO = 0x7fffffff;
const UINT32_MAXIMO = 0xffffffff;
const CENTAVOS_MAXIMO = 214748364799;

/** Promessas em fila: cada tarefa começa quando a anterior terminou, bem ou mal. */
class Fila {
  #ultima = Promise.resolve();

  entrar(tarefa) {
    const vez = this.#ultima.then(tarefa);
    this.#ultima = vez.catch(() => {});
    return vez;
  }
}

/** O estado da DLL é do processo, e este também: duas cópias deste pacote usam o mesmo. */
const processo = (globalThis[Symbol.for('caixora/1')] ??= {
  dll: null, // { caminho, funcoes }
  chamadas: new Fila(),
  pendencia: null, // o desfecho recusado: { cupom, desfecho }
  emVenda: null, // o cupom cujo desfecho está a cargo de uma chamada em andamento
  emFluxo: false,
  emUso: null, // os argumentos da chamada em andamento
  diarios: new Fila(),
});

// ---- Erros ----

class CaixoraErro extends Error {
  get name() {
    return this.constructor.name;
  }
}

class ArgumentoInvalido extends CaixoraErro {}

class DiarioErro extends CaixoraErro {}

class PendenciaAberta extends CaixoraErro {
  constructor(cupom, desfecho) {
    const recusado =
      desfecho === 'confirmar' ? 'a confirmação foi recusada' : 'o desfazimento foi recusado';
    super(`cupom ${cupom}: ${recusado} e ainda falta; repita, ou chame esquecerPendencia`);
    this.cupom = cupom;
    this.desfecho = desfecho;
  }
}

/** O que falta a uma venda que parou em cada estado. */
const FALTA = {
  iniciada: 'desfazer',
  aprovada: 'confirmar ou desfazer',
  confirmar: 'confirmar',
  desfazer: 'desfazer',
};

class VendaEmAberto extends CaixoraErro {
  constructor(cupom, estado, ultimaMensagem, opcoes) {
    super(
      `a venda do cupom ${cupom} está em aberto (${estado}; falta ${FALTA[estado]}): ` +
        ultimaMensagem,
      opcoes
    );
    this.cupom = cupom;
    this.estado = estado;
    this.ultimaMensagem = ultimaMensagem;
  }
}

class ValorDivergente extends CaixoraErro {
  constructor(cupom, valor, resultado) {
    const { campos } = resultado;
    super(
      `pedidos ${valor} centavos no cupom ${cupom}, aprovados "${campos.valorCentavos}" no cupom ` +
        `"${campos.cupom}". O desfazimento foi enviado ao cupom ${cupom}; se a resposta é de ` +
        'outro cupom, confira-o no GP'
    );
    this.cupom = cupom;
    this.valorPedido = valor;
    this.valorAprovado = resultado.valorCentavos;
    this.resultado = resultado;
  }
}

// ---- Textos: Windows-1252 ----

// Os bytes 0x80 a 0x9F. Os cinco indefinidos valem o controle C1 de mesmo número ao decodificar, e
// nada ao codificar.
const FAIXA_80 = '€\x81‚ƒ„…†‡ˆ‰Š‹Œ\x8dŽ\x8f\x90‘’“”•–—˜™š›œ\x9džŸ';
const BYTES_80 = new Map(
  [...FAIXA_80].map((c, i) => [c, 0x80 + i]).filter(([c]) => c > '\xff')
);

function decodificar(bytes) {
  return Buffer.from(bytes)
    .toString('latin1')
    .replace(/[\x80-\x9f]/g, (c) => FAIXA_80[c.charCodeAt(0) - 0x80]);
}

function nomeDoPonto(c) {
  return `U+${c.codePointAt(0).toString(16).toUpperCase().padStart(4, '0')}`;
}

/** O texto em bytes, com o zero final; `proibidos` são os separadores que ele não pode conter. */
function codificar(texto, nome, proibidos = '') {
  if (typeof texto !== 'string') {
    throw new ArgumentoInvalido(`${nome}: ${inspect(texto)} não é um texto`);
  }
  const bytes = [];
  for (const c of texto) {
    const ponto = c.codePointAt(0);
    const igual = ponto < 0x80 || (ponto >= 0xa0 && ponto <= 0xff);
    const byte = igual ? ponto : BYTES_80.get(c);
    if (byte === undefined) {
      throw new ArgumentoInvalido(
        `${nome}: o caractere "${c}" (${nomeDoPonto(c)}) não existe em Windows-1252`
      );
    }
    // Um NUL cortaria o texto; CR e LF criariam linhas no pedido.
    if ('\0\r\n'.includes(c) || proibidos.includes(c)) {
      const visivel = ponto < 0x20 ? '' : `"${c}" `;
      throw new ArgumentoInvalido(
        `${nome}: o caractere ${visivel}(${nomeDoPonto(c)}) não é aceito aqui`
      );
    }
    bytes.push(byte);
  }
  bytes.push(0);
  return Buffer.from(bytes);
}

// ---- Números e objetos ----

function inteiro(valor, nome, minimo, maximo) {
  if (!Number.isInteger(valor) || valor < minimo || valor > maximo) {
    throw new ArgumentoInvalido(
      `${nome}: ${inspect(valor)} não é um inteiro de ${minimo} a ${maximo}`
    );
  }
  return valor;
}

/**
 * Centavos, de um inteiro (1250, 1250n) ou de um texto em reais ("12,50"). O texto tem de trazer a
 * vírgula ou o ponto: "1250" pode ser um campo em centavos, e cobraria cem vezes mais.
 */
function centavos(valor, nome, minimo) {
  let total = valor;
  if (typeof valor === 'string' && /^\d{1,10}[.,]\d{1,2}$/.test(valor)) {
    const [reais, fracao] = valor.split(/[.,]/);
    total = Number(reais) * 100 + Number(fracao.padEnd(2, '0'));
  } else if (typeof valor !== 'bigint' && !Number.isSafeInteger(valor)) {
    throw new ArgumentoInvalido(
      `${nome}: ${inspect(valor)} não é um valor; use centavos inteiros (1250) ou um texto em ` +
        'reais com até duas decimais ("12,50")'
    );
  }
  if (total < minimo || total > CENTAVOS_MAXIMO) {
    throw new ArgumentoInvalido(
      `${nome}: ${inspect(valor)} está fora da faixa de ${minimo} a ${CENTAVOS_MAXIMO} centavos`
    );
  }
  return Number(total);
}

function emReais(total) {
  return `${Math.floor(total / 100)},${String(total % 100).padStart(2, '0')}`;
}

/** Um nome trocado não pode virar um valor padrão em silêncio. */
function conferirChaves(objeto, nome, obrigatorias, opcionais = []) {
  if (typeof objeto !== 'object' || objeto === null) {
    throw new ArgumentoInvalido(`${nome}: ${inspect(objeto)} não é um objeto`);
  }
  const falta = obrigatorias.find((chave) => objeto[chave] === undefined);
  if (falta !== undefined) throw new ArgumentoInvalido(`${nome}: falta ${falta}`);
  const sobra = Object.keys(objeto).find(
    (chave) => !obrigatorias.includes(chave) && !opcionais.includes(chave)
  );
  if (sobra !== undefined) throw new ArgumentoInvalido(`${nome}: ${sobra} não existe aqui`);
}

function lista(valor, nome) {
  if (!Array.isArray(valor)) {
    throw new ArgumentoInvalido(`${nome}: ${inspect(valor)} não é uma lista`);
  }
  return valor;
}

function itemDoLink(item, nome) {
  conferirChaves(item, nome, [
    'codigo', 'descricao', 'quantidade', 'unitario', 'desconto', 'total',
  ]);
  for (const chave of ['codigo', 'descricao']) codificar(item[chave], `${nome}.${chave}`, '¬|');
  return [
    item.codigo,
    item.descricao,
    inteiro(item.quantidade, `${nome}.quantidade`, 1, INT32_MAXIMO),
    ...['unitario', 'desconto', 'total'].map((chave) =>
      emReais(centavos(item[chave], `${nome}.${chave}`, 0))
    ),
  ].join('¬');
}

function itemDaFrota(item, nome) {
  lista(item, nome).forEach((texto, i) => codificar(texto, `${nome}[${i}]`, '-|'));
  // A DLL deixa de lado, sem aviso, os itens de um texto vazio.
  if (item.length > 6 || item.every((texto) => texto === '')) {
    throw new ArgumentoInvalido(`${nome}: um item tem de um a seis textos, e não só vazios`);
  }
  return item.join('-');
}

// ---- As funções de pagamento ----

// Cada parâmetro: o nome aqui, os tipos na DLL e a conversão de um no outro.
const texto = (nome) => ({
  nome, tipos: ['uint8_t *'], converter: (v) => [codificar(v, nome)],
});
const numero = (nome, minimo) => ({
  nome, tipos: ['int32_t'], converter: (v) => [inteiro(v, nome, minimo, INT32_MAXIMO)],
});
const dinheiro = (minimo) => ({
  nome: 'valor', tipos: ['double'], converter: (v) => [centavos(v, 'valor', minimo) / 100],
});
const itens = (umItem) => ({
  nome: 'itens',
  tipos: ['int32_t', 'uint8_t *'],
  converter: (v) => {
    const textos = Array.from(lista(v, 'itens'), (item, i) => umItem(item, `itens[${i}]`));
    return [textos.length, codificar(textos.join('|'), 'itens')];
  },
});

const LEITOR = numero('leitor', 0); // vem da configuração
const PARCELAS = numero('parcelas', 1);
const CUPOM_DE_VENDA = numero('cupom', 1);
const CUPOM = numero('cupom', 0);
const VALOR_DE_VENDA = dinheiro(1);
const VALOR = dinheiro(0);

const VENDA = [VALOR_DE_VENDA, CUPOM_DE_VENDA, LEITOR];
const VENDAS = {
  vendeCredito: VENDA,
  vendeCreditoVista: VENDA,
  vendeCreditoParcLoja: [PARCELAS, ...VENDA],
  vendeCreditoParcAdm: [PARCELAS, ...VENDA],
  vendeDebito: VENDA,
  vendeDebitoAVista: VENDA,
  menuPrivate: VENDA,
  vendeCarteiraDigitalPix: VENDA,
  parceleMais: VENDA,
  vendeFrotaCompleto: [
    VALOR_DE_VENDA, texto('km'), texto('placa'), texto('matricula'), itens(itemDaFrota),
    CUPOM_DE_VENDA, LEITOR,
  ],
  linkPagamento: [
    PARCELAS, VALOR_DE_VENDA, CUPOM_DE_VENDA, itens(itemDoLink), texto('campo011'),
    texto('campo012'), LEITOR,
  ],
};
const DESFECHOS = { confirmar: 'confirmar', desfazimento: 'desfazer' };
const FUNCOES = {
  ...VENDAS,
  confirmar: [CUPOM_DE_VENDA],
  desfazimento: [CUPOM_DE_VENDA],
  listarLinkPagamentoPago: [VALOR, CUPOM, LEITOR],
  manutencaoLinkPagamento: [LEITOR],
  cancelar: [VALOR, CUPOM, texto('controle'), LEITOR],
  reimpressao: [LEITOR],
  reimpressaoDireto: [texto('nsu'), texto('data'), CUPOM, LEITOR],
  adm: [VALOR, CUPOM, LEITOR],
  relatorio: [CUPOM, LEITOR],
  recargaCelular: [CUPOM, LEITOR],
  atv: [CUPOM, LEITOR],
  solicitarCPF: [CUPOM],
  solicitarCNPJ: [CUPOM],
  solicitarDocumento: [CUPOM],
};

function parametrosDe(funcao) {
  return FUNCOES[funcao].filter((parametro) => parametro !== LEITOR);
}

// ---- A DLL ----

// Os programas são iniciados pelo Shell do Windows, que não cabe nos 128 KiB que o koffi reserva.
const PILHA = 1024 * 1024;

const FLUXO = [
  'uint32_t', 'uint8_t *', 'uint32_t', 'uint8_t *', 'uint8_t *', 'uint8_t *', 'uint8_t *',
  'uint8_t *', 'uint8_t *', 'uint32_t', 'uint8_t *',
];

function reservarPilha() {
  if (koffi.config().async_stack_size >= PILHA) return;
  try {
    koffi.config({ async_stack_size: PILHA });
  } catch (erro) {
    throw new Error('crie a Caixora antes de carregar outra biblioteca com o koffi', {
      cause: erro,
    });
  }
}

function carregar(caminho) {
  if (processo.dll !== null) {
    if (processo.dll.caminho === caminho) return processo.dll.funcoes;
    throw new CaixoraErro(
      `${caminho}: este processo já carregou ${processo.dll.caminho}; use uma só DLL`
    );
  }
  if (process.platform !== 'win32' || process.arch !== 'x64') {
    throw new CaixoraErro(
      'a Caixora.dll precisa de um Node.js de 64 bits (x64) no Windows; este é ' +
        `${process.platform} ${process.arch}`
    );
  }
  try {
    reservarPilha();
    const dll = koffi.load(caminho);
    const oleaut = koffi.load('oleaut32.dll');
    const kernel = koffi.load('kernel32.dll');

    const emOutraThread = (nome, retorno, tipos) => {
      const chamar = promisify(dll.func(nome, retorno, tipos).async);
      return async (...argumentos) => {
        // O koffi não segura os Buffers: sem isto o coletor poderia levá-los durante a chamada.
        processo.emUso = argumentos;
        try {
          return await chamar(...argumentos);
        } finally {
          processo.emUso = null;
        }
      };
    };

    const tamanho = oleaut.func('SysStringByteLen', 'uint32_t', ['void *']);
    const liberar = oleaut.func('SysFreeString', 'void', ['void *']);
    const comTexto = (nome, tipos) => {
      const chamar = emOutraThread(nome, 'void *', tipos);
      return async (...argumentos) => {
        const bstr = await chamar(...argumentos);
        try {
          const quantos = tamanho(bstr);
          return quantos === 0 ? '' : decodificar(koffi.decode(bstr, 'uint8_t', quantos));
        } finally {
          liberar(bstr);
        }
      };
    };

    const funcoes = {
      teste: emOutraThread('Teste', 'str', []),
      inicia: emOutraThread('IniciaFuncaoQJInterativo', 'int32_t', FLUXO),
      aguarda: comTexto('AguardaFuncaoQJInterativo', []),
      continua: emOutraThread('ContinuaFuncaoQJInterativo', 'int32_t', ['uint8_t *']),
      finaliza: emOutraThread('FinalizaFuncaoQJInterativo', 'int32_t', FLUXO),
      cancela: emOutraThread('CancelarFluxoQJInterativo', 'int32_t', []),
      substituirArquivo: promisify(
        kernel.func('MoveFileExW', 'bool', ['str16', 'str16', 'uint32_t']).async
      ),
    };
    for (const [nome, parametros] of Object.entries(FUNCOES)) {
      const tipos = ['uint8_t *', 'uint8_t *', ...parametros.flatMap(({ tipos }) => tipos)];
      funcoes[nome] = comTexto(nome[0].toUpperCase() + nome.slice(1), tipos);
    }
    processo.dll = { caminho, funcoes };
    return funcoes;
  } catch (erro) {
    throw new CaixoraErro(`não foi possível carregar ${caminho}: ${erro.message}`, {
      cause: erro,
    });
  }
}

/** Durante uma pendência, só o mesmo desfecho do mesmo cupom pode seguir. */
function exigirSemPendencia(cupomPermitido, desfechoPermitido) {
  if (processo.pendencia === null) return;
  const { cupom, desfecho } = processo.pendencia;
  if (cupom !== cupomPermitido || desfecho !== desfechoPermitido) {
    throw new PendenciaAberta(cupom, desfecho);
  }
}

/** Esperar pela venda travaria quem chama de dentro de aoAprovar. */
function exigirSemVenda() {
  if (processo.emVenda !== null) {
    throw new ArgumentoInvalido(`há uma venda em andamento: cupom ${processo.emVenda}`);
  }
}

/** Uma chamada por vez: a tarefa recebe as funções da DLL quando a anterior já voltou. */
function naVez(tarefa) {
  return processo.chamadas.entrar(() => tarefa(processo.dll.funcoes));
}

// ---- Resultado ----

const CAMPOS = [
  'cupom', 'valorCentavos', 'bandeira', 'rede', 'autorizacao', 'nsu', 'tipo', 'parcelas',
  'controle', 'campo170_000', 'codigoRede', 'campo740_000', 'campo741_000', 'campo742_000',
  'campo031_000',
];

class Resultado {
  constructor(bruto) {
    const aprovacao = /^S;([12]);(.*?)\r\nC;(.*?)(?:\r\n(.*))?$/s.exec(bruto);
    const valores = aprovacao ? aprovacao[3].split(';') : [];
    const completa = valores.length >= CAMPOS.length;
    this.bruto = bruto;
    this.codigo = completa ? Number(aprovacao[1]) : 0;
    this.mensagem = completa ? aprovacao[2] : bruto.replace(/^S;0;/, '');
    this.campos = Object.freeze(
      Object.fromEntries(CAMPOS.map((nome, i) => [nome, completa ? valores[i] : '']))
    );
    this.comprovante = Object.freeze(
      ((completa && aprovacao[4]) || '')
        .split('\r\n')
        .filter((linha) => linha.startsWith('I;'))
        .map((linha) => linha.slice(2))
    );
    Object.freeze(this);
  }

  get valorCentavos() {
    const valor = this.campos.valorCentavos;
    return /^\d+$/.test(valor) && Number.isSafeInteger(Number(valor)) ? Number(valor) : null;
  }

  get respostaLocal() {
    const { cupom, parcelas, ...outros } = this.campos;
    return (
      this.codigo === 2 &&
      this.mensagem === 'COMANDO COM SUCESSO' &&
      parcelas === '1' &&
      Object.values(outros).every((valor) => valor === '')
    );
  }

  get aprovada() {
    return this.codigo !== 0 && !this.respostaLocal;
  }
}

/** Um "S;0;" diz que nada foi vendido, exceto quando o pedido já podia estar com o GP. */
function recusaCerta(resultado, ms) {
  if (!resultado.bruto.startsWith('S;0;')) return false;
  switch (resultado.mensagem) {
    case 'GP NÃO ATIVO':
      // O GP fechado é notado aos 1000 ms, antes de o pedido existir; um que parou depois de
      // recebê-lo, aos 1300 ms ou mais.
      return ms < 1250;
    case 'GP NAO ATIVO':
    case 'FALHA INTERNA, VERIFIQUE NO GP SE A OPERACAO FOI REALIZADA':
      return false;
    default:
      return true;
  }
}

function conferirAprovacao(resultado, valor, cupom) {
  // Number('') é 0, que não é cupom de venda.
  if (resultado.valorCentavos !== valor || Number(resultado.campos.cupom) !== cupom) {
    throw new ValorDivergente(cupom, valor, resultado);
  }
}

// ---- Diário ----

const CABECALHO = 'caixora-diario 1';
const LINHA = /^([1-9]\d{0,9});([1-9]\d{0,11});(iniciada|aprovada|confirmar|desfazer)$/;
const SUBSTITUIR_E_GRAVAR_JA = 0x1 | 0x8; // MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH

/** Antivírus e indexadores seguram por instantes um arquivo recém-gravado. */
async function insistir(tarefa) {
  for (let restam = 10; ; restam--) {
    try {
      return await tarefa();
    } catch (erro) {
      if (restam === 0) throw erro;
      await pausa(50);
    }
  }
}

/** As vendas em aberto, por cupom; todos os diários do processo mudam um de cada vez. */
class Diario {
  #caminho;

  constructor(caminho) {
    this.#caminho = caminho;
  }

  async vendas() {
    // Uma lista vazia diria que nada ficou em aberto, e isso não se sabe.
    if (this.#caminho === null) throw new DiarioErro('não há diário na configuração');
    return processo.diarios.entrar(async () => [...(await this.#ler()).values()]);
  }

  async exigirFora(cupom) {
    if (this.#caminho === null) return;
    if ((await this.vendas()).some((aberta) => aberta.cupom === cupom)) {
      throw new ArgumentoInvalido(
        `cupom: ${cupom} está em aberto no diário; use concluirVenda`
      );
    }
  }

  abrir(cupom, valorCentavos) {
    return this.#mudar((vendas) => {
      const [aberta] = vendas.values();
      if (aberta !== undefined) {
        throw new VendaEmAberto(aberta.cupom, aberta.estado, 'conclua-a antes de vender');
      }
      vendas.set(cupom, { cupom, valorCentavos, estado: 'iniciada' });
    });
  }

  marcar(cupom, valorCentavos, estado) {
    return this.#mudar((vendas) => vendas.set(cupom, { cupom, valorCentavos, estado }));
  }

  fechar(cupom) {
    return this.#mudar((vendas) => vendas.delete(cupom));
  }

  async #mudar(mudanca) {
    if (this.#caminho === null) return;
    await processo.diarios.entrar(async () => {
      const vendas = await this.#ler();
      mudanca(vendas);
      await this.#gravar(vendas);
    });
  }

  async #ler() {
    let conteudo;
    try {
      conteudo = await fs.readFile(this.#caminho, 'latin1');
    } catch (erro) {
      if (erro.code === 'ENOENT') return new Map();
      throw new DiarioErro(`diário ilegível: ${erro.message}`, { cause: erro });
    }
    const linhas = conteudo.split(/\r?\n/);
    const vendas = new Map();
    if (linhas.shift() !== CABECALHO || linhas.pop() !== '') this.#ilegivel();
    for (const linha of linhas) {
      const [, cupom, valorCentavos, estado] = LINHA.exec(linha) ?? this.#ilegivel();
      const venda = { cupom: Number(cupom), valorCentavos: Number(valorCentavos), estado };
      const cabe = venda.cupom <= INT32_MAXIMO && venda.valorCentavos <= CENTAVOS_MAXIMO;
      if (!cabe || vendas.has(venda.cupom)) this.#ilegivel();
      vendas.set(venda.cupom, venda);
    }
    return vendas;
  }

  #ilegivel() {
    throw new DiarioErro(`diário ilegível: ${this.#caminho}`);
  }

  async #gravar(vendas) {
    try {
      if (vendas.size === 0) {
        await insistir(() => fs.rm(this.#caminho, { force: true }));
        return;
      }
      const linhas = [...vendas.values()].map((v) => `${v.cupom};${v.valorCentavos};${v.estado}`);
      const novo = `${this.#caminho}.tmp`;
      const arquivo = await insistir(() => fs.open(novo, 'w'));
      try {
        await arquivo.writeFile(`${[CABECALHO, ...linhas].join('\n')}\n`);
        await arquivo.sync();
      } finally {
        await arquivo.close();
      }
      // fs.rename não espera o disco.
      await insistir(() => this.#substituir(novo));
    } catch (erro) {
      throw new DiarioErro(`o diário não pôde ser gravado: ${erro.message}`, { cause: erro });
    }
  }

  async #substituir(novo) {
    const { substituirArquivo } = processo.dll.funcoes;
    if (!(await substituirArquivo(novo, this.#caminho, SUBSTITUIR_E_GRAVAR_JA))) {
      throw new Error(`${this.#caminho} não pôde ser substituído`);
    }
  }
}

// ---- Fluxo interativo ----

const MOTIVOS = {
  30: 'não há a linha CAMINHO em ConfigQJ.ini',
  31: 'a linha CAMINHO de ConfigQJ.ini tem a pasta vazia',
  32: 'não há Trevix.exe legível na pasta',
  33: 'o Trevix.exe foi iniciado, mas não está em execução',
  34: 'falha ao iniciar o Trevix.exe',
  35: 'o arquivo de resposta não pôde ser criado',
  36: 'falha ao gravar ou trocar o arquivo de resposta',
  37: 'ConfigQJ.ini não pôde ser lido',
  38: 'o valor não está na forma 0,00',
  39: 'não há Email.exe na pasta do Trevix.exe: só o envio não foi feito',
  40: 'CNPJ inválido',
  41: 'o Trevix.exe está sendo atualizado',
  42: 'o programa não está em execução como administrador',
  43: 'um Trevix.exe em execução não pôde ser encerrado',
};
const motivoDo = (codigo) => (codigo === 0 ? '' : (MOTIVOS[codigo] ?? `código ${codigo}`));
const ABORTAR = '[ERROABORTAR]#';
const CANCELADO = 'cancelado pelo PDV';

function camposDoRetorno(retorno) {
  const pares = retorno.split('|').map((parte) => /^([^:]+):(.*)$/s.exec(parte));
  return Object.fromEntries(pares.filter(Boolean).map(([, chave, valor]) => [chave, valor]));
}

/** A resposta do PDV, ou null se o cancelamento vier antes dela. */
function respostaOuNull(perguntar, pergunta, signal) {
  return new Promise((resolver, rejeitar) => {
    if (signal?.aborted) return resolver(null);
    const aoAbortar = () => resolver(null);
    signal?.addEventListener('abort', aoAbortar, { once: true });
    (async () => perguntar(pergunta, { signal }))()
      .then(resolver, rejeitar)
      .finally(() => signal?.removeEventListener('abort', aoAbortar));
  });
}

// ---- A configuração e as operações ----

class Caixora {
  #cnpjs;
  #leitor;
  #diario;
  #tentativas;
  #pausaMs;

  constructor(configuracao) {
    if (!isMainThread) {
      throw new CaixoraErro('use a Caixora na thread principal: a fila de chamadas está nela');
    }
    conferirChaves(configuracao, 'configuracao', ['cnpjCliente', 'cnpjParceiro'], [
      'leitor', 'dll', 'diario', 'tentativas', 'pausaMs',
    ]);
    const { cnpjCliente, cnpjParceiro } = configuracao;
    const { leitor = 1, dll = 'Caixora.dll', tentativas = 10, pausaMs = 2000 } = configuracao;
    const { diario = null } = configuracao;
    this.#cnpjs = [
      codificar(cnpjCliente, 'cnpjCliente', '¬'),
      codificar(cnpjParceiro, 'cnpjParceiro'),
    ];
    [this.#leitor] = LEITOR.converter(leitor);
    this.#tentativas = inteiro(tentativas, 'tentativas', 1, INT32_MAXIMO);
    this.#pausaMs = inteiro(pausaMs, 'pausaMs', 0, INT32_MAXIMO);
    for (const [nome, caminho] of Object.entries({ dll, diario: diario ?? '-' })) {
      if (typeof caminho !== 'string' || caminho === '') {
        throw new ArgumentoInvalido(`${nome}: ${inspect(caminho)} não é um caminho`);
      }
    }
    // O diretório atual pode mudar; o diário continua o mesmo.
    this.#diario = new Diario(diario === null ? null : path.resolve(diario));
    carregar(dll);
  }

  static {
    for (const funcao of Object.keys(FUNCOES)) {
      this.prototype[funcao] = async function (...valores) {
        return this.#direta(funcao, valores);
      };
    }
  }

  async teste() {
    exigirSemVenda();
    return naVez((dll) => {
      exigirSemPendencia();
      return dll.teste();
    });
  }

  async esquecerPendencia() {
    exigirSemVenda();
    await naVez(async (dll) => {
      await dll.teste();
      processo.pendencia = null;
    });
  }

  async aguardarGp(tentativas = this.#tentativas) {
    inteiro(tentativas, 'tentativas', 1, INT32_MAXIMO);
    for (let tentativa = 1; ; tentativa++) {
      const resultado = await this.atv(1);
      if (resultado.aprovada) return resultado;
      if (tentativa === tentativas) {
        throw new CaixoraErro(`o GP não está ativo: ${resultado.mensagem}`);
      }
      await pausa(this.#pausaMs);
    }
  }

  async venderEConfirmar(venda, aoAprovar) {
    if (typeof aoAprovar !== 'function') {
      throw new ArgumentoInvalido(`aoAprovar: ${inspect(aoAprovar)} não é uma função`);
    }
    const funcao = venda?.funcao;
    if (!Object.hasOwn(VENDAS, funcao)) {
      throw new ArgumentoInvalido(`venda.funcao: ${inspect(funcao)} não é uma venda`);
    }
    const nomes = parametrosDe(funcao).map(({ nome }) => nome);
    conferirChaves(venda, 'venda', ['funcao', ...nomes]);
    const argumentos = this.#argumentos(funcao, nomes.map((nome) => venda[nome]));
    const { cupom } = venda;
    const valor = centavos(venda.valor, 'valor', 1);
    return this.#reservando(cupom, () =>
      this.#vender(funcao, argumentos, valor, cupom, aoAprovar)
    );
  }

  async vendasEmAberto() {
    return this.#diario.vendas();
  }

  async concluirVenda(cupom, desfecho) {
    CUPOM_DE_VENDA.converter(cupom);
    if (desfecho !== 'confirmar' && desfecho !== 'desfazer') {
      throw new ArgumentoInvalido(`desfecho: ${inspect(desfecho)}; use "confirmar" ou "desfazer"`);
    }
    await this.#reservando(cupom, async () => {
      await naVez(() => exigirSemPendencia(cupom, desfecho));
      const venda = (await this.#diario.vendas()).find((aberta) => aberta.cupom === cupom);
      if (venda === undefined) {
        throw new ArgumentoInvalido(`cupom: ${cupom} não está em aberto no diário`);
      }
      const { estado } = venda;
      if (!FALTA[estado].split(' ou ').includes(desfecho)) {
        throw new ArgumentoInvalido(
          `desfecho: o cupom ${cupom} está no diário como ${estado}, e só se pode ${FALTA[estado]}`
        );
      }
      await this.#concluir(cupom, venda.valorCentavos, desfecho);
    });
  }

  async fluxo(inicio, perguntar, opcoes = {}) {
    conferirChaves(inicio, 'inicio', [
      'funcao', 'valor', 'campo3', 'campo4', 'campo6', 'campo7', 'campo8', 'campo9', 'campo10',
      'funcaoFim',
    ]);
    if (typeof perguntar !== 'function') {
      throw new ArgumentoInvalido(`perguntar: ${inspect(perguntar)} não é uma função`);
    }
    conferirChaves(opcoes, 'opcoes', [], ['signal']);
    const { signal } = opcoes;
    if (signal !== undefined && !(signal instanceof AbortSignal)) {
      throw new ArgumentoInvalido(`signal: ${inspect(signal)} não é um AbortSignal`);
    }
    const numeroDe = (nome) => inteiro(inicio[nome], nome, 0, UINT32_MAXIMO);
    const textoDe = (nome) => codificar(inicio[nome], nome, '¬');
    const funcaoFim = numeroDe('funcaoFim');
    if (funcaoFim === inicio.funcao) {
      throw new ArgumentoInvalido(`funcaoFim: ${funcaoFim} começaria outra transação`);
    }
    const argumentos = [
      numeroDe('funcao'),
      this.#cnpjs[0],
      numeroDe('campo3'),
      textoDe('campo4'),
      codificar(emReais(centavos(inicio.valor, 'valor', 0)), 'valor'),
      textoDe('campo6'),
      textoDe('campo7'),
      textoDe('campo8'),
      textoDe('campo9'),
      numeroDe('campo10'),
      codificar('', 'campo11'),
    ];
    exigirSemVenda();
    // Iniciar outro encerraria o companheiro do primeiro no meio da transação.
    if (processo.emFluxo) throw new CaixoraErro('já há um fluxo interativo em andamento');
    processo.emFluxo = true;
    try {
      return await this.#conduzir(argumentos, funcaoFim, perguntar, signal);
    } finally {
      processo.emFluxo = false;
    }
  }

  #argumentos(funcao, valores) {
    const parametros = parametrosDe(funcao);
    if (valores.length !== parametros.length) {
      const nomes = parametros.map(({ nome }) => nome).join(', ');
      throw new ArgumentoInvalido(
        `${funcao}(${nomes}): ${valores.length} argumentos em vez de ${parametros.length}`
      );
    }
    const convertidos = parametros.flatMap(({ converter }, i) => converter(valores[i]));
    const leitor = FUNCOES[funcao].includes(LEITOR) ? [this.#leitor] : [];
    return [...this.#cnpjs, ...convertidos, ...leitor];
  }

  async #direta(funcao, valores) {
    const argumentos = this.#argumentos(funcao, valores);
    const cupom = valores[parametrosDe(funcao).indexOf(CUPOM_DE_VENDA)];
    exigirSemVenda();
    if (Object.hasOwn(DESFECHOS, funcao)) {
      await this.#diario.exigirFora(cupom);
      exigirSemVenda();
    }
    return (await this.#chamar(funcao, argumentos, cupom)).resultado;
  }

  /** Chama a DLL na sua vez, e diz quanto ela demorou. */
  async #chamar(funcao, argumentos, cupom) {
    const desfecho = DESFECHOS[funcao];
    return naVez(async (dll) => {
      exigirSemPendencia(cupom, desfecho);
      if (desfecho) processo.pendencia = { cupom, desfecho };
      const inicio = performance.now();
      const bruto = await dll[funcao](...argumentos);
      const ms = performance.now() - inicio;
      const resultado = new Resultado(bruto);
      if (desfecho && resultado.codigo !== 0) processo.pendencia = null;
      return { resultado, ms };
    });
  }

  /** Até a tarefa terminar, nenhuma outra operação chega ao GP. */
  async #reservando(cupom, tarefa) {
    exigirSemVenda();
    processo.emVenda = cupom;
    try {
      return await tarefa();
    } finally {
      processo.emVenda = null;
    }
  }

  async #vender(funcao, argumentos, valor, cupom, aoAprovar) {
    await naVez(() => exigirSemPendencia());
    await this.#diario.abrir(cupom, valor);
    let chamada;
    try {
      chamada = await this.#chamar(funcao, argumentos, cupom);
    } catch (erro) {
      if (erro instanceof PendenciaAberta) {
        await this.#diario.fechar(cupom); // a venda nem foi chamada
      } else {
        await this.#concluir(cupom, valor, 'desfazer', erro);
      }
      throw erro;
    }
    const { resultado, ms } = chamada;
    if (!resultado.aprovada) {
      if (recusaCerta(resultado, ms)) {
        await this.#diario.fechar(cupom);
        return { situacao: 'recusada', resultado, motivo: resultado.mensagem };
      }
      await this.#concluir(cupom, valor, 'desfazer');
      const motivo = `resultado incerto: ${resultado.mensagem}`;
      return { situacao: 'desfeita', resultado, motivo };
    }
    try {
      conferirAprovacao(resultado, valor, cupom);
      await this.#diario.marcar(cupom, valor, 'aprovada');
      if ((await aoAprovar(resultado)) === false) {
        throw new CaixoraErro('aoAprovar devolveu false');
      }
    } catch (erro) {
      await this.#concluir(cupom, valor, 'desfazer', erro);
      throw erro;
    }
    await this.#concluir(cupom, valor, 'confirmar');
    return { situacao: 'confirmada', resultado, motivo: '' };
  }

  /** Leva o desfecho ao GP e fecha a venda no diário; `causa` é o erro que levou a ele. */
  async #concluir(cupom, valor, desfecho, causa) {
    // O desfecho vale mais que a marca: sem ela, o diário ainda diz que a venda está em aberto.
    await this.#diario.marcar(cupom, valor, desfecho).catch(() => {});
    const funcao = desfecho === 'confirmar' ? 'confirmar' : 'desfazimento';
    const argumentos = this.#argumentos(funcao, [cupom]);
    let feito = false;
    let mensagem;
    for (let tentativa = 1; !feito && tentativa <= this.#tentativas; tentativa++) {
      if (tentativa > 1) await pausa(this.#pausaMs);
      try {
        const { resultado } = await this.#chamar(funcao, argumentos, cupom);
        feito = resultado.codigo !== 0;
        mensagem = resultado.mensagem;
      } catch (erro) {
        mensagem = erro.message;
      }
    }
    if (!feito) throw new VendaEmAberto(cupom, desfecho, mensagem, { cause: causa });
    try {
      await this.#diario.fechar(cupom);
    } catch (erro) {
      throw new DiarioErro(`cupom ${cupom} concluído no GP, mas ${erro.message}`, {
        cause: causa ?? erro,
      });
    }
  }

  async #conduzir(argumentos, funcaoFim, perguntar, signal) {
    const fim = (etapa, codigo, motivo, retorno = '') => ({
      concluido: retorno !== '' && (codigo === 0 || codigo === 39),
      codigo,
      etapa,
      retorno,
      campos: camposDoRetorno(retorno),
      motivo,
    });
    const cancelar = async () => naVez((dll) => dll.cancela());
    const desistir = async (etapa, codigo, motivo) => {
      const cancelamento = await cancelar();
      const falha = `; o cancelamento falhou: ${motivoDo(cancelamento)}`;
      return fim(etapa, codigo, cancelamento === 0 ? motivo : motivo + falha);
    };

    if (signal?.aborted) return fim('inicia', 0, CANCELADO);
    const inicio = await naVez((dll) => {
      exigirSemPendencia();
      return dll.inicia(...argumentos);
    });
    if (inicio !== 0) return fim('inicia', inicio, motivoDo(inicio));
    let texto;
    try {
      for (;;) {
        if (signal?.aborted) return await desistir('aguarda', 0, CANCELADO);
        texto = await naVez((dll) => dll.aguarda());
        if (texto === '') {
          await pausa(200);
          continue;
        }
        if (texto.startsWith(ABORTAR)) {
          return await desistir('aguarda', 0, texto.slice(ABORTAR.length));
        }
        if (texto.includes('[RETORNO]')) break;
        const resposta = (await respostaOuNull(perguntar, texto, signal)) ?? null;
        if (resposta === null) return await desistir('pergunta', 0, CANCELADO);
        const bytes = codificar(resposta, 'resposta', '¬');
        const codigo = await naVez((dll) => dll.continua(bytes));
        if (codigo !== 0) return await desistir('continua', codigo, motivoDo(codigo));
      }
    } catch (erro) {
      await cancelar();
      throw erro;
    }
    const final = await naVez((dll) => dll.finaliza(funcaoFim, ...argumentos.slice(1)));
    return fim('finaliza', final, motivoDo(final), texto);
  }
}

module.exports = {
  Caixora,
  Resultado,
  CaixoraErro,
  ArgumentoInvalido,
  DiarioErro,
  PendenciaAberta,
  VendaEmAberto,
  ValorDivergente,
};
