// The whole page: the address says what it shows, and every action changes the address.
import { el, fill, byId, nameOf, count, counted } from './dom.js';
import { readHead, readAll } from './data.js';
import { Design } from './model.js';
import { rowsOf, sorted } from './search.js';
import { ALL, parseAddress, addressOf, registerAddress } from './address.js';
import { Table, asNames, asCsv } from './table.js';
import { Tree } from './tree.js';
import { drawTreemap, busOf } from './treemap.js';
import { showRegister } from './register.js';
import { showHeading, showCoverage, showAttention, showChanges } from './overview.js';

class App {
  constructor(design) {
    this.design = design;
    this.wanted = { ...ALL };
    this.tree = new Tree(byId('tree'), design, (scope) => this.go({ scope }));
    this.table = new Table(byId('table'), design, { sort: (key) => this.sort(key), open: (row) => this.open(row) });
    this.listen();
    showHeading(design);
    showAttention(design);
    showChanges(design);
    this.fillChoices('kind', design.kinds.length > 1 ? design.kinds : []);
    this.fillChoices('pass', design.passes);
    this.fillChoices('status', design.statuses);
    this.follow();
    window.addEventListener('hashchange', () => this.follow());
    new ResizeObserver(() => this.drawMap()).observe(byId('treemap'));
  }

  /** Shows something else, and keeps the way back: each step is an entry of the history. */
  go(change, replace = false) {
    const address = addressOf({ ...this.wanted, register: null, ...change }, this.design);
    if (address === location.hash || (address === '#' && location.hash === '')) return;
    if (replace) history.replaceState(null, '', address);
    else history.pushState(null, '', address);
    this.follow();
  }
  follow() {
    const before = this.wanted;
    this.wanted = parseAddress(location.hash, this.design);
    const page = this.wanted.register !== null;
    byId('overview').hidden = page;
    byId('register').hidden = !page;
    if (page) this.showPage(before);
    else this.showOverview(before);
  }
  showPage(before) {
    if (before.register === null) this.listAddress = addressOf(before, this.design);
    byId('back').setAttribute('href', this.listAddress ?? '#');
    showRegister(byId('page'), this.design, this.wanted.register);
    scrollTo(0, 0);
    byId('page').querySelector('h1').focus({ preventScroll: true });
  }
  showOverview(before) {
    const { design, wanted } = this;
    showCoverage(design, wanted, (word) => this.toggleWord(word));
    this.tree.select(wanted.scope);
    this.drawMap();
    this.showControls();
    this.showRows(before);
  }
  drawMap() {
    if (!byId('overview').hidden) drawTreemap(byId('treemap'), this.design, this.wanted.scope, (part) => this.choosePart(part));
  }
  choosePart(part) {
    if (part.scope !== undefined) this.go({ scope: part.scope });
    else if (part.size === 1) location.hash = registerAddress(this.design, 0, part.register);
    else this.go({ text: busOf(part.bus), mode: 'glob', side: 0 });
  }

  showRows() {
    const { design, wanted } = this;
    try {
      this.found = rowsOf(design, wanted);
      byId('problem').textContent = '';
    } catch (problem) {
      byId('problem').textContent = `No regular expression: ${problem.message}`;
      return;
    }
    this.rows = sorted(design, wanted.side, this.found, wanted.order, wanted.down);
    this.table.show(this.rows, wanted.side, wanted.order, wanted.down);
    byId('count').textContent = `${count(this.rows.length)} of ${counted(design.side(wanted.side).size, 'register')}`;
    this.offerOtherSide();
  }
  // A name that the source does not have may be a name of the netlist.
  offerOtherSide() {
    const { design, wanted } = this;
    const other = 1 - wanted.side;
    const there = this.rows.length === 0 && wanted.text !== '' ? rowsOf(design, { ...ALL, text: wanted.text, mode: wanted.mode, side: other }).length : 0;
    fill(byId('elsewhere'), there === 0 ? null : el('button', { class: 'quiet', click: () => this.go({ ...ALL, text: wanted.text, mode: wanted.mode, side: other }) },
      `${counted(there, 'register')} of the ${other === 0 ? 'source' : 'netlist'} found`));
  }

