// Fills the page from the model and the facts that the command left in it.
import { setUpCamera, setUpClips } from './clips.mjs';
import { byId, counted, element, fillList, grouped, sizeText } from './elements.mjs';
import { bytesByUse, parseGlb, takeModelBytes, trianglesOf, withNumberedClips } from './glb.mjs';
import { materialMaker } from './materials.mjs';
import { makeNodeTree } from './tree.mjs';

function tell(text) {
  byId('problem').textContent = text;
  byId('problem').hidden = false;
}

function showCounts(facts, json) {
  document.title = `${facts.name} – preview`;
  byId('name').textContent = facts.name;
  byId('maker').textContent = `Made by vornel ${facts.version}.`;
  const triangles = (json.meshes ?? []).reduce((sum, mesh) => sum + trianglesOf(json, mesh), 0);
  const lengthOf = (list) => json[list]?.length ?? 0;
  const entries = [[lengthOf('nodes'), 'node'], [lengthOf('meshes'), 'mesh', 'meshes'], [triangles, 'triangle'],
    [lengthOf('materials'), 'material'], [lengthOf('images'), 'image'], [lengthOf('animations'), 'clip']];
  const bytes = facts.files.reduce((sum, file) => sum + file.bytes, 0);
  for (const text of [...entries.map((entry) => counted(...entry)), sizeText(bytes)])
    byId('counts').append(element('li', {}, text));
}

function showWarnings({ warnings, warningsLeftOut }) {
  if (warnings.length === 0) return;
  const section = byId('warnings');
  section.hidden = false;
  section.open = true;
  section.querySelector('summary').append(countBadge(warnings.length + warningsLeftOut));
  fillList(section.querySelector('ul'), warnings, (warning) => element('li', { dir: 'auto' }, warning));
  if (warningsLeftOut > 0)
    section.append(element('p', { class: 'note' }, `${grouped(warningsLeftOut)} more are not in this page.`));
}

const countBadge = (count) => element('span', { class: 'badge' }, grouped(count));

function addSection(id, entries, content) {
  byId(id).querySelector('summary').append(countBadge(entries.length));
  byId(id).append(entries.length > 0 ? content() : element('p', { class: 'note' }, 'None.'));
}

function sizeTable(caption, rows) {
  const table = element('table', {}, element('caption', {}, caption));
  for (const [name, bytes] of rows)
    table.append(element('tr', {}, element('th', { scope: 'row' }, element('bdi', {}, name)),
      element('td', { title: counted(bytes, 'byte') }, sizeText(bytes))));
  return table;
}

function showSizes(facts, model) {
  byId('sizes').append(
    sizeTable('Files', facts.files.map((file) => [file.name, file.bytes])),
    sizeTable('What takes the bytes', Object.entries(bytesByUse(model)).filter(([, bytes]) => bytes > 0)));
}

function showModel(viewer, model) {
  if (!model.json.meshes?.length) {
    byId('controls').hidden = true;
    return tell('There is nothing to draw in this model.');
  }
  viewer.addEventListener('error', (event) => {
    const { sourceError, type = 'unknown reason' } = event.detail ?? {};
    tell(`The viewer can't show this model: ${sourceError?.message ?? type}`);
  });
  viewer.alt = `3D model ${document.title}`;
  setUpCamera(viewer);
  if (model.json.animations?.length > 0) setUpClips(viewer, model.json.animations);
  viewer.src = URL.createObjectURL(withNumberedClips(model));
}

try {
  const facts = JSON.parse(byId('facts').textContent);
  const model = parseGlb(takeModelBytes(document.querySelectorAll('script.model'), facts.modelBytes));
  showCounts(facts, model.json);
  showWarnings(facts);
  addSection('nodes', model.json.nodes ?? [], () => makeNodeTree(model.json));
  addSection('materials', model.json.materials ?? [],
    () => fillList(element('ul', { class: 'materials' }), model.json.materials, materialMaker(model)));
  showSizes(facts, model);
  showModel(byId('viewer'), model);
} catch (error) {
  tell(`This page is damaged: ${error.message}`);
}
