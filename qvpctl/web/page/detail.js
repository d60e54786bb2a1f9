// One camera: what it says of itself, what is wrong with it, its settings, and what can be done with it.
import { changePassword, factoryReset, reboot } from './actions.js';
import { api } from './api.js';
import { changeElement } from './change_view.js';
import { errorText } from './dialog.js';
import { announce, button, element, hiddenText } from './dom.js';
import { icon } from './icons.js';
import { t, timeText } from './language.js';
import { addressLink } from './list.js';
import { askLogin, loginFields } from './login.js';
import { SettingsForm } from './settings_form.js';
import { problemText, stateMarks } from './state_mark.js';
import { changeOf, isEnded, known, nameOf, onChange } from './store.js';
import { surveyElement } from './survey.js';

let mac = null;
let form = null;
let isFound = false;
let shownChange = null;
const part = {};  // of the page, by what they show

const fact = (name, value) => (value === null || value === undefined || value === '' ? []
    : [element('dt', {}, t(`fact.${name}`)), element('dd', {}, value)]);

function factList(camera) {
    return element('dl', { class: 'facts' }, fact('address', addressLink(camera)), fact('netmask', camera.netmask),
        fact('gateway', camera.gateway), fact('mac', camera.mac), fact('product', camera.product),
        fact('model', camera.model), fact('brand', camera.brand), fact('firmware', camera.firmware),
        fact('hardware', camera.hardware), fact('interface', camera.interface), fact('seen', timeText(camera.lastSeen)));
}

function problemList(camera) {
    if (camera.problems.length === 0) return [];
    return [element('ul', { class: 'problems' }, camera.problems.map((problem) =>
        element('li', {}, icon(problem.code === 'silent' ? 'silent' : 'warning'), element('span', {}, problemText(problem)))))];
}

export function writeHead() {
    const camera = known.cameras.get(mac);
    if (!camera) return;
    part.heading.textContent = nameOf(camera);
    part.state.replaceChildren(...stateMarks(camera));
    part.problems.replaceChildren(...problemList(camera));
    const facts = factList(camera);
    if (part.facts.firstChild?.isEqualNode(facts) !== true) part.facts.replaceChildren(facts);
}

function writeChange() {
    const change = changeOf(mac);
    if (!change || change === shownChange) return;
    shownChange = change;
    part.change.replaceChildren(changeElement(change));
    const losesFocus = !isEnded(change) && part.settings.contains(document.activeElement);
    form?.setBusy(!isEnded(change));
    if (losesFocus) part.change.focus();
    if (isEnded(change) && change.stage !== 'failed') reload();  // after a failure what was typed is still wanted
}

async function reload() {
    const hadFocus = part.settings.contains(document.activeElement);
    await load();
    if (hadFocus) part.heading.focus();
}

function loginSection() {
    const { fields, send } = loginFields(mac);
    const problem = element('p', { class: 'problem-text', hidden: true });
    const section = element('form', { class: 'card login', novalidate: true }, element('h3', {}, t('login.needed')),
        element('p', { class: 'hint' }, t('login.hint')), fields, problem,
        element('button', { type: 'submit', class: 'primary' }, t('login.confirm')));
    section.addEventListener('submit', async (event) => {
        event.preventDefault();
        try {
            await send();
            if (await load() === 'locked') throw new Error(t('login.refused'));
        } catch (error) {
            const line = part.settings.querySelector('.login .problem-text') ?? problem;
            line.textContent = error.code === undefined ? error.message : errorText(error);
            line.hidden = false;
            announce(line.textContent);
        }
    });
    return section;
}

function actionButtons() {
    const address = mac;
    return element('div', { class: 'detail-actions', role: 'group', 'aria-label': t('detail.actions') },
        button(t('password.open'), () => changePassword(address)),
        button(t('reboot.open'), () => reboot(address)),
        button(t('reset.open'), () => factoryReset(address), { class: 'danger' }));
}

// Reads the camera's settings anew; what was typed and not sent is kept only where the caller has seen to it.
async function load() {
    const wanted = mac;
    part.settings.setAttribute('aria-busy', 'true');
    const read = await api.camera(wanted).catch((error) => error);
    if (wanted !== mac) return 'left';
    part.settings.removeAttribute('aria-busy');
    if (read instanceof Error && !read.needsLogin) {
        part.settings.replaceChildren(element('p', { class: 'problem-text' }, errorText(read)), button(t('again'), load));
        return 'failed';
    }
    const isLocked = read instanceof Error || read.needsLogin;
    form = new SettingsForm(wanted, read.settings ?? [], { isLocked, extras: isLocked ? {} : wirelessExtra(wanted) });
    part.settings.replaceChildren(...(isLocked ? [loginSection()] : [actionButtons()]), form.element);
    if (shownChange !== null) form.setBusy(!isEnded(shownChange));
    return isLocked ? 'locked' : 'open';
}

function wirelessExtra(address) {
    const group = known.settings.find((one) => one.key === 'wifi.ssid')?.group;
    return group === undefined ? {} : { [group]: surveyElement(address) };
}

function build(section) {
    part.heading = element('h2', { id: 'detail-heading', tabindex: '-1' });
    part.state = element('p', { class: 'detail-state' });
    part.problems = element('div', {});
    part.change = element('div', { id: 'detail-change', tabindex: '-1' });
    part.facts = element('div', {});
    part.settings = element('div', { class: 'detail-settings' }, element('p', { class: 'working' }, icon('away'), t('detail.loading')));
    section.replaceChildren(
        element('div', { class: 'detail-head' }, part.heading,
            element('a', { class: 'button', href: '#cameras', id: 'detail-close' }, t('close'), hiddenText(` ${t('detail')}`))),
        part.state, part.change, part.problems,
        element('details', { class: 'about', open: true }, element('summary', {}, t('detail.about')), part.facts), part.settings);
}

export function showDetail(wanted) {
    const section = document.getElementById('detail');
    section.hidden = wanted === null;
    if (wanted === mac) return;
    mac = wanted;
    form = null;
    shownChange = null;
    if (mac === null) return;
    build(section);
    part.heading.textContent = t('detail.unknown');
    isFound = false;
    findCamera();
}

// A camera of the address line may be heard later.
function findCamera() {
    isFound = known.cameras.has(mac);
    if (!isFound) return;
    shownChange = changeOf(mac);
    if (shownChange && !isEnded(shownChange)) part.change.replaceChildren(changeElement(shownChange));
    writeHead();
    load();
    part.heading.focus();
}

export const isEditing = () => form !== null && form.isEdited();

export async function loginToAll() {
    if (await askLogin(null) && mac !== null && !isEditing()) await load();
}

export function startDetail() {
    onChange('cameras', () => {
        if (mac === null) return;
        if (isFound) writeHead();
        else findCamera();
    });
    onChange('changes', () => {
        if (mac === null || !isFound) return;
        writeHead();
        writeChange();
    });
}
