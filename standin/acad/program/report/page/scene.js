'use strict';
// The drawing: its objects, where each one was at a given frame, and how a view shows them.

const session = JSON.parse(document.getElementById('session').textContent);
const frames = session.frames || [];
const duration = Math.max(session.seconds || 0, frames.length ? frames[frames.length - 1].t : 0, 0.001);
const byId = id => document.getElementById(id);

// Index of the last entry at or before t, -1 if there is none. Entries are in order of time.
function lastAt(list, t, timeOf = e => e.t) {
  let low = 0, high = list.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (timeOf(list[middle]) <= t) low = middle + 1; else high = middle;
  }
  return low - 1;
}

const sub = (a, b) => [a[0] - b[0], a[1] - b[1], a[2] - b[2]];
const dot = (a, b) => a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
const cross = (a, b) => [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]];
const length = a => Math.hypot(a[0], a[1], a[2]);
const unit = a => { const l = length(a) || 1; return [a[0] / l, a[1] / l, a[2] / l]; };

// A matrix is twelve numbers, three rows of four. times(m, n) applies n first.
function times(m, n) {
  const out = new Array(12);
  for (let r = 0; r < 3; ++r)
    for (let c = 0; c < 4; ++c)
      out[r * 4 + c] = m[r * 4] * n[c] + m[r * 4 + 1] * n[4 + c] + m[r * 4 + 2] * n[8 + c] + (c === 3 ? m[r * 4 + 3] : 0);
  return out;
}

// Coordinates are kept relative to the drawing's middle: real drawings are far from the origin, where differences
// of a picture's size would drown.
const drawing = session.drawing || {objects: [], min: [0, 0, 0], max: [1, 1, 1]};
const middle = [0, 1, 2].map(i => (drawing.min[i] + drawing.max[i]) / 2);
const reach = Math.max(length(sub(drawing.max, drawing.min)) / 2, 1e-9);

function aroundMiddle(m) {
  const [x, y, z] = middle;
  return m.map((v, i) => i % 4 !== 3 ? v
    : v + m[i - 3] * x + m[i - 2] * y + m[i - 1] * z - middle[(i - 3) / 4]);
}

const objects = drawing.objects.map(o => {
  const runs = [], points = [];
  for (const line of o.lines) {
    const start = points.length;
    for (let i = 0; i < line.length; ++i) points.push(line[i] - middle[i % 3]);
    runs.push([start, points.length]);
  }
  return {id: o.id, kind: o.kind, from: o.t || 0, runs, points: Float64Array.from(points), steps: []};
});
// Faces are filled. Within an insert they have become outlines like any other, recognised by their three or four corners.
function isFace(o, start, end) {
  if (o.kind === 'face') return end - start >= 9;
  if (o.kind !== 'block' || (end - start !== 12 && end - start !== 15)) return false;
  return [0, 1, 2].every(i => o.points[start + i] === o.points[end - 3 + i]);
}
const objectById = new Map(objects.map(o => [o.id, o]));

// Where each object had got to, frame by frame. Objects that have always moved together share their matrices.
frames.forEach((frame, i) => {
  for (const group of frame.moved || []) {
    const step = aroundMiddle(group.matrix);
    const known = new Map();
    for (const id of group.objects || session.lists[group.list]) {
      const o = objectById.get(id);
      if (!o) continue;
      const before = o.steps.length ? o.steps[o.steps.length - 1].m : null;
      if (!known.has(before)) known.set(before, before ? times(step, before) : step);
      o.steps.push({i, m: known.get(before)});
    }
  }
});

function stepOf(o, frameIndex) {
  const at = lastAt(o.steps, frameIndex, s => s.i);
  return at < 0 ? null : o.steps[at];
}

const segmentCount = objects.reduce((n, o) => n + o.points.length / 3 - o.runs.length, 0);
const kBusySegments = 14000; // more than this is thinned out while the picture moves
const kSortedItems = 5000;   // up to this many edges and faces are painted from back to front
let isThinned = false;

function colours() {
  const style = getComputedStyle(document.documentElement);
  const value = name => style.getPropertyValue('--' + name).trim();
  const out = {};
  for (const name of ['ink', 'soft', 'edge', 'panel', 'ground', 'line', 'grid', 'face', 'accent', 'select', 'x', 'y', 'z', 'warn'])
    out[name] = value(name);
  return out;
}
let paint = colours();

function rgb(hex) {
  const n = parseInt(hex.slice(1), 16);
  return [n >> 16, (n >> 8) & 255, n & 255];
}
function mix(a, b, f) {
  const p = rgb(a), q = rgb(b);
  return 'rgb(' + p.map((v, i) => Math.round(v + (q[i] - v) * f)).join(',') + ')';
}

