'use strict';
// The page is one view of what the simulator tells; everything that it does is a step by /api/do.

const byId = (id) => document.getElementById(id);
let forms = null;    // /api/forms
let report = null;   // /api/state
let lastEntry = 0;   // "n" of the newest log entry that is shown
const CALLS_SHOWN = 200;
const CHARACTERS_SHOWN = 160;

function complain(text) {
  byId('complaint').hidden = !text;
  byId('complaint').textContent = text || '';
}

async function step(what) {
  const answer = await fetch('/api/do', {method: 'POST', body: JSON.stringify(what),
    headers: {'Content-Type': 'application/json'}});
  const result = await answer.json();
  complain(answer.ok ? '' : `${what.do}: ${result.error}`);
  return answer.ok;
}

async function steps(list) {
  for (const one of list) if (!await step(one)) return;
  await refresh();
}

function element(tag, properties, ...children) {
  const out = Object.assign(document.createElement(tag), properties);
  out.append(...children);
  return out;
}

// ---- Levels

const levelRows = new Map();  // by "Id"
const DRAG_MILLISECONDS = 100;

function potRange(level) {
  const most = level.MaxPot > level.MinPot ? level.MaxPot : Math.max(level.CurrentPot * 2, 100000);
  return [Math.min(level.MinPot, level.CurrentPot), Math.max(most, level.CurrentPot)];
}

function makeLevelRow(id) {
  const label = (what) => `${what} of level ${id}`;
  const row = {name: element('span', {className: 'name'}),
    slider: element('input', {type: 'range', ariaLabel: label('Pot')}),
    number: element('input', {type: 'number', ariaLabel: label('Exact pot')}),
    win: element('button', {type: 'button', textContent: 'Win', className: 'win'}),
    guests: element('button', {type: 'button', textContent: 'Guests', className: 'guests'}),
    remove: element('button', {type: 'button', textContent: 'Remove', ariaLabel: label('Remove')})};
  let sent = 0, timer = 0;
  const sendPot = (value) => { sent = Date.now(); step({do: 'pot', id, value: Math.round(Number(value))}); };
  row.slider.oninput = () => {
    row.number.value = row.slider.value;
    clearTimeout(timer);
    timer = setTimeout(() => sendPot(row.slider.value), Math.max(0, DRAG_MILLISECONDS - (Date.now() - sent)));
  };
  row.slider.onpointerdown = () => { row.dragged = true; };
  row.slider.onchange = () => { row.dragged = false; };
  row.slider.onblur = () => { row.dragged = false; };
  row.number.onchange = () => steps([{do: 'pot', id, value: Math.round(Number(row.number.value))}]);
  row.win.onclick = () => toggleWin(id);
  row.guests.onclick = () => steps([row.guests.ariaPressed === 'true'
    ? {do: 'stop', id} : {do: 'play', id, seed: id + 1}]);
  row.remove.onclick = () => steps([{do: 'remove', id}]);
  row.element = element('div', {className: 'level'}, row.name, row.slider, row.number, row.win, row.guests, row.remove);
  row.element.dataset.id = id;
  return row;
}

function toggleWin(id) {
  const level = report.state.JackpotData.find((one) => one.Id === id);
  if (level) steps([{do: 'win', id, on: level.Status !== 'WIN'}]);
}

function showLevels() {
  const levels = report.state.JackpotData;
  const list = byId('level-list');
  for (const [id, row] of levelRows)
    if (!levels.some((level) => level.Id === id)) { row.element.remove(); levelRows.delete(id); }
  levels.forEach((level, index) => {
    if (!levelRows.has(level.Id)) levelRows.set(level.Id, makeLevelRow(level.Id));
    const row = levelRows.get(level.Id);
    if (list.children[index] !== row.element) list.insertBefore(row.element, list.children[index] || null);
    row.name.textContent = `${index + 1}  ${level.Name}`;
    row.name.title = `Id ${level.Id}, ${level.Status}, ${level.NumWins} wins`;
    const [least, most] = potRange(level);
    if (!row.dragged) Object.assign(row.slider, {min: least, max: most, value: level.CurrentPot});
    if (document.activeElement !== row.number && !row.dragged) row.number.value = level.CurrentPot;
    row.win.ariaPressed = String(level.Status === 'WIN');
    row.guests.ariaPressed = String(report.moving.includes(level.Id));
  });
}

