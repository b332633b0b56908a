// The page of one register: what became of it, its path, its group, its codes, its attributes.
import { el, fill, nameOf, count, counted, shown } from './dom.js';
import { WORDS } from './data.js';
import { registerAddress } from './address.js';
import { bubble, wordText } from './table.js';
import { swatch } from './tree.js';
import { drawMap, drawStates, transitionsOf } from './graph.js';

const section = (title, ...content) => el('section', { class: 'card' }, el('h2', {}, title), content);

function link(design, netlist, register) {
  if (register < 0) return el('span', { class: 'muted' }, '(no register)');
  const name = nameOf(design.netlists[netlist].names.at(register));
  const side = netlist === 0 ? 0 : netlist === design.netlists.length - 1 ? 1 : null;
  return side === null ? name : el('a', { href: registerAddress(design, side, register) }, name);
}

const turned = (inverse) => (inverse ? bubble() : null);

function list(design, netlist, related) {
  const all = [...related.same.map((r) => [r, false]), ...related.inverse.map((r) => [r, true])];
  const most = 200;
  const parts = all.slice(0, most).map(([r, inverse], k) => [k > 0 ? ', ' : null, turned(inverse), link(design, netlist, r)]);
  return all.length > most ? [...parts, ` and ${count(all.length - most)} more`] : parts;
}

// The inverse is written in words, because a reader must not miss it.
function answerList(design, netlist, related) {
  const nobody = { same: [], inverse: [] };
  const same = related.same.length > 0 ? list(design, netlist, { ...nobody, same: related.same }) : null;
  const inverse = related.inverse.length > 0 ? ['the inverse of ', list(design, netlist, { ...nobody, same: related.inverse })] : null;
  return [same, same && inverse ? ', ' : null, inverse];
}

function answer(design, side, register) {
  const across = design.partners(side, register);
  const other = side === 0 ? design.netlists.length - 1 : 0;
  const where = side === 0 ? 'In the netlist' : 'In the source';
  const value = side === 0 ? design.value(register) : null;
  if (across !== null && across.same.length + across.inverse.length > 0) {
    const machine = across.machine ? ', through the codes of a state machine' : '';
    return el('p', { class: 'answer' }, value === null ? null : `It is always ${value}. `, `${where}${machine}: `, answerList(design, other, across), '.');
  }
  if (side === 1) return el('p', { class: 'answer' }, 'No register of the source is known for it.');
  const text = {
    constant: `It is always ${value}; no register of the netlist carries it.`,
    'without fanout': 'Nothing reads it, so the netlist has no register for it.',
  }[WORDS[design.word(register)]];
  return el('p', { class: 'answer' }, text ?? 'No stage says what became of it.');
}

function attribute(design, set, key) {
  return design.sets[set].find(([name]) => name === key)?.[1];
}

function step(design, k, one) {
  const pass = one.map === null ? undefined : attribute(design, one.map.attributes, 'pass');
  const status = one.map === null ? undefined : attribute(design, one.map.attributes, 'status');
  return el('li', {}, el('div', { class: 'was' }, turned(one.sense.inverse), link(design, k, one.register)), ' ',
    el('div', { class: 'did' }, one.what,
      one.to.length > 0 ? [' → ', list(design, k + 1, { same: one.to.filter((t) => !t.inverse).map((t) => t.register), inverse: one.to.filter((t) => t.inverse).map((t) => t.register) })] : null,
      pass === undefined ? null : [' ', el('span', { class: 'tag' }, 'pass ', nameOf(pass))],
      status === undefined ? null : [' ', el('span', { class: `tag status-${['claimed', 'proved', 'refuted'].indexOf(status)}` }, shown(status))]));
}

function way(design, register) {
  const stages = design.way(register).map((steps, k) => el('li', { class: 'stage' },
    el('h3', {}, `${k + 1}  `, nameOf(design.head.stages[k].name)),
    steps.length === 0 ? el('p', { class: 'muted' }, 'Nothing is left of it.') : el('ul', {}, steps.map((s) => step(design, k, s)))));
  return section('Its way', el('ol', { class: 'way' }, stages));
}

function sideList(design, netlist, side) {
  return side.map((pair, k) => el('tr', {}, el('td', { class: 'number' }, String(k)), el('td', {}, list(design, netlist, pair))));
}

function group(design, map, side, register) {
  const last = design.netlists.length - 1;
  const half = (title, netlist, pairs) => el('div', {}, el('h3', {}, title),
    el('table', {}, el('thead', {}, el('tr', {}, el('th', {}, 'bit'), el('th', {}, 'registers of one value'))), el('tbody', {}, sideList(design, netlist, pairs))));
  return section('Its group', drawMap(design, map, side, register),
    el('details', { open: map.reference.length + map.transformed.length <= 16 }, el('summary', {}, 'As a list'),
      el('div', { class: 'halves' }, half('Source', 0, map.reference), half('Netlist', last, map.transformed))),
    el('p', { class: 'note' }, bubble(), ' marks a register that carries the inverse.'));
}

