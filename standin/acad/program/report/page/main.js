// Time: what is shown is a function of one number, the seconds since the session began.

let now = 0, isPlaying = false, rate = 1, stamp = 0;
const kRates = [1, 2, 4, 0.25, 0.5];
const number = (v, digits = 4) => Math.abs(v) < 1e-9 ? '0' : Number(v).toPrecision(digits).replace(/(\.\d*?)0+($|e)/, '$1$2').replace(/\.($|e)/, '$1');
const triple = p => p.map(v => number(v)).join(', ');

function facts() {
  const c = session.counts || {}, r = session.result || {};
  byId('title').textContent = (drawing.name || 'Drawing') + ' – session replay';
  byId('subtitle').textContent = [session.session, number(duration, 3) + ' s', (drawing.entities || objects.length).toLocaleString('en') + ' objects',
    drawing.segments > drawing.shownSegments
      ? drawing.shownSegments.toLocaleString('en') + ' of ' + drawing.segments.toLocaleString('en') + ' segments shown' : ''].filter(Boolean).join(' · ');
  document.title = drawing.name + ' · Orvaner session';
  const add = (value, text, isBad) => {
    const li = document.createElement('li'), b = document.createElement('b'), span = document.createElement('span');
    b.textContent = value; span.textContent = text; li.append(b, span);
    if (isBad) li.className = 'bad';
    byId('facts').append(li);
  };
  add((c.deviceEvents || 0).toLocaleString('en'), 'device events', !c.deviceEvents);
  add((c.frames || frames.length).toLocaleString('en'), 'frames', !frames.length);
  add(number(c.framesPerSecond || 0, 3), 'frames a second');
  add((c.typed || 0).toLocaleString('en'), 'typed lines');
  const check = session.check;
  if (check) add(check.explained.toLocaleString('en'), 'passes explained, ' + check.notObservable + ' not observable, ' + check.contradicted + ' contradicted', check.contradicted > 0);
  const isGood = r.loaded && r.tookEvents && r.movedView && r.unloaded;
  add(isGood ? 'complete' : !r.loaded ? 'not loaded' : !r.tookEvents ? 'no events' : !r.movedView ? 'view at rest' : 'not unloaded', 'outcome', !isGood);
}

function badges(frame, t) {
  const names = [];
  if (frame) {
    names.push(frame.mode === 1 ? ['layout, flat', true] : ['model', false]);
    if (frame.mode !== 1) names.push([frame.perspective ? 'perspective' : 'parallel', !!frame.perspective]);
  }
  for (const s of session.states || []) {
    const at = lastAt(s.changes, t, c => c[0]);
    if (at >= 0 && s.changes[at][1] !== s.rest) names.push(s.changes[at][1] === true ? [s.name, true] : [s.changes[at][1], false]);
  }
  if (isThinned) names.push(['thinned while it moves', false]);
  byId('badges').replaceChildren(...names.map(([name, isOn]) => {
    const span = document.createElement('span');
    span.textContent = name;
    if (isOn) span.className = 'on';
    return span;
  }));
}

function facing(frame, sample, selected) {
  const rows = [['sample', sample.join('  ')]];
  if (frame && frame.mode === 1) rows.push(['centre', frame.centre.map(v => number(v)).join(', ')], ['height', number(frame.height)]);
  else if (frame) rows.push(['eye', triple(frame.eye)], ['target', triple(frame.target)], ['up', triple(frame.up)],
    ['field', frame.field.map(v => number(v)).join(' × ')]);
  rows.push(['selected', selected.size ? selected.size > 8 ? selected.size + ' objects' : [...selected].join(', ') : 'nothing']);
  byId('now').replaceChildren(...rows.flatMap(([name, value]) => {
    const dt = document.createElement('dt'), dd = document.createElement('dd');
    dt.textContent = name; dd.textContent = value;
    return [dt, dd];
  }));
}

