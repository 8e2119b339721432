// Uses preview pages as a person would, from disk and without network: node preview.mjs VORNEL EXPORTED_DIR
// The model is an exported example that has been given hostile names.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { copyFile, mkdir, readFile, writeFile } from 'node:fs/promises';
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { launchBrowser } from './viewer.mjs';

const [command, exported] = process.argv.slice(2).map((argument) => path.resolve(argument));
const folder = path.join(exported, 'preview');
const hostile = '</script><script>hacked = 1</script><img src=x onerror="hacked = 1">&amp;';
const fileName = '<img src=x onerror=hacked=1>';

// The figure with its two clips, whose names become the same, and with images on its first material.
async function makeHostileModel() {
  const model = JSON.parse(await readFile(path.join(exported, 'figure.gltf')));
  model.nodes[0].name = hostile;
  model.materials[0].name = hostile;
  for (const clip of model.animations) clip.name = `Clip ${hostile}`;
  model.images = [{ name: hostile, uri: 'wood.jpg' }, { name: `TGA ${hostile}`, uri: 'plain.tga' }];
  model.textures = [{ source: 0 }];
  model.materials[0].normalTexture = { index: 0 };
  await mkdir(folder, { recursive: true });
  for (const name of ['figure.bin', 'wood.jpg'])
    await copyFile(path.join(exported, name), path.join(folder, name));
  await writeFile(path.join(folder, 'plain.tga'), 'no image that a browser knows');
  const file = path.join(folder, `${fileName}.gltf`);
  await writeFile(file, JSON.stringify(model));
  return { file, nodes: model.nodes.length };
}

// Opens a page whose every request and fault is kept.
async function openPage(context, file) {
  const page = await context.newPage();
  page.setDefaultTimeout(120000);  // pictures are slow without a graphics card
  await page.addInitScript(async () => {
    await customElements.whenDefined('model-viewer');
    customElements.get('model-viewer').minimumRenderScale = 1;  // the same pixels, however slow
  });
  const faults = [];
  page.on('pageerror', (error) => faults.push(error.message));
  page.on('console', (message) => { if (message.type() === 'error') faults.push(message.text()); });
  page.on('request', (request) => {
    if (request.url() !== pathToFileURL(file).href && !/^(blob|data):/.test(request.url()))
      faults.push(`the page asks for ${request.url()}`);
  });
  await page.goto(pathToFileURL(file).href);
  const isShown = () => document.querySelector('model-viewer').modelIsVisible;
  await page.waitForFunction(isShown);
  return { page, faults };
}

// The pixels of the model as rendered now, and how many colours they have.
async function takePicture(page) {
  return page.evaluate(async () => {
    const viewer = document.querySelector('model-viewer');
    await new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve)));
    const bitmap = await createImageBitmap(await viewer.toBlob());
    const canvas = new OffscreenCanvas(bitmap.width, bitmap.height).getContext('2d');
    canvas.drawImage(bitmap, 0, 0);
    const pixels = new Uint32Array(canvas.getImageData(0, 0, bitmap.width, bitmap.height).data.buffer);
    const hash = pixels.reduce((sum, pixel) => (Math.imul(31, sum) + pixel) | 0, 7);
    return { hash, colours: new Set(pixels).size };
  });
}

async function checkClips(page) {
  const labels = await page.locator('#clip option').allTextContents();
  assert.deepEqual(labels, [`Clip ${hostile}`, `Clip ${hostile}`]);
  const pictures = [];
  for (const clip of ['clip 0', 'clip 1', 'clip 0']) {
    await page.locator('#clip').selectOption(clip);
    await page.evaluate(() => document.querySelector('model-viewer').updateComplete);  // it starts the clip anew
    await page.locator('#time').fill('0.3');
    pictures.push(await takePicture(page));
  }
  assert.ok(pictures[0].colours > 50, 'the canvas shows no model');
  assert.notEqual(pictures[0].hash, pictures[1].hash, 'another clip shows another pose');
  assert.equal(pictures[0].hash, pictures[2].hash, 'the first clip again shows the first pose');
  await page.getByRole('button', { name: 'Play' }).click();
  await page.waitForFunction(() => document.querySelector('model-viewer').currentTime > 0.35);
  await page.getByRole('button', { name: 'Pause' }).click();
}

