// Takes a picture of the first views of a page: picture.mjs WORK NODAL - SNAPSHOT PICTURE
import { open, pageOf, sample, startBrowser } from './browser.mjs';

const browser = await startBrowser();
const tab = await open(browser, pageOf('picture', sample), { viewport: { width: 1080, height: 800 } });
// Hides what does not fit into a small picture.
await tab.evaluate(() => {
  for (const each of document.querySelectorAll('.sources, #machines, #nodes, #heaps, footer')) each.hidden = true;
  for (const each of document.querySelectorAll('#memory .scrolling, #memory .cards')) each.remove();
});
await tab.screenshot({ path: process.argv[6], fullPage: true });
await browser.close();
