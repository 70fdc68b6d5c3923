'use strict';

// PDV de exemplo: venda, recusa, link de pagamento, desfazimento e fluxo interativo.
//
//    node pdv.js               os cinco, em sequência
//    node pdv.js --cair        o PDV cai entre a aprovação e a confirmação
//    node pdv.js --retomar     o PDV volta e conclui o que ficou em aberto

const koffi = require('koffi');
// trecho: abrir
const { Caixora } = require('caixora');

const caixora = new Caixora({
  cnpjCliente: '12.345.678/0001-95',
  cnpjParceiro: '11.222.333/0001-81',
  leitor: 1,
  diario: 'diario.txt',
});
// fim do trecho

function reais(centavos) {
  return `R$ ${Math.floor(centavos / 100)},${String(centavos % 100).padStart(2, '0')}`;
}

function linhaDaAprovacao({ campos, valorCentavos, mensagem, comprovante }) {
  const linhas = `${comprovante.length} linhas de comprovante`;
  return `Cupom ${campos.cupom}: aprovada, ${reais(valorCentavos)}, ${mensagem}, ${linhas}`;
}

// trecho: venda
/** Um PDV de verdade grava a venda e imprime o comprovante aqui. */
async function registrar(resultado) {
  console.log(linhaDaAprovacao(resultado));
}
// fim do trecho

async function registrarSemPapel(resultado) {
  await registrar(resultado);
  throw new Error('Impressora sem papel');
}

// trecho: venda
async function vender(venda, situacaoEsperada) {
  const { situacao, motivo } = await caixora.venderEConfirmar(venda, registrar);
  console.log(`Cupom ${venda.cupom}: ${situacao}${motivo && `, ${motivo}`}`);
  if (situacao !== situacaoEsperada) process.exitCode = 1;
}
// fim do trecho

async function desfazer() {
  const venda = { funcao: 'vendeCreditoVista', valor: '40,00', cupom: 104 };
  try {
    await caixora.venderEConfirmar(venda, registrarSemPapel);
    process.exitCode = 1;
  } catch (erro) {
    if (erro.message !== 'Impressora sem papel') throw erro;
    console.log(erro.message);
    console.log('Cupom 104: desfeita');
  }
}

async function conduzirFluxo() {
  const respostas = ['3', '1'];
  const inicio = {
    funcao: 20, valor: '12,50', campo3: 1, campo4: '', campo6: '000545', campo7: '20210325',
    campo8: '009', campo9: '652', campo10: 7, funcaoFim: 99,
  };
  const { concluido, campos, motivo } = await caixora.fluxo(inicio, async (pergunta) => {
    const resposta = respostas.shift();
    console.log(`Pergunta: ${pergunta}`);
    console.log(`Resposta: ${resposta}`);
    return resposta;
  });
  if (!concluido) throw new Error(`o fluxo não terminou: ${motivo}`);
  console.log(`Retorno: STATUS ${campos.STATUS}, VALOR ${campos.VALOR}, ${campos.MENSAGEM}`);
}

async function demonstrar() {
  await caixora.aguardarGp();
  console.log('GP ativo');
  console.log('== 1. Venda confirmada');
  // trecho: chamada
  await vender({ funcao: 'vendeCreditoVista', valor: '12,50', cupom: 101 }, 'confirmada');
  // fim do trecho
  console.log('== 2. Recusa');
  await vender({ funcao: 'vendeDebito', valor: '10,02', cupom: 102 }, 'recusada');
  console.log('== 3. Link de pagamento com acentos');
  const link = {
    funcao: 'linkPagamento',
    parcelas: 1,
    valor: 3150, // centavos, como alternativa ao texto
    cupom: 103,
    itens: [
      {
        codigo: '7891', descricao: 'CAFÉ TORRADO', quantidade: 2,
        unitario: 1050, desconto: 0, total: 2100,
      },
      {
        codigo: '7892', descricao: 'AÇÚCAR', quantidade: 1,
        unitario: 1050, desconto: 0, total: 1050,
      },
    ],
    campo011: 'Pão & Cia',
    campo012: '',
  };
  await vender(link, 'confirmada');
  console.log('== 4. Venda desfeita');
  await desfazer();
  console.log('== 5. Fluxo interativo');
  await conduzirFluxo();
}

async function cair() {
  console.log('== Queda');
  const kernel = koffi.load('kernel32.dll');
  const esteProcesso = kernel.func('void *GetCurrentProcess()');
  const encerrar = kernel.func('bool TerminateProcess(void *processo, uint32_t codigo)');
  const venda = { funcao: 'vendeCreditoVista', valor: '20,00', cupom: 105 };
  const { situacao, motivo } = await caixora.venderEConfirmar(venda, async (resultado) => {
    const linha = `${linhaDaAprovacao(resultado)}\n`;
    await new Promise((escrita) => process.stdout.write(linha, escrita));
    encerrar(esteProcesso(), 9);
  });
  throw new Error(`o PDV não caiu: venda ${situacao}, ${motivo}`);
}

async function retomar() {
  console.log('== Retomada');
  const vendas = await caixora.vendasEmAberto();
  if (vendas.length === 0) console.log('Nada em aberto');
  for (const { cupom, valorCentavos, estado } of vendas) {
    console.log(`Cupom ${cupom}: em aberto (${estado}), ${reais(valorCentavos)}`);
    // Este exemplo não guarda suas vendas; quem guarda confirma também as aprovadas que encontrar.
    const confirmar = estado === 'confirmar';
    await caixora.concluirVenda(cupom, confirmar ? 'confirmar' : 'desfazer');
    console.log(`Cupom ${cupom}: ${confirmar ? 'confirmada' : 'desfeita'}`);
  }
}

const modo = process.argv[2];
const acao = { undefined: demonstrar, '--cair': cair, '--retomar': retomar }[modo];
if (acao === undefined) {
  console.error('Uso: node pdv.js [--cair | --retomar]');
  process.exitCode = 2;
} else {
  acao().catch((erro) => {
    console.error(erro);
    process.exitCode = 1;
  });
}
