// Makes the template that the command fills: node assemble.mjs NODE_MODULES OUT
// Everything but the model goes in here, so that the policy can name the page's scripts by their hashes.
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';

const [modules, out] = process.argv.slice(2);
const here = (name) => readFileSync(new URL(name, import.meta.url), 'utf8');
const installed = (name) => readFileSync(path.join(modules, name), 'utf8');
const viewerFile = '@google/model-viewer/dist/model-viewer.min.js';

// The notices must name every package that the viewer's bundle was made from.
const known = ['@lit/reactive-element', 'lit-element', 'lit-html', 'three', '@monogrid/gainmap-js'];
for (const source of JSON.parse(installed(`${viewerFile}.map`)).sources) {
  const found = source.match(/.*node_modules\/((?:@[^/]+\/)?[^/]+)/)?.[1];
  if (found && !known.includes(found)) throw new Error(`preview/notices.txt says nothing of ${found}`);
}
const notices = [here('notices.txt'),
  ...['@google/model-viewer/LICENSE', 'lit-html/LICENSE', '@monogrid/gainmap-js/LICENSE'].map(
    (name) => `${name}\n\n${installed(name)}`)].join(`\n${'-'.repeat(60)}\n\n`);

// The parts become one module: an inline script can't import another.
const parts = ['elements.mjs', 'glb.mjs', 'tree.mjs', 'materials.mjs', 'clips.mjs', 'page.mjs'];
const script = parts.map((name) => here(name).replace(/^import .*\n/gm, '').replace(/^export /gm, '')).join('\n');
// One of the viewer's decoders starts by itself where it finds WebAssembly, which the policy refuses. None is
// needed.
const bundle = installed(viewerFile).replace(/^\/\/# sourceMappingURL=.*$/m, '');
const viewer = `globalThis.WebAssembly = undefined;\n${bundle}`;
for (const text of [viewer, script])
  if (/<\/?script/i.test(text)) throw new Error('a script in the page would end where it says "script" in a tag');

const hashes = [viewer, script].map((text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`);
const policy = ["default-src 'none'", `script-src ${hashes.join(' ')}`, "style-src 'unsafe-inline'",
  'img-src blob: data:', 'connect-src blob:', "base-uri 'none'", "form-action 'none'"].join('; ');
const escape = (text) => text.replaceAll('&', '&amp;').replaceAll('<', '&lt;');

const values = { policy, viewer, script, style: here('page.css'), notices: escape(notices) };
writeFileSync(out, here('page.html').replace(/@(\w+)@/g, (_, name) => values[name]));
