// Everything beside the picture: figures, badges, the view in numbers, the controls, the lists.

function addFact(value, text, isBad) {
  const b = make('b', {}, value);
  byId('facts').append(make('li', {class: isBad ? 'bad' : null}, b, make('span', {}, text)));
  return b;
}

// Badges of what the frame says, and others: names, with whether they stand out.
function showBadges(frame, drawing, drawings, others) {
  const names = frame.mode === 1 ? [['layout, flat', true]]
    : [['model', false], frame.perspective ? ['perspective', true] : ['parallel', false]];
  if (drawings.length > 1) names.unshift([drawing.name, false]);
  if (drawing.isThinned) names.push(['thinned while it moves', false]);
  names.push(...others);
  if (isNews('badges', names))
    byId('badges').replaceChildren(...names.map(([name, isOn]) => make('span', {class: isOn ? 'on' : null}, name)));
}

function showNow(frame, selected, more = []) {
  const chosen = selected.size ? selected.size > 8 ? count(selected.size) + ' objects' : [...selected].join(', ') : 'nothing';
  const rows = frame.mode === 1
    ? [['centre', coordinates(frame.centre, frame.height)], ['height', number(frame.height, 6)]]
    : [['eye', coordinates(frame.eye, frame.field[0])], ['target', coordinates(frame.target, frame.field[0])],
      ['up', coordinates(frame.up, 1)], ['field', frame.field.map(v => number(v, 6)).join(' × ')]];
  rows.push(['selected', chosen], ...more);
  if (isNews('now', rows))
    byId('now').replaceChildren(...rows.flatMap(([name, value]) => [make('dt', {}, name), make('dd', {}, value)]));
}

// The controls as boxes with rows and scroll bars where they stood. In the live page the pointer rests on one while
// the browser's pointer is over it, or after a click until another element is chosen; onPointer is called with its name.
class Controls {
  constructor(list, onPointer) {
    byId('controls_note').textContent = onPointer ? 'the cap scrolls the one under the pointer, or chosen by a click'
      : 'the pointer rests on the one with the dot';
    this.boxes = new Map();
    for (const c of list) {
      const rows = make('div', {class: 'rows'}), value = make('span', {class: 'value'});
      const bars = ['vertical', 'horizontal'].filter(way => c[way] && c[way].max > c[way].min)
        .map(way => ({way, range: c[way], thumb: make('i')}));
      for (let i = 0; i < 40; ++i) {
        const indent = c.name === 'tree' ? i * 7 % 3 * 8 : 0;
        rows.append(make('i', {style: 'width:' + (20 + i * 13 % 7 * 10) + '%;margin-left:' + indent + 'px'}));
      }
      const box = make('div', {class: 'control', 'data-name': c.name, tabindex: onPointer ? 0 : null,
        role: 'group', 'aria-label': 'Control ' + c.name},
      make('h3', {}, c.name), make('div', {class: 'inside'}, rows, ...bars.map(b => make('span', {class: 'scroll ' + b.way}, b.thumb)), value));
      const hear = (event, way, name) => box.addEventListener(event, () => {
        this[way] = name;
        onPointer(this.over || this.chosen || 'view');
      });
      if (onPointer) {
        hear('pointerenter', 'over', c.name); hear('pointerleave', 'over', null);
        hear('focus', 'chosen', c.name); hear('blur', 'chosen', null);
      }
      this.boxes.set(c.name, {box, rows, value, bars});
      byId('controls').append(box);
    }
  }
  show(name, vertical, horizontal, isMoving, hasPointer) {
    if (!isNews('control ' + name, vertical, horizontal, isMoving, hasPointer)) return;
    const c = this.boxes.get(name);
    c.box.classList.toggle('moving', isMoving);
    c.box.classList.toggle('pointed', hasPointer);
    for (const {way, range, thumb} of c.bars) {
      const all = range.max - range.min + 1, part = Math.max(0.12, Math.min(1, range.page / all));
      const at = (1 - part) * Math.min(1, ((way === 'vertical' ? vertical : horizontal) - range.min) / Math.max(1, all - range.page));
      thumb.style[way === 'vertical' ? 'height' : 'width'] = part * 100 + '%';
      thumb.style[way === 'vertical' ? 'top' : 'left'] = at * 100 + '%';
    }
    c.rows.style.transform = 'translate(' + -horizontal / 5 + 'px,' + -(vertical % 14) * 10 + 'px)';
    c.value.textContent = c.bars.some(b => b.way === 'vertical') ? vertical : vertical ? vertical + ' notches' : '';
  }
}

// A list whose entries have a time: those to come are pale, the latest is marked and kept in sight.
class TimedList {
  constructor(id, fill, onTime) {
    Object.assign(this, {element: byId(id), fill, onTime, entries: [], nodes: [], shown: null});
  }
  add(entries) {
    const {element} = this, isAtEnd = element.scrollTop + element.clientHeight >= element.scrollHeight - 8;
    for (const e of entries) {
      const node = make('li', {class: e.kind || null});
      this.fill(node, e);
      if (this.onTime && e.t !== undefined) node.addEventListener('click', () => this.onTime(e.t));
      this.entries.push(e);
      this.nodes.push(node);
      element.append(node);
    }
    if (!this.onTime) {
      while (this.nodes.length > 1500) { this.nodes.shift().remove(); this.entries.shift(); }
      if (isAtEnd) element.scrollTop = element.scrollHeight;
    }
  }
  clear() { this.entries = []; this.nodes = []; this.shown = null; this.element.replaceChildren(); }
  showAt(t) {
    const at = lastAt(this.entries, t);
    if (at === this.shown) return;
    this.shown = at;
    this.nodes.forEach((node, i) => { node.classList.toggle('future', i > at); node.classList.toggle('current', i === at); });
    const {element} = this;
    element.scrollTop = at >= 0 ? this.nodes[at].offsetTop - element.clientHeight / 2 : 0;
  }
}

// What was typed and printed, in order of time.
const commandLines = ({commands, printed}) => [...commands.map(c => ({...c, kind: 'typed'})), ...printed].sort((a, b) => a.t - b.t);
const fillWithTime = (node, e) => node.append(make('i', {}, e.t.toFixed(1)), visibleText(e.text));

// The log, with those lines alone that hold the filter's text.
class Log {
  constructor(unixStart, onTime) {
    this.start = unixStart % 86400;
    this.lines = [];
    this.time = 0;
    this.list = new TimedList('log', (node, e) => { node.textContent = e.text; }, onTime);
    byId('filter').addEventListener('input', () => { this.list.clear(); this.fill(this.lines); });
  }
  // The log's own times are those of a day; the session may reach into the next.
  entry(text) {
    const hit = /^(\d\d):(\d\d):(\d\d\.\d+)\|/.exec(text);
    if (hit) {
      const t = Number(hit[1]) * 3600 + Number(hit[2]) * 60 + Number(hit[3]) - this.start;
      this.time = Math.max(0, t < -43200 ? t + 86400 : t);
    }
    return {t: this.time, text, kind: /\|ERR\|/.test(text) ? 'error' : ''};
  }
  add(lines) {
    const entries = lines.map(text => this.entry(text));
    this.lines.push(...entries);
    this.fill(entries);
  }
  fill(entries) {
    const wanted = byId('filter').value.toLowerCase(), fits = e => e.text.toLowerCase().includes(wanted);
    this.list.add(entries.filter(fits).slice(-5000));
    byId('log_count').textContent = (wanted ? count(this.lines.filter(fits).length) + ' of ' : '') + count(this.lines.length) + ' lines';
  }
}
