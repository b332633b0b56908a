// The data of the page, which docs/report.md describes: blocks of bytes, compressed and in base64.

/** The five words, in the order of their codes. A register has exactly one. */
export const WORDS = ['mapped', 'constant', 'without fanout', 'machine', 'unknown'];

async function unpacked(bytes) {
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('deflate'));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

function fromBase64(text) {
  const raw = atob(text.trim());
  const bytes = new Uint8Array(raw.length);
  for (let k = 0; k < raw.length; ++k) bytes[k] = raw.charCodeAt(k);
  return bytes;
}

/** The bytes of a block, or null when the page has none of that name. */
async function block(name) {
  const node = document.getElementById(`kpt-${name}`);
  if (!node) return null;
  const bytes = await unpacked(fromBase64(node.textContent));
  node.remove();
  return bytes;
}

/** Numbers of seven bits a byte, the least first. */
function numbers(bytes) {
  let length = 0;
  for (let k = 0; k < bytes.length; ++k) length += bytes[k] < 128 ? 1 : 0;
  const result = new Int32Array(length);
  for (let k = 0, n = 0; n < length; ++n) {
    let value = 0;
    let shift = 0;
    while (bytes[k] >= 128) {
      value |= (bytes[k++] & 127) << shift;
      shift += 7;
    }
    result[n] = value | (bytes[k++] << shift);
  }
  return result;
}

const signed = (n) => (n >>> 1) ^ -(n & 1);

/** Numbers that are each told by its distance from the one before; `plus` is added to all. */
function steps(numbers, plus) {
  let last = plus;
  return numbers.map((n) => (last += signed(n)));
}

/** Texts with a NUL behind each, all in one string: `at(k)` cuts one out. */
export class Texts {
  constructor(bytes, size) {
    this.all = new TextDecoder().decode(bytes);
    this.start = new Int32Array(size + 1);
    for (let k = 0, at = 0; k < size; ++k) {
      at = this.all.indexOf('\0', at) + 1;
      this.start[k + 1] = at;
    }
    this.size = size;
  }
  at(k) {
    return this.all.slice(this.start[k], this.start[k + 1] - 1);
  }
  /** The same text with small letters for A to Z, so that places in it are places in `all`. */
  get small() {
    return (this.smallText ??= this.all.replace(/[A-Z]+/g, (t) => t.toLowerCase()));
  }
}

const BARE = ['kind', 'attributes', 'mapAsReference', 'mapAsTransformed'];

/** One netlist: names, and a column of numbers for each property of its registers. */
async function netlist(k, size) {
  const result = { names: new Texts(await block(`names-${k}`), size), size };
  const values = numbers(await block(`columns-${k}`));
  const columns = k === 0 ? [...BARE, 'scope', 'word'] : BARE;
  columns.forEach((column, c) => {
    const part = values.subarray(c * size, (c + 1) * size);
    if (!column.startsWith('map') && column !== 'scope') {
      result[column] = part;
      return;
    }
    result[column] = steps(part, column === 'scope' ? 0 : -1);
  });
  return result;
}

export const REASONS = ['', 'stuck at zero', 'stuck at one', 'without fanout', 'eliminated'];

/** A map of two netlists. Registers are numbers; -1 is none. */
class Reader {
  constructor(values, sizes) {
    this.values = values;
    this.sizes = sizes;
    this.at = 0;
    this.last = [-1, -1];
  }
  next() {
    return this.values[this.at++];
  }
  member(side) {
    this.last[side] += 1 + signed(this.next());
    return this.last[side] >= this.sizes[side] ? -1 : this.last[side];
  }
  group(side) {
    return Array.from({ length: this.next() }, () => this.member(side));
  }
  side(side, size) {
    return Array.from({ length: size }, () => ({ same: this.group(side), inverse: this.group(side) }));
  }
  table(rColumns, tColumns) {
    const states = this.next();
    const listed = this.next();
    const code = (columns) => Array.from({ length: columns }, () => '01?'[this.next()]).join('');
    const rows = Array.from({ length: listed }, () => [code(rColumns), code(tColumns)]);
    return { states, rows, columns: [rColumns, tColumns] };
  }
  map() {
    const flags = this.next();
    const attributes = this.next();
    const map = { machine: (flags & 1) === 1, reason: (flags >> 1) & 7, attributes, table: null };
    const shape = (flags >> 4) & 3;
    if (shape !== 0) {
      map.reference = [{ same: [this.member(0)], inverse: [] }];
      const other = [this.member(1)];
      map.transformed = [shape === 1 ? { same: other, inverse: [] } : { same: [], inverse: other }];
      return map;
    }
    const sizes = [this.next(), this.next()];
    map.reference = this.side(0, sizes[0]);
    map.transformed = this.side(1, sizes[1]);
    if (map.machine) map.table = this.table(this.next(), this.next());
    return map;
  }
}

/** The maps of a stage, or of the composition: read one after another once, then by number. */
class Maps {
  constructor(bytes, size, sizes) {
    this.size = size;
    this.reader = new Reader(numbers(bytes), sizes);
    this.places = new Int32Array(size);
    this.last = [new Int32Array(size), new Int32Array(size)];
    this.attributes = new Int32Array(size);
    this.flags = new Uint8Array(size);
    this.scan();
  }
  // Walks over all maps without making objects: an object for each of a million maps is too much.
  scan() {
    const r = this.reader;
    for (let k = 0; k < this.size; ++k) {
      this.places[k] = r.at;
      this.last[0][k] = r.last[0];
      this.last[1][k] = r.last[1];
      this.flags[k] = r.values[r.at];
      this.attributes[k] = r.values[r.at + 1];
      if (((r.values[r.at] >> 4) & 3) !== 0) {
        r.at += 2;
        r.member(0);
        r.member(1);
      } else {
        r.map();
      }
    }
  }
  at(k) {
    const r = this.reader;
    r.at = this.places[k];
    r.last = [this.last[0][k], this.last[1][k]];
    return r.map();
  }
}

const maps = async (name, size, sizes) => new Maps(await block(name), size, sizes);

async function scopes(size) {
  const bytes = await block('scopes');
  const parents = await block('parents');
  return { names: new Texts(bytes, size), parent: numbers(parents), size };
}

export async function readHead() {
  return JSON.parse(new TextDecoder().decode(await block('head')));
}

/** Everything that `head` announces. */
export async function readAll(head) {
  const data = { head, netlists: [], stages: [] };
  const sizes = head.netlists;
  for (let k = 0; k < sizes.length; ++k) data.netlists.push(await netlist(k, sizes[k]));
  for (let k = 0; k < head.maps.length; ++k) {
    data.stages.push(await maps(`maps-${k}`, head.maps[k], [sizes[k], sizes[k + 1]]));
  }
  data.scopes = await scopes(head.scopes);
  data.whole = data.stages[0];
  if (head.whole !== undefined) {
    data.whole = await maps('maps-whole', head.whole, [sizes[0], sizes[sizes.length - 1]]);
    const values = numbers(await block('columns-whole'));
    data.wholeOf = [values.subarray(0, sizes[0]), values.subarray(sizes[0])].map((part) => steps(part, -1));
  } else {
    data.wholeOf = [data.netlists[0].mapAsReference, data.netlists[1].mapAsTransformed];
  }
  return data;
}
