'use strict';
// The events, a form for each.

const chosenEvent = () => forms.events.find((event) => event.id === Number(byId('event').value));

// What the state holds of the event's context.
function contextFromState(event) {
  const state = report.state;
  if (event.form === 'numbers') return Object.fromEntries(event.parts.map(({key, field}) => [key, state[field]]));
  return event.form === 'nothing' ? null : state[event.fields[0]];
}

const labelled = (text, input) => element('label', {}, text, input);

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
    fields.append(element('label', {className: 'whole'}, text, input));
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
    case 'numbers': {
      const inputs = event.parts.map(({key, caption}) => [key, number(key, caption)]);
      return {show: (values) => { for (const [key, input] of inputs) input.value = values[key]; },
        read: () => Object.fromEntries(inputs.map(([key, input]) => [key, Number(input.value)]))};
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
  if (event.game) return {do: 'game', event: event.game, ...context};
  if (event.form === 'numbers')
    return {do: 'set', state: Object.fromEntries(event.parts.map(({key, field}) => [field, context[key]]))};
  return {do: 'set', state: {[event.fields[0]]: context}};
}

function setUpEvents() {
  const select = byId('event');
  for (const event of forms.events)
    select.append(element('option', {value: event.id, textContent: `${event.id} ${event.name}`}));
  let form = null;
  select.onchange = () => {
    form = makeEventForm(chosenEvent());
    form.show(chosenEvent().sample);
    byId('event-tells').textContent = chosenEvent().tells;
  };
  select.onchange();
  byId('take-state').onclick = () => form.show(contextFromState(chosenEvent()));
  byId('take-sample').onclick = () => form.show(chosenEvent().sample);
  byId('event-form').onsubmit = (submit) => {
    submit.preventDefault();
    let context;
    try {
      context = form.read();
    } catch (error) {
      return complain(`The context is no JSON: ${error.message}`);
    }
    steps([eventStep(chosenEvent(), context)]);
  };
}
