// Who may: asked when a camera wants to know it, and kept by the tool until it ends.
import { api } from './api.js';
import { ask } from './dialog.js';
import { element, labelled } from './dom.js';
import { t } from './language.js';
import { cameraName } from './store.js';

export const passwordInput = (properties = {}) => element('input', {
    type: 'password', spellcheck: 'false', autocapitalize: 'none', autocomplete: 'off', ...properties,
});

export function loginFields(mac) {
    const user = element('input', { type: 'text', autocomplete: 'off', spellcheck: 'false', autocapitalize: 'none', value: 'admin' });
    const password = passwordInput();
    const everywhere = element('input', { type: 'checkbox' });
    const choice = mac === null ? null : element('label', { class: 'choice' }, everywhere, t('login.everywhere'));
    return {
        fields: [labelled(t('login.user'), user), labelled(t('login.password'), password), choice],
        password,
        send: async () => {
            if (mac === null || everywhere.checked) await api.login(null, user.value, password.value);
            if (mac !== null) await api.login(mac, user.value, password.value);  // also over one that it refused
        },
    };
}

// True when the user gave one; it is the camera that says later whether it is right.
export async function askLogin(mac, hint = '') {
    const { fields, send, password } = loginFields(mac);
    const title = mac === null ? t('login.title.all') : t('login.title', { name: cameraName(mac) });
    const done = ask({
        title,
        content: [element('p', { class: 'hint' }, hint || t('login.hint')), ...fields],
        confirm: t('login.confirm'),
        submit: async () => {
            await send();
            return true;
        },
    });
    password.focus();
    return (await done) === true;
}

// Does what may need a login, and asks for one until it does not, or the user has enough: then nothing.
export async function withLogin(mac, work) {
    for (let hint = ''; ; hint = t('login.refused')) {
        try {
            return await work();
        } catch (error) {
            if (!error.needsLogin) throw error;
        }
        if (!await askLogin(mac, hint)) return null;
    }
}
