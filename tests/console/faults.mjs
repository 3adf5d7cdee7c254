// The switches that spoil the service's answers, and what the top screen makes of each.
import assert from 'node:assert/strict';
import {after, describe, test} from 'node:test';
import {until} from './bench.mjs';
import {DIGITS, PLACES} from './terminal.mjs';

// What the program's log says of them; nothing comes of those that never end.
const FAILED = /Received error from \S+ -> 1 - sendInternal\(\): Connection failed/;
const ERROR = /Received error from \S+ -> /;
const SWITCHES = {refuse: ERROR, silent: null, drip: null, cut: ERROR, http500: FAILED, html: FAILED, notxml: FAILED,
  utf8: ERROR, empty: ERROR, type: ERROR, range: ERROR, i8: ERROR, large: FAILED, flood: FAILED, deep: FAILED,
  fault: /-> -4 - Out of order/, rpcfault: /-> -500 - .*Out of order/,
  body: FAILED, raw: ERROR};

export function faults(bench, terminal) {
  const {changes, checked, clientKnows, faultsOf, goodAgain, known, level, staysAt} = terminal.calls();
  const on = (name) => bench.page.locator(`[data-reply=${name}]`);
  const text = (place) => bench.page.locator(place).textContent();
  // The pot that the service has then: the page's step is on its way for a while.
  const raise = async () => {
    const pot = (await level(0)).CurrentPot + 1;
    await terminal.pot(0, pot);
    await until('raised', async () => (await level(0)).CurrentPot === pot);
    return pot;
  };

  describe('faults', () => {
    // Where one of them fails, the tests after these have a service all the same.
    after(async () => { for (const what of ['good', 'up']) await bench.step({do: what}); });

    for (const [name, line] of Object.entries(SWITCHES))
      test(`${name}: the picture stays and the log tells why, until it is switched off`, async () => {
        const {page} = bench;
        await page.selectOption('#fault-method', '*');
        await page.fill('#fault-text', 'Out of order');
        await page.selectOption('#fault-code', '-4');
        await page.fill('#fault-count', '5000');
        const before = await terminal.rest([DIGITS[0]]);
        const since = await bench.latest(), logged = bench.programLog().length;
        await on(name).click();
        await until('checked', async () => await checked(on(name)) === 'true');
        assert.equal(await text('#broken'), `all methods: ${name}`);
        await until(name, async () => await faultsOf(since, name) >= 1);
        const pot = await raise();
        if (line) {
          const then = await bench.latest();
          await until('two more', async () => await faultsOf(then, name) >= 2);
          await until('log', () => line.test(bench.programLog().slice(logged)));
        }
        await terminal.hasStayed(before, [DIGITS[0]]);
        assert.notEqual((await known())?.JackpotData[0].CurrentPot, pot);
        const mended = await bench.latest();
        await on(name).click();
        await terminal.changesFrom(before[0], 'the digits catch up', DIGITS[0]);
        await until('switched off', async () => await checked(on(name)) === 'false');
        assert.ok(await page.locator('#broken').isHidden());
        await goodAgain(mended);
        await clientKnows('the pot', (state) => state.JackpotData[0].CurrentPot === pot);
      });

    test('slow: what has happened comes late, by itself, and the digits with it', async () => {
      const {page} = bench;
      await page.fill('#fault-ms', '2500');
      const [before] = await terminal.rest([DIGITS[0]]);
      const since = await bench.latest();
      await on('slow').click();
      await until('slow', async () => await faultsOf(since, 'slow') >= 1);
      const pot = await raise();
      const told = (entry) => entry.answer?.some?.((event) => event.eventID === 110);
      await until('told', async () => (await bench.log(since)).some(told));
      const calls = (await bench.log(since)).filter((entry) => entry.method === 'game.popEvents');
      const asked = calls.filter((entry, i) => i < calls.findIndex(told) && entry.bad === 'slow').at(-1);
      assert.ok(calls.find(told).t - asked.t >= 2500);
      await clientKnows('the pot', (state) => state.JackpotData[0].CurrentPot === pot);
      await terminal.changesFrom(before, 'late digits', DIGITS[0]);
      await on('slow').click();
      await until('off', async () => await checked(on('slow')) === 'false');
      await page.fill('#fault-ms', '1000');
    });

    test('a failure that comes again and again takes one line of the calls', async () => {
      const {page} = bench;
      const rows = page.locator('#call-table tbody tr:visible', {hasText: 'spoilt: http500'});
      const listed = await rows.count();
      await on('http500').click();
      await until('times', async () => /^([5-9]|\d\d+) times$/.test(await rows.first().locator('td').nth(3).textContent()));
      assert.ok(await rows.count() <= listed + 3);
      await page.click('#all-good');
      await until('good', async () => await page.locator('#broken').isHidden());
    });

    test('missing takes a field of its own, and spoils the state that the client asks for', async () => {
      const {page} = bench;
      await page.selectOption('#fault-method', 'platform.state');
      assert.ok(await page.locator('#rare-method').isVisible());
      await page.fill('#fault-calls', '1');
      const since = await bench.latest(), logged = bench.programLog().length;
      await on('missing').click();
      await until('plan', async () => await text('#plans') === 'platform.state: missing JackpotData/0/CurrentPot, 1 calls');
      await page.click('#forget');
      await until('spoilt', async () => (await bench.log(since)).some((entry) => entry.field === 'JackpotData/0/CurrentPot'));
      await until('log', () => /Parsing of platform.state response failed/.test(bench.programLog().slice(logged)));
      await until('registered anew', async () => (await bench.get('/api/state')).clients.length === 1);
      await clientKnows('the levels', (state) => state.JackpotData.length === 4);
      await until('done', async () => await text('#plans') === '');
    });

    test('a field that is filled in is spoilt, the rest is not', async () => {
      const {page} = bench;
      await page.fill('#fault-field', 'ActiveGame/Type');
      const since = await bench.latest();
      await on('type').click();
      await until('plan', async () => /type ActiveGame\/Type, 1 calls/.test(await text('#plans')));
      await page.click('#forget');
      await until('spoilt', async () => (await bench.log(since)).some((entry) => entry.field === 'ActiveGame/Type'));
      await page.fill('#fault-field', '');
      await clientKnows('the levels', (state) => state.JackpotData.length === 4);
    });

    test('a registration that is refused', async () => {
      const {page} = bench;
      await page.selectOption('#fault-method', 'topscreen.init');
      await page.fill('#fault-calls', '');
      await page.selectOption('#fault-code', '-3');
      const logged = bench.programLog().length;
      await on('fault').click();
      await staysAt(DIGITS.slice(0, 1), async () => {
        await page.click('#forget');
        await until('log', () => /KSL: ERROR on init \[/.test(bench.programLog().slice(logged)));
        await raise();
      }, 'topscreen.init');
      await changes('the digits catch up', DIGITS[0], () => on('fault').click());
      assert.equal((await bench.get('/api/state')).clients.length, 1);
    });

    test('a text of one\'s own, with a status', async () => {
      const {page} = bench;
      await page.selectOption('#fault-method', 'game.popEvents');
      await page.fill('#fault-status', '503');
      await page.fill('#fault-text', 'Closed for today');
      await on('body').click();
      await until('body', async () => {
        const answer = await bench.answer('game.popEvents', 1);
        return answer.status === 503 && answer.text === 'Closed for today';
      });
      await on('body').click();
      await until('off', async () => await checked(on('body')) === 'false');
      await page.fill('#fault-status', '404');
    });

    test('so many calls', async () => {
      const {page} = bench;
      await page.selectOption('#fault-method', 'game.popEvents');
      assert.ok(await page.locator('#rare-method').isHidden());
      await page.fill('#fault-calls', '2');
      const since = await bench.latest();
      await on('notxml').click();
      await until('two', async () => await faultsOf(since, 'notxml') === 2);
      await goodAgain(await bench.latest());
      assert.equal(await faultsOf(since, 'notxml'), 2);
      await until('off', async () => await checked(on('notxml')) === 'false');
      await page.fill('#fault-calls', '');
    });

    test('so many seconds', async () => {
      const {page} = bench;
      await page.fill('#fault-seconds', '1.5');
      await on('html').click();
      await until('time left', async () => /game.popEvents: html, all calls, \d\.\d s left/.test(await text('#plans')));
      await until('over', async () => await text('#plans') === '');
      assert.equal(await checked(on('html')), 'false');
      await page.fill('#fault-seconds', '');
    });

    test('cut after so many bytes: none at all of the head', async () => {
      const {page} = bench;
      await page.fill('#fault-bytes', '5');
      const since = await bench.latest();
      await on('cut').click();
      await until('plan', async () => (await bench.get('/api/state')).bad['game.popEvents']?.[0]?.reply === 'cut');
      assert.equal((await bench.log(since)).find((entry) => entry.step?.do === 'bad').step.bytes, 5);
      await until('cut', async () => await faultsOf(since, 'cut') >= 1);
      await on('cut').click();
      await until('off', async () => await checked(on('cut')) === 'false');
      await page.fill('#fault-bytes', '200');
    });

    for (const keep of [true, false])
      test(`the port shut, the clients ${keep ? 'kept' : 'forgotten'}`, async () => {
        const {page} = bench;
        await page.setChecked('#keep', keep);
        await until('client', async () => (await bench.get('/api/state')).clients.length === 1);
        const [{id}] = (await bench.get('/api/state')).clients;
        const before = await terminal.rest([DIGITS[0]]);
        const logged = bench.programLog().length;
        await page.click('#down');
        await until('shut', async () => (await text('#status')).startsWith(`port shut, ${keep ? '1 client' : '0 clients'},`));
        assert.equal(await text('#broken'), 'port shut');
        assert.equal(await checked(page.locator('#down')), 'true');
        await raise();
        await until('log', () => ERROR.test(bench.programLog().slice(logged)));
        await terminal.hasStayed(before, [DIGITS[0]]);
        await page.click('#down');
        await terminal.changesFrom(before[0], 'the digits catch up', DIGITS[0]);
        await until('client', async () => (await bench.get('/api/state')).clients.length === 1);
        assert.equal((await bench.get('/api/state')).clients[0].id === id, keep);
        assert.ok(await page.locator('#broken').isHidden());
        await page.uncheck('#keep');
      });

    test('forgotten clients register anew, the picture stays', async () => {
      const [{id}] = (await bench.get('/api/state')).clients;
      await staysAt([PLACES.title, DIGITS[1]], async () => {
        await bench.page.click('#forget');
        await until('anew', async () => (await bench.get('/api/state')).clients.some((client) => client.id > id));
      });
    });

    test('everything is mended with one button', async () => {
      const {page} = bench;
      const before = await terminal.rest([DIGITS[0]]);
      await page.selectOption('#fault-method', '*');
      await on('http500').click();
      await page.selectOption('#fault-method', 'game.popEvents');
      await on('html').click();
      await page.click('#down');
      await until('told', async () => await text('#broken') === '3 faults');
      await raise();
      await terminal.hasStayed(before, [DIGITS[0]]);
      await page.click('#all-good');
      await terminal.changesFrom(before[0], 'the digits catch up', DIGITS[0]);
      const report = await bench.get('/api/state');
      assert.ok(report.listening);
      assert.deepEqual(Object.keys(report.bad), []);
      await until('client', async () => (await bench.get('/api/state')).clients.length === 1);
    });

    test('each switch tells what it does', async () => {
      const told = await bench.page.locator('#fault-switches .switches > div').allTextContents();
      assert.equal(told.length, 21);
      for (const one of told) assert.match(one, /^[a-z0-9]+\S* ?.{4,}/);
    });
  });
}
