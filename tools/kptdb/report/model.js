// What the page reads from its data: registers, their maps, and their path through the stages.
import { WORDS, REASONS } from './data.js';
import { counted } from './dom.js';

const MOST_FOLLOWED = 64;

/** Where a register stands in a side of a map, or null. */
function placeIn(side, register) {
  for (let index = 0; index < side.length; ++index) {
    if (side[index].same.includes(register)) return { index, inverse: false };
    if (side[index].inverse.includes(register)) return { index, inverse: true };
  }
  return null;
}

const membersOf = (side) => side.flatMap((pair) => [...pair.same, ...pair.inverse]);

/** Numbers in names count as numbers: q[9] stands before q[10]. */
export const naturalKey = (name) => name.replace(/\d+/g, (digits) => digits.padStart(9, '0'));

export class Design {
  constructor(data) {
    this.head = data.head;
    this.netlists = data.netlists;
    this.stages = data.stages;
    this.whole = data.whole;
    this.wholeOf = data.wholeOf;
    this.scopes = data.scopes;
    this.source = data.netlists[0];
    this.result = data.netlists[data.netlists.length - 1];
    this.readAttributes();
    this.orderScopes();
  }

  /** The side of the source (0) or of the last netlist (1). */
  side(k) {
    return k === 0 ? this.source : this.result;
  }

  word(register) {
    return this.source.word[register] & 7;
  }
  /** 0 or 1 for a constant, else null. */
  value(register) {
    const value = this.source.word[register] >> 3;
    return value === 0 ? null : value - 1;
  }

  /** The map that says what became of a register, or -1. */
  mapOf(side, register) {
    return this.wholeOf[side][register];
  }

  // An attribute set gets one text for its passes and one for its status, so that a filter and a
  // sort compare numbers.
  readAttributes() {
    const find = (set, name) => set.find(([key]) => key === name)?.[1] ?? '';
    this.sets = this.head.attributes;
    this.passes = this.sets.map((set) => find(set, 'pass'));
    this.statuses = this.sets.map((set) => find(set, 'status'));
    this.kinds = ['signal', ...this.head.kinds.map(([entity, type]) => `instance of ${entity}, register ${type}`)];
  }
  text(texts, side, register) {
    const own = texts[this.side(side).attributes[register]];
    const map = this.mapOf(side, register);
    return own || (map < 0 ? '' : texts[this.whole.attributes[map]]);
  }
  /** What a register is: a signal, or an instance of an entity with a register of some type. */
  kindOf(side, register) {
    return this.kinds[this.side(side).kind[register]];
  }
  passOf(side, register) {
    return this.text(this.passes, side, register);
  }
  statusOf(side, register) {
    return this.text(this.statuses, side, register);
  }

  // Numbers the scopes so that the scopes below a scope are a range.
  orderScopes() {
    const { parent, size } = this.scopes;
    this.children = Array.from({ length: size }, () => []);
    for (let s = 1; s < size; ++s) this.children[parent[s]].push(s);
    this.from = new Int32Array(size);
    this.to = new Int32Array(size);
    let number = 0;
    const open = [[0, 0]];
    this.from[0] = number++;
    while (open.length > 0) {
      const top = open[open.length - 1];
      const child = this.children[top[0]][top[1]++];
      if (child === undefined) {
        this.to[top[0]] = number;
        open.pop();
      } else {
        this.from[child] = number++;
        open.push([child, 0]);
      }
    }
    this.countScopes();
  }

  // The number of registers of each word in a scope and below it.
  countScopes() {
    const { parent, size } = this.scopes;
    this.counts = Array.from({ length: size }, () => new Int32Array(WORDS.length));
    for (let r = 0; r < this.source.size; ++r) ++this.counts[this.source.scope[r]][this.word(r)];
    this.own = this.counts.map((words) => words.reduce((a, b) => a + b, 0));
    for (let s = size - 1; s > 0; --s) this.counts[s].forEach((n, w) => (this.counts[parent[s]][w] += n));
    this.totals = this.counts.map((words) => words.reduce((a, b) => a + b, 0));
  }
  /** The largest first; of one size in the order of their names. */
  childrenOf(scope) {
    const keyed = this.children[scope].map((s) => [this.totals[s], naturalKey(this.scopes.names.at(s)), s]);
    return keyed.sort((a, b) => b[0] - a[0] || (a[1] < b[1] ? -1 : 1)).map((k) => k[2]);
  }
  contains(scope, other) {
    return this.from[other] >= this.from[scope] && this.from[other] < this.to[scope];
  }
  path(scope) {
    const parts = [];
    for (let s = scope; s > 0; s = this.scopes.parent[s]) parts.unshift(s);
    return parts;
  }
  pathText(scope) {
    return this.path(scope).map((s) => this.scopes.names.at(s)).join('');
  }
  /** The scope of that path as pathText has it, or -1. */
  scopeAt(text) {
    for (let s = 0; s < this.scopes.size; ++s) {
      const name = this.scopes.names.at(s);
      if (text.endsWith(name) && this.pathText(s) === text) return s;
    }
    return -1;
  }
  /** The source registers that stand in a scope itself. */
  registersIn(scope) {
    this.byScope ??= this.sortByScope();
    const [start, all] = this.byScope;
    return all.subarray(start[scope], start[scope + 1]);
  }
  sortByScope() {
    const start = new Int32Array(this.scopes.size + 1);
    this.own.forEach((n, s) => (start[s + 1] = start[s] + n));
    const next = start.slice();
    const all = new Int32Array(this.source.size);
    for (let r = 0; r < this.source.size; ++r) all[next[this.source.scope[r]]++] = r;
    return [start, all];
  }

