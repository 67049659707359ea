// The picture: the host's own camera, drawn by three.js.

const kTiltLimit = 1.5;
const kMarkedSegments = 6000; // what is selected gets thick lines up to this many
// Without a graphics card, while the picture moves: more segments than this are thinned out, more triangles are left
// out, and the picture is drawn at a part of its size.
const kBusySegments = 4000;
const kBusyTriangles = 4000;
const kCoarseRatio = 0.5;
const kStillMs = 150;         // after so long without a change it is at rest
const kJustMoved = 0.35;      // seconds for which a moved object keeps its colour

class View {
  constructor(drawing) {
    this.canvas = byId('view');
    this.isSlow = isDrawnBySoftware();
    this.renderer = new L.WebGLRenderer({canvas: this.canvas, antialias: !this.isSlow, alpha: true});
    this.renderer.autoClear = false;
    this.scene = new L.Scene();
    this.cameras = {parallel: new L.OrthographicCamera(), perspective: new L.PerspectiveCamera()};
    // Their geometry is that of the drawing.
    this.faces = new L.Mesh(undefined, new L.MeshLambertMaterial({vertexColors: true, side: L.DoubleSide, flatShading: true,
      polygonOffset: true, polygonOffsetFactor: 1, polygonOffsetUnits: 1}));
    this.edges = new L.LineSegments(undefined, new L.LineBasicMaterial({vertexColors: true}));
    this.dots = new L.Points(undefined, new L.PointsMaterial({vertexColors: true, size: 3, sizeAttenuation: false}));
    this.ground = new L.LineSegments(new L.BufferGeometry(), new L.LineBasicMaterial({transparent: true, opacity: 0.4}));
    this.marked = thickLines({linewidth: 2.4, vertexColors: true});
    this.line = thickLines({linewidth: 2.4, dashed: true, depthTest: false, transparent: true});
    this.light = new L.DirectionalLight(0xffffff, 2.3);
    this.scene.add(this.ground, this.faces, this.edges, this.dots, this.marked, this.line, this.light,
      new L.AmbientLight(0xffffff, 1.1));
    for (const part of this.scene.children) part.frustumCulled = false;
    this.line.renderOrder = 1;
    this.setDrawing(drawing);
    this.home();
    this.setColours();
    colourScheme.addEventListener('change', () => this.setColours());
    new ResizeObserver(() => this.draw()).observe(this.canvas);
    this.canvas.addEventListener('webglcontextrestored', () => this.draw());
  }

  setDrawing(drawing) {
    this.drawing = drawing;
    for (const name of kParts) this[name].geometry = drawing.buffers[name];
    for (const o of drawing.objects) o.colour = '';
    this.groundOrigin = this.markedOrigin = null;
    byId('sheet').replaceChildren();
  }

  setColours() {
    const colour = name => new L.Color(paint(name));
    const tinted = name => [colour(name), colour('face').lerp(colour(name), 0.4)];
    this.looks = {plain: [colour('line'), colour('face')], selected: tinted('select'), moving: tinted('accent')};
    this.ground.material.color = colour('grid');
    this.line.material.color = colour('accent');
    this.paper = colour('paper');
    for (const o of this.drawing.objects) o.colour = '';
    this.draw();
  }

  // The user's own look, which the host doesn't know of.
  home() { this.turned = 0; this.tilted = 0; this.zoomed = 1; this.draw(); }
  look(dx, dy, zoom) {
    this.turned += dx * 0.008;
    this.tilted = Math.min(kTiltLimit, Math.max(-kTiltLimit, this.tilted + dy * 0.008));
    this.zoomed = Math.min(100, Math.max(0.01, this.zoomed * zoom));
    this.draw();
  }

  // What is to be seen; it is drawn with the browser's next frame. `line` is what the view turns about.
  show(state) {
    this.state = state;
    this.draw();
  }
  draw() {
    if (this.isAsked || !this.state) return;
    this.isAsked = true;
    requestAnimationFrame(() => { this.isAsked = false; this.render(); });
  }

