// The table of registers. A row is made when it scrolls into view, so a million rows take no more time than forty.
import { el, svg, fill, nameOf, counted } from './dom.js';
import { WORDS } from './data.js';
import { registerAddress } from './address.js';
import { swatch } from './tree.js';

const ROW = 26;
const MOST_PIXELS = 8_000_000;  // browsers cut an element that is much taller
const PRINTED = 2000;

export const COLUMNS = [
  { key: 'name', label: ['Register of the source', 'Register of the netlist'] },
  { key: 'became', label: ['What became of it', 'What it is'] },
  { key: 'across', label: ['In the netlist', 'In the source'] },
  { key: 'pass', label: ['Pass', 'Pass'] },
  { key: 'status', label: ['Status', 'Status'] },
];

export const wordText = (design, register) => {
  const value = design.value(register);
  return WORDS[design.word(register)] + (value === null ? '' : ` ${value}`);
};

/** An inverter's bubble: the value on the other side is the inverse. */
export const bubble = () => svg('svg', { class: 'bubble', viewBox: '0 0 12 12', role: 'img', 'aria-label': 'inverse of' }, svg('circle', { cx: 6, cy: 6, r: 3.6 }));

export class Table {
  constructor(node, design, actions) {
    Object.assign(this, { node, design, actions, rows: new Int32Array(), side: 0, active: 0 });
    this.body = el('div', { class: 'body', role: 'rowgroup' });
    this.head = el('div', { class: 'head', role: 'rowgroup' });
    this.space = el('div', { class: 'space' });
    this.scroll = el('div', { class: 'scroll' }, this.space, this.body);
    fill(node, this.head, this.scroll);
    node.setAttribute('role', 'table');
    this.scroll.addEventListener('scroll', () => this.draw(), { passive: true });
    this.scroll.addEventListener('keydown', (event) => this.key(event));
    new ResizeObserver(() => this.draw()).observe(this.scroll);
    window.addEventListener('beforeprint', () => this.print());
    window.addEventListener('afterprint', () => {
      this.printing = false;
      this.draw();
    });
  }

  show(rows, side, order, down) {
    Object.assign(this, { rows, side, active: 0 });
    this.node.setAttribute('aria-rowcount', rows.length + 1);
    this.node.setAttribute('aria-colcount', COLUMNS.length);
    fill(this.head, el('div', { class: 'tr', role: 'row', 'aria-rowindex': 1 }, COLUMNS.map((c) => this.heading(c, order, down))));
    this.height = Math.min(rows.length * ROW, MOST_PIXELS);
    this.space.style.height = `${this.height}px`;
    this.scroll.scrollTop = 0;
    this.draw();
  }
  heading(column, order, down) {
    const sort = column.key !== order ? 'none' : down ? 'descending' : 'ascending';
    const arrow = { none: '', ascending: ' ↑', descending: ' ↓' }[sort];
    return el('div', { role: 'columnheader', 'aria-sort': sort, class: `c-${column.key}` },
      el('button', { class: 'sort', click: () => this.actions.sort(column.key) }, column.label[this.side], arrow));
  }

  // Above MOST_PIXELS, the position of the scroll bar gives the share of the rows above.
  get first() {
    const { scrollTop, clientHeight } = this.scroll;
    const all = this.rows.length * ROW;
    if (this.height === all) return Math.floor(scrollTop / ROW);
    const part = scrollTop / Math.max(1, this.height - clientHeight);
    return Math.floor(part * (this.rows.length - Math.floor(clientHeight / ROW)));
  }
  get visible() {
    return Math.ceil(this.scroll.clientHeight / ROW) + 1;
  }
  draw() {
    if (this.printing) return;
    const first = Math.max(0, Math.min(this.first, this.rows.length - 1));
    const shown = Array.from(this.rows.subarray(first, first + this.visible), (row, k) => this.row(row, first + k));
    const focused = this.body.contains(document.activeElement);
    const offset = this.height === this.rows.length * ROW ? first * ROW : this.scroll.scrollTop;
    this.body.style.transform = `translateY(${offset}px)`;
    fill(this.body, shown.length > 0 ? shown : el('p', { class: 'nothing' }, 'No register is left. Clear a filter or the search.'));
    if (focused) this.focusActive();
  }
  print() {
    this.printing = true;
    this.body.style.transform = '';
    const rows = Array.from(this.rows.subarray(0, PRINTED), (row, k) => this.row(row, k));
    const left = this.rows.length - PRINTED;
    fill(this.body, rows, left > 0 ? el('p', { class: 'nothing' }, `${counted(left, 'more row')} not printed.`) : null);
  }