  /** The registers of that name. */
  named(side, name) {
    const { names } = this.side(side);
    const found = [];
    const looked = `${name}\0`;
    for (let at = names.all.indexOf(looked); at >= 0; at = names.all.indexOf(looked, at + 1)) {
      if (at === 0 || names.all[at - 1] === '\0') found.push(rowAt(names, at));
    }
    return found;
  }

  /** Who carries the value of a register on the other side of its map. */
  partners(side, register) {
    const map = this.mapOf(side, register);
    return map < 0 ? null : related(this.whole.at(map), side, register);
  }

  /** The way of a source register: for each stage, what each register that it has become did there. */
  way(register) {
    let here = new Map([[register, { inverse: false, sure: true }]]);
    return this.stages.map((stage, k) => {
      const steps = [];
      const next = new Map();
      for (const [r, sense] of here) {
        const step = this.step(stage, k, r, sense);
        steps.push(step);
        for (const to of step.to) {
          if (next.size < MOST_FOLLOWED && to.register >= 0) next.set(to.register, to);
        }
      }
      here = next;
      return steps;
    });
  }
  step(stage, k, register, sense) {
    const number = this.netlists[k].mapAsReference[register];
    if (number < 0) return { register, sense, map: null, to: [], what: 'not known to this stage' };
    const map = stage.at(number);
    const other = related(map, 0, register);
    const to = other.same.map((r) => ({ register: r, inverse: sense.inverse, sure: sense.sure && !map.machine }));
    to.push(...other.inverse.map((r) => ({ register: r, inverse: !sense.inverse, sure: sense.sure && !map.machine })));
    const inverted = !map.machine && other.same.length === 0 && other.inverse.length > 0 ? ', inverted' : '';
    return { register, sense, map, to, what: this.whatHappened(map, register) + inverted };
  }
  whatHappened(map, register) {
    const place = placeIn(map.reference, register);
    if (map.machine && !tableFits(map)) return 'in a state machine whose table does not fit its registers';
    if (place?.index === 0 && (map.reason === 1 || map.reason === 2)) {
      const one = (map.reason === 2) !== (place.inverse && map.reference[0].same.length > 0);
      return `stuck at ${one ? 'one' : 'zero'}`;
    }
    const own = map.machine ? map.reference : [map.reference[place?.index ?? 0] ?? NOBODY];
    const other = map.machine ? map.transformed : [map.transformed[place?.index ?? 0] ?? NOBODY];
    const [r, t] = [membersOf(own).length, membersOf(other).length];
    if (map.machine && t > 0) {
      return `re-encoded with a state machine: ${counted(r, 'register')} to ${t}`;
    }
    if (t === 0) return map.reason > 2 ? REASONS[map.reason] : 'no successor recorded';
    const how = [r > 1 ? `merged with ${counted(r - 1, 'other')}` : '', t > 1 ? `replicated to ${t}` : ''];
    return how.filter(Boolean).join(', ') || 'kept';
  }
}

/** The number of the text that holds a place in all of them. */
export function rowAt(texts, place) {
  let low = 0;
  let high = texts.size;
  while (high - low > 1) {
    const middle = (low + high) >> 1;
    if (texts.start[middle] <= place) low = middle;
    else high = middle;
  }
  return low;
}

const NOBODY = { same: [], inverse: [] };

/** A table of another size than its map says nothing of its registers. */
const tableFits = (map) => map.table.columns[0] === map.reference.length && map.table.columns[1] === map.transformed.length;

/** Of a machine all registers of the other side: which one changes with which, only the table tells. */
export function related(map, side, register) {
  const own = side === 0 ? map.reference : map.transformed;
  const other = side === 0 ? map.transformed : map.reference;
  const place = placeIn(own, register);
  if (place === null || (map.machine && !tableFits(map))) return { ...NOBODY, machine: map.machine };
  if (map.machine) return { same: membersOf(other), inverse: [], machine: true };
  const pair = other[place.index] ?? NOBODY;
  return place.inverse
    ? { same: pair.inverse, inverse: pair.same, machine: false }
    : { same: pair.same, inverse: pair.inverse, machine: false };
}