  showControls() {
    const { wanted } = this;
    if (document.activeElement !== byId('search')) byId('search').value = wanted.text;
    byId('mode').value = wanted.mode;
    byId('side').value = String(wanted.side);
    byId('kind').value = wanted.kind ?? '\0';
    byId('pass').value = wanted.pass ?? '\0';
    byId('status').value = wanted.status ?? '\0';
    const parts = this.design.path(wanted.scope).map((s) => el('button', { class: 'crumb', click: () => this.go({ scope: s }) }, nameOf(this.design.scopes.names.at(s).replace(/[./]$/, ''))));
    const drop = (text, change) => el('button', { class: 'crumb drop', 'aria-label': `drop the filter ${text}`, click: () => this.go(change) }, `${text} ×`);
    fill(byId('crumbs'), wanted.scope > 0 ? [drop('scope', { scope: 0 }), parts] : null, wanted.value === null ? null : drop(`constant at ${wanted.value}`, { value: null }));
    byId('clear').hidden = addressOf({ ...wanted, order: '' }, this.design) === '#';
  }
  fillChoices(id, texts) {
    const known = [...new Set(texts.filter((t) => t !== ''))].sort();
    fill(byId(id), el('option', { value: '\0' }, `any ${id}`), known.map((t) => el('option', { value: t }, t)));
    byId(id).closest('label').hidden = known.length === 0;
    byId('table').classList.toggle(`without-${id}`, known.length === 0);
  }

  toggleWord(word) {
    const words = new Set(this.wanted.words);
    if (!words.delete(word)) words.add(word);
    this.go({ words, value: null });
  }
  sort(key) {
    const again = this.wanted.order === key;
    this.go(again && this.wanted.down ? { order: '', down: false } : { order: key, down: again });
  }
  open(row) {
    location.hash = registerAddress(this.design, this.wanted.side, row);
  }

  listen() {
    const choice = (id) => (byId(id).value === '\0' ? null : byId(id).value);
    byId('search').addEventListener('input', () => this.go({ text: byId('search').value }, true));
    byId('mode').addEventListener('change', () => this.go({ mode: byId('mode').value }));
    byId('side').addEventListener('change', () => this.go({ side: Number(byId('side').value) }));
    byId('kind').addEventListener('change', () => this.go({ kind: choice('kind') }));
    byId('pass').addEventListener('change', () => this.go({ pass: choice('pass') }));
    byId('status').addEventListener('change', () => this.go({ status: choice('status') }));
    byId('clear').addEventListener('click', () => this.go({ ...ALL }));
    byId('copy-names').addEventListener('click', () => this.copy(asNames));
    byId('copy-csv').addEventListener('click', () => this.copy(asCsv));
    document.addEventListener('keydown', (event) => this.key(event));
  }
  key(event) {
    const typing = event.target.matches('input, select, textarea');
    if (event.key === '/' && !typing && !byId('overview').hidden) {
      event.preventDefault();
      byId('search').focus();
    } else if (event.key === 'Escape' && this.wanted.register !== null) {
      location.hash = byId('back').getAttribute('href');
    } else if (event.key === 'ArrowDown' && event.target === byId('search')) {
      event.preventDefault();
      this.table.focusActive();
    }
  }
  async copy(form) {
    const text = form(this.design, this.wanted.side, this.rows);
    const done = await written(text);
    byId('count').textContent = done ? `${counted(this.rows.length, 'row')} copied` : 'The browser does not let the page copy.';
  }
}

async function written(text) {
  try {
    await navigator.clipboard.writeText(text);
    return true;
  } catch {
    const area = el('textarea', { class: 'offscreen', 'aria-hidden': 'true' });
    area.value = text;
    document.body.append(area);
    area.select();
    const done = document.execCommand('copy');
    area.remove();
    return done;
  }
}

// "auto" follows the system. The page stores nothing.
function theme() {
  const names = ['auto', 'light', 'dark'];
  byId('theme').addEventListener('click', () => {
    const now = document.documentElement.dataset.theme ?? 'auto';
    const next = names[(names.indexOf(now) + 1) % names.length];
    document.documentElement.dataset.theme = next;
    byId('theme').textContent = `${next} colours`;
  });
}

async function start() {
  theme();
  try {
    const design = new Design(await readAll(await readHead()));
    window.kptReport = new App(design);
    document.documentElement.dataset.ready = 'true';
  } catch (problem) {
    byId('loading').textContent = `This page cannot be shown: ${problem.message}. It needs a browser of 2023 or later.`;
    throw problem;
  }
  byId('loading').remove();
}

start();
