// What helps when no camera is there.
import { api } from './api.js';
import { errorText } from './dialog.js';
import { announce, button, element } from './dom.js';
import { t } from './language.js';
import { known, onChange } from './store.js';

let isStarting = false;

const interfaceText = (one) => (typeof one === 'string' ? one : [one.name, one.address].filter(Boolean).join(' · '));

function searched() {
    const interfaces = known.search.interfaces.length > 0 ? known.search.interfaces : known.session?.interfaces ?? [];
    if (interfaces.length === 0) return element('p', {}, t('welcome.no-interfaces'));
    return [element('p', {}, t('welcome.searched')),
        element('ul', { class: 'chips' }, interfaces.map((one) => element('li', {}, interfaceText(one))))];
}

function reasons() {
    return [element('h3', {}, t('welcome.why')),
        element('ul', { class: 'reasons' }, ['power', 'network', 'subnet', 'firewall'].map((one) =>
            element('li', {}, element('strong', {}, t(`welcome.why.${one}`)), ' ', t(`welcome.why.${one}.more`))))];
}

async function startVirtual() {
    isStarting = true;
    writeWelcome();
    await api.startVirtualCameras().catch(showFailure);
    isStarting = false;
    writeWelcome();
}

function showFailure(error) {
    const line = document.getElementById('notice');
    line.textContent = errorText(error);
    line.hidden = false;
    announce(line.textContent);
}

function virtual() {
    if (!known.session?.virtualCameras || known.session.isVirtual) return null;
    const properties = { id: 'start-virtual', 'aria-disabled': isStarting && 'true' };
    return element('div', { class: 'card' }, element('h3', {}, t('welcome.virtual.title')),
        element('p', {}, t('welcome.virtual.hint')),
        button(t('welcome.virtual'), () => isStarting || startVirtual(), properties),
        isStarting ? element('p', {}, t('welcome.virtual.starting')) : null);
}

export function writeWelcome() {
    const section = document.getElementById('welcome');
    if (section.hidden) return;
    const warnings = known.search.warnings.map((text) => element('p', { class: 'banner warning' }, text));
    const heading = element('h2', {}, t(known.search.running ? 'welcome.searching' : 'welcome.nothing'));
    const hadFocus = section.contains(document.activeElement) ? document.activeElement.id : '';
    section.replaceChildren(...[heading, warnings, searched(), virtual(), reasons()].flat().filter(Boolean));
    if (hadFocus !== '') document.getElementById(hadFocus)?.focus();
}

export function startWelcome() {
    for (const topic of ['search', 'session', 'view']) onChange(topic, writeWelcome);
}
