// usage: node console_test.mjs KSLSIM TOPSCREEN SKIN MODULES
//
// The console in headless Chromium, against the real top screen on an X server of its own: each control is used as a
// person uses it, and what it did is looked for at the service, with the client, and in the live picture.
import assert from 'node:assert/strict';
import {after, before, describe, test} from 'node:test';
import {Bench, until} from './bench.mjs';
import {faults} from './faults.mjs';
import {wholePage} from './page.mjs';
import {DIGITS, NAMES, PLACES, Terminal} from './terminal.mjs';

const [kslsim, topscreen, skin, modules] = process.argv.slice(2);
const bench = new Bench({kslsim, topscreen, skin, modules, chromium: process.env.CHROMIUM || '/usr/bin/chromium'});
const terminal = new Terminal(bench);
const {changes, clientKnows, control, level, looks, pressed, send, staysAt} = terminal.calls();
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

test('the picture of the top screen is there, and the client is listed', async () => {
  await page.locator('#screen').waitFor({state: 'visible'});
  assert.equal(await page.locator('#screen').evaluate((image) => image.naturalWidth), 960);
  assert.equal(await page.locator('#screen').evaluate((image) => image.naturalHeight), 540);
  await until('client', async () => /listening, 1 client,/.test(await page.locator('#status').textContent()));
  await clientKnows('the state', (state) => state.JackpotData.length === 0);
});

describe('levels', () => {
  test('a stranger is told how to make some, and four usual ones come with one button', async () => {
    await page.getByText('There are none yet').waitFor();
    await terminal.rest([PLACES.title]);
    await terminal.remember('logo');
    await changes('the levels', PLACES.title, () => page.click('#add-house'), 0.3);
    await until('rows', async () => await page.locator('.level').count() === 4);
    assert.deepEqual((await bench.state()).JackpotData.map((one) => one.Name), NAMES);
    await clientKnows('four levels', (state) => state.JackpotData.length === 4);
    assert.ok(await page.locator('#no-levels').isHidden());
  });

  for (const [width, height] of [[1366, 768], [1280, 720], [1920, 1080]])
    test(`${width} by ${height}: nothing beside the screen, picture and wins always in sight`, async () => {
      await page.setViewportSize({width, height});
      const bottoms = () => page.evaluate(() => ['#screen', '.level:last-child .win'].flatMap((one) => {
        const box = document.querySelector(one).getBoundingClientRect();
        return [box.top, box.bottom];
      }));
      for (const where of [0, 100000]) {
        await page.evaluate((y) => scrollTo(0, y), where);
        for (const place of await bottoms()) assert.ok(place > 0 && place <= height, `${place}`);
      }
      const [whole, seen] = await page.evaluate(() =>
        [document.documentElement.scrollWidth, document.documentElement.clientWidth]);
      assert.ok(whole <= seen, `${whole} > ${seen}`);
      await page.setViewportSize({width: 1366, height: 768});
    });

  test('the digits come to rest', async () => {
    await terminal.rest([DIGITS[0]]);
    await terminal.remember('levels');
  });

  test('a pot is dragged, and the digits follow', async () => {
    const slider = control(0, 'input[type=range]');
    const since = await bench.latest();
    let pot = 0;
    await changes('pot', DIGITS[0], async () => {
      const box = await slider.boundingBox();
      await page.mouse.move(box.x + box.width * 0.25, box.y + box.height / 2);
      await page.mouse.down();
      for (let part = 0.3; part <= 0.9; part += 0.05)
        await page.mouse.move(box.x + box.width * part, box.y + box.height / 2, {steps: 5});
      await page.mouse.up();
      pot = Number(await slider.inputValue());
    });
    await until('pot', async () => (await level(0)).CurrentPot === pot);
    assert.ok(pot > 170000000);
    const values = (await bench.log(since)).filter((entry) => entry.step?.do === 'pot').map((entry) => entry.step.value);
    assert.ok(values.length >= 2, 'while it is dragged too');
    assert.deepEqual(values, [...values].sort((one, other) => one - other));
    await until('slider', async () => Number(await slider.inputValue()) === pot);
    await clientKnows('the pot', (state) => state.JackpotData[0].CurrentPot === pot);
  });

  test('a pot is set exactly, and no number is no order', async () => {
    const number = control(1, 'input[type=number]');
    await changes('pot', DIGITS[1], async () => { await number.fill('8463073'); await number.press('Enter'); });
    assert.equal((await level(1)).CurrentPot, 8463073);
    await number.fill('');
    await number.press('Enter');
    await page.locator('h1').click();
    await until('the pot again', async () => await number.inputValue() === '8463073');
    assert.equal((await level(1)).CurrentPot, 8463073);
  });

  for (const id of [0, 1, 2, 3])
    test(`win button of ${NAMES[id]}`, async () => {
      const button = control(id, '.win');
      const logged = bench.programLog().length;
      await looks('levels', PLACES.title);
      await changes('win', PLACES.title, () => button.click(), 0.5);
      assert.equal((await level(id)).Status, 'WIN');
      assert.match(bench.programLog().slice(logged), new RegExp(`LEVEL${id + 1} was won`));
      await until('pressed', async () => await pressed(button) === 'true');
      await button.click();
      await looks('levels', PLACES.title);
      assert.equal((await level(id)).Status, 'ACTIVE');
    });

  test('guests come and go', async () => {
    const pot = (await level(2)).CurrentPot;
    await changes('growth', DIGITS[2], () => control(2, '.guests').click());
    assert.ok((await level(2)).CurrentPot > pot);
    await until('pressed', async () => await pressed(control(2, '.guests')) === 'true');
    await control(2, '.guests').click();
    await until('released', async () => await pressed(control(2, '.guests')) === 'false');
    await bench.step({do: 'win', id: 2, on: false});
  });

  test('a level is added and removed, and four usual ones replace all', async () => {
    await changes('one more', DIGITS[0], () => page.click('#add-level'));
    await control(4, '.win').waitFor();
    await clientKnows('five levels', (state) => state.JackpotData.length === 5);
    await changes('one less', DIGITS[0], () => control(4, 'button:text("Remove")').click());
    await control(4, '.win').waitFor({state: 'detached'});
    await clientKnows('four levels', (state) => state.JackpotData.length === 4);
    await page.click('#add-house');
    await clientKnows('the usual pot', (state) => state.JackpotData[0]?.CurrentPot === 124837519);
    await looks('levels', DIGITS[0]);
  });
});

