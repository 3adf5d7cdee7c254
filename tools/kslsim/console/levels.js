'use strict';
// The levels: their pots, wins and guests.

const levelRows = new Map();  // by "Id"
const DRAG_MILLISECONDS = 100;

function potRange(level) {
  const most = level.MaxPot > level.MinPot ? level.MaxPot : Math.max(level.CurrentPot * 2, 100000);
  return [Math.min(level.MinPot, level.CurrentPot), Math.max(most, level.CurrentPot)];
}

function makeLevelRow(id) {
  const row = {name: element('span', {className: 'name'}),
    slider: element('input', {type: 'range'}),
    number: element('input', {type: 'number'}),
    win: element('button', {type: 'button', textContent: 'Win', className: 'win'}),
    guests: element('button', {type: 'button', textContent: 'Guests', className: 'guests'}),
    remove: element('button', {type: 'button', textContent: 'Remove'}),
    dragged: false, sending: 0};
  let sent = 0, timer = 0;
  // Until the value has arrived, the slider stays where it was left.
  const sendPot = async (value) => {
    sent = Date.now();
    ++row.sending;
    await step({do: 'pot', id, value: Math.round(Number(value))});
    --row.sending;
  };
  row.slider.oninput = () => {
    row.number.value = row.slider.value;
    clearTimeout(timer);
    timer = setTimeout(() => sendPot(row.slider.value), Math.max(0, DRAG_MILLISECONDS - (Date.now() - sent)));
  };
  row.slider.onpointerdown = () => { row.dragged = true; };
  row.slider.onchange = () => {
    row.dragged = false;
    clearTimeout(timer);
    sendPot(row.slider.value);
  };
  row.slider.onpointerup = () => { row.dragged = false; };
  row.slider.onblur = () => { row.dragged = false; };
  row.number.onchange = () => row.number.value !== '' && steps([{do: 'pot', id, value: Math.round(Number(row.number.value))}]);
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
  byId('no-levels').hidden = levels.length > 0;
  byId('levels-hint').hidden = levels.length === 0;
  levels.forEach((level, index) => {
    if (!levelRows.has(level.Id)) levelRows.set(level.Id, makeLevelRow(level.Id));
    const row = levelRows.get(level.Id);
    if (list.children[index] !== row.element) list.insertBefore(row.element, list.children[index] || null);
    row.name.textContent = `${index + 1}  ${level.Name}`;
    for (const [part, what] of [['slider', 'Pot'], ['number', 'Exact pot'], ['win', 'Win'], ['guests', 'Guests'],
      ['remove', 'Remove']]) row[part].ariaLabel = `${what} of level ${index + 1}, ${level.Name}`;
    row.name.title = `Id ${level.Id}, ${level.Status}, ${level.NumWins} wins`;
    const [least, most] = potRange(level);
    const held = row.dragged || row.sending > 0;
    if (!held) Object.assign(row.slider, {min: least, max: most, value: level.CurrentPot});
    if (document.activeElement !== row.number && !held) row.number.value = level.CurrentPot;
    row.win.ariaPressed = String(level.Status === 'WIN');
    row.guests.ariaPressed = String(report.moving.includes(level.Id));
  });
}

document.addEventListener('keydown', (event) => {
  if (event.ctrlKey || event.altKey || event.metaKey || event.repeat) return;
  if (event.target.matches('input:not([type=checkbox], [type=range]), select, textarea')) return;
  if (!report || !/^[1-9]$/.test(event.key)) return;
  const level = report.state.JackpotData[Number(event.key) - 1];
  if (level) toggleWin(level.Id);
});
