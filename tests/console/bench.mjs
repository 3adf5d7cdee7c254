// The terminal as a whole for one test: an X server, the simulator, the top screen and a browser with its console.
import {spawn} from 'node:child_process';
import {existsSync, mkdtempSync, mkdirSync, openSync, readFileSync, readdirSync, rmSync} from 'node:fs';
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
    [this.kslsim, this.topscreen, this.skin, this.modules] =
      [kslsim, topscreen, skin, modules].map((one) => path.resolve(one));
    Object.assign(this, {chromium, children: [], failures: [], requests: []});
    this.folder = mkdtempSync(path.join(tmpdir(), 'kslsim-console-'));
  }

  launch(name, program, args, env, cwd) {
    const out = openSync(path.join(this.folder, `${name}.txt`), 'w');
    const child = spawn(program, args, {stdio: ['ignore', out, out], cwd,
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
    await this.startSimulator();
    this.home = path.join(this.folder, 'home/');
    mkdirSync(this.home);
    this.startProgram();
    await this.openPage();
  }

  async openPage() {
    const {chromium} = createRequire(path.join(this.modules, 'x.js'))('playwright-core');
    this.browser = await chromium.launch({executablePath: this.chromium, args: ['--no-sandbox']});
    this.page = await this.browser.newPage({viewport: {width: 1366, height: 768}});
    this.page.setDefaultTimeout(BOUND);
    this.page.on('pageerror', (error) => this.failures.push(error));
    this.page.on('request', (request) => this.requests.push(request.url()));
    await this.page.goto(this.address);
  }

  // On any free ports the first time, on the same ones from then on.
  async startSimulator(...more) {
    this.simulator = this.launch('kslsim', this.kslsim, ['--port', this.port ?? '0', '--control-port',
      this.controlPort ?? '0', '--display', this.display, ...more], {});
    [, this.port, this.controlPort] =
      await until('ports', () => /^(\d+)\ncontrol (\d+)\n/.exec(this.printed('kslsim')));
    this.address = `http://127.0.0.1:${this.controlPort}`;
  }

  // In the folder of the skin: it looks for the pictures of the games where it is started.
  startProgram() {
    this.program = this.launch('topscreen', this.topscreen, [`127.0.0.1:${this.port}`], {
      DISPLAY: this.display, WORKING_DIR: path.join(this.skin, '/'), HOME_DIR: this.home,
      LOG_FILENAME: path.join(this.folder, 'topscreen.log'), SDL_RENDER_DRIVER: 'software',
      SDL_FRAMEBUFFER_ACCELERATION: '0', SDL_AUDIODRIVER: 'dummy', FPS: '20'}, this.skin);
  }

  async end(child, signal) {
    if (child.exitCode !== null || child.signalCode !== null) return;
    const ended = new Promise((done) => child.once('exit', done));
    child.kill(signal);
    await Promise.race([ended, sleep(5000).then(() => child.kill('SIGKILL'))]);
  }

  async stop() {
    if (this.browser) await this.browser.close();
    for (const child of this.children.reverse()) await this.end(child, child === this.program ? 'SIGKILL' : 'SIGTERM');
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

  programLog() {
    return readdirSync(this.folder).filter((name) => /^topscreen_.*\.log$/.test(name)).sort()
      .map((name) => readFileSync(path.join(this.folder, name), 'utf8')).join('');
  }

  // A call as another client makes it; the text of the answer.
  async call(method, ...parameters) { return (await this.answer(method, ...parameters)).text; }

  async answer(method, ...parameters) {
    const values = parameters.map((one) => `<param><value>${typeof one === 'number' ? `<int>${one}</int>`
      : `<string>${one}</string>`}</value></param>`);
    const body = `<?xml version="1.0"?><methodCall><methodName>${method}</methodName><params>${values.join('')}` +
      '</params></methodCall>';
    const answer = await fetch(`http://127.0.0.1:${this.port}/KSL`, {method: 'POST', body,
      headers: {'Content-Type': 'text/xml'}});
    return {status: answer.status, text: await answer.text()};
  }

  // What the page shows of the top screen in this part of its picture of 960 by 540 points, grey.
  async picture([x, y, width, height]) {
    const text = await this.page.evaluate(async ([x, y, width, height]) => {
      const image = document.getElementById('screen');
      // One that is not decoded yet would be drawn as nothing; where the next comes meanwhile, that one is meant.
      for (let ready = false; !ready && image.getAttribute('src');)
        ready = await image.decode().then(() => true, () => new Promise((done) => setTimeout(done, 5)));
      const canvas = new OffscreenCanvas(width, height).getContext('2d', {willReadFrequently: true});
      canvas.drawImage(image, x, y, width, height, 0, 0, width, height);
      const data = canvas.getImageData(0, 0, width, height).data;
      let out = '';
      for (let i = 0; i < data.length; i += 4) out += String.fromCharCode((data[i] + data[i + 1] + data[i + 2]) / 3);
      return btoa(out);
    }, [x, y, width, height]);
    return Buffer.from(text, 'base64');
  }

  // Until the page shows another picture. The second one from now on has been taken after the call.
  async nextPicture() {
    const source = () => this.page.locator('#screen').getAttribute('src');
    const before = await source();
    await until('another picture', async () => await source() !== before);
    // Where the next one comes meanwhile, the decoding of this one ends with an error; it has been shown by then.
    await this.page.locator('#screen').evaluate((image) => image.decode().catch(() => {}));
  }

  async freshPicture() {
    await this.nextPicture();
    await this.nextPicture();
  }
}

// The part of the points that differ clearly.
export function difference(one, other) {
  let different = 0;
  for (let i = 0; i < one.length; ++i) if (Math.abs(one[i] - other[i]) > 24) ++different;
  return different / one.length;
}
