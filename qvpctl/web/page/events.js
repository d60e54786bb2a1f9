// The stream of events. The browser connects again by itself; only a session that is over ends it.
import { api } from './api.js';
import { announce } from './dom.js';
import { t } from './language.js';
import { known, takeCamera, takeChange, takeRun, takeSearch, takeSnapshot, tell } from './store.js';

const kTakers = {
    snapshot: takeSnapshot,
    camera: takeCamera,
    search: takeSearch,
    change: takeChange,
    run: takeRun,
    notice: showNotice,
};

function showNotice({ text }) {
    const line = document.getElementById('notice');
    line.textContent = text;
    line.hidden = text === '';
    announce(text);
}

function showConnection(text) {
    const line = document.getElementById('connection');
    if (line.textContent === text) return;
    line.textContent = text;
    line.hidden = text === '';
    if (text !== '') announce(text);
}

// After a break it may be another network: the tool starts virtual cameras by starting itself again.
async function connected(isFirst) {
    showConnection('');
    if (isFirst) return;
    known.session = await api.session();
    tell('session');
}

async function broken(source) {
    if (source.readyState !== EventSource.CLOSED) {
        showConnection(t('connection.lost'));
        return;
    }
    const error = await api.session().then(() => null, (failure) => failure);
    if (error?.status === 403) {
        showConnection(t('connection.ended'));
        return;
    }
    showConnection(t('connection.lost'));
    setTimeout(listen, 2000, false);
}

export function listen(isFirst = true) {
    const source = new EventSource('/api/events');
    source.addEventListener('open', () => {
        connected(isFirst);
        isFirst = false;
    });
    source.addEventListener('error', () => broken(source));
    for (const [name, take] of Object.entries(kTakers)) {
        source.addEventListener(name, (event) => take(JSON.parse(event.data)));
    }
}
