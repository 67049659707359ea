// A browser holds the cap: real programs, a real page, and the last frame says which way it went.
// Usage: node live_page_test.mjs BIN MODULES SOURCE RESULT.xml [FILTER]
import fs from 'node:fs';
import path from 'node:path';
import {execFileSync} from 'node:child_process';
import {test, expect, runAll} from './runner.mjs';
import {Programs, axeSource, sleep, until} from './programs.mjs';

const [, , bin, , source, result, filter] = process.argv;
const programs = new Programs();
let page; // the driver's

const last = (on = page) => on.evaluate(() => ({...shown.frames.at(-1), ago: shown.hostTime() - shown.frames.at(-1).t}));
const atRest = () => until('the view rests', async () => (await last()).ago > 0.4 && last());
const line = () => page.evaluate(() => { // what the view turned about last, with the turn that was largest
  let best = null;
  for (let i = Math.max(1, shown.frames.length - 15); i < shown.frames.length; ++i) {
    const found = turningLine(shown.frames[i - 1], shown.frames[i]);
    if (found && (!best || found.angle > best.angle)) best = found;
  }
  return best;
});
const minus = (a, b) => a.map((v, i) => v - b[i]);
const dot = (a, b) => a.reduce((sum, v, i) => sum + v * b[i], 0);
const unit = a => a.map(v => v / Math.hypot(...a));
const cross = (a, b) => [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]];
const basis = f => { const z = unit(minus(f.eye, f.target)), x = unit(cross(f.up, z)); return {x, y: cross(z, x), z}; };
const distance = (point, on) => Math.hypot(...cross(minus(point, on.point), on.direction));

// Where a part of the cap is held.
async function hold(part, on = page) {
  await on.locator(part).scrollIntoViewIfNeeded();
  const box = await on.locator(part).boundingBox();
  const at = [box.x + box.width / 2, part === '#cap_ring' ? box.y + box.height - 5 : box.y + box.height / 2];
  await on.mouse.move(...at);
  await on.mouse.down();
  return at;
}
// Drags a part of the cap by pixels and holds it. Returns the frames before and after, and the line in between.
async function drag(part, dx, dy, {shift, seconds = 0.4} = {}) {
  const before = await atRest();
  if (shift) await page.keyboard.down('Shift');
  const [x, y] = await hold(part);
  await page.mouse.move(x + dx, y + dy);
  await until('the host shows a frame', async () => (await last()).n > before.n);
  await sleep(seconds * 1000);
  const about = await line(), isDrawn = await page.evaluate(() => shown.view.line.visible);
  await page.mouse.up();
  if (shift) await page.keyboard.up('Shift');
  return {before, after: await atRest(), about, isDrawn};
}
const key = name => page.getByRole('button', {name, exact: true}).click();
async function type(text) {
  await page.locator('#typed').fill(text);
  await page.locator('#typed').press('Enter');
  await until(text + ' is typed', async () => (await page.locator('#commands').innerText()).includes(text));
}
async function toggle(name, shownAs, isOn) {
  await type(name);
  await until(shownAs + ' is ' + isOn, () => page.evaluate(s => shown.states.get(s), shownAs).then(v => !!v === isOn));
}
// A point of the page where a click picks an object, found by trying along its edges.
const placeOf = number => page.evaluate(id => {
  const o = shown.drawing.byNumber.get(id), {origin} = shown.drawing, box = shown.view.canvas.getBoundingClientRect();
  for (const c of o.edges) {
    const next = o.edges[o.edges.indexOf(c) ^ 1];
    for (const part of [0.5, 0.3, 0.7]) {
      const p = [0, 1, 2].map(i => o.points[c + i] * part + o.points[next + i] * (1 - part));
      const v = new L.Vector3(...through(o.matrix, ...p).map((w, i) => w - origin[i])).project(shown.view.camera);
      const at = [box.left + (v.x + 1) / 2 * box.width, box.top + (1 - v.y) / 2 * box.height].map(Math.round);
      if (document.elementFromPoint(...at) === shown.view.canvas && shown.view.pick(...at) === id) return at;
    }
  }
  return null;
}, number);
async function inSight(count) {
  const found = [];
  for (const number of await page.evaluate(() => [...shown.drawing.byNumber.keys()]))
    if (found.length < count && await placeOf(number)) found.push(number);
  return found;
}
async function pick(...numbers) {
  await page.locator('#select_none').click();
  for (const number of numbers) {
    const at = await placeOf(number);
    expect(at, 'object ' + number + ' is in sight');
    await page.mouse.click(...at);
    await until('object ' + number + ' is selected', () => page.evaluate(n => shown.selected.has(n), number));
  }
  await sleep(300);
}
const view = name => key(name).then(() => sleep(300)).then(atRest);
// A view from which all of the house is seen.
async function fromAbove() {
  await page.locator('#select_none').click();
  await view('front');
  await view('zoom');
  await drag('#cap_top', 0, 38, {shift: true});
}
// The mean of the middles of objects, from the page's own data.
const middleOf = numbers => page.evaluate(ids => {
  const sum = [0, 0, 0];
  for (const id of ids) for (const axis of [0, 1, 2]) {
    const all = [...shown.drawing.byNumber.get(id).points].filter((v, i) => i % 3 === axis);
    sum[axis] += (Math.min(...all) + Math.max(...all)) / 2 / ids.length;
  }
  return sum;
}, numbers);

