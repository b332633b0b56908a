// The top of the page: design, stages, coverage, and what needs attention first.
import { el, fill, byId, nameOf, count, counted, share, shown } from './dom.js';
import { WORDS } from './data.js';
import { ALL, addressOf, registerAddress } from './address.js';
import { bar, swatch } from './tree.js';

export function showHeading(design) {
  const { head } = design;
  document.title = `${shown(head.design) || 'design'}: registers`;
  document.querySelector('.hierarchy').classList.toggle('flat', head.scopes === 1);
  fill(byId('design'), nameOf(head.design || '(no name)'));
  const date = (text) => el('time', { datetime: text }, text.slice(0, 16).replace('T', ' '));
  const stages = head.stages.map((s, k) => el('li', {}, nameOf(s.name), el('span', { class: 'muted' }, nameOf(s.file), ', ', date(s.modified)), k + 1 < head.stages.length ? el('span', { class: 'next', 'aria-hidden': 'true' }, '→') : null));
  fill(byId('stages'), stages);
  fill(byId('written'), 'written ', date(head.written), ` by ${shown(head.tool)}`);
}

/** The coverage of what the scope holds. */
export function showCoverage(design, wanted, toggle) {
  const counts = design.counts[wanted.scope];
  const total = design.totals[wanted.scope];
  const known = total - counts[WORDS.indexOf('unknown')];
  fill(byId('covered'), el('strong', {}, share(known, total)), el('span', {}, ` ${count(known)} of ${counted(total, 'register')} accounted for`),
    el('span', { class: 'muted' }, wanted.scope > 0 ? ['in ', nameOf(design.pathText(wanted.scope).replace(/[./]$/, ''))] : `${count(design.result.size)} in the netlist`));
  fill(byId('bar'), bar(counts, total));
  fill(byId('words'), WORDS.map((word, w) => el('button', { class: 'chip', 'data-word': word, 'aria-pressed': String(wanted.words.has(w)), click: () => toggle(w) },
    swatch(w), el('span', {}, word), el('b', {}, count(counts[w])), counts[w] > 0 ? el('span', { class: 'muted' }, share(counts[w], total)) : null)));
}

const to = (design, change) => addressOf({ ...ALL, ...change }, design);

function machines(design) {
  return design.head.unreachable.map(([register, codes, states]) => ['codes', registerAddress(design, 0, register),
    ['machine of ', nameOf(design.source.names.at(register)), `: ${codes} codes taken for unreachable, ${counted(states, 'state')} used`]]);
}

function constantsAtOne(design) {
  let n = 0;
  for (let r = 0; r < design.source.size; ++r) n += design.value(r) === 1 ? 1 : 0;
  return n;
}

function refuted(design) {
  if (!design.statuses.includes('refuted')) return 0;
  let n = 0;
  for (let r = 0; r < design.source.size; ++r) n += design.statusOf(0, r) === 'refuted' ? 1 : 0;
  return n;
}

/** What needs attention, the worst first: a class, an address and a text each. */
function items(design) {
  const unknown = WORDS.indexOf('unknown');
  const [lost, ones, wrong] = [design.counts[0][unknown], constantsAtOne(design), refuted(design)];
  const result = design.head.contradictions.map(([text, register]) => ['wrong', register < 0 ? '#' : registerAddress(design, 0, register), ['contradiction: ', shown(text)]]);
  if (wrong > 0) result.push(['wrong', to(design, { status: 'refuted' }), `${counted(wrong, 'register')} with a refuted fact`]);
  if (lost > 0) result.push(['wrong', to(design, { words: new Set([unknown]) }), `${counted(lost, 'register')} unknown: no stage says what became of ${lost === 1 ? 'it' : 'them'}`]);
  if (ones > 0) result.push(['look', to(design, { words: new Set([WORDS.indexOf('constant')]), value: 1 }), `${counted(ones, 'register')} constant at one`]);
  return [...result, ...design.head.told.map((text) => ['look', '#', [shown(text)]]), ...machines(design)];
}

export function showAttention(design) {
  const all = items(design);
  const most = 12;
  const lines = all.slice(0, most).map(([kind, address, text]) => el('li', { class: kind }, el('a', { href: address }, text)));
  if (all.length > most) lines.push(el('li', { class: 'muted' }, `and ${counted(all.length - most, 'more machine')}`));
  fill(byId('attention'), all.length === 0 ? el('li', { class: 'fine' }, 'Nothing: every register is accounted for.') : lines);
}

/** What another database says differently, if the page was made against one. */
export function showChanges(design) {
  const { against } = design.head;
  byId('changes').hidden = against === undefined;
  if (against === undefined) return;
  const most = 500;
  const row = ([side, name, was, now]) => {
    const found = design.named(side, name);
    const text = nameOf(name);
    return el('tr', {}, el('td', { class: 'muted' }, side === 0 ? 'source' : 'netlist'),
      el('td', {}, found.length > 0 ? el('a', { href: registerAddress(design, side, found[0]) }, text) : text), el('td', {}, nameOf(was)), el('td', {}, nameOf(now)));
  };
  const left = against.total - Math.min(against.changes.length, most);
  fill(byId('changed'), el('p', {}, `Against `, nameOf(against.file), `: ${counted(against.total, 'register')} changed.`),
    against.total === 0 ? null : el('div', { class: 'wide' }, el('table', { class: 'plain' }, el('thead', {}, el('tr', {}, ['', 'register', 'was', 'is'].map((t) => el('th', { scope: 'col' }, t)))), el('tbody', {}, against.changes.slice(0, most).map(row)))),
    left > 0 ? el('p', { class: 'note' }, `${counted(left, 'more change')}: `, el('code', {}, 'kptdb diff'), ' lists them all.') : null);
}