  // The host's camera for a picture of w to h pixels, coordinates as the buffers have them.
  cameraFor(frame, w, h) {
    const {origin} = this.drawing;
    const target = new L.Vector3(...frame.target.map((v, i) => v - origin[i]));
    const sight = new L.Vector3(...frame.eye.map((v, i) => v - frame.target[i]));
    const up = new L.Vector3(...frame.up);
    if (this.turned || this.tilted) {
      const across = new L.Vector3().crossVectors(up, sight).normalize();
      for (const v of [sight, up]) v.applyAxisAngle(across, -this.tilted).applyAxisAngle(new L.Vector3(0, 0, 1), -this.turned);
    }
    const distance = sight.length() || 1;
    const pixel = Math.max(Math.abs(frame.field[0]) / w, Math.abs(frame.field[1]) / h) / this.zoomed || 1;
    const camera = this.cameras[frame.perspective ? 'perspective' : 'parallel'];
    camera.position.copy(target).add(sight);
    camera.up.copy(up);
    camera.lookAt(target);
    const middle = new L.Vector3(...this.drawing.middle.map((v, i) => v - origin[i]));
    const reach = this.drawing.reach * 3 + this.farthest();
    const toMiddle = camera.position.distanceTo(middle);
    if (frame.perspective) {
      camera.fov = 2 * Math.atan(h * pixel / 2 / distance) * 180 / Math.PI;
      camera.aspect = w / h;
      camera.near = Math.max(distance * 0.01, toMiddle - reach);
      camera.far = Math.max(toMiddle, distance) + reach;
    } else {
      camera.right = w * pixel / 2; camera.left = -camera.right;
      camera.top = h * pixel / 2; camera.bottom = -camera.top;
      camera.near = -toMiddle - reach; camera.far = toMiddle + reach;
    }
    camera.pixel = pixel;
    return camera;
  }
  // How far objects have moved beyond the drawing's size.
  farthest() {
    let most = 0;
    for (const o of this.drawing.moved)
      if (o.matrix) {
        const p = through(o.matrix, o.points[0], o.points[1], o.points[2]);
        most = Math.max(most, Math.hypot(...p.map((v, i) => v - this.drawing.middle[i])));
      }
    return most;
  }

  render() {
    const {drawing, frame, index, t, selected, line} = this.state, {canvas, renderer} = this;
    if (this.drawing !== drawing) this.setDrawing(drawing);
    const w = Math.max(1, canvas.clientWidth), h = Math.max(1, canvas.clientHeight);
    const now = performance.now(), isCoarse = this.isSlow && now - this.drawnAt < kStillMs;
    this.drawnAt = now;
    const ratio = isCoarse ? kCoarseRatio : Math.min(window.devicePixelRatio || 1, 2);
    if (isNews('picture', w, h, ratio)) {
      renderer.setPixelRatio(ratio);
      renderer.setSize(w, h, false);
    }
    const isFlat = frame.mode === 1;
    if (Math.hypot(...frame.target.map((v, i) => v - drawing.origin[i])) > 1000 * Math.max(...frame.field.map(Math.abs)))
      drawing.centre(frame.target);
    const hasMoved = drawing.moveTo(index);
    drawing.showUntil(t, isCoarse ? kBusySegments : Infinity);
    this.faces.visible = !isCoarse || this.faces.geometry.attributes.position.count <= kBusyTriangles * 3;
    drawing.isThinned = drawing.isThinned || !this.faces.visible;
    clearTimeout(this.fullTimer);
    if (isCoarse) this.fullTimer = setTimeout(() => this.draw(), kStillMs + 10);
    this.colourObjects(t, selected, hasMoved);
    this.drawGround(isFlat);
    this.drawLine(line, frame);
    renderer.setClearColor(0, 0);
    renderer.clear();
    this.box = isFlat ? this.placeSheet(frame, w, h) : {x: 0, y: 0, w, h};
    byId('sheet').style.display = isFlat ? '' : 'none';
    byId('axis_mark').style.display = isFlat ? 'none' : '';
    byId('own_view').hidden = !this.turned && !this.tilted && this.zoomed === 1;
    this.renderInto(this.box, frame, w, h);
    this.drawAxisMark();
    if (this.onDrawn) this.onDrawn(index);
  }

  // Draws the model into a box that may reach beyond the canvas.
  renderInto(box, frame, w, h) {
    const x = Math.max(0, box.x), y = Math.max(0, box.y);
    const right = Math.min(w, box.x + box.w), bottom = Math.min(h, box.y + box.h);
    this.camera = this.cameraFor(frame, box.w, box.h);
    if (right <= x || bottom <= y) return;
    this.camera.setViewOffset(box.w, box.h, x - box.x, y - box.y, right - x, bottom - y);
    this.camera.updateMatrixWorld();
    this.light.position.set(0.32, 0.55, 0.77).transformDirection(this.camera.matrixWorld);
    this.renderer.setViewport(x, h - bottom, right - x, bottom - y);
    this.shown = {x, y, w: right - x, h: bottom - y};
    for (const lines of [this.marked, this.line]) lines.material.resolution.set(right - x, bottom - y);
    this.renderer.render(this.scene, this.camera);
  }