test('EachAxisFollowsTheHand', async () => {
  // What is pushed to the right goes to the right, so the camera goes to the left.
  for (const [along, across, dx, dy] of [['x', 'y', 26, 0], ['y', 'x', 0, -26]]) {
    const {before, after} = await drag('#cap_top', dx, dy), by = minus(after.target, before.target), frame = basis(before);
    expect(dot(by, frame[along]) < -1 && Math.abs(dot(by, frame[across])) < 1e-6, along + ' moved the target by ' + by);
  }
  const pulled = await drag('#cap_ring', 0, 40);
  expect(pulled.after.field[0] < 0.98 * pulled.before.field[0], 'pulling zooms in: ' + pulled.after.field);
  // What turns to the right hand's rule takes the camera the other way round.
  for (const [name, part, dx, dy, shift, axis, sign] of [['a', '#cap_top', 0, 30, true, 'x', -1], ['b', '#cap_ring', 30, 0, false, 'y', -1], ['c', '#cap_top', 30, 0, true, 'z', 1]]) {
    const {before, after, about} = await drag(part, dx, dy, {shift});
    const along = about && dot(about.direction, basis(before)[axis]) * sign;
    expect(along > 0.99, name + ' turned the camera about ' + JSON.stringify(about));
    expect(Math.hypot(...minus(after.target, before.target)) < 1e-6, name + ' keeps the target');
  }
});

test('PanelShapesTheHand', async () => {
  await page.locator('#panel summary').click();
  await page.getByLabel('Gain of x').fill('-1');
  const inverted = await drag('#cap_top', 26, 0);
  const by = dot(minus(inverted.after.target, inverted.before.target), basis(inverted.before).x);
  expect(by > 1, 'the other way round: ' + by);
  await page.getByLabel('Gain of x').fill('1');
  await page.getByLabel('What moves x').selectOption('y');
  expect(await page.getByLabel('What moves y').inputValue() === 'x', 'y gets what x had');
  const swapped = await drag('#cap_top', 26, 0), moved = minus(swapped.after.target, swapped.before.target);
  expect(Math.abs(dot(moved, basis(swapped.before).y)) > 1, 'a push aside lifts: ' + moved);
  await page.getByLabel('What moves x').selectOption('x');
  await page.locator('#panel summary').click();
});

test('KeysAndViewsDoWhatTheySay', async () => {
  const from = {front: [0, -1, 0], right: [1, 0, 0], back: [0, 1, 0], left: [-1, 0, 0], top: [0, 0, 1], bottom: [0, 0, -1]};
  for (const [name, way] of Object.entries(from)) {
    const f = await view(name);
    expect(dot(unit(minus(f.eye, f.target)), way) > 0.9999, name + ' looks from ' + minus(f.eye, f.target));
  }
  await drag('#cap_ring', 0, 50);
  const near = await last(), all = await view('zoom');
  expect(all.field[0] > near.field[0], 'zoom shows all: ' + near.field + ', ' + all.field);
  const drawn = await page.evaluate(() => shown.drawing.objects.length);
  await key('Line');
  await until('the macro draws a line', () => page.evaluate(n => shown.drawing.objects.length === n + 1, drawn));
  await page.locator('#perspective').check();
  await until('the view is in perspective', async () => (await last()).perspective);
  await page.locator('#rotation').selectOption('camstandard');
  const looked = await drag('#cap_ring', 30, 0);
  expect(Math.hypot(...minus(looked.after.eye, looked.before.eye)) < 1e-6, 'the camera looks about on the spot');
  await page.locator('#rotation').selectOption('objscreen');
  await page.locator('#perspective').uncheck();
  await page.locator('#away').click();
  await until('the daemon is away', async () => (await page.locator('#connection').innerText()).includes('away'));
  await until('it is back', async () => await page.locator('#connection').innerText() === '');
  await drag('#cap_top', 25, 0);
});

