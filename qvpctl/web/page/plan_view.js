// What many changes would come to, and how far they are.
import { element, table } from './dom.js';
import { icon } from './icons.js';
import { count, has, t } from './language.js';
import { inOrder, keyLabel, valueText } from './review.js';
import { cameraName } from './store.js';

const kMarks = {
    'to-change': ['next', 'busy'], unchanged: ['ok', 'good'], changed: ['ok', 'good'], unreachable: ['silent', 'bad'],
    failed: ['failed', 'bad'], unverified: ['warning', 'doubtful'],
};

function resultMark(word) {
    const [picture, kind] = kMarks[word] ?? ['away', 'busy'];
    return element('span', { class: `mark ${kind}` }, icon(picture), has(`result.${word}`) ? t(`result.${word}`) : word);
}

function changeLine({ key, before, after }) {
    return element('li', {}, element('span', { class: 'key' }, `${keyLabel(key)}: `), element('del', {}, valueText(key, before)),
        ' → ', element('ins', {}, valueText(key, after)));
}

function changeCell(record) {
    const lines = element('ul', { class: 'change-lines' }, inOrder(record.changes).map(changeLine));
    const reason = record.reason ? element('p', { class: 'reason', lang: 'en' }, record.reason) : null;
    return [record.changes.length > 0 ? lines : null, reason].filter(Boolean);
}

const who = (record) => [element('span', {}, record.name || cameraName(record.mac)), element('span', { class: 'below' }, record.mac)];

export function planTable(plan) {
    const rows = plan.cameras.map((record) => [who(record), resultMark(record.result), changeCell(record),
        record.result === 'to-change' ? count('seconds', record.seconds) : '–']);
    const headings = ['camera', 'result', 'changes', 'time'].map((one) => t(`column.${one}`));
    return table(t('plan.caption'), headings, rows, { class: 'plan' });
}

export function planSummary(summary) {
    const parts = ['toChange', 'unchanged', 'unreachable', 'failed'].filter((one) => summary[one] > 0)
        .map((one) => count(`summary.${one}`, summary[one]));
    const time = summary.toChange > 0 ? ` ${count('summary.time', summary.seconds)}` : '';
    return element('p', { class: 'summary' }, `${count('summary.cameras', summary.cameras)}: ${parts.join(', ')}.${time}`);
}

export function faultTable(error) {
    if (error.faults.length === 0) return null;
    const rows = error.faults.map((one) => [one.line || '–', one.column || '–', element('span', { lang: 'en' }, one.text)]);
    return table(t('fault.caption'), [t('fault.line'), t('fault.column'), t('fault.text')], rows);
}

function runMark(record) {
    if (record.result) return resultMark(record.result);
    const stage = record.stage ?? 'waiting';
    return element('span', { class: 'mark busy' }, icon(stage === 'waiting' ? 'next' : 'away'), has(`stage.${stage}`) ? t(`stage.${stage}`) : stage);
}

function runSummary(summary) {
    const parts = ['changed', 'unchanged', 'unverified', 'unreachable', 'failed'].filter((one) => summary[one] > 0)
        .map((one) => count(`summary.${one}`, summary[one]));
    return element('p', { class: 'summary' }, `${count('summary.cameras', summary.cameras)}: ${parts.join(', ')}.`);
}

export function runElements(run) {
    const isRunning = run.stage === 'running';
    const bar = element('progress', { max: String(run.total), 'aria-label': t('run.progress') });
    bar.value = run.done;
    const rows = run.cameras.map((record) => [who(record), runMark(record), changeCell({ changes: [], ...record }), record.address ?? '–']);
    const headings = ['camera', 'result', 'changes', 'address'].map((one) => t(`column.${one}`));
    return [element('p', { class: 'run-line' }, t(`run.${run.stage}`, { done: run.done, total: run.total })), bar,
        !isRunning && run.summary ? runSummary(run.summary) : null,
        table(t('run.caption'), headings, rows, { class: 'plan' })].filter(Boolean);
}
