// usage: node console_test.mjs KSLSIM TOPSCREEN SKIN MODULES
//
// The console in headless Chromium, against the real top screen on an X server of its own: each control is used as a
// person uses it, and what it did is looked for at the service, with the client, and in the live picture.
import assert from 'node:assert/strict';
import {after, before, describe, test} from 'node:test';
import {Bench, difference, until} from './bench.mjs';

const [kslsim, topscreen, skin, modules] = process.argv.slice(2);
const bench = new Bench({kslsim, topscreen, skin, modules, chromium: process.env.CHROMIUM || '/usr/bin/chromium'});
let page;

before(async () => {
  try {
    await bench.start();
  } catch (error) {
    for (const name of ['xvfb', 'kslsim', 'topscreen']) console.log(name, bench.printed(name));
    throw error;
  }
  page = bench.page;
});
after(() => bench.stop());

const CHANGED = 150;  // of 192 by 108 points

async function quiet() {
  let last = await bench.picture();
  await until('the picture stands still', async () => {
    await new Promise((done) => setTimeout(done, 700));
    const now = await bench.picture();
    const still = difference(last, now) < 5;
    last = now;
    return still;
  });
  return last;
}

// Does something that has to show on the top screen.
async function changesPicture(what, act) {
  const before = await quiet();
  await act();
  await until(`the picture changes: ${what}`, async () => difference(before, await bench.picture()) > CHANGED);
}

const level = async (id) => (await bench.state()).JackpotData.find((one) => one.Id === id);
const control = (id, name) => page.locator(`.level[data-id="${id}"] ${name}`);
const known = async () => bench.get(`/api/known?client=${(await bench.get('/api/state')).clients.at(-1)?.id ?? 0}`);
const pressed = (locator) => locator.getAttribute('aria-pressed');
const checked = (locator) => locator.getAttribute('aria-checked');

async function clientKnows(what, condition) {
  await until(`the client knows ${what}`, async () => { const state = await known(); return state && condition(state); });
}

test('the picture of the top screen is there, and the client is listed', async () => {
  await page.locator('#screen').waitFor({state: 'visible'});
  assert.equal(await page.locator('#screen').evaluate((image) => image.naturalWidth), 960);
  assert.equal(await page.locator('#screen').evaluate((image) => image.naturalHeight), 540);
  await until('client', async () => /listening, 1 client,/.test(await page.locator('#status').textContent()));
  await clientKnows('the state', (state) => state.JackpotData.length === 0);
});

test('a laptop shows the page without scrolling sideways', async () => {
  const [whole, seen] = await page.evaluate(() =>
    [document.documentElement.scrollWidth, document.documentElement.clientWidth]);
  assert.ok(whole <= seen, `${whole} > ${seen}`);
});

describe('levels', () => {
  test('four usual levels come with one button', async () => {
    await changesPicture('four levels', () => page.click('#add-house'));
    await until('rows', async () => await page.locator('.level').count() === 4);
    assert.deepEqual((await bench.state()).JackpotData.map((one) => one.Name), ['GOLD', 'SILVER', 'BRONZE', 'EMERALD']);
    await clientKnows('four levels', (state) => state.JackpotData.length === 4);
  });

  test('a level is added and removed', async () => {
    await page.click('#add-level');
    await control(4, '.win').waitFor();
    await control(4, 'button:text("Remove")').click();
    await control(4, '.win').waitFor({state: 'detached'});
    assert.equal((await bench.state()).JackpotData.length, 4);
  });

  test('a pot is dragged', async () => {
    const slider = control(0, 'input[type=range]');
    await changesPicture('pot', async () => {
      const box = await slider.boundingBox();
      await page.mouse.move(box.x + box.width * 0.25, box.y + box.height / 2);
      await page.mouse.down();
      for (let part = 0.3; part <= 0.9; part += 0.1) await page.mouse.move(box.x + box.width * part, box.y + box.height / 2);
      await page.mouse.up();
    });
    await until('pot', async () => (await level(0)).CurrentPot > 170000000);
    const pots = new Set((await bench.log(0)).filter((entry) => entry.step?.do === 'pot').map((entry) => entry.step.value));
    assert.ok(pots.size >= 1);
    const pot = (await level(0)).CurrentPot;
    assert.equal(Number(await slider.inputValue()), pot);
    await clientKnows('the pot', (state) => state.JackpotData[0].CurrentPot === pot);
  });

  test('a pot is set exactly', async () => {
    await changesPicture('pot', async () => {
      await control(1, 'input[type=number]').fill('11111111');
      await control(1, 'input[type=number]').press('Enter');
    });
    assert.equal((await level(1)).CurrentPot, 11111111);
  });

  for (const id of [0, 1, 2, 3])
    test(`win button of level ${id}`, async () => {
      const button = control(id, '.win');
      await changesPicture('win', () => button.click());
      assert.equal((await level(id)).Status, 'WIN');
      await until('pressed', async () => await pressed(button) === 'true');
      await button.click();
      await until('end', async () => (await level(id)).Status === 'ACTIVE');
    });

  test('guests come and go', async () => {
    const pot = (await level(2)).CurrentPot;
    await control(2, '.guests').click();
    await until('growth', async () => (await level(2)).CurrentPot > pot);
    await until('pressed', async () => await pressed(control(2, '.guests')) === 'true');
    await control(2, '.guests').click();
    await until('released', async () => await pressed(control(2, '.guests')) === 'false');
  });
});