test('TurnsAboutTwoObjects', async () => {
  await fromAbove();
  const chosen = await inSight(2);
  await pick(...chosen);
  const {about, isDrawn} = await drag('#cap_ring', 32, 0, {seconds: 0.6}), middle = await middleOf(chosen);
  expect(about && distance(middle, about) < 1, 'the line runs through ' + middle + ': ' + JSON.stringify(about));
  expect(isDrawn, 'the line is drawn');
});

test('TurnsAboutALine', async () => {
  await fromAbove();
  const number = await page.evaluate(() => [...shown.drawing.byNumber.values()].find(o => o.kind === 'line').id);
  await pick(number);
  await toggle('OV_Toggle_Rotation_Axis', 'Selected Line as Rotation Axis', true);
  const {about} = await drag('#cap_ring', 32, 0, {seconds: 0.6});
  const [a, b] = await page.evaluate(n => { const p = [...shown.drawing.byNumber.get(n).points]; return [p.slice(0, 3), p.slice(-3)]; }, number);
  expect(about && Math.abs(dot(about.direction, unit(minus(b, a)))) > 0.9999 && distance(a, about) < 1, 'turned about ' + JSON.stringify(about));
  await toggle('OV_Toggle_Rotation_Axis', 'Selected Line as Rotation Axis', false);
});

test('MovesWhatAWindowSelects', async () => {
  await fromAbove();
  await page.evaluate(() => scrollTo(0, 0));
  const box = await page.locator('#view').boundingBox();
  await page.mouse.move(box.x + 3, box.y + 3);
  await page.mouse.down();
  await page.mouse.move(box.x + box.width - 3, box.y + box.height - 3, {steps: 3});
  await page.mouse.up();
  const all = await page.evaluate(() => shown.drawing.objects.length);
  await until('a window round all selects all', () => page.evaluate(n => shown.selected.size === n, all));
  await pick(1);
  await toggle('OV_Toggle_Object_Move_Mode', 'Move Selected Object', true);
  const {before, after} = await drag('#cap_top', 0, -14);
  const [matrix, moved] = await page.evaluate(() => [shown.drawing.byNumber.get(1).matrix, [...shown.drawing.moved].map(o => o.id)]);
  const shift = matrix && [matrix[3], matrix[7], matrix[11]];
  expect(shift && dot(unit(shift), basis(before).y) > 0.9 && moved.join() === '1', 'object 1 is lifted: ' + shift + ', moved: ' + moved);
  expect(JSON.stringify([after.eye, after.target]) === JSON.stringify([before.eye, before.target]), 'the view stays');
  await toggle('OV_Toggle_Object_Move_Mode', 'Move Selected Object', false);
});

test('TwoMotionsOfAFrameAddUp', async () => {
  const found = await page.evaluate(() => {
    const drawing = new Drawing({objects: [{id: 1, kind: 'LINE', lines: [[0, 0, 0, 1, 0, 0]]}]}, [], 1);
    const motion = matrix => ({drawing: 1, objects: [1], matrix});
    drawing.follow(1, 0, [motion([0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0]), motion([1, 0, 0, 5, 0, 1, 0, 0, 0, 0, 1, 0])], true);
    return drawing.byNumber.get(1).steps.map(step => step.matrix.join(' ')).join();
  });
  expect(found === '0 -1 0 5 1 0 0 0 0 0 1 0', found);
});

test('LayoutIsPannedAndZoomed', async () => {
  await page.locator('#tab_layout').click();
  await until('the layout is shown', async () => (await last()).mode === 1 && await page.locator('#tab_layout').getAttribute('aria-pressed') === 'true');
  const pushed = await drag('#cap_top', 35, 0);
  expect(pushed.after.centre[0] < pushed.before.centre[0] && pushed.after.centre[1] === pushed.before.centre[1], 'panned from ' + pushed.before.centre + ' to ' + pushed.after.centre);
  const pulled = await drag('#cap_ring', 0, 45);
  expect(pulled.after.height < pulled.before.height, 'zoomed from ' + pulled.before.height + ' to ' + pulled.after.height);
  await page.locator('#tab_model').click();
  await until('the model is shown', async () => (await last()).mode === 2);
});

test('ListScrollsUnderThePointer', async () => {
  const before = await atRest(), position = () => page.evaluate(() => (shown.positions.get('list') || {vertical: 0}).vertical);
  const was = await position();
  await page.locator('[data-name=list]').hover();
  await page.locator('#cap').focus();
  await page.keyboard.down('PageDown');
  await until('the list scrolls', async () => await position() !== was);
  await page.keyboard.up('PageDown');
  await page.mouse.move(5, 5);
  expect((await last()).n === before.n, 'the view stays');
});

