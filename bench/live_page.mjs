// The live page in numbers: the latency from hand to picture beside the refresh of the screen, and pictures a second
// with many objects. Usage: node live_page.mjs BIN MODULES SOURCE [WRAPPER]; WRAPPER runs Windows programs.
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import {Programs, sleep, until} from '../tests/live/programs.mjs';

const kSeconds = 30;  // of motion, for the latency
const kPresses = 20;  // from rest
const kMany = [5000, 100000];

// A drawing of small faces, on a square grid.
function gridOf(count) {
  const side = Math.ceil(Math.sqrt(count)), lines = ['0', 'SECTION', '2', 'ENTITIES'];
  for (let n = 0; n < count; ++n) {
    const x = n % side, y = Math.floor(n / side), z = (x * 7 + y * 3) % 5;
    lines.push('0', '3DFACE', '8', '0');
    for (const [i, [dx, dy]] of [[0, 0], [0.8, 0], [0.8, 0.8], [0, 0.8]].entries())
      lines.push('1' + i, x + dx, '2' + i, y + dy, '3' + i, z);
  }
  const file = path.join(os.tmpdir(), 'ov_grid_' + count + '.dxf');
  fs.writeFileSync(file, [...lines, '0', 'ENDSEC', '0', 'EOF', ''].join('\n'));
  return file;
}

const row = (what, value) => console.log(what.padEnd(58) + value);
const share = (sorted, part) => sorted[Math.min(sorted.length - 1, Math.floor(sorted.length * part))];
const summary = times => { const ms = times.sort((a, b) => a - b); return {median: share(ms, 0.5), p99: share(ms, 0.99), count: ms.length}; };

const grip = async page => {
  await page.locator('#cap_top').scrollIntoViewIfNeeded();
  const box = await page.locator('#cap_top').boundingBox();
  return [box.x + box.width / 2, box.y + box.height / 2];
};
// Pushes the cap round and round, never through its middle; every movement of the mouse is another sample.
async function push(page, seconds) {
  const [x, y] = await grip(page);
  await page.mouse.move(x, y);
  await page.mouse.down();
  for (let n = 0, end = Date.now() + seconds * 1000; Date.now() < end; ++n, await sleep(8))
    await page.mouse.move(x + 25 * Math.sin(n / 20), y + 25 * Math.cos(n / 20));
  await page.mouse.up();
}
const refreshOf = page => page.evaluate(() => new Promise(done => {
  const times = [];
  const look = t => { times.push(t); if (times.length < 61) requestAnimationFrame(look); else done((t - times[0]) / 60); };
  requestAnimationFrame(look);
}));

async function latency(programs) {
  const page = await programs.openLive();
  await sleep(1000); // all is built
  const refresh = await refreshOf(page);
  row('refresh of the screen', refresh.toFixed(1) + ' ms');
  await push(page, kSeconds);
  await sleep(500);
  const moving = summary(await page.evaluate(() => shown.latency.times.map(e => e.ms)));
  row(`hand to picture, median of ${moving.count}`, `${moving.median.toFixed(1)} ms, ${(moving.median / refresh).toFixed(2)} refreshes`);
  row('hand to picture, p99', `${moving.p99.toFixed(1)} ms, ${(moving.p99 / refresh).toFixed(2)} refreshes`);
  const [x, y] = await grip(page), first = [];
  for (let n = 0; n < kPresses; ++n) {
    await sleep(700 + 13 * n); // at another point of the timer's period each time
    await page.evaluate(() => { shown.latency.times.length = 0; });
    await page.mouse.move(x, y);
    await page.mouse.down();
    await page.mouse.move(x + (n % 2 ? 20 : -20), y);
    first.push(await until('a first picture', () => page.evaluate(() => shown.latency.times.length && shown.latency.times[0].ms)));
    await page.mouse.up();
  }
  const {median, p99} = summary(first);
  row(`first picture at rest, median and longest of ${kPresses}`, `${median.toFixed(1)} and ${p99.toFixed(1)} ms`);
  await page.close();
}

async function pictures(programs, count) {
  const page = await programs.openLive();
  await page.evaluate(() => {
    window.spent = {};
    window.count = 0;
    const time = (object, name) => {
      const work = object[name].bind(object);
      window.spent[name] = 0;
      object[name] = (...values) => { const t = performance.now(); try { return work(...values); } finally { window.spent[name] += performance.now() - t; } };
    };
    const {view, drawing} = shown;
    for (const name of ['moveTo', 'showUntil']) time(drawing, name);
    for (const name of ['colourObjects', 'renderInto', 'render']) time(view, name);
    view.onDrawn = () => ++window.count;
    window.refreshes = 0;
    const look = () => { ++window.refreshes; requestAnimationFrame(look); };
    look();
  });
  const counts = () => page.evaluate(() => [performance.now() / 1000, window.refreshes, shown.frames.at(-1).n, window.count]);
  const before = await counts();
  await push(page, 10);
  const [seconds, ...counted] = (await counts()).map((n, i) => n - before[i]), spent = await page.evaluate(() => window.spent);
  await sleep(1500);
  const released = programs.record().filter(line => line.text.startsWith('motion')).at(-1).text.trim() === 'motion 0 0 0 0 0 0';
  row(`${count} objects: refreshes, frames, pictures a second`, counted.map(n => (n / seconds).toFixed(1)).join(', '));
  row(`${count} objects: released at the end`, released ? 'yes' : 'NO');
  row(`${count} objects: ms of a picture`, Object.entries(spent).map(([name, ms]) => name + ' ' + (ms / counted[2]).toFixed(2)).join(', '));
  await page.close();
}

for (const [count, measure] of [[0, latency], ...kMany.map(n => [n, programs => pictures(programs, n)])]) {
  const drawing = count ? gridOf(count) : undefined, programs = new Programs(drawing, process.argv[5]);
  try {
    await programs.start();
    await measure(programs);
  } finally {
    await programs.stop();
    if (drawing) fs.rmSync(drawing);
  }
}
