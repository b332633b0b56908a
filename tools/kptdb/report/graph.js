// A map as a small picture: the registers of the source on the left, those of the netlist on the right,
// and their value between them. A dashed edge with a bubble means the inverse.
import { el, svg, shown, counted } from './dom.js';
import { registerAddress } from './address.js';

const MOST_NODES = 40;
const [STEP, WIDE, TOP] = [30, 640, 14];
const CHARACTERS = 26;

const short = (text) => (text.length > CHARACTERS ? `…${text.slice(1 - CHARACTERS)}` : text);

function entries(side) {
  return side.flatMap((pair, index) => [
    ...pair.same.map((register) => ({ register, index, inverse: false })),
    ...pair.inverse.map((register) => ({ register, index, inverse: true })),
  ]);
}

function node(design, side, entry, y, chosen) {
  const name = entry.register < 0 ? '(no register)' : design.side(side).names.at(entry.register);
  const box = svg('g', { class: `node${chosen ? ' chosen' : ''}` },
    svg('title', {}, shown(name)),
    svg('rect', { x: side === 0 ? 2 : WIDE - 222, y: y - 11, width: 220, height: 22, rx: 4 }),
    svg('text', { x: side === 0 ? 112 : WIDE - 112, y: y + 4 }, short(shown(name))));
  return entry.register < 0 ? box : svg('a', { href: registerAddress(design, side, entry.register) }, box);
}

function edge(side, y, middle, inverse) {
  const [from, to] = side === 0 ? [222, WIDE / 2 - 26] : [WIDE - 222, WIDE / 2 + 26];
  const half = (from + to) / 2;
  const line = svg('path', { class: `edge${inverse ? ' inverse' : ''}`, d: `M ${from} ${y} C ${half} ${y}, ${half} ${middle}, ${to} ${middle}` });
  const bubbleAt = side === 0 ? from + 5 : from - 5;
  return inverse ? [line, svg('circle', { class: 'turn', cx: bubbleAt, cy: y, r: 4 })] : [line];
}

const heights = (list, tall) => list.map((_, k) => TOP + (tall - list.length * STEP) / 2 + (k + 0.5) * STEP);

const hubText = (map) => (map.machine ? 'states' : map.reason === 1 ? '0' : map.reason === 2 ? '1' : map.reason > 2 ? 'none' : '=');

/** The picture of a map; `chosen` is the register whose page shows it. */
export function drawMap(design, map, chosenSide, chosen) {
  const sides = [entries(map.reference), entries(map.transformed)];
  const total = sides[0].length + sides[1].length;
  if (total > MOST_NODES) return el('p', { class: 'note' }, `A group of ${counted(total, 'register')}: too many for a picture. The list below has them.`);
  const tall = Math.max(sides[0].length, sides[1].length, 2) * STEP;
  const middle = TOP + tall / 2;
  const parts = sides.map((list, side) => {
    const ys = heights(list, tall);
    return list.map((entry, k) => [edge(side, ys[k], middle, entry.inverse), node(design, side, entry, ys[k], side === chosenSide && entry.register === chosen)]);
  });
  const hub = svg('g', { class: `hub${map.machine ? ' machine' : ''}` },
    svg('rect', { x: WIDE / 2 - 26, y: middle - 14, width: 52, height: 28, rx: 14 }), svg('text', { x: WIDE / 2, y: middle + 4.5 }, hubText(map)));
  return svg('svg', { class: 'map', viewBox: `0 0 ${WIDE} ${tall + 2 * TOP}`, role: 'img', 'aria-label': 'The group as a picture; the list below says the same.' }, parts.flat(3), hub);
}

/** "0>1 1>2": from state to state. Null for any other text. */
export function transitionsOf(text, states) {
  const pairs = text.trim().split(/\s+/).map((pair) => /^(\d+)>(\d+)$/.exec(pair));
  if (pairs.some((p) => p === null || Number(p[1]) >= states || Number(p[2]) >= states)) return null;
  return pairs.map((p) => [Number(p[1]), Number(p[2])]);
}

/** The states on a circle, an arrow for each transition. */
export function drawStates(rows, transitions) {
  if (rows.length > 32) return null;
  const [size, radius, dot] = [320, 120, 17];
  const at = (k) => [size / 2 + radius * Math.sin((2 * Math.PI * k) / rows.length), size / 2 - radius * Math.cos((2 * Math.PI * k) / rows.length)];
  const arrows = transitions.map(([from, to]) => arrow(at(from), at(to), dot, size / 2));
  const dots = rows.map(([code], k) => svg('g', { class: 'state' }, svg('title', {}, `state ${k}: ${code}`), svg('circle', { cx: at(k)[0], cy: at(k)[1], r: dot }), svg('text', { x: at(k)[0], y: at(k)[1] + 4 }, String(k))));
  const head = svg('marker', { id: 'arrow', viewBox: '0 0 8 8', refX: 7, refY: 4, markerWidth: 7, markerHeight: 7, orient: 'auto-start-reverse' }, svg('path', { d: 'M0 0 8 4 0 8z' }));
  return svg('svg', { class: 'states', viewBox: `0 0 ${size} ${size}`, role: 'img', 'aria-label': `State graph: ${transitions.map(([a, b]) => `${a} to ${b}`).join(', ')}` }, svg('defs', {}, head), arrows, dots);
}

function arrow([x, y], [u, v], dot, centre) {
  if (x === u && y === v) {
    const [dx, dy] = [(x - centre) / 4, (y - centre) / 4];
    return svg('path', { class: 'arrow', 'marker-end': 'url(#arrow)', d: `M ${x + dy * 0.4} ${y - dx * 0.4} C ${x + dx * 1.4 + dy} ${y + dy * 1.4 - dx}, ${x + dx * 1.4 - dy} ${y + dy * 1.4 + dx}, ${x + dx * 0.5 - dy * 0.4} ${y + dy * 0.5 + dx * 0.4}` });
  }
  const long = Math.hypot(u - x, v - y);
  const [dx, dy] = [(u - x) / long, (v - y) / long];
  const [mx, my] = [(x + u) / 2 - dy * long * 0.12, (y + v) / 2 + dx * long * 0.12];
  return svg('path', { class: 'arrow', 'marker-end': 'url(#arrow)', d: `M ${x + dx * dot} ${y + dy * dot} Q ${mx} ${my} ${u - dx * (dot + 2)} ${v - dy * (dot + 2)}` });
}
