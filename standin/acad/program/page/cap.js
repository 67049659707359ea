// The cap as the sample pushes, lifts, tilts and twists it. Full deflection is the same for every session.

const kFull = 350;   // device counts
const kCurve = 2.5;  // fine near rest, strong at the end
const countsOf = r => Math.sign(r) * Math.round(kFull * Math.abs(r) ** kCurve);
const shareOf = counts => Math.sign(counts) * Math.min(1, Math.abs(counts) / kFull) ** (1 / kCurve);

const axisRows = kAxisNames.map((name, i) => {
  const bar = make('i', {class: kAxisColours[i]}), value = make('b', {}, '0');
  byId('axes').append(make('dt', {}, name), make('dd', {}, make('span', {class: 'bar'}, bar), value));
  return {bar, value};
});
byId('cap_note').textContent = 'full scale ' + kFull + ' counts';

function drawCap(sample) {
  if (!isNews('cap', sample)) return;
  const [x, y, z, a, b, c] = sample.map(shareOf);
  byId('cap').classList.toggle('active', sample.some(v => v !== 0));
  byId('cap_body').setAttribute('transform', 'translate(' + (120 + x * 30) + ' ' + (120 - y * 26) + ') rotate(' + -c * 25 +
    ') scale(' + (1 + z * 0.18) + ') translate(-120 -120)');
  byId('cap_top').setAttribute('transform', 'translate(120 96) scale(1 ' + (1 + a * 0.45) + ') translate(-120 -96)');
  byId('cap_turn').setAttribute('transform', 'translate(120 96) scale(1 0.4) rotate(' + -b * 60 + ')');
  axisRows.forEach(({bar, value}, i) => {
    const share = shareOf(sample[i]) * 50;
    bar.style.left = 50 + Math.min(0, share) + '%';
    bar.style.width = Math.abs(share) + '%';
    value.textContent = sample[i];
  });
}
