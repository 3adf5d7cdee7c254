// What the tests of the console say of the terminal: the places of its picture, and what the client knows.
import assert from 'node:assert/strict';
import {difference, until} from './bench.mjs';

export const NAMES = ['GOLD', 'SILVER', 'BRONZE', 'EMERALD'];

// In the picture of 960 by 540, as the demo skin has them. Between the sparkles that wander over the frames all of
// these stand still but for what the tests do.
export const PLACES = {whole: [0, 0, 960, 540], title: [338, 15, 286, 53], emblem: [600, 90, 350, 330],
  demo: [800, 0, 160, 110], integrity: [300, 70, 360, 35], error: [300, 430, 360, 50], buttons: [20, 440, 900, 60],
  prizes: [235, 150, 120, 120], hint: [300, 508, 370, 30], circle: [415, 205, 130, 130]};
export const DIGITS = [[61, 122, 310, 42], [85, 231, 310, 42], [109, 340, 300, 42], [133, 449, 310, 42]];

const SAME = 0.002, CHANGED = 0.004;

export class Terminal {
  constructor(bench) {
    this.bench = bench;
    this.looks = {};  // whole pictures by name
  }

  // All of it as plain functions.
  calls() {
    const out = {};
    for (const name of Object.getOwnPropertyNames(Terminal.prototype))
      if (!['constructor', 'calls'].includes(name)) out[name] = this[name].bind(this);
    out.looks = this.looksAs.bind(this);
    return out;
  }

  // ---- Picture

  async remember(name) { this.looks[name] = await this.bench.picture(PLACES.whole); }

  partOf(name, [x, y, width, height]) {
    const rows = [];
    for (let row = y; row < y + height; ++row) rows.push(this.looks[name].subarray(row * 960 + x, row * 960 + x + width));
    return Buffer.concat(rows);
  }

  // The place comes to look as it did when the look was taken.
  async looksAs(name, place) {
    const due = this.partOf(name, place);
    let last = 0;
    await until(`it looks like "${name}" at ${place}`, async () =>
      (last = difference(due, await this.bench.picture(place))) <= SAME).catch((error) => {
      throw new Error(`${error.message}: ${last}`);
    });
  }

  async differs(name, place) {
    const then = this.partOf(name, place);
    await until(`it differs from "${name}" at ${place}`, async () =>
      difference(then, await this.bench.picture(place)) > CHANGED);
  }

  async pictures(places) {
    const out = [];
    for (const place of places) out.push(await this.bench.picture(place));
    return out;
  }

  async polls(times, method = 'game.popEvents') {
    const since = await this.bench.latest();
    await until(`${times} calls of ${method}`, async () => (await this.bench.log(since)).filter((entry) =>
      entry.method === method).length >= times);
  }

  // Until the places show the same for as long as the client, which has no time for a picture either while the machine
  // is busy with others, asks for events three times; what they show.
  async rest(places) {
    let last = await this.pictures(places);
    return until(`it rests at ${places.join('; ')}`, async () => {
      const before = last;
      await this.polls(3);
      await this.bench.nextPicture();
      last = await this.pictures(places);
      return last.every((one, i) => difference(before[i], one) <= SAME) && last;
    });
  }

  // Until so many pictures after the first show the same at each of the places; the last one's.
  async standStill(places, pictures) {
    let last = await this.pictures(places), same = 0;
    return until(`it stands still at ${places.join('; ')}`, async () => {
      await this.bench.nextPicture();
      const now = await this.pictures(places);
      same = now.every((one, i) => difference(last[i], one) <= SAME) ? same + 1 : 0;
      last = now;
      return same >= pictures && now;
    });
  }

  // Does something that has to show at this place.
  async changes(what, place, act, part) {
    const [before] = await this.standStill([place], 1);
    await act();
    await this.changesFrom(before, what, place, part);
  }

  async changesFrom(before, what, place, part) {
    await until(`the picture changes: ${what}`, async () =>
      difference(before, await this.bench.picture(place)) > (part ?? CHANGED));
  }

  // Does something that must not show at these places, for as long as the client makes three calls more.
  async staysAt(places, act, method = 'game.popEvents') {
    const before = await this.rest(places);
    await act();
    await this.polls(3, method);
    await this.hasStayed(before, places);
  }

  async hasStayed(before, places) {
    await this.bench.freshPicture();
    for (const [i, one] of (await this.pictures(places)).entries())
      assert.ok(difference(before[i], one) <= SAME, `changed at ${places[i]}`);
  }

  // ---- Page

  control(id, name) { return this.bench.page.locator(`.level[data-id="${id}"] ${name}`); }
  pressed(locator) { return locator.getAttribute('aria-pressed'); }
  checked(locator) { return locator.getAttribute('aria-checked'); }

  async pot(id, value) {
    await this.control(id, 'input[type=number]').fill(String(value));
    await this.control(id, 'input[type=number]').press('Enter');
  }

  // Sends the event with its sample, and sees it on the wire.
  async send(id) {
    const since = await this.bench.latest();
    await this.bench.page.selectOption('#event', '112');
    await this.bench.page.selectOption('#event', String(id));
    await this.bench.page.click('#send');
    await until(`event ${id} on the wire`, async () => (await this.bench.log(since)).some((entry) =>
      entry.method === 'game.popEvents' && entry.answer?.some?.((event) => event.eventID === id)));
  }

  // ---- Service and client

  async level(id) { return (await this.bench.state()).JackpotData.find((one) => one.Id === id); }

  async known() {
    const clients = (await this.bench.get('/api/state')).clients;
    return this.bench.get(`/api/known?client=${clients.at(-1)?.id ?? 0}`);
  }

  async clientKnows(what, condition) {
    await until(`the client knows ${what}`, async () => {
      const state = await this.known();
      return state && condition(state);
    });
  }

  async faultsOf(since, name) { return (await this.bench.log(since)).filter((entry) => entry.bad === name).length; }

  async goodAgain(since) {
    await until('good again', async () => (await this.bench.log(since)).some((entry) =>
      entry.method === 'game.popEvents' && 'answer' in entry && !entry.answer?.faultCode));
  }
}
