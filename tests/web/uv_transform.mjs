// Checks by pixels that texture transforms turn and scale about the middle of the image:
//   node uv_transform.mjs transforms.glb
// The squares of that example show one image: red, green / blue, yellow.
import path from 'node:path';
import { openViewer } from './viewer.mjs';

const file = path.resolve(process.argv[2]);
const near = 0.1;  // from the middle of a square

// Per square: its lower left corner and the colours left above, right above, left below, right below its middle.
const quadrants = {
  Plain: { x: 0, y: 0, colours: 'R G B Y', reach: 0.25 },
  Turned: { x: 1.2, y: 0, colours: 'B R Y G', reach: 0.25 },
  // Repeated from the middle outwards: around the middle the image is as it was, only smaller.
  Repeated: { x: 2.4, y: 0, colours: 'R G B Y', reach: near },
};

function nameOf([red, green, blue]) {
  const high = [red, green, blue].map((value) => value > 150);
  if (high[0] && high[1]) return 'Y';
  return high[0] ? 'R' : high[1] ? 'G' : high[2] ? 'B' : '?';
}

const viewer = await openViewer([file]);
const { page, errors, urlOf } = viewer;
await page.evaluate((model) => window.loadModel(model), urlOf(0));
const coloursAt = async (points) => (await page.evaluate((list) => window.samplePlane(list), points)).map(nameOf).join(' ');

function expect(what, found, wanted) {
  if (found !== wanted) errors.push(`${what}: ${found} instead of ${wanted}`);
}

for (const [name, { x, y, colours, reach }] of Object.entries(quadrants)) {
  const [left, right, below, above] = [x + 0.5 - reach, x + 0.5 + reach, y + 0.5 - reach / 2, y + 0.5 + reach / 2];
  expect(name, await coloursAt([[left, above], [right, above], [left, below], [right, below]]), colours);
}
// Two repeats along U are four cells a row, three along V six cells a column.
const cells = (count) => Array.from({ length: count }, (_, cell) => (cell + 0.5) / count);
expect('row', await coloursAt(cells(4).map((u) => [2.4 + u, 0.5 + 1 / 12])), 'G R G R');
expect('column', await coloursAt(cells(6).map((v) => [2.4 + 0.375, v])), 'B R B R B R');

await viewer.close();
for (const error of errors) console.error(error);
console.log(errors.length === 0 ? 'texture transforms turn and scale about the middle' : `${errors.length} wrong`);
process.exit(errors.length === 0 ? 0 : 1);
