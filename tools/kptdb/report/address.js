// The address of a view: everything after the # of the page, so that the view can be sent.
import { WORDS } from './data.js';
import { MODES } from './search.js';

export const ALL = Object.freeze({
  text: '', mode: 'text', words: new Set(), value: null, scope: 0,
  kind: null, pass: null, status: null, side: 0, order: '', down: false, register: null,
});

const one = (list, text, other) => (list.includes(text) ? text : other);

/** What an address asks for; what it misspells is left out. */
export function parseAddress(hash, design) {
  const given = new URLSearchParams(hash.replace(/^#/, ''));
  const wanted = { ...ALL, text: given.get('q') ?? '', mode: one(MODES, given.get('m'), 'text') };
  wanted.words = new Set((given.get('w') ?? '').split(',').map((w) => WORDS.indexOf(w)).filter((w) => w >= 0));
  wanted.value = { 0: 0, 1: 1 }[given.get('v')] ?? null;
  wanted.scope = given.has('s') ? Math.max(0, design.scopeAt(given.get('s'))) : 0;
  wanted.kind = given.get('i');
  wanted.pass = given.get('p');
  wanted.status = given.get('st');
  wanted.side = given.get('side') === 'netlist' ? 1 : 0;
  const order = given.get('o') ?? '';
  wanted.down = order.startsWith('-');
  wanted.order = order.replace(/^-/, '');
  const side = given.has('r') ? 0 : 1;
  const name = given.get('r') ?? given.get('t');
  if (name !== null) wanted.register = { side, name, kind: given.has('k') ? Number(given.get('k')) : null };
  return wanted;
}

/** The address of what is wanted. Brackets and dots stay readable. */
export function addressOf(wanted, design) {
  const parts = [];
  const add = (key, value) => parts.push(`${key}=${encodeURIComponent(value).replace(/%5B/g, '[').replace(/%5D/g, ']').replace(/%2C/g, ',')}`);
  if (wanted.register !== null) {
    add(wanted.register.side === 0 ? 'r' : 't', wanted.register.name);
    if (wanted.register.kind !== null) add('k', wanted.register.kind);
  }
  if (wanted.text !== '') add('q', wanted.text);
  if (wanted.mode !== 'text') add('m', wanted.mode);
  if (wanted.words.size > 0) add('w', [...wanted.words].map((w) => WORDS[w]).join(','));
  if (wanted.value !== null) add('v', wanted.value);
  if (wanted.scope > 0) add('s', design.pathText(wanted.scope));
  if (wanted.kind !== null) add('i', wanted.kind);
  if (wanted.pass !== null) add('p', wanted.pass);
  if (wanted.status !== null) add('st', wanted.status);
  if (wanted.side === 1) add('side', 'netlist');
  if (wanted.order !== '') add('o', (wanted.down ? '-' : '') + wanted.order);
  return `#${parts.join('&')}`;
}

/** The address of a register's page; its kind is there where the name alone is not enough. */
export function registerAddress(design, side, register) {
  const netlist = design.side(side);
  const name = netlist.names.at(register);
  const kind = netlist.kind[register];
  return addressOf({ ...ALL, register: { side, name, kind: kind > 0 ? kind : null } }, design);
}
