// Takes a picture of a preview page: node take_picture.mjs PAGE.html SECONDS PICTURE.png
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { launchBrowser } from './viewer.mjs';

const [file, seconds, picture] = process.argv.slice(2);
const browser = await launchBrowser();
const page = await browser.newPage({ reducedMotion: 'reduce', viewport: { width: 960, height: 560 } });
await page.goto(pathToFileURL(path.resolve(file)).href);
await page.waitForFunction(() => document.querySelector('model-viewer').modelIsVisible);
if (await page.locator('#time').isVisible()) await page.locator('#time').fill(seconds);
await page.waitForTimeout(1000);
await page.screenshot({ path: picture });
await browser.close();
