'use strict';
// What is spoilt, and the port.

// What a field may be called in the answers of a method; the first one is taken where one is needed and none is given.
const FIELDS = {'topscreen.init': ['ID', 'Locale', 'ThousandGrouping'],
  'platform.state': ['JackpotData/0/CurrentPot', 'ActiveGame/Type', 'LanguageMessages', 'JackpotData/*/Name']};
const EVENT_FIELDS = ['0/eventID', '0/context', '*/context'];
const fieldsOf = (method) => FIELDS[method] || EVENT_FIELDS;
const RARE_METHODS = ['topscreen.init', 'platform.state'];

function chooseMethod() {
  const method = byId('fault-method').value, fields = fieldsOf(method);
  byId('fault-field').placeholder = fields[0];
  byId('fields').replaceChildren(...fields.map((value) => element('option', {value})));
  byId('rare-method').hidden = !RARE_METHODS.includes(method);
  showFaults();
}

function faultStep(reply) {
  const out = {do: 'bad', method: byId('fault-method').value, reply: reply.name};
  const calls = byId('fault-calls').value, seconds = byId('fault-seconds').value;
  if (calls) out.calls = Number(calls);
  else if (!seconds) out.calls = -1;
  if (seconds) out.for = Math.max(1, Math.round(Number(seconds) * 1000));
  for (const key of reply.asks) {
    const text = byId(`fault-${key}`).value;
    if (key === 'text') out.text = text;
    else if (key === 'field') { if (text || reply.needs.includes(key)) out.field = text || fieldsOf(out.method)[0]; }
    else if (text !== '') out[key] = Number(text);
  }
  return out;
}

function setUpFaults() {
  const methods = byId('fault-method');
  methods.append(element('option', {value: '*', textContent: 'all methods'}));
  for (const name of forms.methods) methods.append(element('option', {value: name, textContent: name}));
  methods.onchange = chooseMethod;
  const groups = new Map();
  for (const {group} of forms.replies) {
    if (groups.has(group)) continue;
    const switches = element('div', {className: 'switches'});
    const head = element('div', {className: 'head'}, element('h3', {textContent: group}));
    const inputs = document.querySelector(`template[data-group="${group}"]`);
    if (inputs) head.append(inputs.content);
    groups.set(group, switches);
    byId('fault-switches').append(element('div', {className: 'group'}, head, switches));
  }
  for (const error of forms.errors)
    byId('fault-code').append(element('option', {value: error.code, textContent: `${error.code} ${error.name}`}));
  chooseMethod();
  for (const reply of forms.replies) {
    const button = element('button', {type: 'button', textContent: reply.name, ariaChecked: 'false'});
    button.setAttribute('role', 'switch');
    button.dataset.reply = reply.name;
    button.onclick = () => steps(button.ariaChecked === 'true' ? [{do: 'good', method: methods.value}]
      : [{do: 'good', method: methods.value}, faultStep(reply)]);
    groups.get(reply.group).append(element('div', {}, button, reply.tells));
  }
  byId('all-good').onclick = () => steps([{do: 'good'}, {do: 'up'}]);
  byId('down').onclick = () => steps([report.listening ? {do: 'down', keep: byId('keep').checked} : {do: 'up'}]);
  byId('forget').onclick = () => steps([{do: 'forget'}]);
}

function showFaults() {
  const plans = report.bad[byId('fault-method').value] || [];
  for (const button of document.querySelectorAll('[data-reply]'))
    button.ariaChecked = String(plans.some((plan) => plan.reply === button.dataset.reply));
  byId('down').ariaChecked = String(!report.listening);
  const all = Object.entries(report.bad).flatMap(([method, list]) => list.map((plan) => ({...plan,
    text: `${method === '*' ? 'all methods' : method}: ${plan.reply}${plan.field ? ' ' + plan.field : ''}`})));
  byId('plans').replaceChildren(...all.map((plan) => element('li', {textContent: plan.text +
    `, ${plan.calls < 0 ? 'all' : plan.calls} calls` +
    (plan.left === undefined ? '' : `, ${(plan.left / 1000).toFixed(1)} s left`)})));
  const broken = (report.listening ? [] : ['port shut']).concat(all.map((plan) => plan.text));
  const text = broken.length > 2 ? `${broken.length} faults` : broken.join('; ');
  byId('broken').hidden = !text;
  if (byId('broken').textContent !== text) byId('broken').textContent = text;
}
