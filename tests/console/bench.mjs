// The terminal as a whole for one test: an X server, the simulator, the top screen and a browser with its console.
import {spawn} from 'node:child_process';
import {existsSync, mkdtempSync, mkdirSync, openSync, readFileSync, rmSync} from 'node:fs';
import {createRequire} from 'node:module';
import {tmpdir} from 'node:os';
import path from 'node:path';

const BOUND = 60000;
const PACE = 50;

export const sleep = (ms) => new Promise((done) => setTimeout(done, ms));

// Until the condition gives something true, which is returned.
export async function until(what, condition, bound = BOUND) {
  const end = Date.now() + bound;
  for (;;) {
    const result = await condition();
    if (result) return result;
    if (Date.now() > end) throw new Error(`did not happen: ${what}`);
    await sleep(PACE);
  }
}

export class Bench {
  constructor({kslsim, topscreen, skin, modules, chromium}) {
    Object.assign(this, {kslsim, topscreen, skin, modules, chromium, children: [], failures: []});
    this.folder = mkdtempSync(path.join(tmpdir(), 'kslsim-console-'));
  }

  launch(name, program, args, env) {
    const out = openSync(path.join(this.folder, `${name}.txt`), 'w');
    const child = spawn(program, args, {stdio: ['ignore', out, out],
      env: {...process.env, DISABLE_REBOOT_ON_EXIT: '1', no_proxy: '127.0.0.1', ...env}});
    child.on('error', (error) => this.failures.push(error));
    this.children.push(child);
    return child;
  }

  printed(name) { return readFileSync(path.join(this.folder, `${name}.txt`), 'utf8'); }

  async start() {
    do this.display = `:${1000 + Math.floor(Math.random() * 8000)}`;
    while (existsSync(`/tmp/.X${this.display.slice(1)}-lock`));
    this.launch('xvfb', 'Xvfb', [this.display, '-screen', '0', '1920x1080x24', '-nolisten', 'tcp', '-noreset'], {});
    await until('X server', () => existsSync(`/tmp/.X11-unix/X${this.display.slice(1)}`));
    this.launch('kslsim', this.kslsim, ['--port', '0', '--control-port', '0', '--display', this.display,
      '--do', '{"do": "init", "set": {"Locale": "C.UTF-8"}}'], {});
    const lines = await until('ports', () => /^(\d+)\ncontrol (\d+)\n/.exec(this.printed('kslsim')));
    [this.port, this.address] = [lines[1], `http://127.0.0.1:${lines[2]}`];
    const home = path.join(this.folder, 'home/');
    mkdirSync(home);
    this.program = this.launch('topscreen', this.topscreen, [`127.0.0.1:${this.port}`], {
      DISPLAY: this.display, WORKING_DIR: path.join(this.skin, '/'), HOME_DIR: home,
      LOG_FILENAME: path.join(this.folder, 'topscreen.log'), SDL_RENDER_DRIVER: 'software',
      SDL_FRAMEBUFFER_ACCELERATION: '0', SDL_AUDIODRIVER: 'dummy', FPS: '20'});
    const {chromium} = createRequire(path.join(this.modules, 'x.js'))('playwright-core');
    this.browser = await chromium.launch({executablePath: this.chromium, args: ['--no-sandbox']});
    this.page = await this.browser.newPage({viewport: {width: 1366, height: 768}});
    this.page.setDefaultTimeout(BOUND);
    this.page.on('pageerror', (error) => this.failures.push(error));
    await this.page.goto(this.address);
  }

  async stop() {
    if (this.browser) await this.browser.close();
    for (const child of this.children.reverse()) {
      if (child.exitCode !== null || child.signalCode !== null) continue;
      const ended = new Promise((done) => child.once('exit', done));
      child.kill(child === this.program ? 'SIGKILL' : 'SIGTERM');
      await Promise.race([ended, sleep(5000).then(() => child.kill('SIGKILL'))]);
    }
    rmSync(this.folder, {recursive: true, force: true});
  }

  async get(where) { return (await fetch(this.address + where)).json(); }
  async state() { return (await this.get('/api/state')).state; }
  async step(what) {
    const answer = await fetch(`${this.address}/api/do`, {method: 'POST', body: JSON.stringify(what)});
    if (!answer.ok) throw new Error(await answer.text());
  }
  async log(since) { return this.get(`/api/log?since=${since}`); }
  async latest() { return (await this.log(0)).pop()?.n ?? 0; }

  // The picture in the page, small and grey.
  async picture() {
    return this.page.locator('#screen').evaluate((image) => {
      const canvas = Object.assign(document.createElement('canvas'), {width: 192, height: 108});
      const context = canvas.getContext('2d');
      context.drawImage(image, 0, 0, canvas.width, canvas.height);
      const data = context.getImageData(0, 0, canvas.width, canvas.height).data;
      return Array.from({length: data.length / 4}, (_, i) => (data[4 * i] + data[4 * i + 1] + data[4 * i + 2]) / 3);
    });
  }
}

// How many of the points differ clearly.
export function difference(one, other) {
  return one.filter((value, i) => Math.abs(value - other[i]) > 8).length;
}
