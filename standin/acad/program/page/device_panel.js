// The device's panel: what the user sets for their own hand. The daemon keeps it, and says what it is to a page that comes.

class Panel {
  constructor(drive) {
    this.drive = drive;
    this.rows = kAxisNames.map(name => {
      const slider = (verb, label, min, max, step) => {
        const value = make('b'), input = make('input', {type: 'range', min, max, step, 'aria-label': label + ' of ' + name});
        input.addEventListener('input', () => { value.textContent = input.value; drive(verb + ' ' + name + ' ' + input.value); });
        return {input, value};
      };
      const gain = slider('gain', 'Gain', -4, 4, 0.1), zone = slider('deadzone', 'Dead zone', 0, 100, 1);
      const hand = make('select', {'aria-label': 'What moves ' + name}, ...kAxisNames.map(n => make('option', {}, n)));
      hand.addEventListener('change', () => this.swap(name, hand.value));
      byId('panel_rows').append(make('span', {}, name), hand, gain.input, gain.value, zone.input, zone.value);
      return {gain, zone, hand};
    });
    byId('dominant').addEventListener('change', e => drive('dominant ' + (e.target.checked ? 'on' : 'off')));
  }
  // The axis that had the wanted one gets what this one had.
  swap(name, wanted) {
    const other = this.axes.indexOf(kAxisNames.indexOf(wanted)), own = kAxisNames.indexOf(name);
    this.drive('swap ' + name + ' ' + kAxisNames[other]);
    [this.axes[own], this.axes[other]] = [this.axes[other], this.axes[own]];
    this.rows.forEach(({hand}, i) => { hand.value = kAxisNames[this.axes[i]]; });
  }
  show({gain, deadzone, axes, dominant, rotation, zoomall}) {
    this.axes = axes;
    this.rows.forEach((row, i) => {
      row.hand.value = kAxisNames[axes[i]];
      row.gain.input.value = row.gain.value.textContent = gain[i];
      row.zone.input.value = row.zone.value.textContent = deadzone[i];
    });
    byId('dominant').checked = dominant;
    byId('rotation').value = kRotations[rotation % 10] || kRotations[0];
    byId('horizon').checked = rotation % 100 >= 10;
    byId('hover').checked = rotation >= 100;
    byId('zoom_after').checked = zoomall;
  }
}
