// Runs the glTF validator over files: node validate.mjs [CODES.json] FILE.glb|FILE.gltf ...
// Every code that it reports must stand in validator_codes.json, or in CODES.json, with the reason why it may.
import { readFile } from 'node:fs/promises';
import path from 'node:path';
import validator from 'gltf-validator';

const severities = ['error', 'warning', 'information', 'hint'];
const allowed = JSON.parse(await readFile(new URL('validator_codes.json', import.meta.url)));
const files = process.argv.slice(2);
if (files[0]?.endsWith('.json')) Object.assign(allowed, JSON.parse(await readFile(files.shift())));
if (files.length === 0) {
  console.error('validate.mjs: no files given');
  process.exit(2);
}

let failures = 0;
for (const file of files) {
  const report = await validator.validateBytes(new Uint8Array(await readFile(file)), {
    uri: path.basename(file),
    maxIssues: 0,
    externalResourceFunction: async (uri) =>
      new Uint8Array(await readFile(path.join(path.dirname(file), decodeURIComponent(uri)))),
  });
  // One line a code: the same finding mostly comes for many places of a file.
  const unexpected = new Map();
  for (const finding of report.issues.messages)
    if (!(finding.code in allowed))
      unexpected.set(finding.code, { ...finding, count: (unexpected.get(finding.code)?.count ?? 0) + 1 });
  for (const { severity, code, message, pointer, count } of unexpected.values())
    console.error(`${file}: ${severities[severity]} ${code} x ${count}, last at ${pointer}: ${message}`);
  failures += unexpected.size > 0 ? 1 : 0;
}
console.log(`validated ${files.length} files, ${failures} with unexpected findings`);
process.exit(failures === 0 ? 0 : 1);
