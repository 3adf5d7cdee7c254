// The state and the calls, the keyboard, and what the page shows while a part of the terminal is away.
import assert from 'node:assert/strict';
import {describe, test} from 'node:test';
import {until} from './bench.mjs';
import {DIGITS, PLACES} from './terminal.mjs';

const FOCUSABLE = 'button, input, select, textarea, a[href], [tabindex="0"]';

export function wholePage(bench, terminal) {
  const {changes, checked, clientKnows, control, differs, known, level, looks, pressed, staysAt} = terminal.calls();
  const text = (place) => bench.page.locator(place).first().textContent();
  const calls = () => bench.page.locator('#call-table tbody tr:visible');

  describe('state and calls', () => {
    test('the state is that of the client which is chosen', async () => {
      const {page} = bench;
      await until('state', async () => (await known())?.JackpotData.length === 4);
      await page.locator('tr.differs').waitFor({state: 'detached'});
      assert.equal(await page.locator('#state-table tbody tr').count(), 13);
      const cells = page.locator('tr[data-field=JackpotData] td');
      assert.match(await cells.first().textContent(), /"Name":"GOLD"/);
      assert.equal(await cells.nth(1).textContent(), 'same');
      await bench.step({do: 'set', state: {MinBet: 33}, silent: true});
      await page.locator('tr.differs[data-field=MinBet]').waitFor();
      assert.equal(await page.locator('tr[data-field=MinBet] td').nth(1).textContent(), '33');
      await bench.step({do: 'set', state: {MinBet: 20}});
      await page.locator('tr.differs').waitFor({state: 'detached'});
    });

    test('another client is listed and can be chosen; its polls do not push the calls out', async () => {
      const {page} = bench;
      const id = Number(/<i4>(\d+)<\/i4>|<int>(\d+)<\/int>/.exec(
        (await bench.call('topscreen.init', 'Another', '1.5.0')).replace(/[\s\S]*<name>ID<\/name>/, '')).slice(1).find(Boolean));
      await page.locator(`#client option[value="${id}"]`).waitFor({state: 'attached'});
      await page.selectOption('#client', String(id));
      await until('nothing known', async () => await text('tr[data-field=MinBet] td') === '-');
      for (let i = 0; i < 220; ++i) await bench.call('game.popEvents', id);
      await bench.call('game.bye', id);
      await until('listed', async () => await calls().filter({hasText: 'game.bye'}).count() === 1);
      assert.ok(await calls().filter({hasText: 'step set'}).count() > 0);
      await until('the other is chosen', async () => await text('tr[data-field=MinBet] td') === '20');
    });

    test('calls are listed with their times, events by their names', async () => {
      const {page} = bench;
      await bench.step({do: 'set', state: {MinBet: 20}});
      const row = calls().filter({hasText: '104 T_BET_LIMITS {"current":'}).first();
      await row.waitFor();
      assert.match(await row.locator('td').first().textContent(), /^\d\d:\d\d:\d\d\.\d\d\d$/);
      assert.match(await row.locator('td').nth(3).textContent(), /^\d+\.\d\d ms$/);
      assert.ok((await row.boundingBox()).height < 30, 'on one line');
      await page.check('#whole');
      await row.getByText('"context":{"current":{"$i8":').waitFor();
      await page.uncheck('#whole');
    });

    test('empty polls on demand', async () => {
      const {page} = bench;
      const polls = page.locator('#call-table tbody tr[data-poll=true]:visible');
      assert.equal(await polls.count(), 0);
      await page.check('#polls');
      await until('polls', async () => await polls.count() > 2);
      await page.uncheck('#polls');
      assert.equal(await polls.count(), 0);
    });
  });

  describe('keyboard', () => {
    test('number keys start and end a win, also beside a box that is ticked', async () => {
      const {page} = bench;
      await page.locator('#keep').focus();
      await changes('win', PLACES.title, () => page.keyboard.press('4'), 0.5);
      assert.equal((await level(3)).Status, 'WIN');
      await until('pressed', async () => await pressed(control(3, '.win')) === 'true');
      await page.keyboard.press('4');
      await looks('levels', PLACES.title);
      assert.equal((await level(3)).Status, 'ACTIVE');
    });

    test('a key that is held down is one key', async () => {
      const {page} = bench;
      await page.locator('h1').click();
      const since = await bench.latest();
      for (let i = 0; i < 4; ++i) await page.keyboard.down('2');
      await page.keyboard.up('2');
      await until('win', async () => (await level(1)).Status === 'WIN');
      await until('pressed', async () => await pressed(control(1, '.win')) === 'true');
      await page.keyboard.press('2');
      await until('end', async () => (await level(1)).Status === 'ACTIVE');
      assert.equal((await bench.log(since)).filter((entry) => entry.step?.do === 'win').length, 2);
    });

    test('a number in a field is a number', () => staysAt([PLACES.title], async () => {
      await bench.page.fill('#fault-text', '');
      await bench.page.focus('#fault-text');
      await bench.page.keyboard.press('4');
      assert.equal(await bench.page.inputValue('#fault-text'), '4');
      assert.equal((await level(3)).Status, 'ACTIVE');
    }));

    test('every control is reached by Tab in the order of the page, shows it, and lets go again', async () => {
      const {page} = bench;
      const wanted = await page.evaluate((focusable) => {
        const all = [...document.querySelectorAll(focusable)].filter((one) => one.offsetParent !== null);
        all.forEach((one, index) => { one.dataset.order = index; });
        scrollTo(0, 0);
        return all.length;
      }, FOCUSABLE);
      assert.ok(wanted > 60);
      const walk = async (key, times) => {
        const reached = [];
        for (let i = 0; i < times; ++i) {
          await page.keyboard.press(key);
          const [order, outline, box] = await page.evaluate(() => [document.activeElement.dataset.order,
            getComputedStyle(document.activeElement).outlineStyle, document.activeElement.getBoundingClientRect().top]);
          reached.push(Number(order));
          assert.notEqual(outline, 'none', `control ${order}`);
          assert.ok(box >= 0 && box < 768, `control ${order} is out of sight: ${box}`);
        }
        return reached;
      };
      await page.locator('h1').click();
      const forth = await walk('Tab', wanted);
      assert.deepEqual(forth, Array.from({length: wanted}, (_, index) => index));
      assert.deepEqual(await walk('Shift+Tab', wanted - 1), forth.reverse().slice(1));
    });

    test('Space and Enter work the buttons, arrows a pot', async () => {
      const {page} = bench;
      await page.focus('#add-level');
      await page.keyboard.press('Enter');
      await control(4, '.win').waitFor();
      await control(4, 'button:text("Remove")').focus();
      await page.keyboard.press('Space');
      await control(4, '.win').waitFor({state: 'detached'});
      await control(0, 'input[type=range]').focus();
      const pot = (await level(0)).CurrentPot;
      await changes('digits', DIGITS[0], () => page.keyboard.press('PageUp'));
      assert.ok((await level(0)).CurrentPot > pot);
    });

    test('an event is chosen and sent, a fault switched, a section gone to', async () => {
      const {page} = bench;
      await page.focus('#event');
      await page.keyboard.type('107');
      await page.keyboard.press('Tab');
      await page.focus('#context-number');
      await page.keyboard.press('Control+A');
      await page.keyboard.type('3');
      await page.keyboard.press('Enter');
      await clientKnows('the page', (state) => state.ShowingPaytable === 3);
      await page.selectOption('#fault-method', 'game.popEvents');
      const html = page.locator('[data-reply=html]');
      for (const is of ['true', 'false']) {
        await html.focus();
        await page.keyboard.press('Space');
        await until(is, async () => await checked(html) === is);
      }
      await page.focus('nav a[href="#calls"]');
      await page.keyboard.press('Enter');
      await until('calls', async () => (await page.locator('#calls').boundingBox()).y < 768);
      await bench.step({do: 'set', state: {ShowingPaytable: 0}});
    });
  });

  describe('picture', () => {
    test('it stands still when it is not live', async () => {
      const {page} = bench;
      await terminal.rest([DIGITS[0]]);
      await page.uncheck('#live');
      const source = () => page.locator('#screen').getAttribute('src');
      let last = '';
      await until('still', async () => {
        const before = last;
        last = await source();
        await new Promise((done) => setTimeout(done, 400));
        return before === last;
      });
      const since = await bench.latest();
      const pot = (await level(0)).CurrentPot + 1000000;
      await terminal.pot(0, pot);
      await clientKnows('the pot', (state) => state.JackpotData[0].CurrentPot === pot);
      await until('three polls', async () => (await bench.log(since)).filter((entry) =>
        entry.method === 'game.popEvents').length >= 5);
      assert.equal(await source(), last);
      const before = await bench.picture(DIGITS[0]);
      await page.check('#live');
      await until('live', async () => !before.equals(await bench.picture(DIGITS[0])));
    });

    test('without the top screen the page says so; it comes back with it, first waiting for the service', async () => {
      const {page} = bench;
      await bench.end(bench.program, 'SIGKILL');
      await until('said', async () => /No window is shown\. .*when the top screen runs/.test(await text('#no-screen')));
      assert.ok(await page.locator('#screen').isHidden());
      await page.click('#down');
      await until('shut', async () => await text('#broken') === 'port shut');
      bench.startProgram();
      await page.locator('#screen').waitFor({state: 'visible'});
      assert.equal(await text('#no-screen'), '');
      await differs('levels', PLACES.title);
      await differs('logo', PLACES.circle);
      const loader = await bench.picture(PLACES.circle);
      await until('it moves', async () => !loader.equals(await bench.picture(PLACES.circle)));
      await page.click('#down');
      await looks('levels', PLACES.title);
      await until('client', async () => /listening, 1 client,/.test(await text('#status')));
    });

    test('without the simulator the page says so and recovers; the top screen too', async () => {
      const {page} = bench;
      await bench.end(bench.simulator, 'SIGTERM');
      await page.locator('#away').waitFor({state: 'visible'});
      assert.equal(await text('#status'), 'away');
      await control(3, '.win').click();
      await until('told', async () => await text('#complaint') === 'win: not done, the simulator does not answer.');
      const last = await bench.picture(PLACES.title);
      assert.ok(last.some((one) => one > 100), 'the last picture is kept');
      await bench.startSimulator();
      await page.locator('#away').waitFor({state: 'hidden'});
      await page.getByText('There are none yet').waitFor();
      await until('client', async () => /listening, 1 client,/.test(await text('#status')));
      await until('calls from the start', async () => await calls().filter({hasText: 'topscreen.init'}).count() > 0);
      assert.equal(await calls().filter({hasText: 'step set'}).count(), 0);
      await looks('logo', PLACES.title);
      await page.click('#add-house');
      await page.locator('#complaint').waitFor({state: 'hidden'});
      await looks('levels', PLACES.title);
      await looks('levels', DIGITS[0]);
    });
  });

  test('other pages do not get in', () => staysAt([PLACES.title], async () => {
    const foreign = await fetch(`${bench.address}/api/do`, {method: 'POST', headers: {Origin: 'http://elsewhere.example'},
      body: '{"do": "win", "id": 0}'});
    assert.equal(foreign.status, 403);
  }));
}
