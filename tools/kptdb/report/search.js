// Finds the registers that pass a search and the filters, and sorts them.
import { rowAt, naturalKey } from './model.js';

/** How a search is read. */
export const MODES = ['text', 'glob', 'regex'];

const ESCAPED = /[\\^$.|+()[\]{}]/g;

/** "*" is any text and "?" any character; brackets stand for themselves, names are full of them. */
function globExpression(pattern) {
  const source = pattern.replace(ESCAPED, '\\$&').replace(/\*/g, '.*').replace(/\?/g, '.');
  return new RegExp(`^${source}$`, smartCase(pattern, 's'));
}

// A pattern without a capital letter matches both cases.
const smartCase = (pattern, flags) => (/[A-Z]/.test(pattern) ? flags : `${flags}i`);

function rowsWithText(texts, pattern) {
  const all = /[A-Z]/.test(pattern) ? texts.all : texts.small;
  const rows = [];
  for (let at = all.indexOf(pattern); at >= 0; ) {
    const row = rowAt(texts, at);
    rows.push(row);
    at = all.indexOf(pattern, texts.start[row + 1]);
  }
  return Int32Array.from(rows);
}

function rowsThatMatch(texts, expression) {
  const rows = [];
  for (let row = 0; row < texts.size; ++row) if (expression.test(texts.at(row))) rows.push(row);
  return Int32Array.from(rows);
}

/** The rows of a search, in order; throws a SyntaxError for what is no regular expression. */
export function search(texts, pattern, mode) {
  if (pattern === '') return Int32Array.from({ length: texts.size }, (_, k) => k);
  if (mode === 'glob') return rowsThatMatch(texts, globExpression(pattern));
  if (mode === 'regex') return rowsThatMatch(texts, new RegExp(pattern, smartCase(pattern, '')));
  return pattern.includes('\0') ? new Int32Array() : rowsWithText(texts, pattern);
}

const sourceOf = (design, side, row) => {
  if (side === 0) return row;
  const other = design.partners(1, row);
  return other === null ? -1 : [...other.same, ...other.inverse, -1][0];
};

/** A test of one row, or null where every row passes. */
function filterOf(design, wanted) {
  const { side } = wanted;
  const tests = [];
  if (wanted.scope > 0) {
    tests.push((row) => {
      const source = sourceOf(design, side, row);
      return source >= 0 && design.contains(wanted.scope, design.source.scope[source]);
    });
  }
  if (wanted.words.size > 0) {
    tests.push((row) => {
      const source = sourceOf(design, side, row);
      return source >= 0 && wanted.words.has(design.word(source));
    });
  }
  if (wanted.value !== null) {
    tests.push((row) => {
      const source = sourceOf(design, side, row);
      return source >= 0 && design.value(source) === wanted.value;
    });
  }
  if (wanted.kind !== null) tests.push((row) => design.kindOf(side, row) === wanted.kind);
  if (wanted.pass !== null) tests.push((row) => design.passOf(side, row) === wanted.pass);
  if (wanted.status !== null) tests.push((row) => design.statusOf(side, row) === wanted.status);
  return tests.length === 0 ? null : (row) => tests.every((test) => test(row));
}

/** The rows that are wanted, in the order of the database. */
export function rowsOf(design, wanted) {
  const found = search(design.side(wanted.side).names, wanted.text, wanted.mode);
  const filter = filterOf(design, wanted);
  return filter === null ? found : found.filter(filter);
}

/** For each column a text or number by which rows are sorted. */
const KEYS = {
  name: (design, side) => (row) => naturalKey(design.side(side).names.at(row)),
  became: (design, side) => (row) =>
    side === 0 ? design.word(row) * 4 + (design.value(row) ?? -1) : design.mapOf(1, row) < 0 ? 1 : 0,
  across: (design, side) => (row) => {
    const other = design.partners(side, row);
    const first = other === null ? undefined : [...other.same, ...other.inverse].find((r) => r >= 0);
    return first === undefined ? '\uffff' : naturalKey(design.side(1 - side).names.at(first));
  },
  pass: (design, side) => (row) => design.passOf(side, row),
  status: (design, side) => (row) => design.statusOf(side, row),
};

/** The rows by a column; rows of one key stay in the order of the database. */
export function sorted(design, side, rows, column, down) {
  if (!(column in KEYS)) return rows;
  const key = KEYS[column](design, side);
  const keyed = Array.from(rows, (row) => [key(row), row]);
  const turn = down ? -1 : 1;
  keyed.sort((a, b) => (a[0] < b[0] ? -turn : a[0] > b[0] ? turn : a[1] - b[1]));
  return Int32Array.from(keyed, (pair) => pair[1]);
}
