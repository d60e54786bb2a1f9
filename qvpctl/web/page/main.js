// Starts the page: its language, what the tool knows, and the view that the address line names.
import { api } from './api.js';
import { ask, errorText } from './dialog.js';
import { announce, download, element } from './dom.js';
import { isEditing, loginToAll, showDetail, startDetail } from './detail.js';
import { listen } from './events.js';
import { count, fillLanguages, loadLanguage, t } from './language.js';
import { startList } from './list.js';
import { withLogin } from './login.js';
import { showMany, startMany } from './many.js';
import { startSelection } from './selection.js';
import { keepCounting } from './state_mark.js';
import { cameraName, known, onChange, tell } from './store.js';
import { startWelcome, writeWelcome } from './welcome.js';

const byId = (id) => document.getElementById(id);
let opened = '';  // the hash of what is shown

function viewOf(hash) {
    if (hash === '#many') return { name: 'many', mac: null };
    const camera = /^#camera\/([0-9a-f:]{17})$/.exec(decodeURIComponent(hash));
    return camera ? { name: 'list', mac: camera[1] } : { name: 'list', mac: null };
}

function writeView() {
    const { name, mac } = viewOf(location.hash);
    const isEmpty = known.cameras.size === 0;
    const wasMany = !byId('many').hidden;
    byId('many').hidden = name !== 'many';
    byId('list').hidden = name !== 'list' || isEmpty;
    byId('welcome').hidden = name !== 'list' || !isEmpty;
    document.body.classList.toggle('has-detail', mac !== null);
    showDetail(mac);
    if (name === 'many' && !wasMany) showMany();
    tell('view');
}

// Back to the row that was left, so that the keyboard goes on there.
function returnFocus(left) {
    if (!left.startsWith('#camera/') || location.hash.startsWith('#camera/')) return;
    const link = document.querySelector(`#camera-table a[href="${CSS.escape(left).replaceAll('\\', '')}"]`);
    (link ?? byId('cameras')).focus();
}

const leavesChanges = () => ask({
    title: t('changes.leave'),
    content: element('p', {}, t('changes.leave.hint', { name: cameraName(viewOf(opened).mac) })),
    confirm: t('changes.leave.confirm'),
    submit: () => true,
});

// The camera stays where it is until that is answered, also where the browser's own buttons led away from it.
async function navigate() {
    if (isEditing() && viewOf(location.hash).mac !== viewOf(opened).mac) {
        const wanted = location.hash;
        history.replaceState(null, '', opened);
        if (document.querySelector('dialog[open]') !== null || !await leavesChanges()) return;
        history.replaceState(null, '', wanted);
    }
    const left = opened;
    opened = location.hash;
    writeView();
    returnFocus(left);
}

function writeSearch() {
    const { running, found, interfaces } = known.search;
    const names = interfaces.map((one) => one.name ?? one).join(', ');
    byId('search-state').textContent = running ? t('search.running', { interfaces: names }) : count('search.found', found);
    byId('search-again').setAttribute('aria-disabled', String(running));
}

async function run(work) {
    try {
        await work();
    } catch (error) {
        const line = byId('notice');
        line.textContent = errorText(error);
        line.hidden = line.textContent === '';
        announce(line.textContent);
    }
}

async function saveExport() {
    const table = await withLogin(null, () => api.exported());
    if (table !== null) download('cameras.csv', table);
}

function startTop() {
    fillLanguages(byId('language'));
    byId('search-again').addEventListener('click', () => known.search.running || run(() => api.search()));
    byId('export').addEventListener('click', () => run(saveExport));
    byId('login-all').addEventListener('click', () => run(loginToAll));
    onChange('search', writeSearch);
    addEventListener('hashchange', navigate);
    document.addEventListener('keydown', (event) => {
        const isFree = !event.defaultPrevented && document.querySelector('dialog[open]') === null;
        if (event.key === 'Escape' && isFree && !byId('detail').hidden) location.hash = '#cameras';
    });
}

async function start() {
    await loadLanguage();
    startTop();
    const [session, { settings }] = await Promise.all([api.session(), api.settings()]);
    known.session = session;
    known.settings = settings;
    startList();
    startSelection();
    startWelcome();
    startDetail();
    startMany();
    keepCounting();
    opened = location.hash;
    onChange('cameras', () => (known.cameras.size === 0) === byId('welcome').hidden && writeView());
    listen();
    writeView();
    writeWelcome();
}

run(start);