describe('events', () => {
  const EVENTS = [
    [100, (state) => state.ActiveGame.Name === 'Fruits' && state.IsLoading],
    [101, (state) => state.ActiveGame.Name === 'Fruits' && !state.IsLoading],
    [104, (state) => state.CurrentBet === 100 && state.MinBet === 20 && state.MaxBet === 500],
    [111, (state) => state.ExtraData.paylines === 20],
    [107, (state) => state.ShowingPaytable === 1],
    [105, (state) => state.ActiveGame.ID === 0 && !state.IsLoading],
    [102, (state) => state.DemoMode],
    [103, (state) => state.IntegrityCheckData.startsWith('Integrity')],
    [106, (state) => state.Instructions.length === 3],
    [108, (state) => state.JackpotErrorString.startsWith('Jackpot')],
    [109, () => true],
    [110, (state) => state.JackpotData.length === 4 && state.JackpotData[1].CurrentPot === 8463072],
    [112, (state) => state.LanguageMessages.length === 5]];
  // Those that show by themselves, and how the form is made empty again.
  const SEEN = {102: () => page.uncheck('#context'), 103: () => page.fill('#context', ''),
    106: () => page.fill('#context', ''), 108: () => page.fill('#context', '')};

  for (const [id, holds] of EVENTS)
    test(`event ${id}`, async () => {
      await page.selectOption('#event', String(id));
      const since = await bench.latest();
      const whole = id in SEEN ? await quiet() : null;
      if (id in SEEN) await changesPicture(`event ${id}`, () => page.click('#send'));
      else {
        // A panel that is called back while it still fades out stays away.
        await quiet();
        await page.click('#send');
      }
      await until('event on the wire', async () => (await bench.log(since)).some((entry) =>
        entry.method === 'game.popEvents' && entry.answer?.some?.((event) => event.eventID === id)));
      await clientKnows(`event ${id}`, holds);
      assert.ok(holds(await bench.state()));
      if (!(id in SEEN)) return;
      await changesPicture(`event ${id} with nothing`, async () => { await SEEN[id](); await page.click('#send'); });
      assert.ok(!holds(await bench.state()));
      // A text in the place of the levels takes them away; they come back with the next data.
      await until('the levels are back', async () => {
        await bench.step({do: 'set', state: {JackpotData: (await bench.state()).JackpotData}});
        await new Promise((done) => setTimeout(done, 1000));
        return difference(whole, await bench.picture()) < CHANGED;
      });
    });

  test('the form takes its context from the state, and its sample', async () => {
    await bench.step({do: 'set', state: {MinBet: 77}, silent: true});
    await until('page', async () => /77/.test(await page.locator('tr[data-field=MinBet]').textContent()));
    await page.selectOption('#event', '104');
    assert.equal(await page.inputValue('#context-min'), '20');
    await page.click('#take-state');
    assert.equal(await page.inputValue('#context-min'), '77');
    await page.click('#take-sample');
    assert.equal(await page.inputValue('#context-min'), '20');
    await page.click('#send');
    await clientKnows('the bets', (state) => state.MinBet === 20);
  });

  test('an event alone leaves the state alone, and the table shows the difference', async () => {
    await page.selectOption('#event', '107');
    await page.fill('#context-number', '3');
    await page.check('#event-only');
    await page.click('#send');
    await page.locator('tr.differs[data-field=ShowingPaytable]').waitFor();
    assert.equal((await bench.state()).ShowingPaytable, 1);
    await page.uncheck('#event-only');
    await page.fill('#context-number', '0');
    await page.click('#send');
    await page.locator('tr.differs').waitFor({state: 'detached'});
  });

  test('a context that is no JSON is said', async () => {
    await page.selectOption('#event', '110');
    await page.fill('#context', '[');
    await page.click('#send');
    assert.match(await page.locator('#complaint').textContent(), /no JSON/);
    await page.fill('#context', '[{"Name": 1}]');
    await page.click('#send');
    await until('complaint', async () => /expected a text/.test(await page.locator('#complaint').textContent()));
    await page.click('#take-state');
    await page.click('#send');
    await page.locator('#complaint').waitFor({state: 'hidden'});
  });
});

