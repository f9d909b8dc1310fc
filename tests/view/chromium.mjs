// Headless Chromium without a network, drawing in software.

import { chromium } from 'playwright-core';

const FLAGS = ['--no-sandbox', '--use-gl=angle', '--use-angle=swiftshader', '--enable-unsafe-swiftshader', '--disable-quic',
  '--no-first-run', '--disable-background-networking', '--disable-component-update', '--disable-sync'];

// Opens a page that can't reach anything. What goes wrong on it, and every request it makes, is collected in faults.
export async function openOffline(viewport) {
  const browser = await chromium.launch({ executablePath: '/usr/bin/chromium', args: FLAGS, timeout: 180000 });
  const context = await browser.newContext({ viewport, offline: true });
  const page = await context.newPage();
  page.setDefaultTimeout(180000); // drawing in software beside other work takes its time
  const faults = [];
  page.on('pageerror', (error) => faults.push(`page error: ${error.message}`));
  page.on('console', (message) => { if (message.type() === 'error') faults.push(`console: ${message.text()}`); });
  page.on('request', (request) => { if (!/^(file|data|blob):/.test(request.url())) faults.push(`request: ${request.url()}`); });
  return { browser, page, faults };
}
