// The hierarchy as areas: an area is proportional to its number of registers and shows what became of them.
import { WORDS } from './data.js';
import { svg, shown, counted } from './dom.js';

const HEAD = 17;
const MOST_CELLS = 400;
const MOST_CHILDREN = 80;

/** Cuts a rectangle into one for each weight, nearly square; weights go from large to small. */
export function squarify(weights, box) {
  const total = weights.reduce((a, b) => a + b, 0);
  const result = [];
  let { x, y, w, h } = box;
  let scale = total === 0 ? 0 : (w * h) / total;
  for (let k = 0; k < weights.length; ) {
    const side = Math.min(w, h);
    const end = rowEnd(weights, k, side, scale);
    const area = weights.slice(k, end).reduce((a, b) => a + b, 0) * scale;
    const thick = side > 0 ? area / side : 0;
    for (let at = 0; k < end; ++k) {
      const long = thick > 0 ? (weights[k] * scale) / thick : 0;
      result.push(w < h ? { x: x + at, y, w: long, h: thick } : { x, y: y + at, w: thick, h: long });
      at += long;
    }
    if (w < h) [y, h] = [y + thick, h - thick];
    else [x, w] = [x + thick, w - thick];
  }
  return result;
}

// A row takes more weights until its worst rectangle would become worse.
function rowEnd(weights, start, side, scale) {
  const worst = (sum, low, high) => Math.max((side * side * high) / (sum * sum), (sum * sum) / (side * side * low));
  let sum = 0;
  let best = Infinity;
  for (let k = start; k < weights.length; ++k) {
    sum += weights[k] * scale;
    const now = worst(sum, weights[k] * scale, weights[start] * scale);
    if (now > best) return k;
    best = now;
  }
  return weights.length;
}

/** A bus is the registers that differ only in the number at the end. */
export const busOf = (name) => name.replace(/\[\d+\]$/, '[*]');

/** What a scope is made of: scopes and buses, the largest first, and the rest as one. */
export function partsOf(design, scope) {
  const parts = design.childrenOf(scope).map((s) => ({
    label: design.scopes.names.at(s), scope: s, counts: design.counts[s], size: design.totals[s],
  }));
  const prefix = design.pathText(scope).length;
  const buses = new Map();
  for (const r of design.registersIn(scope)) {
    const bus = busOf(design.source.names.at(r));
    if (!buses.has(bus)) buses.set(bus, { label: bus.slice(prefix), bus, register: r, counts: new Int32Array(WORDS.length), size: 0 });
    const part = buses.get(bus);
    ++part.counts[design.word(r)];
    ++part.size;
  }
  parts.push(...buses.values());
  return parts.sort((a, b) => b.size - a.size);
}

function rest(parts) {
  const counts = new Int32Array(WORDS.length);
  for (const part of parts) part.counts.forEach((n, w) => (counts[w] += n));
  return { label: `${counted(parts.length, 'more part')}`, counts, size: parts.reduce((n, p) => n + p.size, 0) };
}

const limited = (parts) => (parts.length <= MOST_CHILDREN ? parts : [...parts.slice(0, MOST_CHILDREN), rest(parts.slice(MOST_CHILDREN))]);

/** The words of a part, as a text. */
export const tellCounts = (counts) =>
  [...counts].map((n, w) => (n > 0 ? `${n} ${WORDS[w]}` : '')).filter(Boolean).join(', ');

function bands(part, box) {
  const along = box.w >= box.h;
  let at = 0;
  return [...part.counts].map((n, w) => {
    if (n === 0) return null;
    const long = (n / part.size) * (along ? box.w : box.h);
    const place = along ? { x: box.x + at, y: box.y, width: long, height: box.h } : { x: box.x, y: box.y + at, width: box.w, height: long };
    at += long;
    return svg('rect', { class: `word-${w}`, ...place });
  });
}

class Painter {
  constructor(design, choose) {
    this.design = design;
    this.choose = choose;
    this.cells = 0;
  }
  paint(scope, box, depth) {
    const parts = limited(partsOf(this.design, scope));
    const boxes = squarify(parts.map((p) => p.size), box);
    return parts.map((part, k) => this.cell(part, inset(boxes[k], depth === 0 ? 1.5 : 1), depth));
  }
  cell(part, box, depth) {
    if (box.w < 2 || box.h < 2 || ++this.cells > MOST_CELLS) return null;
    const open = part.scope !== undefined && depth < 3 && box.w > 64 && box.h > 44;
    const children = open ? this.paint(part.scope, { x: box.x + 1, y: box.y + HEAD, w: box.w - 2, h: box.h - HEAD - 1 }, depth + 1) : bands(part, box);
    const cell = svg('g', { class: `cell depth-${depth}${open ? ' open' : ''}` },
      svg('title', {}, `${shown(part.label)}: ${counted(part.size, 'register')}; ${tellCounts(part.counts)}`),
      svg('rect', { class: 'ground', x: box.x, y: box.y, width: box.w, height: box.h, rx: 2 }), children, label(part, box, open));
    if (part.scope !== undefined || part.bus !== undefined) {
      cell.classList.add('active');
      cell.addEventListener('click', (event) => {
        event.stopPropagation();
        this.choose(part);
      });
    }
    return cell;
  }
}

const inset = (box, by) => ({ x: box.x + by, y: box.y + by, w: Math.max(0, box.w - 2 * by), h: Math.max(0, box.h - 2 * by) });

function label(part, box, open) {
  const room = Math.floor((box.w - 8) / 6.6);
  if (room < 3 || box.h < 15) return null;
  const text = shown(part.label.replace(/[./]$/, '').replace(/^[./]/, ''));
  const cut = text.length > room ? `${text.slice(0, room - 1)}…` : text;
  const size = room > cut.length + 7 ? svg('tspan', { class: 'size', dx: 6 }, `${part.size}`) : null;
  return svg('text', { class: open ? 'head' : 'leaf', x: box.x + 5, y: box.y + 12.5 }, cut, size);
}

/** Draws a scope into the picture; `choose` gets the part that is clicked. */
export function drawTreemap(node, design, scope, choose) {
  const [w, h] = [node.clientWidth || 700, node.clientHeight || 300];
  node.setAttribute('viewBox', `0 0 ${w} ${h}`);
  const painter = new Painter(design, choose);
  node.replaceChildren(...painter.paint(scope, { x: 0, y: 0, w, h }, 0).filter(Boolean));
}