async function checkTurning(page) {
  const angle = () => page.evaluate(() => document.querySelector('model-viewer').turntableRotation);
  assert.equal(await angle(), 0, 'who asks for less motion gets a model at rest');
  await page.getByRole('button', { name: 'Turn' }).click();
  await page.waitForFunction(() => document.querySelector('model-viewer').turntableRotation > 0.05);
  await page.getByRole('button', { name: 'Turn', pressed: true }).click();
  await page.getByRole('button', { name: 'Reset view' }).click();
  assert.ok(Math.abs(await angle()) < 0.01, 'the view is reset');
}

async function checkLists(page, nodes) {
  assert.equal(await page.locator('h1').textContent(), `${fileName}.gltf`);
  assert.match(await page.locator('#counts').textContent(), /24 nodes.*2.212 triangles.*2 images.*2 clips/);
  assert.equal(await page.locator('.tree .name').count(), nodes);
  assert.equal(await page.locator('.tree .name').first().textContent(), hostile);
  const hips = page.locator('.tree > li > details', { hasText: 'Hips' });
  assert.ok(await hips.getByText('ShinL').isVisible());
  await hips.locator('summary').first().click();
  assert.ok(!(await hips.getByText('ShinL').isVisible()), 'a click closes a branch');
  const warning = page.locator('#warnings li');
  assert.match(await warning.textContent(), /^image 1 "TGA <\/script>.*which is all that browsers show$/);
  assert.ok(await warning.isVisible());
  assert.match(await page.locator('#sizes').textContent(), /figure\.bin.*wood\.jpg2\.0 KB.*animation/s);
}

async function checkImages(page) {
  const material = page.locator('.materials > li').first();
  assert.equal(await material.locator('.name').first().textContent(), hostile);
  const button = material.getByRole('button', { name: 'Enlarge the normal image' });
  await button.scrollIntoViewIfNeeded();
  await material.getByText('64 × 64').waitFor();
  await button.click();
  assert.ok(await page.locator('dialog img').isVisible());
  await page.keyboard.press('Escape');
  assert.ok(!(await page.locator('dialog').isVisible()));
}

// Every control can be reached with the Tab key.
async function checkKeyboard(page) {
  const wanted = new Set(['play', 'clip', 'time', 'turn', 'reset', 'SUMMARY']);
  await page.locator('h1').click();
  for (let step = 0; step < 60 && wanted.size > 0; ++step) {
    await page.keyboard.press('Tab');
    wanted.delete(await page.evaluate(() => document.activeElement.id || document.activeElement.tagName));
  }
  assert.deepEqual([...wanted], []);
}

async function checkPhone(page) {
  await page.setViewportSize({ width: 390, height: 844 });
  const width = await page.evaluate(() => document.documentElement.scrollWidth);
  assert.ok(width <= 390, `the page is ${width} wide`);
}

const model = await makeHostileModel();
const file = path.join(folder, 'page.html');
execFileSync(command, ['preview', model.file, '-o', file], { stdio: 'pipe' });
const browser = await launchBrowser();
try {
  const context = await browser.newContext(
    { offline: true, reducedMotion: 'reduce', viewport: { width: 800, height: 500 } });
  const { page, faults } = await openPage(context, file);
  await checkLists(page, model.nodes);
  await checkClips(page);
  await checkTurning(page);
  await checkImages(page);
  await checkKeyboard(page);
  await checkPhone(page);
  assert.equal(await page.evaluate(() => typeof hacked), 'undefined', 'a name has been run');
  assert.equal(await page.locator('img[src=x]').count(), 0, 'a name has become an element');
  assert.deepEqual(faults, []);
} finally {
  await browser.close();
}
console.log(`the page of ${model.file} works`);
