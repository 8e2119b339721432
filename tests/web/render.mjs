// Loads files in three.js in headless Chromium and takes pictures:
//   node render.mjs OUT_DIR [--times T,T,...] FILE ...
// Fails when a file doesn't load, when the page logs an error, or when a file with triangles gives a picture
// of one colour. With times, the first animation is played to each and a picture is taken there.
import { createServer } from 'node:http';
import { mkdir, readFile, writeFile } from 'node:fs/promises';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { chromium } from 'playwright-core';

const here = path.dirname(fileURLToPath(import.meta.url));
const mimeTypes = { '.html': 'text/html', '.js': 'text/javascript', '.mjs': 'text/javascript' };

const args = process.argv.slice(2);
const outDir = args.shift();
let times = [null];
if (args[0] === '--times') times = args.splice(0, 2)[1].split(',').map(Number);
const files = args.map((file) => path.resolve(file));
if (!outDir || files.length === 0) {
  console.error('usage: node render.mjs OUT_DIR [--times T,T,...] FILE ...');
  process.exit(2);
}

// Serves this folder under /web/ and the models' folders under /model/N/.
const server = createServer(async (request, response) => {
  const url = decodeURIComponent(new URL(request.url, 'http://localhost').pathname);
  const model = url.match(/^\/model\/(\d+)\/([^/]+)$/);
  const file = model ? path.join(path.dirname(files[model[1]]), model[2]) : path.join(here, url.replace(/^\/web\//, ''));
  try {
    const body = await readFile(file);
    response.writeHead(200, { 'Content-Type': mimeTypes[path.extname(file)] ?? 'application/octet-stream' });
    response.end(body);
  } catch {
    response.writeHead(404).end();
  }
});
await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
const base = `http://127.0.0.1:${server.address().port}`;

const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
  args: ['--no-sandbox', '--disable-quic', '--no-first-run', '--disable-background-networking',
    '--disable-component-update', '--disable-sync', '--use-angle=swiftshader', '--enable-unsafe-swiftshader',
    '--ignore-gpu-blocklist'],
});
await mkdir(outDir, { recursive: true });

let failures = 0;
for (const [index, file] of files.entries()) {
  const page = await browser.newPage({ viewport: { width: 640, height: 480 } });
  const errors = [];
  page.on('pageerror', (error) => errors.push(error.message));
  page.on('console', (message) => { if (message.type() === 'error' && !/favicon/.test(message.location().url)) errors.push(message.text()); });
  await page.goto(`${base}/web/viewer.html`);
  const stem = path.join(outDir, path.basename(file).replace(/\./g, '_'));
  let info = null;
  try {
    info = await page.evaluate((url) => window.loadModel(url), `/model/${index}/${encodeURIComponent(path.basename(file))}`);
    for (const time of times) {
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
  await page.close();
}
await browser.close();
server.close();
console.log(`rendered ${files.length} files into ${outDir}, ${failures} failed`);
process.exit(failures === 0 ? 0 : 1);
