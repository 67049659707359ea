// A session while it runs: frames come from the host, the hand's samples go to the daemon, and what a user does at the
// host goes to the host.

const kStripSeconds = 30;
const kRefreshMs = 250;
const kViews = ['front', 'right', 'back', 'left', 'top', 'bottom'];
const kRotations = ['objscreen', 'objorigin', 'camstandard', 'camtarget', 'camhover'];
const kCommands = ['OV_Toggle_Rotation_Center', 'OV_Toggle_Rotation_Axis', 'OV_Toggle_Scroll_Mode', 'OV_Toggle_Object_Move_Mode'];

function playLive({host}) {
  const live = {frames: [], samples: [], selected: new Set(), states: new Map(), positions: new Map(), pointer: 'view',
    latency: new Latency(), refreshes: 0, facts: {}, said: '', hostTime, recolour() { if (live.view) { live.view.setColours(); live.strips.redraw(); } }};
  const say = text => { byId('connection').textContent = text; };
  say('Connecting …');
  live.host = connect(host, hear, 'host');

  function connect(address, onMessage, name) {
    const socket = new WebSocket(address);
    socket.onmessage = e => { for (const [key, value] of Object.entries(JSON.parse(e.data))) onMessage(key, value); };
    socket.onclose = e => {
      if (live.hasEnded) return;
      live.hasEnded = true;
      setDriver(name, false);
      say('The connection to the ' + name + ' is lost' + (e.reason ? ': ' + e.reason : '') + '. Load the page again to go on.');
    };
    return {send: line => { if (socket.readyState === 1) socket.send(line); }};
  }
  const tell = line => live.host.send(line), drive = line => live.device.send(line);

  // Who doesn't drive watches: nothing that drives can be reached.
  function setDriver(name, isDriver) {
    live[name + 'Driver'] = isDriver;
    for (const element of document.querySelectorAll('.drives_' + name)) element.inert = !isDriver;
    if (live.hand && name === 'device') { live.hand.isAllowed = isDriver; live.hand.update(); }
    if (!live.hasEnded) say(live.deviceDriver !== false ? '' : 'Watching: another page holds the cap.');
  }

  function hear(key, value) {
    if (key === 'hello') start(value);
    else if (key === 'frame') takeFrame(value);
    else if (key === 'explained') explain(value);
    else if (key === 'driver') setDriver('host', value);
    else if (key === 'drawing') { if (live.drawings[value.number - 1]) drawingOf(value.number).add(value.objects); else drawingOf(value.number, value); }
    else if (key === 'lists') live.lists.push(...value);
    else if (key === 'selected') { live.selected = new Set(value); showLatest(); }
    else if (key === 'command') live.commands.add([{...value, kind: 'typed'}]);
    else if (key === 'printed') live.commands.add([value]);
    else if (key === 'log') live.log.add(value);
    else if (key === 'controls') takeControls(value);
    else if (key === 'state') for (const [name, isOn] of Object.entries(value)) live.states.set(name, isOn);
    else if (key === 'layout') setLayout(value);
    else if (key === 'file') save(value);
    else if (key === 'end') { live.hasEnded = true; setDriver('device', false); say('The host has ended.'); }
  }
  function hearDevice(key, value) {
    if (key === 'driver') setDriver('device', value);
    else if (key === 'panel') live.panel.show(value);
    else if (key === 'say') live.said = value;
    else if (key === 'away') say('The daemon is away for ' + value + ' s.');
    else if (key === 'back') say('');
  }

  function start(hello) {
    const {data} = hello;
    live.lists = data.lists;
    live.drawings = data.drawings.map((d, i) => new Drawing(d, live.lists, i + 1));
    live.drawing = live.drawings[0];
    byId('title').textContent = live.drawing.name + ' – live';
    document.title = live.drawing.name + ' · Orvaner live';
    byId('subtitle').textContent = count(data.drawings[0].entities) + ' objects';
    live.view = new View(live.drawing);
    live.view.sheet = data.layout;
    live.view.onDrawn = n => live.latency.draw(n);
    live.strips = new Strips(null);
    live.controls = new Controls(data.controls || [], name => {
      if (live.pointer !== name) tell('pointer ' + name);
      live.pointer = name;
    });
    live.commands = new TimedList('commands', fillWithTime, null);
    live.log = new Log(data.unix || 0, null);
    live.commands.add([...(data.commands || []).map(c => ({...c, kind: 'typed'})), ...(data.printed || [])].sort((a, b) => a.t - b.t));
    live.log.add(data.log || []);
    for (const s of data.states || []) if (s.rest === false) live.states.set(s.name, s.changes[s.changes.length - 1][1]);
    const chosen = (data.selection || []).slice(-1)[0];
    live.selected = new Set(chosen ? chosen.objects : []);
    for (const name of ['frames', 'frames a second', 'ms hand to picture, median', 'ms hand to picture, p99'])
      live.facts[name] = addFact('–', name);
    byId('share_note').textContent = 'milliseconds of a frame of 16.7, the host\'s drawing apart';
    (data.frames || []).forEach((frame, n) => takeFrame({n, ...frame}));
    live.hand = new Hand(sample => { drive('motion ' + sample.join(' ')); live.latency.send(sample); drawCap(sample); });
    setUpKeys(hello.keys || []);
    setUpHost();
    setDriver('host', hello.driver);
    live.device = connect(hello.device, hearDevice, 'device');
    setInterval(refresh, kRefreshMs);
  }

  // A drawing by its number; one without objects comes without a message.
  const drawingOf = (n, data = {}) => live.drawings[n - 1] || (live.drawings[n - 1] = new Drawing(data, live.lists, n));

  // The host's clock: seconds since the session began.
  function hostTime() { return live.clock === undefined ? 0 : performance.now() / 1000 + live.clock; }

  function takeFrame(frame) {
    const {frames, samples} = live;
    if (frames.length && frames[frames.length - 1].n === frame.n) { frames.pop(); samples.pop(); } // it comes again
    const before = frames[frames.length - 1];
    live.clock = frame.t - performance.now() / 1000;
    const gap = before ? frame.t - before.t : Infinity;
    if (frame.ms === undefined && gap < kLongestGap) frame.ms = gap * 1000;
    if (before && gap > kLongestGap) samples.push({t: before.t + 0.05, sample: kRest});
    samples.push(frame);
    frames.push(frame);
    for (const d of live.drawings) if (d) d.follow(frame.n, frame, false);
    const old = frame.t - kStripSeconds;
    for (const list of [frames, samples]) while (list.length > 2 && list[1].t < old) list.shift();
    showLatest();
  }
  function explain(pairs) {
    for (const [n, sample] of pairs) {
      const frame = live.frames[lastAt(live.frames, n, f => f.n)];
      if (frame && frame.n === n) frame.sample = sample;
    }
    live.latency.explained.push(...pairs);
  }
  function showLatest() {
    const {frames} = live, index = frames.length - 1, frame = frames[index];
    if (!frame) return;
    const t = hostTime(), line = lineAt(frames, index, t);
    live.isWarm = !!line || ((frame.moved || []).length > 0 && t - frame.t < kJustMoved);
    live.drawing = drawingOf(frame.drawing);
    live.view.show({drawing: live.drawing, frame, index: frame.n, t, selected: live.selected, line});
    showState(frame, t);
  }
  // What needs no picture.
  function showState(frame, t) {
    showBadges([...badgesOf(frame, live.drawing, live.drawings), ...[...live.states].filter(s => s[1]).map(s => [s[0], true]), ...(live.said ? [[live.said, false]] : [])]);
    if (live.hand && live.hand.last.every(v => v === 0)) drawCap(t - frame.t < kLongestGap ? frame.sample : kRest);
    if (live.perspective !== !!frame.perspective) { // not before the host has answered a click
      live.perspective = !!frame.perspective;
      byId('perspective').checked = live.perspective;
    }
  }
  function refresh() {
    const {frames, samples} = live, last = frames[frames.length - 1], t = hostTime();
    if (!last) return;
    if (live.isWarm) showLatest(); // a line and colours that have had their time go
    else showState(last, t);
    showNow(last, live.selected, [['rotation', byId('rotation').value + (byId('horizon').checked ? ', horizon kept' : '')],
      ['frame', last.ms ? number(last.ms, 3) + ' ms' : '–'], ['sample', last.sample.join(' ')]]);
    const isResting = t - last.t > kLongestGap;
    // Without a graphics card one strip at a time, so that none holds up a picture.
    live.strips.fill(isResting ? [...samples, {t: last.t + 0.05, sample: kRest}] : samples, frames, Math.max(0, t - kStripSeconds), t, live.view.isSlow ? live.refreshes++ : null);
    const took = live.latency.settle(), second = frames.filter(f => f.t > last.t - 1);
    const values = [count(last.n + 1), isResting ? '0' : String(second.length), took ? took.median.toFixed(0) : '–', took ? took.p99.toFixed(0) : '–'];
    Object.values(live.facts).forEach((b, i) => { b.textContent = values[i]; });
    takeControls([]);
  }
  function takeControls(changes) {
    const {positions} = live, now = performance.now();
    for (const [name, vertical, horizontal] of changes) positions.set(name, {vertical, horizontal, at: now});
    for (const name of live.controls.boxes.keys()) {
      const {vertical, horizontal, at} = positions.get(name) || {vertical: 0, horizontal: 0, at: -Infinity};
      live.controls.show(name, vertical, horizontal, now - at < 300, live.pointer === name);
    }
  }

  function setUpKeys(macros) {
    const key = (line, label) => make('button', {onclick: () => {
      drive(line);
      live.strips.keys.push({t: hostTime(), name: label});
    }}, label);
    byId('view_keys').append(...kViews.map(v => key('view ' + v, v)), key('zoom', 'zoom'));
    byId('macro_keys').append(...macros.map((name, i) => key('key ' + i, name)));
    byId('rotation').append(...kRotations.map(name => make('option', {}, name)));
    for (const id of ['rotation', 'horizon', 'hover', 'zoom_after'])
      byId(id).addEventListener('change', () => drive('rotation ' + (kRotations.indexOf(byId('rotation').value) +
        (byId('horizon').checked ? 10 : 0) + (byId('hover').checked ? 100 : 0)) + (byId('zoom_after').checked ? ' zoomall' : '')));
    live.panel = new Panel(drive);
    byId('ask_mode').addEventListener('click', () => drive('mode'));
    byId('away').addEventListener('click', () => drive('away 1.0'));
  }

  function setUpHost() {
    const stage = byId('stage'), frame = byId('window');
    const select = numbers => {
      live.selected = new Set(numbers); // until the host says otherwise; the next click may come before
      tell('select ' + (numbers.length ? numbers.join(' ') : 'none'));
    };
    lookAround(live.view, {
      drag(from, to) {
        const box = stage.getBoundingClientRect();
        frame.hidden = !to || !live.hostDriver;
        if (!to) return;
        for (const [i, [side, size]] of [['left', 'width'], ['top', 'height']].entries()) {
          frame.style[side] = Math.min(from[i], to[i]) - box[side] + 'px';
          frame.style[size] = Math.abs(to[i] - from[i]) + 'px';
        }
      },
      drop(from, to) {
        if (Math.hypot(to[0] - from[0], to[1] - from[1]) > 6) { select(live.view.pickWindow(from, to)); return; }
        const id = live.view.pick(...to), chosen = new Set(live.selected);
        if (id && !chosen.delete(id)) chosen.add(id);
        select(id ? [...chosen] : []);
      },
    });
    byId('tab_model').addEventListener('click', () => tell('layout off'));
    byId('tab_layout').addEventListener('click', () => tell('layout on'));
    byId('perspective').addEventListener('change', e => tell('perspective ' + (e.target.checked ? 'on' : 'off')));
    byId('fit').addEventListener('click', () => tell('fit'));
    byId('select_none').addEventListener('click', () => select([]));
    for (const what of ['session', 'report']) byId('save_' + what).addEventListener('click', () => tell('save ' + what));
    document.addEventListener('keydown', e => { if (e.key === 'Escape' && !e.target.matches('input')) select([]); });
    byId('known').append(...kCommands.map(value => make('option', {value})));
    byId('type').addEventListener('submit', e => {
      e.preventDefault();
      if (byId('typed').value.trim()) tell('type ' + byId('typed').value.trim());
      byId('typed').value = '';
    });
  }
  function setLayout(isOn) {
    byId('tab_model').setAttribute('aria-pressed', !isOn);
    byId('tab_layout').setAttribute('aria-pressed', isOn);
  }
  function save({name, text}) {
    const address = URL.createObjectURL(new Blob([text], {type: 'text/plain'}));
    make('a', {href: address, download: name}).click();
    setTimeout(() => URL.revokeObjectURL(address), 10000);
  }
  return live;
}
