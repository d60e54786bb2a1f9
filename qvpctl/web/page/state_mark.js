// How a camera is: a mark, and the text that says the same.
import { element } from './dom.js';
import { icon } from './icons.js';
import { count, has, said, t, timeText } from './language.js';
import { changeOf, isEnded } from './store.js';

const kStageIcons = { waiting: 'away', sent: 'away', away: 'away', back: 'away', verified: 'ok', failed: 'failed', unverified: 'warning' };

const mark = (picture, kind, text) => element('span', { class: `mark ${kind}` }, icon(picture), text);

export const problemText = (problem) => (has(`problem.${problem.code}`) ? t(`problem.${problem.code}`) : said(problem.text));

const secondsLeft = (change) => Math.max(0, Math.ceil((change.until - performance.now()) / 1000));

// Counts by itself, see keepCounting.
export function countdown(change) {
    if (change.stage !== 'away' || !change.seconds) return '';
    return element('span', { class: 'countdown', 'data-until': change.until }, count('seconds', secondsLeft(change)));
}

export function keepCounting() {
    setInterval(() => {
        for (const one of document.querySelectorAll('[data-until]')) {
            one.textContent = count('seconds', secondsLeft({ until: Number(one.dataset.until) }));
        }
    }, 500);
}

export function changeMark(change) {
    const kind = { verified: 'good', failed: 'bad', unverified: 'doubtful' }[change.stage] ?? 'busy';
    const text = mark(kStageIcons[change.stage], kind, t(`stage.${change.stage}`));
    const left = countdown(change);
    if (left !== '') text.append(' ', left);
    return text;
}

export function stateMarks(camera) {
    const change = changeOf(camera.mac);
    if (change && !isEnded(change)) return [changeMark(change)];
    if (camera.state === 'silent') return [mark('silent', 'bad', t('state.silent', { time: timeText(camera.lastSeen) }))];
    const problems = camera.problems.filter((one) => one.code !== 'silent');
    if (problems.length === 0) return [mark('ok', 'good', t('state.present'))];
    const texts = [...new Set(problems.map((one) => (has(`problem.short.${one.code}`) ? t(`problem.short.${one.code}`) : said(one.text))))];
    return texts.map((text) => mark('warning', 'doubtful', text));
}
