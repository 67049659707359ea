// Runs cases one after another and writes what came of them as GoogleTest does, for scripts/test to count.
import fs from 'node:fs';

const cases = [];
export const test = (name, body) => cases.push({name, body});

export const expect = (isGood, text) => { if (!isGood) throw new Error(text); };

const escaped = text => text.replace(/&/g, '&amp;').replace(/</g, '&lt;').replace(/>/g, '&gt;').replace(/"/g, '&quot;')
  .replace(/[\x00-\x09\x0b-\x1f]/g, '?').replace(/\n/g, '&#x0A;');

// Runs those whose names hold the filter. Returns how many failed.
export async function runAll(file, filter = '') {
  const chosen = cases.filter(c => c.name.includes(filter));
  for (const c of chosen) {
    const started = Date.now();
    c.failure = await c.body().then(() => '', error => String(error.stack || error));
    console.log((c.failure ? '[  FAILED  ] ' : '[       OK ] ') + c.name + ' (' + (Date.now() - started) + ' ms)' +
      (c.failure ? '\n' + c.failure : ''));
  }
  const failed = chosen.filter(c => c.failure).length;
  const totals = `tests="${chosen.length}" failures="${failed}" disabled="0" errors="0"`;
  const lines = chosen.map(c => `    <testcase name="${c.name}" status="run" result="completed" classname="LivePage">` +
    (c.failure ? `\n      <failure message="${escaped(c.failure)}" type=""></failure>\n    ` : '') + '</testcase>');
  fs.mkdirSync(new URL('.', 'file://' + file).pathname, {recursive: true});
  fs.writeFileSync(file, ['<?xml version="1.0" encoding="UTF-8"?>', `<testsuites ${totals} name="AllTests">`,
    `  <testsuite name="LivePage" ${totals}>`, ...lines, '  </testsuite>', '</testsuites>', ''].join('\n'));
  return failed;
}