describe('events', () => {
  const {emblem, title, demo, integrity, error, buttons, prizes, hint} = PLACES;

  test('100: the emblem of the game that loads', async () => {
    await changes('emblem', emblem, () => send(100));
    await clientKnows('the game', (state) => state.ActiveGame.Name === 'VesperCrown' && state.IsLoading);
  });

  test('105: back to the menu', async () => {
    await send(105);
    await looks('levels', emblem);
    await clientKnows('no game', (state) => state.ActiveGame.ID === 0 && !state.IsLoading);
  });

  test('101: the emblem of the game that is ready; again, or loading again, changes nothing', async () => {
    await changes('emblem', emblem, () => send(101));
    await clientKnows('the game', (state) => state.ActiveGame.Name === 'VesperCrown' && !state.IsLoading);
    await staysAt([title, DIGITS[0]], async () => { await send(101); await send(100); await send(101); });
  });

  test('101 with another name: its emblem', async () => {
    await changes('no emblem', emblem, () => send(105));
    await page.selectOption('#event', '101');
    await page.fill('#context-ID', '12');
    await page.fill('#context-Name', 'SevenOrchards');
    await changes('emblem', emblem, () => page.click('#send'));
    await clientKnows('the game', (state) => state.ActiveGame.ID === 12 && state.ActiveGame.Name === 'SevenOrchards');
    await send(101);
  });

  test('104 and 111 without a paytable show nothing', async () => {
    await staysAt([title, DIGITS[0]], async () => { await send(104); await send(111); });
    await clientKnows('the bets', (state) => state.CurrentBet === 100 && state.MinBet === 20 && state.MaxBet === 500);
    await clientKnows('the prizes', (state) => state.ExtraData.paylines === 10);
    await bench.step({do: 'set', state: {ExtraData: {}}});
  });

  test('107: the paytable', async () => {
    await changes('paytable', title, () => send(107), 0.3);
    await clientKnows('the page', (state) => state.ShowingPaytable === 1);
  });

  test('111: the prizes of the paytable', async () => {
    await changes('prizes', prizes, () => send(111));
    await clientKnows('the prizes', (state) => state.ExtraData.paylines === 10);
  });

  test('104: the prizes follow the bet', async () => {
    await page.selectOption('#event', '104');
    await page.fill('#context-current', '300');
    await changes('prizes', prizes, () => page.click('#send'));
    await clientKnows('the bet', (state) => state.CurrentBet === 300);
  });

  test('112: the language', async () => {
    await changes('hint', hint, () => send(112));
    await clientKnows('German', (state) => state.LanguageMessages[0] === 'de');
  });

  test('109 leaves a paytable alone', () => staysAt([title, hint], () => send(109)));

  test('107: another page, and none', async () => {
    await page.selectOption('#event', '107');
    await page.fill('#context-number', '2');
    await changes('page', prizes, () => page.click('#send'));
    await page.fill('#context-number', '0');
    await page.click('#send');
    await looks('levels', title);
    await clientKnows('no page', (state) => state.ShowingPaytable === 0);
  });

  test('101 with roulette stops the drawing', async () => {
    await page.selectOption('#event', '101');
    await page.selectOption('#context-Type', 'roulette');
    await page.click('#send');
    await clientKnows('roulette', (state) => state.ActiveGame.Type === 3);
    await staysAt([DIGITS[0]], async () => {
      await terminal.pot(0, 124837520);
      await clientKnows('the pot', (state) => state.JackpotData[0].CurrentPot === 124837520);
    });
    await changes('digits', DIGITS[0], () => send(105));
    await looks('levels', emblem);
  });

  test('107 without a game shows nothing', async () => {
    await staysAt([title, emblem, DIGITS[0]], () => send(107));
    await bench.step({do: 'set', state: {ShowingPaytable: 0}});
  });

  test('109 without news shows nothing', () => staysAt([title, emblem, DIGITS[0]], () => send(109)));

  test('102: demonstration', async () => {
    await changes('demo', demo, () => send(102));
    await clientKnows('demo', (state) => state.DemoMode);
    await bench.freshPicture();
    await terminal.remember('demo');
    await page.uncheck('#context');
    await page.click('#send');
    await looks('levels', demo);
    await clientKnows('no demo', (state) => !state.DemoMode);
  });

  test('103: the integrity text; empty brings the levels back', async () => {
    await send(103);
    await looks('logo', title);
    await terminal.differs('logo', integrity);
    await clientKnows('text', (state) => state.IntegrityCheckData.startsWith('INTEGRITY'));
    await page.fill('#context', '');
    await page.click('#send');
    await looks('levels', title);
    assert.equal((await bench.state()).IntegrityCheckData, '');
  });

  test('108: the jackpot error; empty brings the levels back', async () => {
    await send(108);
    await looks('logo', title);
    await terminal.differs('logo', error);
    await clientKnows('text', (state) => state.JackpotErrorString === 'JACKPOT IS OUT OF SERVICE');
    await page.fill('#context', '');
    await page.click('#send');
    await looks('levels', title);
  });

  test('106: the buttons; none bring the levels back', async () => {
    await send(106);
    await looks('logo', title);
    await terminal.differs('logo', buttons);
    await clientKnows('texts', (state) => state.Instructions.length === 8 && state.Instructions[1] === '');
    await page.fill('#context', '');
    await page.click('#send');
    await looks('levels', title);
    await clientKnows('none', (state) => state.Instructions.length === 0);
  });

  test('110: the levels', async () => {
    await changes('digits', DIGITS[0], () => send(110));
    const levels = JSON.parse(await page.inputValue('#context'));
    assert.deepEqual(levels.map((one) => one.Name), NAMES);
    levels[0].CurrentPot += 3;
    await page.fill('#context', JSON.stringify(levels));
    await changes('digits', DIGITS[0], () => page.click('#send'));
    await clientKnows('the pot', (state) => state.JackpotData[0].CurrentPot === levels[0].CurrentPot);
    await page.click('#take-sample');
    await page.click('#send');
    await looks('levels', DIGITS[0]);
  });

  test('the form takes its context from the state, and its sample', async () => {
    await bench.step({do: 'set', state: {MinBet: 77}, silent: true});
    await page.locator('tr.differs[data-field=MinBet]').waitFor();
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
    await page.check('#event-only');
    await changes('demo', demo, () => send(102));
    await page.locator('tr.differs[data-field=DemoMode]').waitFor();
    assert.equal((await bench.state()).DemoMode, false);
    await page.uncheck('#event-only');
    await page.uncheck('#context');
    await page.click('#send');
    await page.locator('tr.differs').waitFor({state: 'detached'});
    await looks('levels', demo);
  });

  test('a context that is no JSON or no levels is said in sight, without an effect', async () => {
    await page.selectOption('#event', '110');
    await page.evaluate(() => scrollTo(0, 100000));
    await staysAt([title, DIGITS[0]], async () => {
      for (const [text, said] of [['[', /no JSON/], ['[{"Name": 1}]', /^set: .*expected a text/]]) {
        await page.fill('#context', text);
        await page.click('#send');
        await until('said', async () => said.test(await page.locator('#complaint').textContent()));
      }
    });
    assert.ok((await page.locator('#complaint').boundingBox()).y >= 0);
    await page.click('#take-state');
    await page.click('#send');
    await page.locator('#complaint').waitFor({state: 'hidden'});
  });

  test('each event tells what it does', async () => {
    const told = new Set();
    for (let id = 100; id <= 112; ++id) {
      await page.selectOption('#event', String(id));
      told.add(await page.locator('#event-tells').textContent());
    }
    assert.equal(told.size, 13);
  });
});

faults(bench, terminal);
wholePage(bench, terminal);

test('nothing was asked for elsewhere, and the page had no error of its own', () => {
  assert.ok(bench.requests.length > 100);
  assert.deepEqual(bench.requests.filter((one) => !one.startsWith(`${bench.address}/`) && !one.startsWith('blob:') &&
    !one.startsWith('data:')), []);
  assert.deepEqual(bench.failures, []);
});
