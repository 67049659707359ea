// Everything beside the drawing: the cap, the axes over time, the controls, the lists.

const kAxes = [['x', 'X', 'x'], ['y', 'Y', 'y'], ['z', 'Z', 'z'], ['x', 'A', 'about x'], ['y', 'B', 'about y'], ['z', 'C', 'about z']];
const motions = (session.events || []).filter(e => e.kind === 'motion');
const keys = (session.events || []).filter(e => e.kind === 'event');
const modes = (session.events || []).filter(e => e.kind === 'mode');
const captions = session.captions || [];
const kRest = [0, 0, 0, 0, 0, 0];

function sampleAt(t, frameIndex) {
  if (!motions.length) return frames[frameIndex] && t - frames[frameIndex].t < 0.3 ? frames[frameIndex].sample : kRest;
  const i = lastAt(motions, t);
  return i < 0 ? kRest : motions[i].sample;
}
const strongest = Math.max(1, ...motions.flatMap(m => m.sample.map(Math.abs)), ...(motions.length ? [] : frames.flatMap(f => f.sample.map(Math.abs))));

// The cap: pushed aside, lifted and tilted by the sample.
function drawCap(sample) {
  const {g, w, h} = fitted(byId('cap'));
  const f = sample.map(v => Math.sign(v) * Math.sqrt(Math.abs(v) / strongest));
  const isActive = sample.some(v => v !== 0);
  const cx = w / 2 + f[0] * 24, cy = h / 2 + 8 - f[1] * 20, size = 30 * (1 + 0.18 * f[2]);
  g.globalAlpha = 0.5; g.strokeStyle = paint.grid; g.lineWidth = 1;
  g.beginPath(); g.ellipse(w / 2, h / 2 + 26, 46, 15, 0, 0, 7); g.stroke();
  g.fillStyle = paint.grid; g.globalAlpha = 0.25; g.beginPath();
  g.ellipse(w / 2 + f[0] * 24, h / 2 + 26, size, size * 0.32, 0, 0, 7); g.fill();
  g.globalAlpha = isActive ? 1 : 0.6;
  g.save();
  g.translate(cx, cy); g.rotate(-f[5] * 0.5);
  const flat = 0.42 + f[3] * 0.2, lean = f[4] * 9;
  g.fillStyle = isActive ? paint.accent : paint.soft; g.strokeStyle = paint.panel; g.lineWidth = 1.5;
  g.beginPath();
  g.ellipse(0, 13, size, size * flat, 0, 0, Math.PI);
  g.lineTo(-size * 0.82 + lean, -9);
  g.ellipse(lean, -9, size * 0.82, size * 0.82 * flat, 0, Math.PI, 0, true);
  g.closePath(); g.fill();
  g.fillStyle = mix(paint.accent, paint.panel, isActive ? 0.3 : 0.72);
  g.beginPath(); g.ellipse(lean, -9, size * 0.82, size * 0.82 * flat, 0, 0, 7); g.fill(); g.stroke();
  const turn = -Math.PI / 2 - f[4] * 0.9;
  g.beginPath(); g.moveTo(lean, -9); g.lineTo(lean + Math.cos(turn) * size * 0.66, -9 + Math.sin(turn) * size * 0.66 * flat); g.stroke();
  g.restore();
  g.globalAlpha = 1;
}

const kMargin = 34;
const timeToX = (t, w) => kMargin + (w - kMargin - 6) * t / duration;
const xToTime = (x, w) => Math.min(duration, Math.max(0, (x - kMargin) / (w - kMargin - 6) * duration));

// Charts change only with the size of the page; the cursor is drawn over a kept picture.
const kept = new Map();
function keptPicture(canvas, draw) {
  const box = canvas.getBoundingClientRect(), key = box.width + 'x' + box.height;
  const {g, w, h} = fitted(canvas);
  let entry = kept.get(canvas);
  if (!entry || entry.key !== key) {
    draw(g, w, h);
    const copy = document.createElement('canvas');
    copy.width = canvas.width; copy.height = canvas.height;
    copy.getContext('2d').drawImage(canvas, 0, 0);
    kept.set(canvas, {key, copy});
  } else {
    g.save(); g.setTransform(1, 0, 0, 1, 0, 0); g.drawImage(entry.copy, 0, 0); g.restore();
  }
  return {g, w, h};
}
function cursor(g, x, h) {
  g.strokeStyle = paint.accent; g.lineWidth = 1.5; g.globalAlpha = 1;
  g.beginPath(); g.moveTo(x, 0); g.lineTo(x, h); g.stroke();
}

