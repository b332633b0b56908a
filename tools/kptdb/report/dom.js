// Makes elements from text. Nothing in the page turns a text into markup.

const SVG = 'http://www.w3.org/2000/svg';

function put(node, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === 'function') {
      node.addEventListener(name, value);
    } else if (value !== undefined && value !== false && value !== null) {
      node.setAttribute(name, value === true ? '' : value);
    }
  }
  node.append(...children.flat(Infinity).filter((c) => c !== undefined && c !== null && c !== false));
  return node;
}

/** An element; functions among the attributes listen, texts among the children stay texts. */
export const el = (tag, attributes = {}, ...children) => put(document.createElement(tag), attributes, children);
export const svg = (tag, attributes = {}, ...children) => put(document.createElementNS(SVG, tag), attributes, children);
export const byId = (id) => document.getElementById(id);
export const fill = (node, ...children) => node.replaceChildren(...children.flat(Infinity).filter(Boolean));

// Characters that are invisible, and those that change the direction of text. A name may contain any of
// them, and must not look like another name.
const UNSEEN = /[\u0000-\u001f\u007f-\u009f\u00ad\u061c\u180e\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff\ufff9-\ufffb]/g;

/** A name as it is shown. */
export const shown = (text) => text.replace(UNSEEN, (c) => `\\u{${c.charCodeAt(0).toString(16)}}`);

/** A name in its own direction and in the type of names. */
export const nameOf = (text, attributes = {}) => el('bdi', { class: 'name', ...attributes }, shown(text));

export const count = (n) => n.toLocaleString('en');
export const counted = (n, noun) => `${count(n)} ${noun}${n === 1 ? '' : 's'}`;
export const share = (part, whole) => (whole === 0 ? '–' : `${((100 * part) / whole).toFixed(part === whole || part === 0 ? 0 : 1)} %`);
