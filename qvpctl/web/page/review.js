// What a change would do, shown before anything is sent.
import { api } from './api.js';
import { ask } from './dialog.js';
import { element, table } from './dom.js';
import { count, has, said, t } from './language.js';
import { withLogin } from './login.js';
import { cameraName, known } from './store.js';

export function keyLabel(key) {
    return has(`label.${key}`) ? t(`label.${key}`) : key;
}

const isSecret = (key) => known.settings.some((one) => one.key === key && one.secret);

// As the settings stand in their groups.
export function inOrder(changes) {
    const place = (change) => known.settings.findIndex((one) => one.key === change.key);
    return [...changes].sort((one, other) => place(one) - place(other));
}

export function valueText(key, value) {
    if (value === null && isSecret(key)) return element('em', {}, t('secret'));
    if (value === null || value === '') return element('em', {}, t('empty'));
    return value;
}

function groupLine(group) {
    const name = said(group.name);
    return element('li', {}, `${name[0].toUpperCase()}${name.slice(1)}: ${t('group.effect', { effect: said(group.effect) })}`);
}

function content(plan) {
    const rows = inOrder(plan.changes).map(({ key, before, after }) => [keyLabel(key),
        element('del', {}, valueText(key, before)), element('ins', {}, valueText(key, after))]);
    const away = plan.awaySeconds > 0 ? element('p', { class: 'away-hint' }, count('review.away', plan.awaySeconds)) : null;
    return [table(t('review.caption'), [t('column.setting'), t('column.before'), t('column.after')], rows, { class: 'diff' }),
        element('ul', { class: 'effects' }, plan.groups.map(groupLine)), away];
}

const nothing = () => ask({
    title: t('review.nothing'),
    content: element('p', {}, t('review.nothing.hint')),
    confirm: t('close'),
    submit: () => null,
});

// True when the change is on its way. Throws what the tool says against the values.
export async function review(mac, settings) {
    const plan = await withLogin(mac, () => api.plan(mac, settings));
    if (plan === null) return false;
    if (plan.changes.length === 0) {
        await nothing();
        return false;
    }
    const sent = await ask({
        title: t('review.title', { name: cameraName(mac) }),
        content: content(plan),
        confirm: t('review.send'),
        submit: async () => {
            await api.change(mac, settings);
            return true;
        },
    });
    return sent === true;
}
