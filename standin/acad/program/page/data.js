'use strict';
// What is shown: the data of a session, embedded in the page or sent while it runs, and what all of the page uses.

const byId = id => document.getElementById(id);
const embedded = JSON.parse(byId('session').textContent);
const isLive = !!embedded.live;
document.body.classList.add(isLive ? 'is_live' : 'is_recorded');

const kAxisNames = ['x', 'y', 'z', 'a', 'b', 'c'];
const kAxisColours = ['x', 'y', 'z', 'x', 'y', 'z'];
const kRest = [0, 0, 0, 0, 0, 0];

// Index of the last entry at or before t, -1 if there is none. Entries are in order of time.
function lastAt(list, t, timeOf = e => e.t) {
  let low = 0, high = list.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (timeOf(list[middle]) <= t) low = middle + 1; else high = middle;
  }
  return low - 1;
}

const number = (v, digits = 4) => Math.abs(v) < 1e-9 ? '0' : String(Number(v.toPrecision(digits)));
// Coordinates to a ten-thousandth of the picture's size, wherever in the world it is.
function coordinates(values, size) {
  const order = Math.floor(Math.log10(Math.abs(size)));
  const places = Number.isFinite(order) ? Math.min(12, Math.max(0, 4 - order)) : 4;
  return values.map(v => v.toFixed(places).replace(/^-(?=[0.]*$)/, '')).join(', '); // no -0
}
const count = n => n.toLocaleString('en');

// Makes an element; what is null in `more` is left out.
function make(tag, more = {}, ...children) {
  const e = document.createElementNS(more.svg ? 'http://www.w3.org/2000/svg' : 'http://www.w3.org/1999/xhtml', tag);
  for (const [name, value] of Object.entries(more)) {
    if (name === 'svg' || value === null) continue;
    if (name.startsWith('on')) e.addEventListener(name.slice(2), value); else e.setAttribute(name, value);
  }
  e.append(...children);
  return e;
}

// A colour of the style sheet, for what CSS doesn't reach; it changes with the scheme.
const paint = name => getComputedStyle(document.documentElement).getPropertyValue('--' + name).trim();
const colourScheme = matchMedia('(prefers-color-scheme: dark)');

// Whether a thing is to be shown in another state than when this was asked last.
const shownStates = new Map();
function isNews(thing, ...state) {
  const text = JSON.stringify(state), isNew = shownStates.get(thing) !== text;
  shownStates.set(thing, text);
  return isNew;
}

// Lines of the command line as a person reads them.
const visibleText = text => text.replace(/\x1b/g, '⎋').replace(/\n+$/, ' ⏎').replace(/^\n+/, '');
