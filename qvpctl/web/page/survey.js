// The wireless networks a camera sees, and how it joins one.
import { api } from './api.js';
import { ask, errorText, mark } from './dialog.js';
import { announce, button, element, labelled, table } from './dom.js';
import { icon, signalBars } from './icons.js';
import { count, t } from './language.js';
import { passwordInput, withLogin } from './login.js';
import { review } from './review.js';
import { known } from './store.js';

function securityText(security) {
    if (security === null) return t('survey.security.unknown');
    return security === 'none' ? t('survey.open') : security;
}

const networkName = (network) => network.ssid || t('survey.unnamed');

function whatItIs(network) {
    const parts = [securityText(network.security)];
    if (network.channel > 0) parts.push(t('survey.channel', { channel: network.channel }));
    if (network.adHoc) parts.push(t('choice.ad-hoc'));
    return parts.join(' · ');
}

function rowOf(mac, network) {
    const name = network.ssid === '' ? element('em', {}, t('survey.unnamed')) : element('span', { class: 'ssid' }, network.ssid);
    const signal = element('span', { class: 'signal' }, signalBars(network.signal), `${network.signal} %`);
    const join = button(t('survey.join'), () => openJoin(mac, network),
        { class: 'small', 'aria-label': t('survey.join.label', { name: networkName(network) }) });
    return [[name, element('span', { class: 'below' }, whatItIs(network))], signal, join];
}

function networkTable(mac, networks) {
    if (networks.length === 0) return element('p', { class: 'quiet' }, t('survey.none'));
    const headings = ['name', 'signal', 'join'].map((one) => t(`survey.column.${one}`));
    return table(t('survey.caption'), headings, networks.map((one) => rowOf(mac, one)), { class: 'networks' });
}

// What the network tells need not be typed; its name and protection are asked where it does not.
function joinFields(network) {
    const securities = known.settings.find((one) => one.key === 'wifi.security')?.choices ?? [];
    return {
        ssid: network.ssid === '' ? element('input', { type: 'text', autocomplete: 'off', spellcheck: 'false' }) : null,
        security: network.security === null ? element('select', {}, securities.map((one) => new Option(one, one))) : null,
        key: network.security === 'none' ? null : passwordInput({ autocomplete: 'new-password' }),
    };
}

function wantedOf(network, { ssid, security, key }) {
    const wanted = {
        'wifi.ssid': ssid?.value ?? network.ssid,
        'wifi.security': security?.value ?? network.security,
        'wifi.mode': network.adHoc ? 'ad-hoc' : 'infrastructure',
    };
    if (network.channel > 0) wanted['wifi.channel'] = String(network.channel);
    if (key && key.value !== '') wanted['wifi.key'] = key.value;
    return wanted;
}

function checkFields({ ssid, security, key }) {
    if (ssid?.value === '') throw mark(ssid, t('survey.name.needed'));
    if (key?.value === '' && security?.value !== 'none') throw mark(key, t('survey.key.needed'));
}

async function openJoin(mac, network) {
    const fields = joinFields(network);
    const rows = [
        fields.ssid && labelled(t('label.wifi.ssid'), fields.ssid),
        fields.security && labelled(t('label.wifi.security'), fields.security),
        fields.key && labelled(t('label.wifi.key'), fields.key, t('survey.key.hint')),
    ];
    await ask({
        title: t('survey.join.title', { name: networkName(network) }),
        content: [element('p', { class: 'hint' }, t(network.security === 'none' ? 'survey.join.open' : 'survey.join.hint')), ...rows],
        confirm: t('changes.review'),
        submit: async () => {
            checkFields(fields);
            return review(mac, wantedOf(network, fields));
        },
    });
}

export function surveyElement(mac) {
    const place = element('div', { class: 'survey-result' });
    const scan = button(t('survey.scan'), async () => {
        if (scan.getAttribute('aria-disabled')) return;
        scan.setAttribute('aria-disabled', 'true');
        place.replaceChildren(element('p', { class: 'working' }, icon('away'), t('survey.working')));
        announce(t('survey.working'));
        try {
            const found = await withLogin(mac, () => api.scan(mac));
            place.replaceChildren(...(found === null ? [] : [networkTable(mac, found.networks)]));
            if (found !== null) announce(count('survey.found', found.networks.length));
        } catch (error) {
            place.replaceChildren(element('p', { class: 'problem-text' }, errorText(error)));
            announce(errorText(error));
        }
        scan.removeAttribute('aria-disabled');
    });
    return element('div', { class: 'survey' }, scan, place);
}
