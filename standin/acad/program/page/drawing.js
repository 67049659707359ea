// The drawing: its objects, where each has got to, and the buffers that three.js draws from.
// Edges, faces and points of all objects share three buffers, so that the picture is three draws whatever their number.

const L = libraries;
const kParts = ['edges', 'faces', 'dots']; // of the drawing, and of each object: where its corners' coordinates begin

// Puts a point through twelve numbers, three rows of four.
function through(m, x, y, z) {
  return m ? [m[0] * x + m[1] * y + m[2] * z + m[3], m[4] * x + m[5] * y + m[6] * z + m[7],
    m[8] * x + m[9] * y + m[10] * z + m[11]] : [x, y, z];
}

// times(m, n) applies n first.
function times(m, n) {
  const out = [];
  for (let r = 0; r < 12; r += 4)
    for (let c = 0; c < 4; ++c)
      out.push(m[r] * n[c] + m[r + 1] * n[4 + c] + m[r + 2] * n[8 + c] + (c === 3 ? m[r + 3] : 0));
  return out;
}

class Drawing {
  constructor(data, lists, number) {
    this.name = data.name || 'Drawing';
    this.number = number;
    this.lists = lists;
    this.byNumber = new Map();
    this.objects = []; // in drawing order
    this.moved = new Set(); // objects that have been moved at some time
    this.buffers = {};
    for (const name of kParts) this.buffers[name] = new L.BufferGeometry();
    this.add(data.objects || []);
  }

  // Size and middle are those of what was there at the start.
  measure() {
    const low = [Infinity, Infinity, Infinity], high = [-Infinity, -Infinity, -Infinity], [first] = this.objects;
    for (const o of this.objects.filter(other => !other.from || first.from))
      o.points.forEach((v, i) => { low[i % 3] = Math.min(low[i % 3], v); high[i % 3] = Math.max(high[i % 3], v); });
    this.middle = low.map((v, i) => Number.isFinite(v) ? (v + high[i]) / 2 : 0);
    this.floor = Number.isFinite(low[2]) ? low[2] : 0;
    this.reach = Math.max(Math.hypot(...high.map((v, i) => v - low[i])) / 2 || 0, 1e-9);
    this.origin = this.middle;
  }

  add(list) {
    for (const {id, kind, t, lines} of list) {
      const points = [], edges = [], faces = [], dots = [];
      for (const line of lines) {
        const start = points.length, end = start + line.length;
        for (const v of line) points.push(v);
        if (isFace(kind, line)) for (let i = start + 3; i + 6 < end; i += 3) faces.push(start, i, i + 3);
        if (line.length === 6 && line[0] === line[3] && line[1] === line[4] && line[2] === line[5]) dots.push(start);
        else for (let i = start; i + 3 < end; i += 3) edges.push(i, i + 3);
      }
      this.byNumber.set(id, {id, kind, from: t || 0, points: Float64Array.from(points), edges, faces, dots, at: {},
        steps: [], matrix: null, movedAt: -Infinity, colour: ''});
    }
    const isFirst = !this.objects.length;
    this.objects = [...this.byNumber.values()];
    if (isFirst) this.measure();
    this.layOut();
  }

  // Follows the objects that groups moved in frame n. Objects that have always moved together share their matrices.
  follow(n, t, groups, keepsAll) {
    for (const group of groups) {
      if (group.drawing !== this.number) continue;
      const known = new Map();
      for (const id of group.objects || this.lists[group.list]) {
        const o = this.byNumber.get(id);
        if (!o) continue;
        const last = o.steps.at(-1), before = last ? last.matrix : null;
        if (!known.has(before)) known.set(before, before ? times(group.matrix, before) : group.matrix);
        if (last && last.n === n) o.steps.pop(); // moved twice in this frame
        o.steps.push({n, t, matrix: known.get(before)});
        if (!keepsAll && o.steps.length > 2) o.steps.shift();
        this.moved.add(o);
      }
    }
  }

  // Forgets what frame n moved.
  forget(n) {
    for (const o of this.moved) if (o.steps.length && o.steps.at(-1).n === n) o.steps.pop();
  }

  // Gives each object its place in the buffers, in the order of their numbers: what comes later stands behind.
  layOut() {
    for (const name of kParts) {
      let size = 0;
      for (const o of this.objects) { o.at[name] = size; size += o[name].length; }
      const geometry = this.buffers[name];
      geometry.dispose();
      for (const attribute of ['position', 'color'])
        geometry.setAttribute(attribute, new L.BufferAttribute(new Float32Array(size * 3), 3));
      geometry.owners = this.objects.filter(o => o[name].length);
    }
    for (const o of this.objects) { this.place(o); o.colour = ''; }
    this.stride = 0;
  }

  place(o) {
    const [x, y, z] = this.origin;
    for (const name of kParts) {
      if (!o[name].length) continue;
      const {position} = this.buffers[name].attributes;
      o[name].forEach((c, i) => {
        const p = through(o.matrix, o.points[c], o.points[c + 1], o.points[c + 2]);
        position.setXYZ(o.at[name] + i, p[0] - x, p[1] - y, p[2] - z);
      });
      position.needsUpdate = true;
      this.buffers[name].boundingSphere = null;
    }
  }

  colour(o, key, line, face) {
    if (o.colour === key) return false;
    o.colour = key;
    for (const name of kParts) {
      if (!o[name].length) continue;
      const {color} = this.buffers[name].attributes, c = name === 'faces' ? face : line;
      for (let i = 0; i < o[name].length; ++i) color.setXYZ(o.at[name] + i, c.r, c.g, c.b);
      color.needsUpdate = true;
    }
    return true;
  }

  // Moves each object to where it was at frame n. True if any changed its place.
  moveTo(n) {
    let hasChanged = false;
    for (const o of this.moved) {
      const step = o.steps[lastAt(o.steps, n, s => s.n)];
      o.movedAt = step ? step.t : -Infinity;
      if ((step ? step.matrix : null) === o.matrix) continue;
      o.matrix = step ? step.matrix : null;
      this.place(o);
      hasChanged = true;
    }
    return hasChanged;
  }

  // Only what had been drawn at t is shown, and of more edges than `most` every second, third ... alone.
  showUntil(t, most) {
    const next = this.objects.find(o => o.from > t), {edges} = this.buffers;
    for (const name of kParts) this.buffers[name].setDrawRange(0, next ? next.at[name] : Infinity);
    const segments = edges.attributes.position.count / 2, stride = Math.max(1, Math.ceil(segments / most));
    if (stride !== this.stride) {
      this.stride = stride;
      const some = [];
      if (stride > 1) for (let i = 0; i < segments; i += stride) some.push(i * 2, i * 2 + 1);
      edges.setIndex(stride > 1 ? some : null);
    }
    this.isThinned = stride > 1;
    if (stride > 1 && next) edges.setDrawRange(0, Math.ceil(next.at.edges / 2 / stride) * 2);
  }

  // Numbers near the eye are small, so that single precision suffices wherever the view is.
  centre(point) {
    this.origin = point;
    for (const o of this.objects) this.place(o);
  }

  // The object that a corner of a buffer belongs to.
  ownerOf(name, index) {
    const {owners} = this.buffers[name];
    return owners[lastAt(owners, index, o => o.at[name])];
  }
}

// Faces are filled. Within an insert they have become outlines like any other: closed, with three or four corners.
function isFace(kind, line) {
  if (kind === 'face') return line.length >= 9;
  if (kind !== 'block' && kind !== 'mesh' || line.length !== 12 && line.length !== 15) return false;
  return [0, 1, 2].every(i => line[i] === line[line.length - 3 + i]);
}
