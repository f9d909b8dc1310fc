// Opens pages in headless Chromium, presses every button and sees that the picture follows.
// usage: node page_test.mjs SCREENSHOT_FOLDER PAGE.html ...

import { basename, join, resolve } from 'node:path';
import { openOffline } from './chromium.mjs';

const [folder, ...pages] = process.argv.slice(2);
const failures = [];
const picture = { x: 20, y: 80, width: 360, height: 300 }; // the model, without the words

// The ways out of the page that its policy leaves open.
function reached(page) {
  return page.evaluate(async () => {
    const outside = 'https://outside.invalid/';
    const tag = (name, more) => () => document.body.append(Object.assign(document.createElement(name), more));
    const open = [];
    for (const [way, go] of Object.entries({
      'img-src': tag('img', { src: outside }),
      'script-src-elem': tag('script', { src: outside }),
      'style-src-elem': tag('link', { rel: 'stylesheet', href: outside }),
      'frame-src': tag('iframe', { src: outside }),
      'media-src': tag('audio', { src: outside }),
      'connect-src': () => fetch(outside).catch(() => {}),
      'base-uri': tag('base', { href: outside }),
      'form-action': () => { const form = document.createElement('form'); form.action = outside; document.body.append(form); form.submit(); },
    })) {
      const isStopped = new Promise((done) => {
        document.addEventListener('securitypolicyviolation', (event) => { if (event.effectiveDirective === way) done(true); });
        setTimeout(() => done(false), 30000);
      });
      go();
      if (!await isStopped) open.push(way);
    }
    return open.join(', ');
  });
}

async function testPage(path) {
  const { browser, page, faults } = await openOffline({ width: 720, height: 480 });
  const expect = (good, what) => { if (!good) failures.push(`${basename(path)}: ${what}`); };
  const settle = () => page.evaluate(() => new Promise((done) => { requestAnimationFrame(() => requestAnimationFrame(done)); }));
  const shot = async () => {
    await settle();
    return (await page.screenshot({ clip: picture })).toString('base64');
  };

  // Drawing in software lags behind: pictures are taken until one is as wanted, for half a minute.
  const shotThatIs = async (wanted) => {
    const end = Date.now() + 30000;
    for (;;) {
      const now = await shot();
      if (wanted(now)) return now;
      if (Date.now() > end) return undefined;
      await page.waitForTimeout(100);
    }
  };
  const expectPicture = async (wanted, what) => expect(await shotThatIs(wanted) !== undefined, what);
  const steadyShot = async () => {
    let last = await shot();
    const steady = await shotThatIs((now) => { const isSame = now === last; last = now; return isSame; });
    expect(steady !== undefined, 'the picture does not come to rest');
    return steady;
  };

  await page.goto(`file://${resolve(path)}`);
  await page.waitForFunction(() => document.documentElement.dataset.ready);
  expect(await page.getAttribute('html', 'data-ready') === 'yes', 'the model was not shown');
  expect((await page.textContent('h1')).endsWith('.dts'), 'the file is not named');
  const stats = await page.textContent('#stats');
  expect(/[1-9]\d* triangles?/.test(stats), `stats say "${stats}"`);
  await page.screenshot({ path: join(folder, `${basename(path)}.png`) });

  // Toggles change the picture and change it back.
  for (const toggle of await page.locator('#show button').all()) {
    const name = await toggle.textContent();
    const before = await steadyShot();
    await toggle.click();
    await expectPicture((now) => now !== before, `"${name}" changes nothing`);
    await toggle.click();
    await expectPicture((now) => now === before, `"${name}" pressed twice leaves a trace`);
  }
  // Choices: each shows something of its own, in the picture or in what is said about it.
  for (const section of ['detail', 'surface']) {
    const buttons = await page.locator(`#${section} button`, { hasNotText: 'As seen' }).all();
    for (const button of buttons.slice(1).concat(buttons.slice(0, 1))) {
      const name = await button.textContent();
      const before = await steadyShot();
      const said = await page.textContent('#stats');
      const single = buttons.length === 1;
      await button.click();
      expect(await button.getAttribute('aria-checked') === 'true', `"${name}" is not marked`);
      if (single || await page.textContent('#stats') !== said) continue;
      await expectPicture((now) => now !== before, `"${name}" changes nothing`);
    }
  }
  // Sequences move the model, stop and can be set by hand.
  const sequences = await page.locator('#sequences .row button').all();
  if (sequences.length > 1) {
    const still = await steadyShot();
    await sequences[1].click();
    await page.click('#play');
    expect(await page.getAttribute('#play', 'aria-pressed') === 'false', 'pause does not pause');
    const slide = (share) => page.locator('#time').evaluate((slider, to) => {
      slider.value = String(slider.max * to);
      slider.dispatchEvent(new Event('input'));
    }, share);
    await slide(0.4);
    await expectPicture((now) => now !== still, 'the time slider moves nothing');
    const midway = await steadyShot();
    await slide(0.1);
    await expectPicture((now) => now !== midway, 'another time gives the same picture');
    await slide(0.4);
    await expectPicture((now) => now === midway, 'the same time gives another picture');
    await page.screenshot({ path: join(folder, `${basename(path)}-midway.png`) });
    await page.keyboard.press('f');
    await page.click('#play');
    const moves = page.waitForFunction(() => Number(document.getElementById('time').value) !== 0.4, null, { timeout: 30000 });
    expect(await moves.then(() => true, () => false), 'playing does not move the slider');
    await sequences[0].click();
  }
  expect(faults.length === 0, faults.join('; '));
  const open = await reached(page);
  expect(open === '', `the page reaches outside by ${open}`);
  await browser.close();
}

for (const path of pages) await testPage(path);
for (const failure of failures) console.log(failure);
console.log(`${pages.length} pages, ${failures.length} failures`);
process.exit(pages.length === 0 || failures.length ? 1 : 0);
