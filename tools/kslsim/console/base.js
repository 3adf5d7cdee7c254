'use strict';
// The page is one view of what the simulator tells; everything that it does is a step by /api/do.

const byId = (id) => document.getElementById(id);
let forms = null;    // /api/forms
let report = null;   // /api/state
let lastEntry = 0;   // "n" of the newest log entry that is shown
const CALLS_SHOWN = 200;
const EMPTY_POLLS_SHOWN = 50;
const CHARACTERS_SHOWN = 300;
const ANSWER_MILLISECONDS = 5000;

class Away extends Error {}

// Asks the simulator; throws Away where it does not answer.
async function ask(path, options = {}) {
  try {
    const answer = await fetch(path, {...options, signal: AbortSignal.timeout(ANSWER_MILLISECONDS)});
    return {ok: answer.ok, json: await answer.json()};
  } catch (error) {
    throw new Away(error.message);
  }
}

function complain(text) {
  byId('complaint').hidden = !text;
  byId('complaint').textContent = text || '';
}

// One after the other: the values of a pot that is dragged must not overtake each other.
let stepsBefore = Promise.resolve();
function step(what) {
  stepsBefore = stepsBefore.then(async () => {
    try {
      const answer = await ask('/api/do', {method: 'POST', body: JSON.stringify(what),
        headers: {'Content-Type': 'application/json'}});
      // The place in the text of the step means nothing to whoever filled in a form.
      complain(answer.ok ? '' : `${what.do}: ${answer.json.error.replace(/^\d+:\d+: /, '')}`);
      return answer.ok;
    } catch (error) {
      complain(`${what.do}: not done, the simulator does not answer.`);
      return false;
    }
  });
  return stepsBefore;
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
