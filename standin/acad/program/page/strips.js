// What happens over time, drawn by uPlot: six axes, frame times, the plug-in's part.

document.head.append(make('style', {}, libraries.uPlotStyle));

const kFullScales = [350, 1000, 3500, 32767]; // device counts; the first that holds every sample
const kFrameMs = 1000 / 60;

class Strips {
  // onTime is called with the time that was clicked; null if time can't be chosen.
  constructor(onTime) {
    Object.assign(this, {onTime, from: 0, to: 1, full: kFullScales[0], top: 1, now: 0, keys: []});
    const axes = i => kAxisNames.slice(i, i + 3).map((label, n) => ({label, stroke: () => paint(kAxisColours[n]), width: 1.5,
      paths: libraries.uPlot.paths.stepped({align: 1}), points: {show: false}}));
    const counts = {height: 96, distr: 4, asinh: 20, range: () => [-this.full, this.full],
      splits: () => [-this.full, -50, 0, 50, this.full]};
    const dots = (label, ink) => [{label, stroke: () => paint(ink), paths: () => null,
      points: {show: true, size: 2.5, width: 0, fill: () => paint(ink)}}];
    this.charts = {
      pushes: this.chart('pushes', {...counts, series: axes(0)}),
      turns: this.chart('turns', {...counts, series: axes(3)}),
      pace: this.chart('pace', {height: 70, range: () => [0, 40], splits: () => [0, 16.7, 33.3], series: dots('ms', 'select')}),
      share: this.chart('share', {height: 70, range: () => [0, this.top], splits: () => [0, this.top / 2, this.top],
        values: v => v.map(ms => number(ms, 2) + (ms ? ' = ' + number(ms / kFrameMs * 100, 2) + ' %' : '')),
        series: dots('ms', 'accent')}),
    };
    colourScheme.addEventListener('change', () => { for (const chart of Object.values(this.charts)) chart.redraw(false, true); });
  }

  chart(id, {height, distr = 1, asinh, range, splits, values = v => v.map(String), series}) {
    const element = byId(id), line = {stroke: () => paint('edge'), width: 1};
    const axis = {stroke: () => paint('soft'), grid: line, ticks: {...line, size: 4}, font: '11px system-ui'};
    const chart = new libraries.uPlot({
      width: Math.max(50, element.clientWidth), height, series: [{}, ...series], legend: {show: false},
      padding: [id === 'pushes' ? 16 : 8, 16, 0, 0],
      scales: {x: {time: false, range: () => [this.from, this.to]}, y: {distr, asinh, range}},
      cursor: {drag: {x: false, y: false}, points: {show: false}, y: false},
      axes: [{...axis, gap: 2, size: 24, values: (u, v) => v.map(t => number(t, 6) + ' s')},
        {...axis, gap: 3, size: 84, splits, filter: (u, all) => all, values: (u, v) => values(v)}],
      hooks: {draw: [u => { this.placeMark(u); if (id === 'pushes') this.drawKeys(u); }]},
    }, [[0], ...series.map(() => [null])], element);
    if (this.onTime) {
      chart.mark = make('div', {class: 'time_mark'});
      chart.over.append(chart.mark);
      const follow = e => { if (e.buttons & 1) this.onTime(chart.posToVal(e.clientX - chart.over.getBoundingClientRect().left, 'x')); };
      chart.over.addEventListener('pointerdown', e => { chart.over.setPointerCapture(e.pointerId); follow(e); });
      chart.over.addEventListener('pointermove', follow);
    }
    new ResizeObserver(() => {
      if (element.clientWidth && element.clientWidth !== chart.width) chart.setSize({width: element.clientWidth, height});
    }).observe(element);
    return chart;
  }

  // Keys and views, by name, above the pushes.
  drawKeys(u) {
    const g = u.ctx, ratio = devicePixelRatio || 1;
    g.save();
    g.fillStyle = g.strokeStyle = paint('select');
    g.font = 10 * ratio + 'px system-ui'; g.textAlign = 'center'; g.textBaseline = 'middle'; g.lineWidth = ratio;
    let free = 0;
    for (const e of this.keys) {
      if (e.t < this.from || e.t > this.to) continue;
      const x = u.valToPos(e.t, 'x', true), half = g.measureText(e.name).width / 2 + 2 * ratio;
      g.globalAlpha = 0.4;
      g.beginPath(); g.moveTo(x, u.bbox.top); g.lineTo(x, u.bbox.top + u.bbox.height); g.stroke();
      g.globalAlpha = 1;
      if (x - half > free) { g.fillText(e.name, x, u.bbox.top - 8 * ratio); free = x + half; }
    }
    g.restore();
  }

  // samples [{t, sample}], one at least, a level holds until the next; frames [{t, ms, plugInMs}]; all in order of time. `turn`
  // counts the calls that draw one strip each; null draws all.
  fill(samples, frames, from, to, turn = null) {
    this.from = from;
    this.to = Math.max(to, from + 0.001);
    const most = samples.reduce((m, s) => Math.max(m, ...s.sample.map(Math.abs)), 0);
    this.full = kFullScales.find(f => f >= most) || kFullScales[3];
    const longest = frames.reduce((m, f) => Math.max(m, f.plugInMs || 0), 0.05);
    this.top = [0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 500].find(ms => ms >= longest) || longest;
    const held = [{t: from, sample: kRest}, ...samples, {t: to, sample: samples.at(-1).sample}]
      .filter((s, i, all) => !i || s.t >= all[i - 1].t);
    const times = held.map(s => s.t), axis = i => held.map(s => s.sample[i]), frameTimes = frames.map(f => f.t);
    const rows = {
      pushes: () => [times, axis(0), axis(1), axis(2)],
      turns: () => [times, axis(3), axis(4), axis(5)],
      pace: () => [frameTimes, frames.map(f => f.ms > 0 ? Math.min(f.ms, 40) : null)],
      share: () => [frameTimes, frames.map(f => f.plugInMs > 0 ? f.plugInMs : null)],
    };
    Object.entries(rows).forEach(([name, data], i, all) => { if (turn === null || turn % all.length === i) this.charts[name].setData(data()); });
  }

  mark(t) {
    this.now = t;
    for (const chart of Object.values(this.charts)) this.placeMark(chart);
  }
  placeMark(chart) {
    if (chart.mark) chart.mark.style.transform = 'translateX(' + chart.valToPos(this.now, 'x') + 'px)';
  }
}
