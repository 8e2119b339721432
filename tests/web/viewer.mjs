// Opens viewer.html in headless Chromium over a server on this machine.
import { createServer } from 'node:http';
import { readFile } from 'node:fs/promises';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { chromium } from 'playwright-core';

const here = path.dirname(fileURLToPath(import.meta.url));
const mimeTypes = { '.html': 'text/html', '.js': 'text/javascript', '.mjs': 'text/javascript' };

// Serves this folder under /web/ and the folder of files[N] under /model/N/.
function serve(files) {
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
  return new Promise((resolve) => server.listen(0, '127.0.0.1', () => resolve(server)));
}

// Renders without a graphics card, and calls nobody by itself.
export function launchBrowser() {
  return chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-quic', '--no-first-run', '--disable-background-networking',
      '--disable-component-update', '--disable-sync', '--use-angle=swiftshader', '--enable-unsafe-swiftshader',
      '--ignore-gpu-blocklist'],
  });
}

// A page that shows one model after another, the errors that it logs, and the address of files[index].
export async function openViewer(files) {
  const server = await serve(files);
  const browser = await launchBrowser();
  const page = await browser.newPage({ viewport: { width: 640, height: 480 } });
  const errors = [];
  page.on('pageerror', (error) => errors.push(error.message));
  page.on('console', (message) => {
    if (message.type() === 'error' && !/favicon/.test(message.location().url)) errors.push(message.text());
  });
  await page.goto(`http://127.0.0.1:${server.address().port}/web/viewer.html`);
  return {
    page,
    errors,
    urlOf: (index) => `/model/${index}/${encodeURIComponent(path.basename(files[index]))}`,
    async close() {
      await browser.close();
      server.close();
    },
  };
}