  colourObjects(t, selected, hasMoved) {
    let hasChanged = hasMoved;
    const marked = [];
    for (const o of this.drawing.objects) {
      const key = t - o.movedAt < kJustMoved && t >= o.movedAt ? 'moving' : selected.has(o.id) ? 'selected' : 'plain';
      if (this.drawing.colour(o, key, ...this.looks[key])) hasChanged = true;
      if (key !== 'plain') marked.push(o);
    }
    if (!hasChanged && this.markedOrigin === this.drawing.origin) return;
    this.markedOrigin = this.drawing.origin;
    const positions = [], inks = [], {position} = this.drawing.buffers.edges.attributes;
    for (const o of marked) {
      if (positions.length > kMarkedSegments * 6) break;
      for (let i = 0; i < o.edges.length; ++i) {
        const at = o.at.edges + i, ink = this.looks[o.colour][0];
        positions.push(position.getX(at), position.getY(at), position.getZ(at));
        inks.push(ink.r, ink.g, ink.b);
      }
    }
    setLines(this.marked, positions, inks);
  }

  drawGround(isFlat) {
    this.ground.visible = !isFlat;
    if (this.groundOrigin === this.drawing.origin) return;
    this.groundOrigin = this.drawing.origin;
    const {middle, reach, floor, origin} = this.drawing, half = reach * 1.5, points = [];
    for (let i = 0; i <= 12; ++i) {
      const v = -half + half * i / 6;
      for (const [x, y] of [[v, -half], [v, half], [-half, v], [half, v]])
        points.push(middle[0] + x - origin[0], middle[1] + y - origin[1], floor - origin[2]);
    }
    this.ground.geometry.setAttribute('position', new L.BufferAttribute(new Float32Array(points), 3));
  }

  drawLine(line, frame) {
    this.line.visible = !!line;
    if (!line) return;
    const size = Math.max(...frame.field.map(Math.abs)) / this.zoomed, {origin} = this.drawing;
    // In the middle of the picture, whichever point of it was found.
    const along = frame.target.reduce((sum, v, i) => sum + (v - line.point[i]) * line.direction[i], 0);
    const end = s => line.point.map((v, i) => v + line.direction[i] * (along + s * size) - origin[i]);
    setLines(this.line, [...end(-0.45), ...end(0.45)]);
    this.line.material.dashSize = this.line.material.gapSize = size / 60;
    this.line.computeLineDistances();
  }

  // The sheet of a layout: paper below the model, frame and title above it. Returns the box of its viewport.
  placeSheet(frame, w, h) {
    const {width, height} = this.sheet || {width: 300, height: 200}, svg = byId('sheet');
    const k = Math.min(h / frame.height, w / (frame.height * width / height)) * this.zoomed;
    const x = w / 2 + (-width / 2 - frame.centre[0]) * k, y = h / 2 - (height / 2 - frame.centre[1]) * k;
    if (!svg.firstChild) {
      const part = (tag, more, ...text) => make(tag, {svg: true, ...more}, ...text);
      const lines = [];
      for (let i = 10; i < width; i += 10) lines.push('M' + i + ' 0V' + height);
      for (let i = 10; i < height; i += 10) lines.push('M0 ' + i + 'H' + width);
      svg.append(part('g', {}, part('path', {d: lines.join(''), class: 'squares'}),
        part('rect', {width, height, class: 'edge'}),
        part('rect', {x: 6, y: 6, width: width - 12, height: height - 12, class: 'frame'}),
        part('rect', {x: width - 98, y: height - 30, width: 92, height: 24, class: 'title'}),
        part('text', {x: width - 94, y: height - 19, class: 'name'}, this.drawing.name),
        part('text', {x: width - 94, y: height - 10}, 'Layout 1')));
    }
    svg.firstChild.setAttribute('transform', 'translate(' + x + ' ' + y + ') scale(' + k + ')');
    const left = Math.max(0, x), top = Math.max(0, y);
    const right = Math.min(w, x + width * k), bottom = Math.min(h, y + height * k);
    if (right > left && bottom > top) {
      this.renderer.setScissorTest(true);
      this.renderer.setScissor(left, h - bottom, right - left, bottom - top);
      this.renderer.setClearColor(this.paper, 1);
      this.renderer.clear();
      this.renderer.setScissorTest(false);
    }
    return {x: x + 12 * k, y: y + 12 * k, w: (width - 24) * k, h: (height - 24) * k};
  }

  drawAxisMark() {
    const svg = byId('axis_mark'), right = new L.Vector3(), up = new L.Vector3(), towards = new L.Vector3();
    this.camera.matrixWorld.extractBasis(right, up, towards);
    const ends = ['x', 'y', 'z'].map(name => ({name, x: right[name] * 30, y: -up[name] * 30, depth: towards[name]}));
    if (!isNews('axes', ends)) return; // new elements cost more than the rest of a picture
    svg.replaceChildren(...ends.sort((a, b) => a.depth - b.depth).flatMap(e => [
      make('line', {svg: true, x2: e.x, y2: e.y, class: e.name}),
      make('text', {svg: true, x: e.x * 1.3, y: e.y * 1.3, class: e.name}, e.name.toUpperCase())]));
  }