describe('faults', () => {
  const badCalls = async (since, name) =>
    (await bench.log(since)).filter((entry) => entry.bad === name).length;

  const POLLS = ['refuse', 'silent', 'http500', 'html', 'notxml', 'cut', 'type', 'empty', 'fault', 'rpcfault', 'large',
    'flood', 'deep', 'i8', 'utf8', 'range', 'body', 'raw', 'slow', 'drip'];
  for (const name of POLLS)
    test(`switch ${name}`, async () => {
      await page.selectOption('#fault-method', 'game.popEvents');
      // Each of its answers is megabytes.
      await page.fill('#fault-calls', name === 'flood' ? '1' : '');
      await page.selectOption('#fault-code', '-4');
      const button = page.locator(`[data-reply=${name}]`);
      const since = await bench.latest();
      await button.click();
      await until(name, async () => await badCalls(since, name) >= 1);
      if (name !== 'flood') {
        await until('checked', async () => await checked(button) === 'true');
        await button.click();
      }
      await until('switched off', async () => await checked(button) === 'false');
      const after = await bench.latest();
      await until('good again', async () => (await bench.log(after)).some((entry) =>
        entry.method === 'game.popEvents' && 'answer' in entry && !entry.answer?.faultCode));
    });

  test('switch missing needs a field, and spoils the state that the client asks for', async () => {
    await page.selectOption('#fault-method', 'platform.state');
    await page.fill('#fault-calls', '1');
    await page.fill('#fault-field', '');
    await page.locator('[data-reply=missing]').click();
    await until('complaint', async () => /needs a "field"/.test(await page.locator('#complaint').textContent()));
    await page.fill('#fault-field', 'JackpotData/0/CurrentPot');
    const since = await bench.latest();
    await page.locator('[data-reply=missing]').click();
    await until('plan', async () => /platform.state: missing JackpotData\/0\/CurrentPot, 1 calls/.test(
      await page.locator('#plans').textContent()));
    await page.click('#forget');
    await until('spoilt', async () => (await bench.log(since)).some((entry) => entry.field === 'JackpotData/0/CurrentPot'));
    await until('registered anew', async () => (await bench.get('/api/state')).clients.length === 1);
  });

  test('a fault ends with its seconds', async () => {
    await page.selectOption('#fault-method', 'game.popEvents');
    await page.fill('#fault-calls', '');
    await page.fill('#fault-seconds', '1.5');
    await page.locator('[data-reply=html]').click();
    await until('time left', async () => /game.popEvents: html, all calls, \d\.\d s left/.test(
      await page.locator('#plans').textContent()));
    await until('over', async () => await page.locator('#plans').textContent() === '');
    await page.fill('#fault-seconds', '');
  });

  test('the port is shut and opened', async () => {
    await page.check('#keep');
    await page.click('#down');
    await until('shut', async () => /port shut, 1 client/.test(await page.locator('#status').textContent()));
    await until('switch', async () => await checked(page.locator('#down')) === 'true');
    const since = await bench.latest();
    await page.click('#down');
    await until('open', async () => (await bench.log(since)).some((entry) => entry.method === 'game.popEvents'));
    await page.uncheck('#keep');
  });

  test('all good ends every fault', async () => {
    await page.selectOption('#fault-method', '*');
    await page.locator('[data-reply=http500]').click();
    await page.click('#down');
    await until('shut', async () => !(await bench.get('/api/state')).listening);
    await page.click('#all-good');
    await until('good', async () => {
      const report = await bench.get('/api/state');
      return report.listening && Object.keys(report.bad).length === 0;
    });
    await until('client', async () => (await bench.get('/api/state')).clients.length === 1);
  });
});