document.addEventListener('keydown', (event) => {
  if (event.ctrlKey || event.altKey || event.metaKey || /^(INPUT|SELECT|TEXTAREA)$/.test(event.target.tagName)) return;
  if (!report || !/^[1-9]$/.test(event.key)) return;
  const level = report.state.JackpotData[Number(event.key) - 1];
  if (level) toggleWin(level.Id);
});

// ---- Events

const chosenEvent = () => forms.events.find((event) => event.id === Number(byId('event').value));

// What the state holds of the event's context.
function contextFromState(event) {
  const state = report.state;
  if (event.form === 'bets') return {current: state.CurrentBet, min: state.MinBet, max: state.MaxBet};
  return event.form === 'nothing' ? null : state[event.fields[0]];
}

function labelled(text, input) { return element('label', {}, text, input); }

// The inputs of one form: shows a context, reads it back.
function makeEventForm(event) {
  const fields = byId('event-fields');
  const number = (id, text) => {
    const input = element('input', {type: 'number', id: `context-${id}`, required: true});
    fields.append(labelled(text, input));
    return input;
  };
  const area = (text) => {
    const input = element('textarea', {id: 'context'});
    fields.append(labelled(text, input));
    return input;
  };
  fields.replaceChildren();
  switch (event.form) {
    case 'game': {
      const id = number('ID', 'ID');
      const name = element('input', {id: 'context-Name'});
      const type = element('select', {id: 'context-Type'}, ...[['1', 'menu'], ['2', 'top screen'], ['3', 'roulette'],
        ['4', 'slot game']].map(([value, text]) => element('option', {value, textContent: text})));
      fields.append(labelled('Name', name), labelled('Type', type));
      return {show: (game) => { id.value = game.ID; name.value = game.Name; type.value = String(game.Type); },
        read: () => ({ID: Number(id.value), Name: name.value, Type: Number(type.value)})};
    }
    case 'flag': {
      const input = element('input', {type: 'checkbox', id: 'context'});
      fields.append(element('label', {className: 'inline'}, input, 'on'));
      return {show: (value) => { input.checked = value; }, read: () => input.checked};
    }
    case 'text': {
      const input = area('Text');
      return {show: (value) => { input.value = value; }, read: () => input.value};
    }
    case 'texts': {
      const input = area('Texts, one a line');
      return {show: (value) => { input.value = value.join('\n'); },
        read: () => input.value === '' ? [] : input.value.split('\n')};
    }
    case 'number': {
      const input = number('number', 'Number');
      return {show: (value) => { input.value = value; }, read: () => Number(input.value)};
    }
    case 'bets': {
      const inputs = {current: number('current', 'Current'), min: number('min', 'Minimum'), max: number('max', 'Maximum')};
      return {show: (bets) => { for (const key in inputs) inputs[key].value = bets[key]; },
        read: () => Object.fromEntries(Object.entries(inputs).map(([key, input]) => [key, Number(input.value)]))};
    }
    case 'json': {
      const input = area('JSON');
      return {show: (value) => { input.value = JSON.stringify(value, null, 1); }, read: () => JSON.parse(input.value)};
    }
    default:
      fields.append(element('p', {className: 'hint', textContent: 'This event carries nothing.'}));
      return {show: () => {}, read: () => null};
  }
}

// The step that sends the event and keeps the service's state in agreement with it.
function eventStep(event, context) {
  if (byId('event-only').checked || event.fields.length === 0)
    return event.form === 'nothing' ? {do: 'event', id: event.id} : {do: 'event', id: event.id, value: context};
  if (event.form === 'game') return {do: 'game', event: event.id === 100 ? 'loading' : 'loaded', ...context};
  if (event.form === 'nothing') return {do: 'game', event: 'exited'};
  if (event.form === 'bets')
    return {do: 'set', state: {CurrentBet: context.current, MinBet: context.min, MaxBet: context.max}};
  return {do: 'set', state: {[event.fields[0]]: context}};
}

