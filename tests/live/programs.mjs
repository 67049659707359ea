// Daemon and host with their doors open, and a browser before them.
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import {spawn} from 'node:child_process';
import {createRequire} from 'node:module';

const [, , bin, modules, source] = process.argv;
const require = createRequire(path.join(modules, 'package.json'));
const {chromium} = require('playwright-core');
export const axeSource = fs.readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');

export const sleep = ms => new Promise(done => setTimeout(done, ms));

// Waits until what is asked for is so, and returns it.
export async function until(what, ask, seconds = 15) {
  for (const end = Date.now() + seconds * 1000; Date.now() < end; await sleep(20)) {
    const answer = await ask();
    if (answer) return answer;
  }
  throw new Error('not within ' + seconds + ' s: ' + what);
}

export class Programs {
  constructor(drawing = path.join(source, 'demo/house.dxf'), wrapper = '') { Object.assign(this, {drawing, wrapper}); }
  async start() {
    this.folder = fs.mkdtempSync(path.join(os.tmpdir(), 'ov_live_'));
    const file = name => path.join(this.folder, name);
    this.daemon = this.run('ov_daemon', ['--port', '0', '--port-file', file('port'), '--record', file('record'), '--live', '--live-file', file('device')]);
    const [port, device] = await Promise.all(['port', 'device'].map(name => this.written(name)));
    this.host = this.run('acad', [this.drawing, '--module', path.join(bin, 'OVAutoCAD2019.arx'), '--out', file('out'),
      '--device-record', file('record'), '--live', '--live-file', file('page')], {OV_DEVLINK_PORT: port, OV_LIVE_DEVICE: device});
    this.address = await this.written('page');
    this.browser = await chromium.launch({executablePath: '/usr/bin/chromium', args: ['--no-sandbox', '--disable-gpu',
      '--use-angle=swiftshader', '--enable-unsafe-swiftshader', '--disable-quic', '--no-first-run', '--disable-background-networking',
      '--disable-component-update', '--disable-sync']});
  }
  // What a program writes to a file of its own when it is ready.
  written(name) {
    const file = path.join(this.folder, name);
    return until(name, () => fs.existsSync(file) && fs.readFileSync(file, 'utf8').trim());
  }
  run(program, options, environment = {}) {
    const file = path.join(bin, program), command = this.wrapper ? [this.wrapper, file + '.exe'] : [file];
    const child = spawn(command[0], [...command.slice(1), ...options], {env: {...process.env, ...environment}});
    child.text = '';
    for (const stream of [child.stdout, child.stderr]) stream.on('data', data => { child.text += data; });
    child.done = new Promise(done => child.on('close', done));
    return child;
  }

  // A page of its own, that fails the test at any error and at any fetch but its own.
  async open(address = this.address, options = {}) {
    const context = await this.browser.newContext({viewport: {width: 1280, height: 1000}, acceptDownloads: true, ...options});
    const page = await context.newPage();
    page.faults = [];
    page.on('pageerror', error => page.faults.push(String(error)));
    page.on('request', request => { if (request.url().split('#')[0] !== address && !/^(blob|data):/.test(request.url())) page.faults.push('fetched ' + request.url()); });
    await page.goto(address);
    return page;
  }
  async openLive(isDriver = true) {
    const page = await this.open();
    try {
      await page.waitForFunction(wanted => shown.frames.length && shown.deviceDriver === wanted, isDriver);
    } catch (error) {
      throw new Error([error.message, ...page.faults, await page.locator('header, #connection').allInnerTexts()].join('\n'));
    }
    return page;
  }
  record() {
    return fs.readFileSync(path.join(this.folder, 'record'), 'utf8').split('\n').filter(Boolean)
      .map(line => ({t: Number(line.split(' ')[0]), text: line.slice(line.indexOf(' ') + 1)}));
  }
  // In order, as at Ctrl-C; returns the host's exit status.
  async stop() {
    if (this.browser) await this.browser.close();
    this.host.kill('SIGINT');
    const timer = setTimeout(() => this.host.kill('SIGKILL'), 30000);
    const status = await this.host.done;
    clearTimeout(timer);
    this.daemon.kill();
    await this.daemon.done;
    fs.rmSync(this.folder, {recursive: true});
    return status;
  }
}