// A canvas sized to its box and to the screen's pixels; returns a context that counts in CSS pixels.
function fitted(canvas) {
  const ratio = window.devicePixelRatio || 1, box = canvas.getBoundingClientRect();
  const w = Math.max(1, Math.round(box.width * ratio)), h = Math.max(1, Math.round(box.height * ratio));
  if (canvas.width !== w || canvas.height !== h) { canvas.width = w; canvas.height = h; }
  const g = canvas.getContext('2d');
  g.setTransform(ratio, 0, 0, ratio, 0, 0);
  g.clearRect(0, 0, box.width, box.height);
  g.lineJoin = g.lineCap = 'round';
  return {g, w: box.width, h: box.height};
}

// The camera of a frame: world to picture, x to the right, y up, depth away from the viewer, in pixels.
function cameraOf(frame, w, h) {
  const look = sub(frame.eye, frame.target), distance = length(look) || 1;
  const z = unit(look), right = unit(cross(frame.up, z)), up = cross(z, right);
  const k = Math.min(w / (Math.abs(frame.field[0]) || 1), h / (Math.abs(frame.field[1]) || 1));
  const target = sub(frame.target, middle);
  return {right, up, z, k, distance, target, isPerspective: !!frame.perspective, cx: w / 2, cy: h / 2,
    near: distance * 0.01};
}

// Puts an object's points through its motion and the camera: out[3i] right, out[3i+1] up, out[3i+2] depth.
function toCamera(points, m, cam, out) {
  const {right: r, up: u, z, target: t} = cam;
  for (let i = 0; i < points.length; i += 3) {
    let x = points[i], y = points[i + 1], w = points[i + 2];
    if (m) {
      const a = x, b = y, c = w;
      x = m[0] * a + m[1] * b + m[2] * c + m[3];
      y = m[4] * a + m[5] * b + m[6] * c + m[7];
      w = m[8] * a + m[9] * b + m[10] * c + m[11];
    }
    x -= t[0]; y -= t[1]; w -= t[2];
    out[i] = r[0] * x + r[1] * y + r[2] * w;
    out[i + 1] = u[0] * x + u[1] * y + u[2] * w;
    out[i + 2] = cam.distance - (z[0] * x + z[1] * y + z[2] * w);
  }
}

function onScreen(cam, x, y, depth) {
  const f = cam.isPerspective ? cam.k * cam.distance / depth : cam.k;
  return [cam.cx + x * f, cam.cy - y * f];
}

// Both ends of an edge on the screen, cut at the near plane; null if it is behind the eye.
function edgeOnScreen(cam, p, i, j) {
  let ax = p[i], ay = p[i + 1], az = p[i + 2], bx = p[j], by = p[j + 1], bz = p[j + 2];
  if (cam.isPerspective) {
    if (az < cam.near && bz < cam.near) return null;
    if (az < cam.near || bz < cam.near) {
      const f = (cam.near - az) / (bz - az), x = ax + (bx - ax) * f, y = ay + (by - ay) * f;
      if (az < cam.near) { ax = x; ay = y; az = cam.near; } else { bx = x; by = y; bz = cam.near; }
    }
  }
  const a = onScreen(cam, ax, ay, az), b = onScreen(cam, bx, by, bz);
  return [a[0], a[1], b[0], b[1]];
}

function drawGround(g, cam) {
  const half = reach * 1.5, n = 12, floor = drawing.min[2] - middle[2];
  const points = [];
  for (let i = 0; i <= n; ++i) {
    const v = -half + 2 * half * i / n;
    points.push(v, -half, floor, v, half, floor, -half, v, floor, half, v, floor);
  }
  const out = new Float64Array(points.length);
  toCamera(points, null, cam, out);
  g.strokeStyle = paint.grid; g.lineWidth = 1; g.globalAlpha = 0.35;
  g.beginPath();
  for (let i = 0; i < out.length; i += 6) {
    const e = edgeOnScreen(cam, out, i, i + 3);
    if (e) { g.moveTo(e[0], e[1]); g.lineTo(e[2], e[3]); }
  }
  g.stroke();
  g.globalAlpha = 1;
}

function drawAxisMark(g, cam, x, y) {
  const size = 30;
  const ends = [['X', paint.x, [1, 0, 0]], ['Y', paint.y, [0, 1, 0]], ['Z', paint.z, [0, 0, 1]]]
    .map(([name, colour, v]) => ({name, colour, dx: dot(v, cam.right) * size, dy: -dot(v, cam.up) * size, depth: dot(v, cam.z)}))
    .sort((a, b) => a.depth - b.depth);
  g.font = '600 11px system-ui, sans-serif'; g.textAlign = 'center'; g.textBaseline = 'middle'; g.lineWidth = 2;
  for (const e of ends) {
    g.strokeStyle = g.fillStyle = e.colour; g.globalAlpha = e.depth < -0.2 ? 0.55 : 1;
    g.beginPath(); g.moveTo(x, y); g.lineTo(x + e.dx, y + e.dy); g.stroke();
    g.fillText(e.name, x + e.dx * 1.33, y + e.dy * 1.33);
  }
  g.globalAlpha = 1;
}

