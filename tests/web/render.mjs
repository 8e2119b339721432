// Loads files in three.js in headless Chromium and takes pictures:
//   node render.mjs OUT_DIR [--times T,T,...] FILE ...
// Fails when a file doesn't load, when the page logs an error, or when a file with triangles gives a picture
// of one colour. With times, the first animation of a file that has one is played to each too, for a picture more.
import { mkdir, writeFile } from 'node:fs/promises';
import path from 'node:path';
import { openViewer } from './viewer.mjs';

const args = process.argv.slice(2);
const outDir = args.shift();
let times = [];
if (args[0] === '--times') times = args.splice(0, 2)[1].split(',').map(Number);
const files = args.map((file) => path.resolve(file));
if (!outDir || files.length === 0) {
  console.error('usage: node render.mjs OUT_DIR [--times T,T,...] FILE ...');
  process.exit(2);
}

const viewer = await openViewer(files);
const { page, errors, urlOf } = viewer;
await mkdir(outDir, { recursive: true });

let failures = 0;
for (const [index, file] of files.entries()) {
  const stem = path.join(outDir, path.basename(file).replace(/\./g, '_'));
  let info = null;
  try {
    info = await page.evaluate((model) => window.loadModel(model), urlOf(index));
    for (const time of [null, ...(info.animations > 0 ? times : [])]) {
      const picture = await page.evaluate((seconds) => window.takePicture(seconds), time);
      if (info.triangles > 0 && picture.colours < 2) errors.push('the picture is of one colour');
      const name = time === null ? `${stem}.png` : `${stem}_${time}s.png`;
      await writeFile(name, Buffer.from(picture.url.split(',')[1], 'base64'));
    }
  } catch (error) {
    errors.push(error.message);
  }
  console.log(`${file}: ${JSON.stringify(info)}`);
  for (const error of errors) console.error(`${file}: ${error}`);
  failures += errors.length > 0 ? 1 : 0;
  errors.length = 0;
}
await viewer.close();
console.log(`rendered ${files.length} files into ${outDir}, ${failures} failed`);
process.exit(failures === 0 ? 0 : 1);
