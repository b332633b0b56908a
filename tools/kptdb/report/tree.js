// The hierarchy as a tree, for the keyboard, for screen readers and for exact numbers.
import { el, svg, byId, shown, count, counted } from './dom.js';
import { WORDS } from './data.js';
import { tellCounts } from './treemap.js';

const FIRST = 100;

/** A bar of the words, each as wide as its share. */
export function bar(counts, total, attributes = {}) {
  let at = 0;
  const parts = [...counts].map((n, w) => {
    const width = total === 0 ? 0 : (100 * n) / total;
    at += width;
    return n === 0 ? null : svg('rect', { class: `word-${w}`, x: at - width, y: 0, width, height: 10 });
  });
  return svg('svg', { class: 'bar', viewBox: '0 0 100 10', preserveAspectRatio: 'none', role: 'img', 'aria-label': tellCounts(counts) || 'no registers', ...attributes }, parts.filter(Boolean));
}

export class Tree {
  constructor(node, design, choose) {
    this.node = node;
    this.design = design;
    this.choose = choose;
    this.open = new Set([0]);
    this.more = new Map();
    this.scope = 0;
    node.addEventListener('keydown', (event) => this.key(event));
  }

  /** Shows a scope as chosen, with all above it open. */
  select(scope) {
    this.scope = scope;
    for (const s of this.design.path(scope)) this.open.add(this.design.scopes.parent[s]);
    this.open.add(scope);
    this.draw();
    this.bringIntoView(this.itemOf(scope));
  }
  // Scrolls only the tree, and not the page.
  bringIntoView(item) {
    const row = item?.firstChild.getBoundingClientRect();
    const box = this.node.getBoundingClientRect();
    if (row && (row.top < box.top || row.bottom > box.bottom)) this.node.scrollTop += row.top - box.top - box.height / 3;
  }

  draw() {
    const focused = this.node.contains(document.activeElement);
    this.node.replaceChildren(this.item(0, 1));
    if (focused) this.itemOf(this.scope)?.focus();
  }
  itemOf(scope) {
    return byId(`scope-${scope}`);
  }

  item(scope, level) {
    const d = this.design;
    const children = this.sortedChildren(scope);
    const open = children.length > 0 && this.open.has(scope);
    const label = scope === 0 ? d.head.design || 'all' : d.scopes.names.at(scope).replace(/^[./]|[./]$/g, '');
    const row = el('div', { class: 'row' },
      el('span', { class: 'twist', 'aria-hidden': 'true', click: (e) => this.twist(e, scope) }, children.length === 0 ? '' : open ? '▾' : '▸'),
      el('bdi', { class: 'name' }, shown(label)),
      el('span', { class: 'number' }, count(d.totals[scope])),
      bar(d.counts[scope], d.totals[scope]));
    return el('div', {
      role: 'treeitem', id: `scope-${scope}`, 'aria-level': level, 'aria-selected': String(scope === this.scope),
      'aria-expanded': children.length > 0 ? String(open) : undefined, tabindex: scope === this.scope ? 0 : -1,
      'aria-label': `${shown(label)}, ${counted(d.totals[scope], 'register')}, ${tellCounts(d.counts[scope])}`,
      click: (e) => { e.stopPropagation(); this.choose(scope); },
    }, row, open ? this.below(scope, children, level) : null);
  }
  below(scope, children, level) {
    const most = this.more.get(scope) ?? FIRST;
    const hidden = children.length - most;
    const next = Math.min(hidden, 10 * FIRST);
    const button = el('button', { class: 'quiet', click: (e) => { e.stopPropagation(); this.more.set(scope, most + next); this.draw(); } },
      `show ${counted(next, 'more scope')} of ${count(hidden)}`);
    return el('div', { role: 'group' }, children.slice(0, most).map((s) => this.item(s, level + 1)), hidden > 0 ? button : null);
  }
  sortedChildren(scope) {
    this.order ??= new Map();
    if (!this.order.has(scope)) this.order.set(scope, this.design.childrenOf(scope));
    return this.order.get(scope);
  }

  twist(event, scope) {
    event.stopPropagation();
    this.toggle(scope, !this.open.has(scope));
  }
  toggle(scope, open) {
    if (open) this.open.add(scope);
    else this.open.delete(scope);
    this.draw();
  }

  key(event) {
    const item = event.target.closest('[role=treeitem]');
    if (item === null) return;
    const scope = Number(item.id.slice('scope-'.length));
    const items = [...this.node.querySelectorAll('[role=treeitem]')];
    const go = (to) => to && (items.forEach((i) => (i.tabIndex = -1)), (to.tabIndex = 0), to.focus());
    const at = items.indexOf(item);
    const closed = item.getAttribute('aria-expanded') === 'false';
    const keys = {
      ArrowDown: () => go(items[at + 1]),
      ArrowUp: () => go(items[at - 1]),
      Home: () => go(items[0]),
      End: () => go(items[items.length - 1]),
      ArrowRight: () => (closed ? (this.toggle(scope, true), go(this.itemOf(scope))) : go(items[at + 1])),
      ArrowLeft: () => (this.open.has(scope) && !closed && item.hasAttribute('aria-expanded') ? (this.toggle(scope, false), go(this.itemOf(scope))) : go(item.parentElement.closest('[role=treeitem]'))),
      Enter: () => this.choose(scope),
      ' ': () => this.choose(scope),
    };
    if (!(event.key in keys)) return;
    event.preventDefault();
    keys[event.key]();
  }
}

/** The words with their colours, for every picture that uses them. */
export const swatch = (word) => el('span', { class: `swatch word-${word}`, 'aria-hidden': 'true', title: WORDS[word] });