// What an object looks like now: its state decides, not its kind.
function lookOf(o, step, frameIndex, t, selected) {
  if (step && t - frames[step.i].t < 0.35) return {colour: paint.accent, width: 2.4, isMarked: true};
  if (selected.has(o.id)) return {colour: paint.select, width: 2.2, isMarked: true};
  return {colour: paint.line, width: 1.25, isMarked: false};
}

function visibleObjects(cam, frameIndex, t, selected) {
  const out = [];
  for (const o of objects) {
    if (o.from > t) continue;
    const step = stepOf(o, frameIndex);
    const camera = o.camera || (o.camera = new Float64Array(o.points.length));
    toCamera(o.points, step && step.m, cam, camera);
    out.push({o, camera, look: lookOf(o, step, frameIndex, t, selected)});
  }
  return out;
}

// A small drawing is painted from back to front, its faces filled, so that near ones hide far ones.
function drawSorted(g, cam, shown) {
  const items = [];
  const push = reach * 0.012; // an edge that lies in a face wins against it
  for (const s of shown) {
    const p = s.camera;
    for (const [start, end] of s.o.runs) {
      if (isFace(s.o, start, end)) {
        let depth = 0;
        for (let i = start; i < end; i += 3) depth += p[i + 2];
        items.push({depth: depth / ((end - start) / 3), s, start, end, isFace: true});
      } else {
        if (end - start === 3) items.push({depth: p[start + 2] - push, s, start, end: start});
        for (let i = start; i + 3 < end; i += 3)
          items.push({depth: (p[i + 2] + p[i + 5]) / 2 - push, s, start: i, end: i + 3});
      }
    }
  }
  items.sort((a, b) => b.depth - a.depth);
  for (const item of items) item.isFace ? drawFace(g, cam, item) : drawEdge(g, cam, item);
  g.globalAlpha = 1;
}

function fade(cam, depth) {
  const near = cam.distance - reach, far = cam.distance + reach;
  return 1 - 0.6 * Math.min(1, Math.max(0, (depth - near) / (far - near)));
}

function drawEdge(g, cam, {s, start, end, depth}) {
  const e = edgeOnScreen(cam, s.camera, start, end);
  if (!e) return;
  g.strokeStyle = s.look.colour; g.lineWidth = s.look.width;
  g.globalAlpha = s.look.isMarked ? 1 : fade(cam, depth);
  g.beginPath();
  if (start === end) g.arc(e[0], e[1], 1.6, 0, 7); else { g.moveTo(e[0], e[1]); g.lineTo(e[2], e[3]); }
  g.stroke();
}

function drawFace(g, cam, {s, start, end, depth}) {
  const p = s.camera;
  const at = i => [p[i], p[i + 1], p[i + 2]];
  if (cam.isPerspective)
    for (let i = start; i < end; i += 3) if (p[i + 2] < cam.near) return;
  const normal = unit(cross(sub(at(start + 3), at(start)), sub(at(start + 6), at(start))));
  const light = Math.abs(dot(normal, [0.32, 0.55, -0.77]));
  const base = s.look.isMarked ? s.look.colour : paint.face;
  g.beginPath();
  for (let i = start; i < end; i += 3) {
    const [x, y] = onScreen(cam, p[i], p[i + 1], p[i + 2]);
    i === start ? g.moveTo(x, y) : g.lineTo(x, y);
  }
  g.closePath();
  g.globalAlpha = s.look.isMarked ? 0.75 : 0.95;
  g.fillStyle = mix(base, '#0c1118', 0.42 * (1 - light)); g.fill();
  g.globalAlpha = s.look.isMarked ? 1 : 0.35 + 0.5 * fade(cam, depth);
  g.strokeStyle = s.look.colour; g.lineWidth = s.look.isMarked ? 1.8 : 1; g.stroke();
}