function drawAxesChart(g, w, h) {
  const row = (h - 26) / 6;
  g.font = '11px system-ui, sans-serif'; g.textBaseline = 'middle'; g.textAlign = 'left';
  const samples = motions.length ? motions : frames;
  kAxes.forEach(([colour, name], axis) => {
    const y = 14 + row * (axis + 0.5);
    g.strokeStyle = paint.edge; g.lineWidth = 1; g.beginPath(); g.moveTo(kMargin, y); g.lineTo(w - 6, y); g.stroke();
    g.fillStyle = paint[colour]; g.fillText(name, 12, y);
    const largest = Math.max(1, ...samples.map(s => Math.abs(s.sample[axis])));
    const half = row * 0.44;
    g.globalAlpha = axis < 3 ? 0.85 : 0.6;
    g.beginPath(); g.moveTo(kMargin, y);
    let before = 0;
    for (const s of samples) {
      const x = timeToX(s.t, w);
      g.lineTo(x, y - before / largest * half);
      before = s.sample[axis];
      g.lineTo(x, y - before / largest * half);
    }
    g.lineTo(timeToX(duration, w), y - before / largest * half);
    g.lineTo(timeToX(duration, w), y); g.closePath(); g.fill();
    g.globalAlpha = 1;
  });
  g.fillStyle = g.strokeStyle = paint.select; g.textAlign = 'center'; g.font = '10px system-ui, sans-serif';
  let free = 0;
  for (const e of keys) {
    const x = timeToX(e.t, w), name = e.name, half = g.measureText(name).width / 2 + 2;
    g.globalAlpha = 0.35; g.beginPath(); g.moveTo(x, 14); g.lineTo(x, h - 12); g.stroke(); g.globalAlpha = 1;
    if (x - half > free) { g.fillText(name, x, 7); free = x + half; }
  }
  drawTimeScale(g, w, h);
}

function drawTimeScale(g, w, h) {
  const step = [1, 2, 5, 10, 20, 60, 120, 300, 600].find(s => duration / s <= 14) || duration / 10;
  g.fillStyle = paint.soft; g.textAlign = 'center'; g.font = '10px system-ui, sans-serif';
  for (let t = 0; t <= duration; t += step) g.fillText(t + (t ? '' : ' s'), timeToX(t, w), h - 5);
}

function drawPaceChart(g, w, h) {
  const timed = frames.filter(f => f.ms > 0);
  const top = 40;
  g.font = '10px system-ui, sans-serif'; g.textBaseline = 'middle'; g.textAlign = 'left';
  g.fillStyle = paint.soft;
  const y = ms => h - 14 - Math.min(ms, top) / top * (h - 18);
  g.strokeStyle = paint.edge;
  for (const ms of [16.7, 33.3]) {
    g.fillText(ms.toFixed(0), 12, y(ms));
    g.beginPath(); g.moveTo(kMargin, y(ms)); g.lineTo(w - 6, y(ms)); g.stroke();
  }
  g.fillStyle = paint.select; g.globalAlpha = 0.8;
  for (const f of timed) g.fillRect(timeToX(f.t, w) - 0.75, y(f.ms) - 0.75, 1.5, 1.5);
  g.globalAlpha = 1;
  drawTimeScale(g, w, h);
}

// What the plug-in took of each frame. It is a small part of the 16.7 ms, so the scale ends where the times do.
const kFrameMs = 1000 / 60;
function shareTop() {
  const wanted = Math.max(0.05, ...frames.map(f => f.plugInMs || 0));
  return [0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50].find(ms => ms >= wanted) || wanted;
}
function drawShareChart(g, w, h) {
  const top = shareTop();
  const y = ms => h - 14 - Math.min(ms, top) / top * (h - 22);
  g.font = '10px system-ui, sans-serif'; g.textBaseline = 'middle';
  g.fillStyle = paint.soft; g.strokeStyle = paint.edge;
  for (const ms of [0, top / 2, top]) {
    g.textAlign = 'left'; g.fillText(number(ms, 2), 8, y(ms));
    g.textAlign = 'right'; if (ms > 0) g.fillText(number(ms / kFrameMs * 100, 2) + ' %', w - 6, y(ms) + 7);
    g.beginPath(); g.moveTo(kMargin, y(ms)); g.lineTo(w - 6, y(ms)); g.stroke();
  }
  g.fillStyle = paint.accent; g.globalAlpha = 0.8;
  for (const f of frames) if (f.plugInMs > 0) g.fillRect(timeToX(f.t, w) - 0.5, y(f.plugInMs), 1, h - 14 - y(f.plugInMs));
  g.globalAlpha = 1;
  drawTimeScale(g, w, h);
}

function drawMarks() {
  const canvas = byId('marks'), {g, w, h} = fitted(canvas);
  g.fillStyle = paint.soft; g.globalAlpha = 0.7;
  for (const c of captions) g.fillRect(c.t / duration * w - 1, 1, 2, h - 2);
  g.globalAlpha = 1;
}

