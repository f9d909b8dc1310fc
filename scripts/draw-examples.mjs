// Draws pages side by side, without their controls: the picture of the README.
// usage: node draw_examples.mjs OUT.png PAGE.html[@SEQUENCE@SHARE] ...

import { resolve } from 'node:path';
import { openOffline } from '../tests/view/chromium.mjs';

const [output, ...pages] = process.argv.slice(2);
const WIDTH = 330;
const HEIGHT = 340;
// An even ground keeps the picture small.
const STYLE = 'body { background: #2c373e } #panel, #title, #keys { display: none }';

const { browser, page } = await openOffline({ width: 600, height: HEIGHT });
const images = [];
for (const argument of pages) {
  const [file, sequence, share] = argument.split('@');
  await page.setViewportSize({ width: 600, height: HEIGHT });
  await page.goto(`file://${resolve(file)}`);
  await page.waitForFunction(() => document.documentElement.dataset.ready);
  if (sequence) {
    await page.locator('#sequences .row button', { hasText: sequence }).click();
    await page.locator('#time').evaluate((slider, to) => {
      slider.value = String(slider.max * to);
      slider.dispatchEvent(new Event('input'));
    }, share);
  }
  await page.addStyleTag({ content: STYLE });
  await page.setViewportSize({ width: WIDTH, height: HEIGHT });
  await page.waitForTimeout(1000);
  await page.keyboard.press('f');
  await page.waitForTimeout(1500);
  images.push((await page.screenshot()).toString('base64'));
}
await page.setViewportSize({ width: WIDTH * images.length, height: HEIGHT });
await page.setContent(`<style>body { margin: 0; display: flex }</style>${images.map((data) => `<img src="data:image/png;base64,${data}">`).join('')}`);
await page.screenshot({ path: output });
await browser.close();