// A large one is drawn as edges alone, in a few depths, thinned out while it moves.
function drawMany(g, cam, shown, isBusy) {
  const stride = isBusy && segmentCount > kBusySegments ? Math.ceil(segmentCount / kBusySegments) : 1;
  isThinned = stride > 1;
  const levels = 5, plain = Array.from({length: levels}, () => new Path2D()), marked = new Map();
  let n = 0;
  for (const s of shown) {
    if (s.look.isMarked && !marked.has(s.look.colour)) marked.set(s.look.colour, new Path2D());
    for (const [start, end] of s.o.runs) {
      for (let i = start; i + 3 < end; i += 3) {
        if (n++ % stride) continue;
        const e = edgeOnScreen(cam, s.camera, i, i + 3);
        if (!e) continue;
        const level = Math.round((1 - fade(cam, s.camera[i + 2])) / 0.6 * (levels - 1));
        const path = s.look.isMarked ? marked.get(s.look.colour) : plain[level];
        path.moveTo(e[0], e[1]); path.lineTo(e[2], e[3]);
      }
    }
  }
  const thin = segmentCount > 30000 ? 0.6 : 1;
  g.strokeStyle = paint.line; g.lineWidth = thin;
  for (let level = levels - 1; level >= 0; --level) {
    g.globalAlpha = (1 - 0.7 * level / (levels - 1)) * (stride > 1 ? 0.9 : 1);
    g.stroke(plain[level]);
  }
  g.globalAlpha = 1; g.lineWidth = 1.8;
  for (const [colour, path] of marked) { g.strokeStyle = colour; g.stroke(path); }
}

function drawModel(g, cam, frameIndex, t, selected, isBusy) {
  const shown = visibleObjects(cam, frameIndex, t, selected);
  if (segmentCount <= kSortedItems) drawSorted(g, cam, shown); else drawMany(g, cam, shown, isBusy);
}

// The layout: a sheet of paper seen flat, with the drawing on it and its frame and title block.
function drawLayout(g, w, h, frame, frameIndex, t, selected, isBusy) {
  const sheet = session.layout || {width: 300, height: 200};
  const k = Math.min(h / frame.height, w / (frame.height * sheet.width / sheet.height));
  const left = w / 2 + (-sheet.width / 2 - frame.centre[0]) * k, top = h / 2 - (sheet.height / 2 - frame.centre[1]) * k;
  const sw = sheet.width * k, sh = sheet.height * k;
  g.save();
  g.shadowColor = 'rgba(0,0,0,.35)'; g.shadowBlur = 18; g.shadowOffsetY = 5;
  g.fillStyle = mix(paint.panel, '#ffffff', 0.06); g.fillRect(left, top, sw, sh);
  g.restore();
  g.save();
  g.beginPath(); g.rect(left, top, sw, sh); g.clip();
  g.strokeStyle = paint.grid; g.globalAlpha = 0.28; g.lineWidth = 1; g.beginPath();
  for (let x = 10; x < sheet.width; x += 10) { g.moveTo(left + x * k, top); g.lineTo(left + x * k, top + sh); }
  for (let y = 10; y < sheet.height; y += 10) { g.moveTo(left, top + y * k); g.lineTo(left + sw, top + y * k); }
  g.stroke(); g.globalAlpha = 1;
  const inner = {x: left + 12 * k, y: top + 12 * k, w: sw - 24 * k, h: sh - 24 * k};
  const cam = cameraOf(frame, inner.w, inner.h);
  cam.cx = inner.x + inner.w / 2; cam.cy = inner.y + inner.h / 2;
  g.save();
  g.beginPath(); g.rect(inner.x, inner.y, inner.w, inner.h); g.clip();
  drawModel(g, cam, frameIndex, t, selected, isBusy);
  g.restore();
  g.strokeStyle = paint.ink; g.lineWidth = Math.max(1, 0.6 * k);
  g.strokeRect(left + 6 * k, top + 6 * k, sw - 12 * k, sh - 12 * k);
  const block = {w: 92 * k, h: 24 * k};
  const bx = left + sw - 6 * k - block.w, by = top + sh - 6 * k - block.h;
  g.fillStyle = paint.panel; g.fillRect(bx, by, block.w, block.h); g.strokeRect(bx, by, block.w, block.h);
  g.fillStyle = paint.ink; g.textAlign = 'left'; g.textBaseline = 'middle';
  g.font = '600 ' + 6.5 * k + 'px system-ui, sans-serif'; g.fillText(drawing.name || '', bx + 4 * k, by + 8 * k, block.w - 8 * k);
  g.font = 4.6 * k + 'px system-ui, sans-serif'; g.fillStyle = paint.soft;
  g.fillText('Layout 1', bx + 4 * k, by + 17 * k, block.w - 8 * k);
  g.restore();
}

function drawView(t, frameIndex, selected, isBusy) {
  const {g, w, h} = fitted(byId('view'));
  const frame = frames[frameIndex];
  isThinned = false;
  if (!frame) return;
  if (frame.mode === 1) { drawLayout(g, w, h, frame, frameIndex, t, selected, isBusy); return; }
  const cam = cameraOf(frame, w, h);
  drawGround(g, cam);
  drawModel(g, cam, frameIndex, t, selected, isBusy);
  drawAxisMark(g, cam, 58, h - 58);
}
