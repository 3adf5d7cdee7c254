'use strict';
// The state and the last calls.

function showClients() {
  const select = byId('client'), chosen = select.value;
  const ids = report.clients.map((client) => String(client.id));
  if (ids.join() !== [...select.options].map((option) => option.value).join()) {
    select.replaceChildren(...report.clients.map((client) =>
      element('option', {value: client.id, textContent: `${client.id} ${client.name}`})));
    select.value = ids.includes(chosen) ? chosen : ids[ids.length - 1] || '';
  }
}

// Items of a list stand below each other.
function valueText(value) {
  if (!Array.isArray(value) || value.length === 0) return JSON.stringify(value);
  return `[${value.map((item) => JSON.stringify(item)).join(',\n')}]`;
}

function stateRow(body, field) {
  const found = [...body.rows].find((row) => row.dataset.field === field);
  if (found) return found;
  const row = element('tr', {}, element('th', {scope: 'row', textContent: field}),
    element('td', {className: 'value'}), element('td', {className: 'value'}));
  row.dataset.field = field;
  body.append(row);
  return row;
}

async function showState() {
  const id = byId('client').value;
  const known = id ? (await ask(`/api/known?client=${id}`)).json : null;
  for (const field of Object.keys(report.state)) {
    const ours = valueText(report.state[field]);
    const theirs = known ? valueText(known[field]) : '-';
    const row = stateRow(byId('state-table').tBodies[0], field);
    row.className = known && ours !== theirs ? 'differs' : '';
    // A text that stays can be marked and copied.
    [theirs, ours === theirs ? 'same' : ours].forEach((text, index) => {
      if (row.cells[index + 1].textContent !== text) row.cells[index + 1].textContent = text;
    });
  }
}

// ---- Calls

const isEmptyPoll = (entry) => entry.method === 'game.popEvents' && entry.answer === null;

// Events by their names, numbers without their types: for one line.
function shortText(entry, outcome) {
  if (typeof outcome === 'string') return outcome;
  const json = (value) => (JSON.stringify(value) ?? '').replace(/\{"\$i8":(-?\d+)\}/g, '$1');
  const name = (id) => forms.events.find((event) => event.id === id)?.name ?? '';
  const text = entry.method === 'game.popEvents' && Array.isArray(outcome)
    ? outcome.map((event) => `${event.eventID} ${name(event.eventID)} ${json(event.context)}`).join('; ') : json(outcome);
  return text.length > CHARACTERS_SHOWN ? `${text.slice(0, CHARACTERS_SHOWN)} ...` : text;
}

function callRow(entry) {
  const name = entry.method || (entry.step ? `step ${entry.step.do}` : entry.up ? 'up' : '?');
  let outcome = entry.step ? entry.step : entry.answer;
  const fault = entry.answer && entry.answer.faultCode;
  if (entry.bad) outcome = `spoilt: ${entry.bad}${entry.field ? ' ' + entry.field : ''}`;
  if (entry.refused) outcome = entry.refused;
  if (entry.fault) outcome = entry.fault;
  if (entry.error) outcome = entry.error;
  const row = element('tr', {className: entry.bad || entry.fault || entry.error || entry.refused || fault ? 'bad' : ''},
    element('td', {textContent: entry.time.slice(11)}), element('td', {textContent: name}),
    element('td', {textContent: entry.client === undefined ? '' : JSON.stringify(entry.client)}),
    element('td', {textContent: entry.us === undefined ? '' : `${(entry.us / 1000).toFixed(2)} ms`}),
    element('td', {className: 'value'}, element('span', {className: 'short', textContent: shortText(entry, outcome)}),
      element('span', {className: 'full', textContent: typeof outcome === 'string' ? outcome : JSON.stringify(outcome)})));
  row.hidden = isEmptyPoll(entry) && !byId('polls').checked;
  row.dataset.poll = isEmptyPoll(entry);
  if (entry.bad) row.dataset.spoilt = `${name} ${outcome}`;
  return row;
}

// A failure that comes again and again takes one line: the program asks at once for a state that it could not get.
function countAgain(body, row) {
  const same = [...body.rows].filter((one) => !one.hidden).slice(0, 3)
    .find((one) => one.dataset.spoilt && one.dataset.spoilt === row.dataset.spoilt);
  if (!same) return false;
  same.dataset.times = Number(same.dataset.times || 1) + 1;
  same.cells[0].textContent = row.cells[0].textContent;
  same.cells[3].textContent = `${same.dataset.times} times`;
  return true;
}

async function showCalls() {
  const entries = (await ask(`/api/log?since=${lastEntry}`)).json;
  if (entries.length === 0) return;
  lastEntry = entries[entries.length - 1].n;
  const body = byId('call-table').tBodies[0];
  const keep = (poll, most) => [...body.rows].filter((row) => row.dataset.poll === String(poll)).slice(most)
    .forEach((row) => row.remove());
  for (const row of entries.map(callRow)) if (!countAgain(body, row)) body.prepend(row);
  keep(true, EMPTY_POLLS_SHOWN);
  keep(false, CALLS_SHOWN);
}

byId('whole').onchange = () => byId('call-table').classList.toggle('whole', byId('whole').checked);
byId('polls').onchange = () => {
  for (const row of byId('call-table').tBodies[0].rows)
    row.hidden = row.dataset.poll === 'true' && !byId('polls').checked;
};
