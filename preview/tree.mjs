// The node tree. Children are laid out when their parent is first opened.
import { counted, element, fillList, nameElement } from './elements.mjs';
import { trianglesOf } from './glb.mjs';

const openAtFirst = 150;  // rows

function tagsOf(json, index, joints) {
  const node = json.nodes[index];
  const tags = [];
  if (node.mesh !== undefined) tags.push(counted(trianglesOf(json, json.meshes[node.mesh]), 'triangle'));
  if (node.skin !== undefined) tags.push('skinned');
  if (node.camera !== undefined) tags.push('camera');
  if (joints.has(index)) tags.push('joint');
  return tags;
}

export function makeNodeTree(json) {
  const nodes = json.nodes ?? [];
  const joints = new Set((json.skins ?? []).flatMap((skin) => skin.joints ?? []));
  const children = new Set(nodes.flatMap((node) => node.children ?? []));
  const roots = nodes.map((_, index) => index).filter((index) => !children.has(index));
  const shown = json.scenes ? new Set(json.scenes[json.scene ?? 0]?.nodes) : new Set(roots);
  let budget = openAtFirst;
  const closed = [];  // parents that are to be opened at first, in order of breadth

  function makeRow(index) {
    const tags = tagsOf(json, index, joints);
    if (!children.has(index) && !shown.has(index)) tags.push('not in the scene');
    return [nameElement(nodes[index].name, `node ${index}`),
      ...tags.map((tag) => element('span', { class: 'tag' }, tag))];
  }
  function makeItem(index) {
    const below = nodes[index].children ?? [];
    if (below.length === 0) return element('li', {}, element('div', { class: 'leaf' }, ...makeRow(index)));
    const details = element('details', {}, element('summary', {}, ...makeRow(index)));
    let filled = false;
    const fill = () => {
      if (!filled) details.append(fillList(element('ul'), below, makeItem));
      filled = true;
    };
    details.addEventListener('toggle', () => { if (details.open) fill(); });
    closed.push({ details, fill, rows: below.length });
    return element('li', {}, details);
  }

  const tree = fillList(element('ul', { class: 'tree' }), roots, makeItem);
  while (closed.length > 0 && closed[0].rows <= budget) {
    const { details, fill, rows } = closed.shift();
    fill();
    details.open = true;
    budget -= rows;
  }
  closed.length = 0;
  return tree;
}
