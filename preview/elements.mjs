// Small helpers for elements. Names from a model go in as text only.

export const byId = (id) => document.getElementById(id);

export function element(tag, attributes = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) made.setAttribute(name, value);
  made.append(...children);
  return made;
}

// A name of the model or, where it has none, what it is.
export function nameElement(name, kind) {
  if (typeof name === 'string' && name.trim() !== '') return element('bdi', { class: 'name' }, name);
  return element('span', { class: 'name unnamed' }, kind);
}

export const grouped = (number) => number.toLocaleString('en').replaceAll(',', '\u2009');

export function sizeText(bytes) {
  const units = ['bytes', 'KB', 'MB', 'GB'];
  let value = bytes;
  let unit = 0;
  while (value >= 1000 && unit < units.length - 1) {
    value /= 1000;
    ++unit;
  }
  return `${unit > 0 && value < 100 ? value.toFixed(1) : Math.round(value)} ${units[unit]}`;
}

export const counted = (number, singular, plural = `${singular}s`) =>
  `${grouped(number)} ${number === 1 ? singular : plural}`;

const listStep = 200;

// Fills a list a step at a time: a scene may have more entries than a browser can lay out at once.
export function fillList(list, entries, makeItem, start = 0) {
  const end = Math.min(entries.length, start + listStep);
  for (let index = start; index < end; ++index) list.append(makeItem(entries[index], index));
  if (end === entries.length) return list;
  const more = element('button', { type: 'button' }, `Show more (${grouped(entries.length - end)} left)`);
  const item = element('li', { class: 'more' }, more);
  more.addEventListener('click', () => {
    item.remove();
    fillList(list, entries, makeItem, end);
    list.children[end]?.querySelector('summary, button')?.focus();
  });
  list.append(item);
  return list;
}
