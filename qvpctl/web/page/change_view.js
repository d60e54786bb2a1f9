// The way of a change, step by step, as the camera goes it.
import { element, hiddenText } from './dom.js';
import { icon } from './icons.js';
import { said, t } from './language.js';
import { countdown } from './state_mark.js';
import { isEnded } from './store.js';

const kWay = ['sent', 'away', 'back', 'verified'];

function stepState(change, step) {
    if (change.stage === 'verified') return 'done';
    const at = kWay.indexOf(change.stage);  // -1: not yet sent, or it went wrong
    if (kWay.indexOf(step) < at) return 'done';
    return step === change.stage ? 'now' : 'to-come';
}

const kIcons = { done: 'ok', now: 'away', 'to-come': 'next' };

function stepElement(change, step) {
    const state = stepState(change, step);
    return element('li', { class: state, 'aria-current': state === 'now' && 'step' }, icon(kIcons[state]),
        element('span', {}, t(`way.${step}`)), hiddenText(`, ${t(`way.state.${state}`)}`),
        state === 'now' ? countdown(change) : '');
}

function failure(change) {
    const why = change.error ? change.error.message : '';
    return element('p', { class: `mark ${change.stage === 'failed' ? 'bad' : 'doubtful'}` }, icon('failed'),
        element('span', {}, t(`way.${change.stage}`), why === '' ? '' : ': ', element('span', { lang: 'en' }, why)));
}

function titleOf(change) {
    if (change.kind !== 'settings') return t(`way.${change.kind}`);
    return change.what ? t('way.title', { what: said(change.what) }) : t('changes.title');
}

export function changeElement(change) {
    const title = titleOf(change);
    const isBad = isEnded(change) && change.stage !== 'verified';
    return element('section', { class: `way ${change.stage}`, 'aria-label': t('way.label') }, element('h3', {}, title),
        isBad ? failure(change) : element('ol', {}, kWay.map((step) => stepElement(change, step))));
}
