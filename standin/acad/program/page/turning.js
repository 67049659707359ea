// The line that the view turns about, worked out from the views of two frames: the camera's motion from one to the
// other is a turn about an axis, with a shift along it at most.

const kLongestGap = 0.25; // seconds; frames further apart aren't of one movement
const kLeastTurn = 2e-4;  // radian

const minus = (a, b) => a.map((v, i) => v - b[i]);
const dot = (a, b) => a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
const cross = (a, b) => [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]];
const unit = a => { const l = Math.hypot(...a) || 1; return a.map(v => v / l); };

function basisOf(frame) {
  const towards = unit(minus(frame.eye, frame.target)), right = unit(cross(frame.up, towards));
  return [right, cross(towards, right), towards];
}

// Returns {point, direction} in coordinates of the drawing, null if the view didn't turn.
function turningLine(before, after) {
  if (!before || !after || before.drawing !== after.drawing || before.mode === 1 || after.mode === 1 ||
    after.t - before.t > kLongestGap) return null;
  const a = basisOf(before), b = basisOf(after);
  // The turn as a matrix: the sum of b's vectors times a's.
  const m = [0, 1, 2].map(i => [0, 1, 2].map(k => a.reduce((sum, v, n) => sum + b[n][i] * v[k], 0)));
  const twist = [m[2][1] - m[1][2], m[0][2] - m[2][0], m[1][0] - m[0][1]];
  const angle = Math.atan2(Math.hypot(...twist), m[0][0] + m[1][1] + m[2][2] - 1);
  if (!(angle > kLeastTurn)) return null;
  const direction = unit(twist);
  const moved = minus(after.eye, before.eye);
  const across = minus(moved, direction.map(v => v * dot(moved, direction)));
  const aside = cross(direction, across), cot = 1 / Math.tan(angle / 2);
  return {direction, angle, point: before.eye.map((v, i) => v + (across[i] + cot * aside[i]) / 2)};
}

// The samples of frames as levels in time: at rest where no frame follows soon.
function levelsOf(frames, end) {
  return frames.flatMap((frame, i) => {
    const next = i + 1 < frames.length ? frames[i + 1].t : end;
    return next - frame.t > kLongestGap ? [frame, {t: frame.t + 0.05, sample: kRest}] : [frame];
  });
}

// A view at rest still shows what it turned about last, for a moment.
function lineAt(frames, index, t) {
  return index > 0 && t - frames[index].t < kLongestGap ? turningLine(frames[index - 1], frames[index]) : null;
}