function columns(design, netlist, pairs) {
  return pairs.map((pair) => {
    const [register, inverse] = pair.same.length > 0 ? [pair.same[0], false] : [pair.inverse[0] ?? -1, true];
    const name = register < 0 ? '–' : design.netlists[netlist].names.at(register);
    return el('th', { scope: 'col', class: 'bit', title: shown(name) }, turned(inverse && register >= 0), nameOf(name));
  });
}

function codes(design, map) {
  const { rows, states } = map.table;
  const last = design.netlists.length - 1;
  const most = 256;
  const bits = (code, name) => [...code].map((bit) => el('td', { class: `code ${name} is-${bit === '?' ? 'open' : bit}` }, bit));
  const lines = rows.slice(0, most).map(([r, t], k) => el('tr', {}, el('th', { scope: 'row', class: 'number' }, String(k)), bits(r, 'source'), el('td', { class: 'gap' }), bits(t, 'netlist')));
  const more = states - Math.min(rows.length, most);
  const named = attribute(design, map.attributes, 'transitions');
  const moves = named === undefined ? null : transitionsOf(named, states);
  return section('Its codes', el('div', { class: 'wide' }, el('table', { class: 'codes' },
    el('thead', {},
      el('tr', {}, el('td', {}), el('th', { scope: 'colgroup', colspan: map.reference.length }, 'in the source'), el('td', { class: 'gap' }), el('th', { scope: 'colgroup', colspan: map.transformed.length }, 'in the netlist')),
      el('tr', {}, el('th', { scope: 'col' }, 'state'), columns(design, 0, map.reference), el('td', { class: 'gap' }), columns(design, last, map.transformed))),
    el('tbody', {}, lines))),
    more > 0 ? el('p', { class: 'note' }, `${counted(more, 'more state')}: `, el('code', {}, 'kptdb show --json'), ' lists them all.') : null,
    moves === null ? null : drawStates(rows, moves));
}

function attributes(design, side, register, map) {
  const rows = [['register', design.sets[design.side(side).attributes[register]]], ['group', map === null ? [] : design.sets[map.attributes]]]
    .flatMap(([of, set]) => set.map(([key, value]) => el('tr', {}, el('td', { class: 'muted' }, of), el('td', {}, nameOf(key)), el('td', {}, nameOf(value)))));
  return rows.length === 0 ? null : section('Attributes', el('table', { class: 'plain' }, el('tbody', {}, rows)));
}

const shellQuoted = (text) => (/^[\w./:@%+,-]+$/.test(text) ? text : `'${text.replace(/'/g, `'\\''`)}'`);

/** The command that says the same. */
export function command(design, side, name) {
  const files = design.head.stages.map((s) => shellQuoted(s.file));
  const register = shellQuoted(name);
  if (files.length === 1) return `kptdb show ${files[0]} ${register}`;
  return `kptdb explain ${side === 1 ? '--transformed ' : ''}${register} ${files.join(' ')}`;
}

function kindOf(design, side, register) {
  const kind = design.side(side).kind[register];
  if (kind === 0) return 'signal';
  const [entity, type] = design.head.kinds[kind - 1];
  return ['instance of ', nameOf(entity), ', register ', nameOf(type)];
}

function found(design, side, register, others) {
  const name = design.side(side).names.at(register);
  const number = design.mapOf(side, register);
  const map = number < 0 ? null : design.whole.at(number);
  const word = side === 0 ? [swatch(design.word(register)), wordText(design, register)] : number < 0 ? 'new in the netlist' : 'from the source';
  return [
    el('header', { class: 'register' }, el('p', { class: 'over' }, side === 0 ? 'register of the source, ' : 'register of the netlist, ', kindOf(design, side, register)),
      el('h1', { tabindex: -1 }, nameOf(name)), el('p', { class: 'word' }, word), answer(design, side, register),
      others.length > 1 ? el('p', { class: 'note' }, 'Others of this name: ', others.filter((r) => r !== register).map((r, k) => [k > 0 ? ', ' : '', el('a', { href: registerAddress(design, side, r) }, kindOf(design, side, r))])) : null),
    side === 0 ? way(design, register) : null,
    map === null ? null : group(design, map, side, register),
    map === null || map.table === null ? null : codes(design, map),
    attributes(design, side, register, map),
    el('p', { class: 'note' }, 'The same at the command line: ', el('code', {}, shown(command(design, side, name)))),
  ];
}

/** Fills the node with the page of the register that an address names. */
export function showRegister(node, design, wanted) {
  const all = design.named(wanted.side, wanted.name);
  if (all.length === 0) {
    fill(node, el('header', { class: 'register' }, el('h1', { tabindex: -1 }, nameOf(wanted.name)), el('p', { class: 'answer' }, `The ${wanted.side === 0 ? 'source' : 'netlist'} has no register of this name.`)));
    return;
  }
  const kinds = design.side(wanted.side).kind;
  const register = all.find((r) => kinds[r] === (wanted.kind ?? 0)) ?? all[0];
  fill(node, found(design, wanted.side, register, all));
}