let showModes, showCommands;
function show() {
  const frameIndex = Math.max(0, lastAt(frames, now)), frame = frames[frameIndex];
  const selection = session.selection || [], chosen = selection[lastAt(selection, now)];
  const selected = new Set(chosen ? chosen.objects : []);
  const sample = sampleAt(now, frameIndex);
  drawView(now, frameIndex, selected, isPlaying);
  drawCap(sample);
  badges(frame, now);
  facing(frame, sample, selected);
  const caption = captions[lastAt(captions, now)];
  byId('caption').textContent = caption ? caption.text : '';
  const clock = byId('clock');
  clock.innerHTML = '<b>' + now.toFixed(2) + '</b> / ' + duration.toFixed(1) + ' s';
  byId('slider').value = now / duration * 1000;
  const axes = keptPicture(byId('axes'), drawAxesChart);
  cursor(axes.g, timeToX(now, axes.w), axes.h - 12);
  const pace = keptPicture(byId('pace'), drawPaceChart);
  cursor(pace.g, timeToX(now, pace.w), pace.h - 12);
  const share = keptPicture(byId('share'), drawShareChart);
  cursor(share.g, timeToX(now, share.w), share.h - 12);
  drawControls(now);
  showModes(now);
  showCommands(now);
}

function goTo(t) {
  now = Math.min(duration, Math.max(0, t));
  show();
}
function play(isOn) {
  isPlaying = isOn;
  if (isOn && now >= duration) now = 0;
  stamp = performance.now();
  byId('play').textContent = isOn ? '❚❚' : '▶';
  if (isOn) requestAnimationFrame(tick); else show();
}
function tick(time) {
  if (!isPlaying) return;
  now = Math.min(duration, now + Math.max(0, time - stamp) / 1000 * rate);
  stamp = time;
  if (now >= duration) { play(false); return; }
  show();
  requestAnimationFrame(tick);
}
function nextFrame(direction) {
  const i = lastAt(frames, now);
  const to = frames[Math.min(frames.length - 1, Math.max(0, i + direction))];
  if (to) goTo(to.t);
}
function nextCaption(direction) {
  const i = lastAt(captions, now);
  const to = captions[Math.min(captions.length - 1, Math.max(0, i + direction))];
  if (to) goTo(to.t);
}

const kKeyActions = {
  ' ': () => play(!isPlaying), ArrowLeft: () => goTo(now - 1), ArrowRight: () => goTo(now + 1),
  ',': () => nextFrame(-1), '.': () => nextFrame(1), ArrowUp: () => nextCaption(-1), ArrowDown: () => nextCaption(1),
  Home: () => goTo(0), End: () => goTo(duration),
};
document.addEventListener('keydown', e => {
  if (e.target.id === 'filter' || e.ctrlKey || e.metaKey || e.altKey || !kKeyActions[e.key]) return;
  e.preventDefault();
  kKeyActions[e.key]();
});
byId('play').addEventListener('click', e => { play(!isPlaying); e.target.blur(); });
byId('speed').addEventListener('click', e => {
  rate = kRates[(kRates.indexOf(rate) + 1) % kRates.length];
  e.target.textContent = rate + '×'; e.target.blur();
});
byId('slider').addEventListener('input', e => goTo(e.target.value / 1000 * duration));
for (const id of ['axes', 'pace', 'share']) {
  const follow = e => { if (e.buttons & 1) goTo(xToTime(e.offsetX, e.target.clientWidth)); };
  byId(id).addEventListener('pointerdown', follow);
  byId(id).addEventListener('pointermove', follow);
}
byId('filter').addEventListener('input', fillLog);
window.addEventListener('resize', () => { drawMarks(); show(); });
matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => { paint = colours(); kept.clear(); drawMarks(); show(); });

function timeOfAddress() {
  const hit = /[#&]t=([0-9.]+)/.exec(location.hash);
  return hit ? Number(hit[1]) : 0;
}
window.addEventListener('hashchange', () => goTo(timeOfAddress()));

facts();
fillLog();
byId('speed').textContent = '1×';
byId('play').textContent = '▶';
byId('paceNote').textContent = 'milliseconds from one to the next while the cap moves';
const part = (session.counts || {}).plugInMs;
byId('shareNote').textContent = 'milliseconds of a frame of 16.7, the host\'s drawing apart' + (part
  ? '; median ' + number(part.median, 2) + ', all but one in a hundred below ' + number(part.most, 2) : '');
showModes = timedList(byId('modes'), modes, (li, e) => withTimeLast(li, e));
showCommands = timedList(byId('commands'), commandEntries, (li, e) => withTime(li, e, visibleText(e.text)));
function withTimeLast(li, e) {
  const i = document.createElement('i');
  i.textContent = ' ' + e.t.toFixed(1);
  li.dataset.kind = '';
  li.append(e.name, i);
}
drawMarks();
goTo(timeOfAddress());