function setUpEvents() {
  const select = byId('event');
  for (const event of forms.events)
    select.append(element('option', {value: event.id, textContent: `${event.id} ${event.name}`}));
  let form = null;
  select.onchange = () => { form = makeEventForm(chosenEvent()); form.show(chosenEvent().sample); };
  select.onchange();
  byId('take-state').onclick = () => form.show(contextFromState(chosenEvent()));
  byId('take-sample').onclick = () => form.show(chosenEvent().sample);
  byId('event-form').onsubmit = (submit) => {
    submit.preventDefault();
    try {
      steps([eventStep(chosenEvent(), form.read())]);
    } catch (error) {
      complain(`The context is no JSON: ${error.message}`);
    }
  };
}

// ---- Faults

function faultStep(reply) {
  const out = {do: 'bad', method: byId('fault-method').value, reply: reply.name};
  const calls = byId('fault-calls').value, seconds = byId('fault-seconds').value;
  if (calls) out.calls = Number(calls);
  else if (!seconds) out.calls = -1;
  if (seconds) out.for = Math.max(1, Math.round(Number(seconds) * 1000));
  for (const key of reply.takes) {
    const text = byId(`fault-${key}`).value;
    if (key === 'code') out.code = Number(text);
    else if (key === 'text') out.text = text;
    else if (key === 'field') { if (text) out.field = text; } else if (text !== '') out[key] = Number(text);
  }
  return out;
}

function setUpFaults() {
  const methods = byId('fault-method');
  methods.append(element('option', {value: '*', textContent: 'all methods'}));
  for (const name of forms.methods) methods.append(element('option', {value: name, textContent: name}));
  methods.value = 'game.popEvents';
  methods.onchange = showFaults;
  for (const error of forms.errors)
    byId('fault-code').append(element('option', {value: error.code, textContent: `${error.code} ${error.name}`}));
  for (const reply of forms.replies) {
    const button = element('button', {type: 'button', textContent: reply.name, ariaChecked: 'false'});
    button.setAttribute('role', 'switch');
    button.dataset.reply = reply.name;
    button.onclick = () => steps(button.ariaChecked === 'true' ? [{do: 'good', method: methods.value}]
      : [{do: 'good', method: methods.value}, faultStep(reply)]);
    byId('fault-switches').append(button);
  }
  byId('all-good').onclick = () => steps([{do: 'good'}, {do: 'up'}]);
  byId('down').onclick = () => steps([report.listening ? {do: 'down', keep: byId('keep').checked} : {do: 'up'}]);
  byId('forget').onclick = () => steps([{do: 'forget'}]);
}

function showFaults() {
  const plans = report.bad[byId('fault-method').value] || [];
  for (const button of byId('fault-switches').children)
    button.ariaChecked = String(plans.some((plan) => plan.reply === button.dataset.reply));
  byId('down').ariaChecked = String(!report.listening);
  const lines = Object.entries(report.bad).flatMap(([method, list]) => list.map((plan) =>
    `${method}: ${plan.reply}${plan.field ? ' ' + plan.field : ''}, ${plan.calls < 0 ? 'all' : plan.calls} calls` +
    (plan.left === undefined ? '' : `, ${(plan.left / 1000).toFixed(1)} s left`)));
  byId('plans').replaceChildren(...lines.map((line) => element('li', {textContent: line})));
}

// ---- State

function showClients() {
  const select = byId('client'), chosen = select.value;
  const ids = report.clients.map((client) => String(client.id));
  if (ids.join() !== [...select.options].map((option) => option.value).join()) {
    select.replaceChildren(...report.clients.map((client) =>
      element('option', {value: client.id, textContent: `${client.id} ${client.name}`})));
    select.value = ids.includes(chosen) ? chosen : ids[ids.length - 1] || '';
  }
}

async function showState() {
  const id = byId('client').value;
  const known = id ? await (await fetch(`/api/known?client=${id}`)).json() : null;
  const rows = Object.keys(report.state).map((field) => {
    const ours = JSON.stringify(report.state[field]);
    const theirs = known ? JSON.stringify(known[field]) : '-';
    const row = element('tr', {className: known && ours !== theirs ? 'differs' : ''},
      element('th', {scope: 'row', textContent: field}), element('td', {className: 'value', textContent: theirs}),
      element('td', {className: 'value', textContent: ours === theirs ? 'same' : ours}));
    row.dataset.field = field;
    return row;
  });
  byId('state-table').tBodies[0].replaceChildren(...rows);
}