  // Where a point of the page is in the picture, from -1 to 1.
  inPicture(clientX, clientY) {
    const box = this.canvas.getBoundingClientRect(), s = this.shown || {x: 0, y: 0, w: 1, h: 1};
    return new L.Vector2((clientX - box.left - s.x) / s.w * 2 - 1, 1 - (clientY - box.top - s.y) / s.h * 2);
  }

  // The number of the object at a point of the page, 0 if there is none: an edge within a few pixels unless a face
  // hides it, otherwise the face.
  pick(clientX, clientY) {
    const caster = new L.Raycaster();
    caster.setFromCamera(this.inPicture(clientX, clientY), this.camera);
    caster.params.Line.threshold = caster.params.Points.threshold = this.camera.pixel * 6;
    const face = caster.intersectObject(this.faces)[0];
    const behind = face ? face.distance + this.camera.pixel * 12 : Infinity;
    const hits = ['edges', 'dots'].flatMap(name =>
      caster.intersectObject(this[name]).filter(hit => hit.distance < behind)
        .map(hit => ({name, index: hit.index, off: caster.ray.distanceSqToPoint(hit.point)})));
    hits.sort((a, b) => a.off - b.off);
    if (hits.length) return this.drawing.ownerOf(hits[0].name, hits[0].index).id;
    return face ? this.drawing.ownerOf('faces', face.faceIndex * 3).id : 0;
  }

  // The numbers of the objects that lie wholly in a window, given by two points of the page.
  pickWindow(from, to) {
    const a = this.inPicture(...from), b = this.inPicture(...to), p = new L.Vector3(), out = [];
    const {origin} = this.drawing;
    for (const o of this.drawing.objects) {
      let isIn = o.points.length > 0 && o.from <= this.state.t;
      for (let i = 0; isIn && i < o.points.length; i += 3) {
        const q = through(o.matrix, o.points[i], o.points[i + 1], o.points[i + 2]);
        p.set(q[0] - origin[0], q[1] - origin[1], q[2] - origin[2]).project(this.camera);
        isIn = p.z < 1 && (p.x - a.x) * (p.x - b.x) <= 0 && (p.y - a.y) * (p.y - b.y) <= 0;
      }
      if (isIn) out.push(o.id);
    }
    return out;
  }
}

function isDrawnBySoftware() {
  const gl = document.createElement('canvas').getContext('webgl2');
  const info = gl && gl.getExtension('WEBGL_debug_renderer_info');
  return !!info && /swiftshader|llvmpipe|software/i.test(gl.getParameter(info.UNMASKED_RENDERER_WEBGL));
}

const thickLines = look => new L.LineSegments2(new L.LineSegmentsGeometry(), new L.LineMaterial(look));
function setLines(lines, positions, inks) {
  lines.geometry.dispose();
  lines.geometry = new L.LineSegmentsGeometry();
  lines.visible = positions.length > 0;
  if (!positions.length) return;
  lines.geometry.setPositions(positions);
  if (inks) lines.geometry.setColors(inks);
}

// Drags and the wheel let the user look from elsewhere. `picks` gets what else the pointer does.
function lookAround(view, picks) {
  const stage = byId('view'), held = new Map();
  let start = null;
  const isLook = e => !picks || e.button === 2;
  stage.addEventListener('pointerdown', e => {
    held.set(e.pointerId, [e.clientX, e.clientY]);
    stage.setPointerCapture(e.pointerId);
    if (held.size === 1) start = {looks: isLook(e), from: [e.clientX, e.clientY]};
    else if (start) { start.looks = true; if (picks) picks.drag(null); } // two fingers
  });
  stage.addEventListener('pointermove', e => {
    const before = held.get(e.pointerId);
    if (!before || !start) return;
    if (start.looks) view.look((e.clientX - before[0]) / held.size, (e.clientY - before[1]) / held.size, 1);
    else picks.drag(start.from, [e.clientX, e.clientY]);
    held.set(e.pointerId, [e.clientX, e.clientY]);
  });
  const end = (e, isDone) => {
    held.delete(e.pointerId);
    if (held.size || !start) return;
    if (picks) { picks.drag(null); if (isDone && !start.looks) picks.drop(start.from, [e.clientX, e.clientY]); }
    start = null;
  };
  stage.addEventListener('pointerup', e => end(e, true));
  stage.addEventListener('pointercancel', e => end(e, false));
  stage.addEventListener('contextmenu', e => e.preventDefault());
  stage.addEventListener('wheel', e => { e.preventDefault(); view.look(0, 0, Math.exp(-e.deltaY * 0.0015)); }, {passive: false});
  byId('own_view').addEventListener('click', () => view.home());
}