test('KeyboardAloneMovesTheView', async () => {
  await page.locator('#save_report').focus();
  for (let i = 0; i < 20 && await page.evaluate(() => document.activeElement.id) !== 'cap'; ++i) await page.keyboard.press('Tab');
  const before = await atRest();
  await page.keyboard.down('ArrowRight');
  await until('the view moves', async () => (await last()).n > before.n + 5);
  await page.keyboard.up('ArrowRight');
  const after = await atRest(), by = minus(after.target, before.target);
  expect(dot(by, basis(before).x) < -1, 'arrow right moved the target by ' + by + ', frames ' + before.n + ' to ' + after.n);
});

// A movement that the page's end interrupts: its release is in the daemon's record in time.
async function interrupt(how, driver) {
  const [x, y] = await hold('#cap_ring', driver);
  await driver.mouse.move(x + 30, y);
  await sleep(500);
  const isRest = e => e.text === 'motion 0 0 0 0 0 0', motions = () => programs.record().filter(e => e.text.startsWith('motion'));
  await how();
  await until('the cap is released', () => isRest(motions().at(-1)), 5);
  const held = motions().findLastIndex(e => !isRest(e)), late = motions()[held + 1].t - motions()[held].t;
  expect(late < 0.25 + 0.1, 'released ' + late + ' s after its last sample');
}

test('ReloadAndEndRelease', async () => {
  await interrupt(() => page.evaluate(() => { setTimeout(() => location.reload(), 0); }), page);
  await page.waitForFunction(() => typeof shown === 'object' && shown.frames.length && shown.deviceDriver);
  await interrupt(() => page.evaluate(() => window.dispatchEvent(new Event('blur'))), page);
  await page.mouse.up();
  const other = await programs.openLive(false);
  await interrupt(() => page.context().close(), page);
  await other.waitForFunction(() => shown.deviceDriver && shown.hostDriver);
  page = other;
});

test('OneDrivesTheOtherWatches', async () => {
  const watcher = await programs.openLive(false);
  expect(/Watching/.test(await watcher.locator('#connection').innerText()), 'the watcher is told so');
  expect(await watcher.evaluate(() => byId('cap_panel').inert && byId('type').inert), 'the watcher can reach nothing that drives');
  const {after} = await drag('#cap_top', 25, 0);
  await until('the watcher sees the same view', async () => JSON.stringify((await last(watcher)).target) === JSON.stringify(after.target));
  expect(watcher.faults.length === 0, watcher.faults.join('\n'));
  await watcher.context().close();
});

test('SavedSessionAndReportOpen', async () => {
  const saved = async what => {
    const [download] = await Promise.all([page.waitForEvent('download'), page.locator('#save_' + what).click()]);
    const file = path.join(programs.folder, download.suggestedFilename());
    return download.saveAs(file).then(() => file);
  };
  await drag('#cap_top', 20, 0);
  const session = await saved('session');
  expect(/^p\d+ +device +motion /m.test(fs.readFileSync(session, 'utf8')), 'the session has samples by pass');
  execFileSync(path.join(bin, 'acad'), [path.join(source, 'demo/house.dxf'), '--session', session, '--dry-run']);
  const report = await programs.open('file://' + await saved('report'));
  expect(await report.evaluate(() => shown.frames.length > 10), 'the report has the frames');
  await report.locator('#play').click();
  await report.keyboard.press('End');
  expect(await report.locator('#slider').evaluate(s => s.max - s.value < 0.01), 'End goes to the end');
  await report.evaluate(() => { location.hash = '#t=nonsense'; });
  expect(report.faults.length === 0, report.faults.join('\n'));
  await expectAccessible(report);
  await report.context().close();
});

async function expectAccessible(on) {
  await on.evaluate(axeSource);
  for (const colorScheme of ['light', 'dark']) {
    await on.emulateMedia({colorScheme});
    const found = await on.evaluate(() => axe.run().then(r => r.violations.map(v => v.id + ': ' + v.nodes.map(n => n.target))));
    expect(found.length === 0, colorScheme + ': ' + found.join('\n'));
  }
}
test('LivePageIsAccessible', () => expectAccessible(page));

test('ModelContradictsNothing', async () => {
  expect(page.faults.length === 0, page.faults.join('\n'));
  const status = await programs.stop();
  expect(/passes: .* 0 contradicted/.test(programs.host.text) && status === 0, 'status ' + status + '\n' + programs.host.text);
});

await programs.start();
try {
  page = await programs.openLive();
  process.exitCode = await runAll(result, filter) ? 1 : 0;
} finally {
  if (programs.host.exitCode === null) await programs.stop();
}