describe('state and calls', () => {
  test('the state is that of the client which is chosen', async () => {
    await until('state', async () => (await known())?.JackpotData.length === 4);
    assert.equal(await page.locator('#state-table tbody tr').count(), 13);
    const cells = page.locator('tr[data-field=JackpotData] td');
    await until('client', async () => /"Name":"GOLD"/.test(await cells.first().textContent()));
    await until('service', async () => await cells.nth(1).textContent() === 'same');
    await bench.step({do: 'set', state: {MinBet: 33}, silent: true});
    await page.locator('tr.differs[data-field=MinBet]').waitFor();
    await bench.step({do: 'set', state: {MinBet: 20}});
    await page.locator('tr.differs').waitFor({state: 'detached'});
  });

  test('calls are listed with their times, empty polls on demand', async () => {
    const rows = page.locator('#call-table tbody tr:visible');
    await until('rows', async () => await rows.count() > 5);
    const first = page.locator('#call-table tbody tr:visible', {hasText: 'topscreen.init'}).first();
    assert.match(await first.locator('td').first().textContent(), /^\d\d:\d\d:\d\d\.\d\d\d$/);
    assert.match(await first.locator('td').nth(3).textContent(), /^\d+\.\d\d ms$/);
    const polls = page.locator('#call-table tbody tr[data-poll=true]:visible');
    assert.equal(await polls.count(), 0);
    await page.check('#polls');
    await until('polls', async () => await polls.count() > 0);
    await page.uncheck('#polls');
    assert.equal(await polls.count(), 0);
  });
});

describe('keyboard', () => {
  test('number keys start and end a win', async () => {
    await page.locator('h1').click();
    await changesPicture('win', () => page.keyboard.press('4'));
    assert.equal((await level(3)).Status, 'WIN');
    await until('pressed', async () => await pressed(control(3, '.win')) === 'true');
    await page.keyboard.press('4');
    await until('end', async () => (await level(3)).Status === 'ACTIVE');
  });

  test('a number in a field is a number', async () => {
    await page.focus('#fault-text');
    await page.keyboard.press('4');
    assert.equal((await level(3)).Status, 'ACTIVE');
  });

  test('every control is reached by Tab and shows it', async () => {
    const wanted = await page.evaluate(() => {
      const all = [...document.querySelectorAll('button, input, select, textarea, a[href]')]
        .filter((one) => one.offsetParent !== null);
      all.forEach((one, index) => { one.dataset.order = index; });
      return all.length;
    });
    await page.locator('h1').click();
    const reached = new Set();
    for (let i = 0; i < wanted + 5; ++i) {
      await page.keyboard.press('Tab');
      const [order, outline] = await page.evaluate(() =>
        [document.activeElement.dataset.order, getComputedStyle(document.activeElement).outlineStyle]);
      if (order === undefined) continue;
      reached.add(order);
      assert.notEqual(outline, 'none', `control ${order}`);
    }
    assert.equal(reached.size, wanted);
  });

  test('Space and Enter work the buttons, arrows a pot', async () => {
    await page.focus('#add-level');
    await page.keyboard.press('Enter');
    await control(4, '.win').waitFor();
    await control(4, 'input[type=range]').focus();
    const pot = (await level(4)).CurrentPot;
    await page.keyboard.press('PageUp');
    await until('pot', async () => (await level(4)).CurrentPot > pot);
    await control(4, 'button:text("Remove")').focus();
    await page.keyboard.press('Space');
    await control(4, '.win').waitFor({state: 'detached'});
  });
});

describe('picture', () => {
  test('it stands still when it is not live', async () => {
    await page.uncheck('#live');
    await new Promise((done) => setTimeout(done, 1000));
    const source = await page.locator('#screen').getAttribute('src');
    await new Promise((done) => setTimeout(done, 1000));
    assert.equal(await page.locator('#screen').getAttribute('src'), source);
    await page.check('#live');
    await until('live', async () => await page.locator('#screen').getAttribute('src') !== source);
  });

  test('without the top screen the page says so', async () => {
    bench.program.kill('SIGKILL');
    await until('said', async () => /No window is shown/.test(await page.locator('#no-screen').textContent()));
    assert.ok(await page.locator('#screen').isHidden());
  });
});

test('other pages do not get in', async () => {
  const foreign = await fetch(`${bench.address}/api/do`, {method: 'POST', headers: {Origin: 'http://elsewhere.example'},
    body: '{"do": "forget"}'});
  assert.equal(foreign.status, 403);
});

test('the page had no error of its own', () => assert.deepEqual(bench.failures, []));
