// usage: node forms_test.mjs KSLSIM MODULES
//
// Every form of the console, as the browser ends up with it, and every step that it sends: compared with forms.txt.
// When they differ, the build folder gets forms.actual.txt. UPDATE_GOLDEN=1 records anew.
import assert from 'node:assert/strict';
import {readFileSync, writeFileSync} from 'node:fs';
import {after, before, test} from 'node:test';
import {Bench, until} from './bench.mjs';

const [kslsim, modules] = process.argv.slice(2);
const golden = new URL('forms.txt', import.meta.url);
const bench = new Bench({kslsim, topscreen: '', skin: '', modules, chromium: process.env.CHROMIUM || '/usr/bin/chromium'});
bench.display = ':64999';  // no X server has this number
// Not as a new platform has it, nor as the samples.
const STATE = {CurrentBet: 3, MinBet: 4, MaxBet: 9000000000, ShowingPaytable: 5, DemoMode: false, Instructions: ['a', 'b'],
  IntegrityCheckData: 'checking', JackpotErrorString: 'broken', ExtraData: {one: 1}, LanguageMessages: ['fr', 'x'],
  ActiveGame: {ID: 6, Name: 'Fruits', Type: 3}};
const sent = [];  // steps, which do not reach the service

before(async () => {
  await bench.startSimulator('--do', JSON.stringify({do: 'set', state: STATE}), '--do', '{"do": "add"}');
  await bench.openPage();
  await bench.page.route('**/api/do', (route) => {
    sent.push(route.request().postData());
    return route.fulfill({json: {ok: true}});
  });
});
after(() => bench.stop());

// The elements with what stands in their inputs, a tag a line.
const shown = (...places) => bench.page.evaluate((all) => all.map((place) => {
  const original = document.querySelector(place), copy = original.cloneNode(true);
  const inputs = (node) => [node, ...node.querySelectorAll('*')].filter((one) => 'value' in one);
  inputs(original).forEach((input, i) => {
    const twin = inputs(copy)[i];
    if (input.type === 'checkbox') twin.toggleAttribute('checked', input.checked);
    else if (input.tagName === 'TEXTAREA') twin.textContent = input.value;
    else if (input.tagName === 'OPTION') twin.toggleAttribute('selected', input.selected);
    else twin.setAttribute('value', input.value);
  });
  return copy.outerHTML.replaceAll('><', '>\n<');
}).join('\n'), places);

async function stepsOf(act, count) {
  const known = sent.length;
  await act();
  await until('sent', () => sent.length >= known + count);
  return sent.slice(known).join('\n');
}

async function events() {
  const {page} = bench;
  const out = [await shown('#events .head')];
  for (const id of await page.locator('#event option').evaluateAll((all) => all.map((one) => one.value))) {
    await page.selectOption('#event', id);
    out.push(`-- ${id}`, await shown('#event-tells', '#event-form'));
    for (const only of [false, true]) {
      await page.setChecked('#event-only', only);
      out.push(await stepsOf(() => page.click('#send'), 1));
    }
    await page.click('#take-state');
    out.push(await shown('#event-fields'));
    await page.uncheck('#event-only');
    out.push(await stepsOf(() => page.click('#send'), 1));
  }
  return out;
}

// Nothing filled in, and something in each of the inputs.
const FILLED = [{'fault-calls': '', 'fault-seconds': '', 'fault-ms': '', 'fault-bytes': '', 'fault-field': '',
  'fault-count': '', 'fault-status': '', 'fault-text': ''},
{'fault-calls': '3', 'fault-seconds': '0.5', 'fault-ms': '250', 'fault-bytes': '0', 'fault-field': 'a/b', 'fault-count': '7',
  'fault-status': '503', 'fault-text': 'no'}];

async function faults() {
  const {page} = bench;
  const out = [await shown('#faults')];
  const switches = await page.locator('[data-reply]').all();
  const press = async () => { for (const one of switches) out.push(await stepsOf(() => one.click(), 2)); };
  await press();
  for (const method of await page.locator('#fault-method option').evaluateAll((all) => all.map((one) => one.value))) {
    await page.selectOption('#fault-method', method);
    out.push(`-- ${method}`, await shown('#fault-field', '#fields', '#rare-method'));
    if (!['platform.state', 'game.popEvents'].includes(method)) continue;
    for (const values of FILLED) {
      for (const [id, value] of Object.entries(values)) await page.fill(`#${id}`, value);
      await press();
    }
  }
  return out;
}

test('the forms and what they send are what they were', async () => {
  await bench.page.locator('[data-reply]').first().waitFor();
  await until('state', () => bench.page.locator('.level').count());
  const actual = [...await events(), ...await faults(), ''].join('\n');
  assert.deepEqual(bench.failures, []);
  if (process.env.UPDATE_GOLDEN === '1') return writeFileSync(golden, actual);
  if (actual !== readFileSync(golden, 'utf8')) writeFileSync('forms.actual.txt', actual);
  assert.equal(actual, readFileSync(golden, 'utf8'));
});
