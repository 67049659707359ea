// A recorded session: what is shown is a function of one number, the seconds since it began.

const kRates = [1, 2, 4, 0.25, 0.5];
const kListLimit = 3000;

function playRecorded(session) {
  const {frames, captions, events, controls} = session;
  const duration = Math.max(session.seconds, frames.at(-1).t, 0.001);
  const motions = events.filter(e => e.kind === 'motion');
  const drawings = session.drawings.map((d, i) => new Drawing(d, session.lists, i + 1)), view = new View(drawings[0]);
  frames.forEach(({t, moved}, n) => { for (const d of drawings) d.follow(n, t, moved, true); });
  view.sheet = session.layout;
  let now = 0, isPlaying = false, rate = 1, stamp = 0;

  const strips = new Strips(t => goTo(t));
  strips.keys = events.filter(e => e.kind === 'event');
  const levels = [{t: 0, sample: kRest}, ...motions.length ? motions : levelsOf(frames, duration)];
  strips.fill(levels, frames, 0, duration);
  const boxes = new Controls(controls, null);
  const modes = new TimedList('modes', (node, e) => node.append(e.name, make('i', {}, ' ' + Math.max(0, e.t).toFixed(1))), t => goTo(t));
  modes.add(events.filter(e => e.kind === 'mode').map(e => ({...e, kind: ''})));
  const commands = new TimedList('commands', fillWithTime, t => goTo(t));
  commands.add(commandLines(session).slice(0, kListLimit));
  const log = new Log(session.unix, t => goTo(t));
  log.add(session.log);

  function statesAt(t) {
    return session.states.flatMap(s => {
      const change = s.changes[lastAt(s.changes, t, c => c[0])];
      return !change || change[1] === s.rest ? [] : change[1] === true ? [[s.name, true]] : [[change[1], false]];
    });
  }
  function show() {
    const index = Math.max(0, lastAt(frames, now)), frame = frames[index];
    const chosen = session.selection[lastAt(session.selection, now)], drawing = drawings[frame.drawing - 1];
    const selected = new Set(chosen ? chosen.objects : []);
    view.show({drawing, frame, index, t: now, selected, line: lineAt(frames, index, now)});
    showBadges(frame, drawing, drawings, statesAt(now));
    showNow(frame, selected);
    drawCap(levels[Math.max(0, lastAt(levels, now))].sample);
    const caption = captions[lastAt(captions, now)];
    byId('caption').textContent = caption ? caption.text : '';
    byId('clock').textContent = now.toFixed(2) + ' / ' + duration.toFixed(1) + ' s';
    byId('slider').value = now;
    byId('slider').setAttribute('aria-valuetext', now.toFixed(1) + ' seconds of ' + duration.toFixed(1));
    strips.mark(now);
    const pointer = session.pointer[lastAt(session.pointer, now)];
    for (const c of controls) {
      const at = t => c.positions[Math.max(0, lastAt(c.positions, t, p => p[0]))];
      const [, v, h] = at(now), before = at(now - 0.3);
      boxes.show(c.name, v, h, before[1] !== v || before[2] !== h, !!pointer && pointer.on === c.name);
    }
    for (const list of [modes, commands, log.list]) list.showAt(now);
  }

  function goTo(t) {
    now = Math.min(duration, Math.max(0, t));
    show();
    if (!isPlaying) keepInAddress();
  }
  let addressTimer = 0;
  function keepInAddress() {
    clearTimeout(addressTimer);
    addressTimer = setTimeout(() => history.replaceState(null, '', '#t=' + now.toFixed(2)), 200);
  }
  function play(isOn) {
    if (isOn && now >= duration) now = 0;
    isPlaying = isOn;
    stamp = performance.now();
    byId('play').textContent = isOn ? '❚❚' : '▶';
    byId('play').setAttribute('aria-label', isOn ? 'Pause' : 'Play');
    if (isOn) requestAnimationFrame(tick); else { show(); keepInAddress(); }
  }
  function tick(time) {
    if (!isPlaying) return;
    now = Math.min(duration, now + Math.max(0, time - stamp) / 1000 * rate);
    stamp = time;
    if (now >= duration) { play(false); return; }
    show();
    requestAnimationFrame(tick);
  }
  function step(list, direction) {
    const to = list[Math.min(list.length - 1, Math.max(0, lastAt(list, now) + direction))];
    if (to) goTo(to.t);
  }

  const actions = {
    ' ': () => play(!isPlaying), ArrowLeft: () => goTo(now - 1), ArrowRight: () => goTo(now + 1),
    ',': () => step(frames, -1), '.': () => step(frames, 1), ArrowUp: () => step(captions, -1), ArrowDown: () => step(captions, 1),
    Home: () => goTo(0), End: () => goTo(duration),
  };
  document.addEventListener('keydown', e => {
    const {target} = e;
    if (e.ctrlKey || e.metaKey || e.altKey || !actions[e.key] || target.id === 'filter') return;
    if (e.key === ' ' && target.matches('button, summary, select') || e.key !== ' ' && target.matches('.lines')) return;
    e.preventDefault();
    actions[e.key]();
  });
  byId('play').addEventListener('click', () => play(!isPlaying));
  byId('speed').addEventListener('click', () => {
    rate = kRates[(kRates.indexOf(rate) + 1) % kRates.length];
    byId('speed').textContent = rate + '×';
    byId('speed').setAttribute('aria-label', 'Speed ' + rate);
  });
  byId('slider').max = duration;
  byId('slider').addEventListener('input', e => goTo(Number(e.target.value)));
  const timeOfAddress = () => Number((/[#&]t=(\d+(\.\d+)?)/.exec(location.hash) || [])[1]) || 0;
  window.addEventListener('hashchange', () => goTo(timeOfAddress()));
  lookAround(view, null);

  recordedFacts(session, drawings, duration);
  byId('marks').append(make('path', {svg: true, d: captions.map(c => 'M' + c.t / duration * 1000 + ' 1V9').join('')}));
  goTo(timeOfAddress());
  return {frames};
}

function recordedFacts(session, drawings, duration) {
  const {counts: c, result: r, check} = session, names = drawings.map(d => d.name).join(', ');
  const sum = what => session.drawings.reduce((n, d) => n + d[what], 0);
  byId('title').textContent = names + ' – session replay';
  document.title = names + ' · Orvaner session';
  const thinned = sum('segments') > sum('shownSegments') && count(sum('shownSegments')) + ' of ' + count(sum('segments')) + ' segments shown';
  byId('subtitle').textContent = [session.session, number(duration, 3) + ' s', count(sum('entities')) + ' objects', thinned]
    .filter(Boolean).join(' · ');
  addFact(count(c.deviceEvents), 'device events', !c.deviceEvents);
  addFact(count(c.frames), 'frames', !c.frames);
  addFact(number(c.framesPerSecond, 3), 'frames a second');
  addFact(count(c.typed), 'typed lines');
  if (check) addFact(count(check.explained), 'passes explained, ' + count(check.notObservable) + ' not observable, ' +
    count(check.contradicted) + ' contradicted', check.contradicted > 0);
  const fault = !r.loaded ? 'not loaded' : !r.tookEvents ? 'no events' : !r.effects ? 'nothing came of the events'
    : !r.unloaded ? 'not unloaded' : '';
  addFact(fault || 'complete', fault ? 'outcome' : 'the plug-in ' + r.effects, !!fault);
  byId('share_note').textContent = '; median ' + number(c.plugInMs.median, 2) + ', p99 ' + number(c.plugInMs.most, 2);
}