  row(row, index) {
    const d = this.design;
    const cell = (key, ...content) => el('div', { role: 'cell', class: `c-${key}` }, ...content);
    const address = registerAddress(d, this.side, row);
    const link = el('a', { href: address, tabindex: index === this.active ? 0 : -1 }, nameOf(d.side(this.side).names.at(row)));
    return el('div', { class: `tr${index === this.active ? ' at' : ''}`, role: 'row', 'aria-rowindex': index + 2, 'data-index': index, click: (e) => this.click(e, index) },
      cell('name', link), cell('became', this.became(row)), cell('across', this.across(row)), cell('pass', nameOf(d.passOf(this.side, row))), cell('status', d.statusOf(this.side, row)));
  }
  became(row) {
    if (this.side === 0) return [swatch(this.design.word(row)), wordText(this.design, row)];
    return this.design.mapOf(1, row) < 0 ? 'new' : 'from the source';
  }
  across(row) {
    const other = this.design.partners(this.side, row);
    const all = other === null ? [] : [...other.same.map((r) => [r, false]), ...other.inverse.map((r) => [r, true])];
    const known = all.filter(([r]) => r >= 0);
    const names = this.design.side(1 - this.side).names;
    const parts = known.slice(0, 3).map(([r, inverse], k) => [k > 0 ? ', ' : null, inverse ? bubble() : null, nameOf(names.at(r))]);
    return known.length > 3 ? [...parts, ` and ${known.length - 3} more`] : parts;
  }

  click(event, index) {
    if (event.target.closest('a')) return;
    if (String(getSelection()) !== '') return;
    this.active = index;
    this.actions.open(this.rows[index]);
  }
  key(event) {
    const page = this.visible - 2;
    const moves = { ArrowDown: 1, ArrowUp: -1, PageDown: page, PageUp: -page, Home: -this.rows.length, End: this.rows.length };
    if (!(event.key in moves) || event.ctrlKey || event.metaKey) return;
    event.preventDefault();
    this.moveTo(Math.max(0, Math.min(this.rows.length - 1, this.active + moves[event.key])));
  }
  moveTo(index) {
    this.active = index;
    const first = this.first;
    const room = Math.floor(this.scroll.clientHeight / ROW) - 1;
    if (index < first) this.scrollTo(index);
    else if (index > first + room) this.scrollTo(index - room);
    this.draw();
    this.focusActive();
  }
  scrollTo(index) {
    const all = this.rows.length * ROW;
    const whole = this.height === all;
    const rows = this.rows.length - Math.floor(this.scroll.clientHeight / ROW);
    this.scroll.scrollTop = whole ? index * ROW : (index / rows) * (this.height - this.scroll.clientHeight) + 1;
  }
  focusActive() {
    this.body.querySelector(`[data-index="${this.active}"] a`)?.focus({ preventScroll: true });
  }
}

const quoted = (text) => {
  // A cell that begins like a formula stays a text in spreadsheets.
  const safe = /^[=+\-@\t\r]/.test(text) ? `'${text}` : text;
  return /[",\n\r]/.test(safe) ? `"${safe.replace(/"/g, '""')}"` : safe;
};

export const asNames = (design, side, rows) => Array.from(rows, (row) => design.side(side).names.at(row)).join('\n');

/** The rows for a spreadsheet; names of several registers stand in one cell, "~" before an inverse. */
export function asCsv(design, side, rows) {
  const lines = [['register', 'what', side === 0 ? 'netlist' : 'source', 'pass', 'status']];
  const names = design.side(1 - side).names;
  for (const row of rows) {
    const other = design.partners(side, row) ?? { same: [], inverse: [] };
    const list = [...other.same.map((r) => [r, '']), ...other.inverse.map((r) => [r, '~'])].filter(([r]) => r >= 0);
    const what = side === 0 ? wordText(design, row) : list.length > 0 ? 'from the source' : 'new';
    lines.push([design.side(side).names.at(row), what, list.map(([r, mark]) => mark + names.at(r)).join(' '), design.passOf(side, row), design.statusOf(side, row)]);
  }
  return lines.map((line) => line.map(quoted).join(',')).join('\r\n');
}