// ---- Calls

const isEmptyPoll = (entry) => entry.method === 'game.popEvents' && entry.answer === null;

function callRow(entry) {
  const name = entry.method || (entry.step ? `step ${entry.step.do}` : entry.up ? 'up' : '?');
  let outcome = entry.step ? entry.step : entry.answer;
  const fault = entry.answer && entry.answer.faultCode;
  if (entry.bad) outcome = `answered badly: ${entry.bad}${entry.field ? ' ' + entry.field : ''}`;
  if (entry.refused) outcome = entry.refused;
  if (entry.fault) outcome = entry.fault;
  if (entry.error) outcome = entry.error;
  const text = typeof outcome === 'string' ? outcome : JSON.stringify(outcome);
  const row = element('tr', {className: entry.bad || entry.fault || entry.error || entry.refused || fault ? 'bad' : ''},
    element('td', {textContent: entry.time.slice(11)}), element('td', {textContent: name}),
    element('td', {textContent: entry.client === undefined ? '' : JSON.stringify(entry.client)}),
    element('td', {textContent: entry.us === undefined ? '' : `${(entry.us / 1000).toFixed(2)} ms`}),
    element('td', {className: 'value', textContent: text.length > CHARACTERS_SHOWN ? `${text.slice(0, CHARACTERS_SHOWN)} ...` : text, title: text}));
  row.hidden = isEmptyPoll(entry) && !byId('polls').checked;
  row.dataset.poll = isEmptyPoll(entry);
  return row;
}

async function showCalls() {
  const entries = await (await fetch(`/api/log?since=${lastEntry}`)).json();
  if (entries.length === 0) return;
  lastEntry = entries[entries.length - 1].n;
  const body = byId('call-table').tBodies[0];
  body.prepend(...entries.slice(-CALLS_SHOWN).reverse().map(callRow));
  while (body.rows.length > CALLS_SHOWN) body.deleteRow(-1);
}

byId('polls').onchange = () => {
  for (const row of byId('call-table').tBodies[0].rows)
    row.hidden = row.dataset.poll === 'true' && !byId('polls').checked;
};

// ---- Picture

const PICTURE_MILLISECONDS = 300;

async function showPicture() {
  const image = byId('screen');
  if (byId('live').checked && !document.hidden) {
    try {
      const answer = await fetch('/api/screen.png', {cache: 'no-store'});
      if (answer.ok) {
        const old = image.src;
        image.src = URL.createObjectURL(await answer.blob());
        await image.decode();
        if (old) URL.revokeObjectURL(old);
        byId('no-screen').textContent = '';
      } else {
        byId('no-screen').textContent = (await answer.json()).error;
      }
      image.hidden = !answer.ok;
    } catch (error) {
      byId('no-screen').textContent = 'The simulator does not answer.';
    }
  }
  setTimeout(showPicture, PICTURE_MILLISECONDS);
}

// ---- All together

const REFRESH_MILLISECONDS = 300;

async function refresh() {
  report = await (await fetch('/api/state')).json();
  const clients = report.clients.length;
  byId('status').textContent = `${report.listening ? 'listening' : 'port shut'}, ${clients} ` +
    `client${clients === 1 ? '' : 's'}, ${(report.t / 1000).toFixed(0)} s, ${report.stepsLeft} steps to come`;
  showLevels();
  showFaults();
  showClients();
  await showState();
  await showCalls();
}

async function keepFresh() {
  try {
    await refresh();
  } catch (error) {
    byId('status').textContent = 'the simulator does not answer';
  }
  setTimeout(keepFresh, REFRESH_MILLISECONDS);
}

byId('add-level').onclick = () => steps([{do: 'add', level: {CurrentPot: 100000, MaxPot: 1000000}}]);
byId('add-house').onclick = () => steps(report.state.JackpotData.map((level) => ({do: 'remove', id: level.Id}))
  .concat(forms.levels.filter((one) => one.do === 'add')));

(async () => {
  forms = await (await fetch('/api/forms')).json();
  report = await (await fetch('/api/state')).json();
  setUpEvents();
  setUpFaults();
  keepFresh();
  showPicture();
})();