// The controls as small boxes with their scroll bars where they stood.
function drawControls(t) {
  const {g, w, h} = fitted(byId('controls'));
  const controls = (session.controls || []).filter(c => c.positions);
  const pointer = (session.pointer || [])[lastAt(session.pointer || [], t)];
  const gap = 8, bw = (w - gap * (controls.length - 1)) / Math.max(1, controls.length);
  controls.forEach((c, i) => {
    const at = c.positions[Math.max(0, lastAt(c.positions, t, p => p[0]))] || [0, 0, 0];
    const before = c.positions[Math.max(0, lastAt(c.positions, t - 0.3, p => p[0]))] || at;
    const isMoving = before[1] !== at[1] || before[2] !== at[2];
    const x = i * (bw + gap), top = 18, bh = h - top - 2;
    g.fillStyle = paint.ground; g.strokeStyle = isMoving ? paint.accent : paint.edge; g.lineWidth = 1.3;
    g.beginPath(); g.roundRect(x + 1, top, bw - 2, bh, 5); g.fill(); g.stroke();
    g.font = '11px system-ui, sans-serif'; g.textBaseline = 'middle'; g.textAlign = 'left';
    g.fillStyle = pointer && pointer.on === c.name ? paint.accent : paint.ink;
    g.fillText((pointer && pointer.on === c.name ? '● ' : '') + c.name, x + 2, 8, bw - 4);
    g.save(); g.beginPath(); g.rect(x + 2, top + 2, bw - 14, bh - 14); g.clip();
    g.fillStyle = paint.grid;
    const rowHeight = 9, aside = c.horizontal && c.horizontal.max > 0 ? at[2] / c.horizontal.max * 40 : 0;
    for (let r = 0; r < bh / rowHeight; ++r) {
      const entry = r + Math.round(at[1]);
      const indent = c.name === 'tree' ? (entry * 7 % 3) * 7 : 0;
      g.fillRect(x + 7 + indent - aside, top + 6 + r * rowHeight, 14 + (entry * 13 % 7) * 5, 3.5);
    }
    g.restore();
    scrollBar(g, c.vertical, at[1], x + bw - 9, top + 3, bh - 16, true);
    scrollBar(g, c.horizontal, at[2], x + 4, top + bh - 9, bw - 18, false);
    g.fillStyle = paint.soft; g.textAlign = 'right'; g.font = '10px system-ui, sans-serif';
    g.fillText(c.vertical && c.vertical.max > c.vertical.min ? at[1] : at[1] ? at[1] + ' notches' : '', x + bw - 12, top + bh - 17);
  });
}
function scrollBar(g, range, position, x, y, size, isVertical) {
  if (!range || range.max <= range.min) return;
  const all = range.max - range.min + 1, thumb = Math.max(10, size * Math.min(1, range.page / all));
  const at = (size - thumb) * Math.min(1, (position - range.min) / Math.max(1, all - range.page));
  g.fillStyle = paint.edge;
  g.beginPath(); isVertical ? g.roundRect(x, y, 6, size, 3) : g.roundRect(x, y, size, 6, 3); g.fill();
  g.fillStyle = paint.soft;
  g.beginPath(); isVertical ? g.roundRect(x, y + at, 6, thumb, 3) : g.roundRect(x + at, y, thumb, 6, 3); g.fill();
}

// Lists whose entries have a time: those to come are pale, the latest is marked and kept in sight.
function timedList(element, entries, fill) {
  const nodes = entries.map(e => {
    const li = document.createElement('li');
    fill(li, e);
    li.addEventListener('click', () => goTo(e.t));
    element.append(li);
    return li;
  });
  let shown = null;
  return t => {
    const at = lastAt(entries, t);
    if (at === shown) return;
    shown = at;
    nodes.forEach((li, i) => { li.className = li.dataset.kind + (i > at ? ' future' : '') + (i === at ? ' current' : ''); });
    if (at >= 0) element.scrollTop = nodes[at].offsetTop - element.offsetTop - element.clientHeight / 2;
    else element.scrollTop = 0;
  };
}
function withTime(li, e, text) {
  const i = document.createElement('i');
  i.textContent = e.t.toFixed(1);
  li.dataset.kind = e.kind || '';
  li.append(i, text);
}

const kCommandLimit = 3000;
const commandEntries = [...(session.commands || []).map(c => ({t: c.t, text: c.text, kind: 'typed'})),
  ...(session.printed || []).map(c => ({t: c.t, text: c.text, kind: 'printed'}))]
  .sort((a, b) => a.t - b.t).slice(0, kCommandLimit);
const visibleText = text => text.replace(/\x1b/g, '⎋').replace(/\n+$/, ' ⏎').replace(/^\n+/, '');

function fillLog() {
  const lines = session.log || [], list = byId('log'), wanted = byId('filter').value.toLowerCase();
  const hits = lines.filter(l => l.toLowerCase().includes(wanted));
  list.replaceChildren(...hits.slice(-1500).map(l => {
    const li = document.createElement('li');
    li.textContent = l;
    if (/\bERR\b/.test(l)) li.className = 'error';
    return li;
  }));
  byId('logCount').textContent = hits.length + ' of ' + lines.length + ' lines';
}
