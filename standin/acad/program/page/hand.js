// The hand on the cap: pointers, keys and a game controller push it, and what they say adds up. The level is sent when
// it changes and every 50 ms; who lets go, looks elsewhere or leaves the page has released it at once.

const kReach = 70;         // CSS pixels from rest to full deflection
const kStillPixels = 4;    // so that a drag along one axis stays one
const kRepeatMs = 50;
const kPadDeadZone = 0.12; // share of full deflection
// The axis that a drag to the right and one down move, with the sign; as the hand would move the real cap.
const kDrags = {top: [['x', 1], ['y', -1]], tilted: [['c', -1], ['a', 1]], ring: [['b', 1], ['z', 1]]};
// The axis of each key, without and with Shift.
const kHandKeys = {
  ArrowRight: [['x', 1], ['b', 1]], ArrowLeft: [['x', -1], ['b', -1]], ArrowUp: [['y', 1], ['a', -1]],
  ArrowDown: [['y', -1], ['a', 1]], PageUp: [['z', -1], ['c', 1]], PageDown: [['z', 1], ['c', -1]],
};

class Hand {
  // send is called with each level, six device counts.
  constructor(send) {
    this.send = send;
    this.drags = new Map();
    this.keys = new Map();
    this.pads = new Map(); // what each controller said at first
    this.last = kRest;
    const cap = byId('cap');
    cap.setAttribute('tabindex', 0);
    cap.setAttribute('role', 'application');
    cap.setAttribute('aria-describedby', 'how');
    cap.addEventListener('pointerdown', e => this.grab(e));
    cap.addEventListener('mousedown', e => e.preventDefault()); // a control that is chosen stays so while the cap scrolls it
    cap.addEventListener('pointermove', e => this.pull(e));
    for (const event of ['pointerup', 'pointercancel', 'lostpointercapture'])
      cap.addEventListener(event, e => { if (this.drags.delete(e.pointerId)) this.update(); });
    document.addEventListener('keydown', e => this.press(e));
    document.addEventListener('keyup', e => { if (this.keys.delete(e.key)) this.update(); });
    for (const event of ['blur', 'pagehide']) window.addEventListener(event, () => this.release());
    document.addEventListener('visibilitychange', () => { if (document.hidden) this.release(); });
    setInterval(() => this.update(true), kRepeatMs);
  }

  grab(e) {
    const part = e.target.closest('#cap_top') ? 'top' : e.target.closest('#cap_ring') ? 'ring' : null;
    if (!part || e.button > 0 || !this.isAllowed) return;
    const isTilt = part === 'top' && (e.shiftKey || byId('tilt').checked);
    byId('cap').setPointerCapture(e.pointerId);
    if (!document.activeElement.matches('.control')) byId('cap').focus();
    this.drags.set(e.pointerId, {axes: kDrags[isTilt ? 'tilted' : part], from: [e.clientX, e.clientY], to: [e.clientX, e.clientY]});
  }
  pull(e) {
    const drag = this.drags.get(e.pointerId);
    if (!drag) return;
    drag.to = [e.clientX, e.clientY];
    this.update();
  }
  press(e) {
    const axes = kHandKeys[e.key];
    if (!axes || e.ctrlKey || e.altKey || e.metaKey || !this.isAllowed) return;
    if (!document.activeElement.matches('body, #cap, .control')) return;
    e.preventDefault();
    if (!this.keys.has(e.key)) this.keys.set(e.key, {axis: axes[e.shiftKey ? 1 : 0], since: performance.now()});
    this.update();
  }
  release() {
    this.drags.clear();
    this.keys.clear();
    this.update();
  }

  // Six shares of full deflection, -1 to 1.
  level() {
    const out = {x: 0, y: 0, z: 0, a: 0, b: 0, c: 0};
    for (const {axes, from, to} of this.drags.values())
      axes.forEach(([axis, sign], i) => {
        const way = to[i] - from[i];
        out[axis] += sign * Math.sign(way) * Math.max(0, Math.abs(way) - kStillPixels) / (kReach - kStillPixels);
      });
    for (const {axis, since} of this.keys.values()) // the longer, the stronger
      out[axis[0]] += axis[1] * Math.min(0.85, 0.35 + 0.5 * (performance.now() - since) / 1000);
    if (document.hasFocus()) this.addPads(out);
    return kAxisNames.map(name => Math.max(-1, Math.min(1, out[name])));
  }

  addPads(out) {
    const pads = (navigator.getGamepads ? [...navigator.getGamepads()] : []).filter(Boolean);
    byId('pad').textContent = pads.map(p => 'Game controller: ' + p.id).join(', ');
    for (const pad of pads) {
      if (!this.pads.has(pad.index)) this.pads.set(pad.index, [...pad.axes]);
      const rest = this.pads.get(pad.index);
      const stick = i => {
        const v = (pad.axes[i] || 0) - (rest[i] || 0);
        return Math.sign(v) * Math.max(0, Math.abs(v) - kPadDeadZone) / (1 - kPadDeadZone);
      };
      const button = i => pad.buttons[i] ? pad.buttons[i].value : 0;
      out.x += stick(0); out.z += stick(1); out.b += stick(2); out.a += stick(3);
      out.y += button(7) - button(6);
      out.c += button(4) - button(5);
    }
  }

  update(isRepeat) {
    const sample = this.isAllowed ? this.level().map(r => countsOf(r) || 0) : kRest;
    const isSame = sample.join() === this.last.join();
    if (isSame && (!isRepeat || sample.every(v => v === 0))) return;
    this.last = sample;
    this.send(sample);
  }
}

// From the hand to the picture: how long after a sample was sent the first frame that it explains was drawn.
class Latency {
  constructor() { Object.assign(this, {sent: [], drawn: [], explained: [], times: [], answered: ''}); }
  send(sample) {
    const key = sample.join(), last = this.sent[this.sent.length - 1];
    if (!last || last.key !== key) this.sent.push({key, at: performance.now()});
  }
  draw(n) { this.drawn.push({t: n, at: performance.now()}); }
  // Pairs what has been both explained and drawn. Of equal samples in a row the first counts.
  settle() {
    const newest = this.drawn.length ? this.drawn[this.drawn.length - 1].t : -1;
    while (this.explained.length && this.explained[0][0] <= newest) {
      const [n, sample] = this.explained.shift(), key = sample.join();
      const picture = this.drawn[lastAt(this.drawn, n - 1) + 1];
      const i = this.sent.findIndex(s => s.key === key && s.at < picture.at);
      if (key === this.answered || i < 0) continue;
      this.answered = key;
      this.times.push({at: picture.at, ms: picture.at - this.sent[i].at});
      this.sent.splice(0, i + 1);
    }
    const old = performance.now() - 30000;
    for (const list of [this.times, this.drawn, this.sent]) while (list.length > 1 && list[0].at < old) list.shift();
    const ms = this.times.map(e => e.ms).sort((a, b) => a - b), share = s => ms[Math.min(ms.length - 1, Math.floor(ms.length * s))];
    return ms.length ? {count: ms.length, median: share(0.5), p99: share(0.99)} : null;
  }
}
