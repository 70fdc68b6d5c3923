'use strict';

// Faz o que manda cada linha de comandos.txt e anota como terminou junto das chamadas.

const fs = require('node:fs');
const { Caixora } = require('caixora');

const configuracao = {
  cnpjCliente: '11', cnpjParceiro: '22', diario: 'diario.txt', tentativas: 3, pausaMs: 1,
};
const caixora = new Caixora(configuracao);

const anotar = (linha) => fs.appendFileSync('chamadas.txt', `${linha}\n`);

function falharComo(passo) {
  if (passo === 'falha') throw Object.assign(new Error(), { name: 'ErroDoPdv' });
}

// "u+81" é um caractere.
const caractere = (a) =>
  a.startsWith('u+') ? String.fromCodePoint(parseInt(a.slice(2), 16)) : a;

const resumo = ({ codigo, mensagem }) => `${codigo} ${mensagem}`;

async function link(descricao, campo011) {
  const item = { codigo: '7', descricao, quantidade: 1, unitario: 1, desconto: 0, total: 1050 };
  return resumo(await caixora.linkPagamento(2, 1010, 30, [item], campo011, ''));
}

async function vender(cupom, depois) {
  const venda = { funcao: 'vendeCreditoVista', valor: 1250, cupom: Number(cupom) };
  const { situacao, motivo } = await caixora.venderEConfirmar(venda, async (resultado) => {
    anotar(`aprovada, ${resultado.comprovante.at(-1)}`);
    falharComo(depois);
    if (depois === 'esquecer') await caixora.esquecerPendencia();
    if (depois === 'teste') await caixora.teste();
    if (depois === 'trancar') fs.mkdirSync('diario.txt.tmp');
  });
  return `${situacao} ${motivo}`;
}

async function conversar(funcao, resposta, campo4) {
  const inicio = {
    funcao: Number(funcao), valor: '12,05', campo3: 3, campo4, campo6: '6', campo7: '7',
    campo8: '8', campo9: '9', campo10: 10, funcaoFim: 99,
  };
  const { concluido, codigo, campos } = await caixora.fluxo(inicio, async () => {
    falharComo(resposta);
    return resposta === 'nada' ? null : resposta;
  });
  return `${concluido ? '' : 'não '}concluído ${codigo} ${campos.MENSAGEM ?? ''}`;
}

const acoes = {
  aguardar: async (n) => (await caixora.aguardarGp(Number(n)), 'feito'),
  vender,
  confirmar: async (n) => (await caixora.concluirVenda(Number(n), 'confirmar'), 'feito'),
  desfazer: async (n) => (await caixora.concluirVenda(Number(n), 'desfazer'), 'feito'),
  esquecer: async () => (await caixora.esquecerPendencia(), 'feito'),
  atv: async (n) => resumo(await caixora.atv(Number(n))),
  confirmacao: async (n) => resumo(await caixora.confirmar(Number(n))),
  desfazimento: async (n) => resumo(await caixora.desfazimento(Number(n))),
  parcelas: async (n) => resumo(await caixora.vendeCreditoParcLoja(Number(n), 1010, 30)),
  centavos: async (n) => resumo(await caixora.vendeCredito(Number(n), 30)),
  reais: async (valor) => resumo(await caixora.vendeCredito(valor, 30)),
  campo011: (a) => link('ação', caractere(a)),
  itens: (a) => link(caractere(a), ''),
  campo4: (a) => conversar(20, '1', a),
  fluxo: (a, b) => conversar(a, b, ''),
  juntas: async () => {
    const duas = [new Caixora(configuracao), caixora].map((cada) => cada.atv(25));
    return resumo((await Promise.all(duas))[0]);
  },
};

(async () => {
  for (const linha of fs.readFileSync('comandos.txt', 'utf8').trimEnd().split('\n')) {
    anotar(`> ${linha}`);
    const [acao, a = '', b = ''] = linha.split(' ');
    try {
      anotar(`= ${await acoes[acao](a, b)}`);
    } catch (erro) {
      anotar(`! ${erro.name}: ${erro.message}`);
    }
  }
})();
