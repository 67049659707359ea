// A session while it runs: frames come from the host, the hand's samples go to the daemon, and what a user does at the
// host goes to the host.

const kStripSeconds = 30;
const kRefreshMs = 250;
const kViews = ['front', 'right', 'back', 'left', 'top', 'bottom'];
const kRotations = ['objscreen', 'objorigin', 'camstandard', 'camtarget', 'camhover'];
const kCommands = ['OV_Toggle_Rotation_Center', 'OV_Toggle_Rotation_Axis', 'OV_Toggle_Scroll_Mode', 'OV_Toggle_Object_Move_Mode'];

function playLive({host}) {
  const live = {frames: [], selected: new Set(), states: new Map(), positions: new Map(), pointer: 'view',
    latency: new Latency(), refreshes: 0, said: '', hostTime};
  const say = text => { byId('connection').textContent = text; };
  const fromHost = {
    hello: start, frame: takeFrame, explained: explain, controls: takeControls, file: save,
    driver: isDriver => setDriver('host', isDriver),
    drawing: ({number, name, objects}) => drawingOf(number, name).add(objects),
    lists: lists => live.lists.push(...lists),
    selected: numbers => { live.selected = new Set(numbers); showLatest(); },
    command: line => live.commands.add([{...line, kind: 'typed'}]),
    printed: line => live.commands.add([line]),
    log: lines => live.log.add(lines),
    state: states => { for (const [name, isOn] of Object.entries(states)) live.states.set(name, isOn); },
    end: () => { live.hasEnded = true; setDriver('device', false); say('The host has ended.'); },
  };
  const fromDevice = {
    driver: isDriver => setDriver('device', isDriver),
    panel: settings => live.panel.show(settings),
    say: text => { live.said = text; },
    absence: text => say(text === 'back' ? '' : 'The daemon is away for ' + parseFloat(text.slice(5)) + ' s.'),
  };
  say('Connecting …');
  live.host = connect(host, fromHost, 'host');

  function connect(address, hears, name) {
    const socket = new WebSocket(address);
    socket.onmessage = e => { for (const [key, value] of Object.entries(JSON.parse(e.data))) hears[key](value); };
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

  function start({driver, device, keys, data}) {
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
    live.controls = new Controls(data.controls, name => {
      if (live.pointer !== name) tell('pointer ' + name);
      live.pointer = name;
    });
    live.commands = new TimedList('commands', fillWithTime, null);
    live.log = new Log(data.unix, null);
    live.commands.add(commandLines(data));
    live.log.add(data.log);
    for (const s of data.states) if (s.rest === false) live.states.set(s.name, s.changes.at(-1)[1]);
    live.facts = ['frames', 'frames a second', 'ms hand to picture, median', 'ms hand to picture, p99'].map(name => addFact('–', name));
    live.hand = new Hand(sample => { drive('motion ' + sample.join(' ')); live.latency.send(sample); drawCap(sample); });
    data.frames.forEach((frame, n) => takeFrame({n, ...frame}));
    takeControls(data.controls.map(c => [c.name, ...c.positions.at(-1).slice(1)]));
    setUpKeys(keys);
    setUpHost();
    setDriver('host', driver);
    live.device = connect(device, fromDevice, 'device');
    setInterval(refresh, kRefreshMs);
  }

  // A drawing by its number; one without objects comes without a message.
  function drawingOf(n, name) {
    return live.drawings[n - 1] || (live.drawings[n - 1] = new Drawing({name}, live.lists, n));
  }

  // The host's clock: seconds since the session began.
  function hostTime() { return live.clock === undefined ? 0 : performance.now() / 1000 + live.clock; }

  function takeFrame(frame) {
    const {frames} = live;
    const drawings = live.drawings.filter(Boolean);
    if (frames.length && frames.at(-1).n === frame.n) { // it comes again, with more
      frames.pop();
      for (const d of drawings) d.forget(frame.n);
    }
    const before = frames.at(-1);
    live.clock = frame.t - performance.now() / 1000;
    const gap = before ? frame.t - before.t : Infinity;
    if (gap < kLongestGap) frame.ms = gap * 1000;
    frames.push(frame);
    for (const d of drawings) {
      d.follow(frame.n - 0.5, frame.t, frame.movedBefore || [], false); // by frames left out
      d.follow(frame.n, frame.t, frame.moved, false);
    }
    while (frames.length > 2 && frames[1].t < frame.t - kStripSeconds) frames.shift();
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
    const {frames} = live, index = frames.length - 1, frame = frames[index], t = hostTime(), line = lineAt(frames, index, t);
    live.isWarm = !!line || (frame.moved.length > 0 && t - frame.t < kJustMoved);
    live.drawing = drawingOf(frame.drawing);
    live.view.show({drawing: live.drawing, frame, index: frame.n, t, selected: live.selected, line});
    showState(frame, t);
  }
  // What needs no picture.
  function showState(frame, t) {
    const settings = [...live.states].filter(([, isOn]) => isOn), said = live.said ? [[live.said, false]] : [];
    showBadges(frame, live.drawing, live.drawings, [...settings, ...said]);
    if (live.hand.last.every(v => v === 0)) drawCap(t - frame.t < kLongestGap ? frame.sample : kRest);
    if (!isNews('host', frame.mode, frame.perspective)) return; // not before the host has answered a click
    byId('perspective').checked = frame.perspective;
    byId('tab_model').setAttribute('aria-pressed', frame.mode !== 1);
    byId('tab_layout').setAttribute('aria-pressed', frame.mode === 1);
  }
  function refresh() {
    const {frames, view} = live, last = frames.at(-1), t = hostTime(), isResting = t - last.t > kLongestGap;
    if (live.isWarm) showLatest(); // a line and colours that have had their time go
    else showState(last, t);
    showNow(last, live.selected, [['rotation', byId('rotation').value + (byId('horizon').checked ? ', horizon kept' : '')],
      ['frame', last.ms ? number(last.ms, 3) + ' ms' : '–'], ['sample', last.sample.join(' ')]]);
    // Without a graphics card one strip at a time, so that none holds up a picture.
    live.strips.fill(levelsOf(frames, t), frames, Math.max(0, t - kStripSeconds), t, view.isSlow ? live.refreshes++ : null);
    const took = live.latency.settle(), second = isResting ? [] : frames.filter(f => f.t > last.t - 1);
    const ms = took ? [took.median.toFixed(0), took.p99.toFixed(0)] : ['–', '–'];
    [count(last.n + 1), second.length, ...ms].forEach((value, i) => { live.facts[i].textContent = value; });
    showControls();
  }
  function takeControls(positions) {
    for (const [name, vertical, horizontal] of positions) {
      const old = live.positions.get(name);
      if (old && old.vertical === vertical && old.horizontal === horizontal) continue;
      live.positions.set(name, {vertical, horizontal, at: old ? performance.now() : -Infinity});
    }
    showControls();
  }
  function showControls() {
    for (const [name, {vertical, horizontal, at}] of live.positions)
      live.controls.show(name, vertical, horizontal, performance.now() - at < 300, live.pointer === name);
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
  function save({name, text}) {
    const address = URL.createObjectURL(new Blob([text], {type: 'text/plain'}));
    make('a', {href: address, download: name}).click();
    setTimeout(() => URL.revokeObjectURL(address), 10000);
  }
  return live;
}
