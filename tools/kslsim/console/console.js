'use strict';
// The picture, and what keeps the whole page fresh; the last of the scripts.

const PICTURE_MILLISECONDS = 200;

async function showPicture() {
  const image = byId('screen');
  if (byId('live').checked && !document.hidden) {
    try {
      const answer = await fetch('/api/screen.png', {cache: 'no-store', signal: AbortSignal.timeout(ANSWER_MILLISECONDS)});
      if (answer.ok) {
        const old = image.src;
        image.src = URL.createObjectURL(await answer.blob());
        await image.decode();
        if (old) URL.revokeObjectURL(old);
        byId('no-screen').textContent = '';
      } else {
        byId('no-screen').textContent = `${(await answer.json()).error} The picture comes when the top screen runs on ` +
          'the display of the simulator.';
      }
      image.hidden = !answer.ok;
    } catch (error) {
      // The line on top says that the simulator is away; the last picture stays, greyed.
    }
  }
  setTimeout(showPicture, PICTURE_MILLISECONDS);
}

// ---- All together

const REFRESH_MILLISECONDS = 300;

async function lookAgain() {
  const before = report;
  report = (await ask('/api/state')).json;
  if (before && report.t < before.t) {
    // Another simulator at the same address.
    lastEntry = 0;
    byId('call-table').tBodies[0].replaceChildren();
  }
  const clients = report.clients.length;
  byId('status').textContent = `${report.listening ? 'listening' : 'port shut'}, ${clients} ` +
    `client${clients === 1 ? '' : 's'}, ${(report.t / 1000).toFixed(0)} s` +
    (report.stepsLeft ? `, ${report.stepsLeft} steps to come` : '');
  showLevels();
  showFaults();
  showClients();
  await showState();
  await showCalls();
}

// Two at a time would list calls twice.
let looks = Promise.resolve();
function refresh() {
  looks = looks.then(async () => {
    try {
      await lookAgain();
      showAway(false);
    } catch (error) {
      if (!(error instanceof Away)) throw error;
      showAway(true);
    }
  }).catch(reportError);
  return looks;
}

function showAway(away) {
  byId('away').hidden = !away;
  document.body.classList.toggle('away', away);
  if (away) byId('status').textContent = 'away';
}

async function keepFresh() {
  await refresh();
  setTimeout(keepFresh, REFRESH_MILLISECONDS);
}

byId('add-level').onclick = () => steps([{do: 'add', level: {CurrentPot: 100000, MaxPot: 1000000}}]);
byId('add-house').onclick = () => steps(report.state.JackpotData.map((level) => ({do: 'remove', id: level.Id}))
  .concat(forms.levels.filter((one) => one.do === 'add')));

(async () => {
  forms = (await ask('/api/forms')).json;
  report = (await ask('/api/state')).json;
  setUpEvents();
  setUpFaults();
  keepFresh();
  showPicture();
})();
