// What is done to a camera besides its settings: its password, a reboot, a factory reset.
import { api } from './api.js';
import { ask, mark } from './dialog.js';
import { element, labelled } from './dom.js';
import { t } from './language.js';
import { passwordInput, withLogin } from './login.js';
import { cameraName, known } from './store.js';

// What the tool wants to read before it goes on: so the page cannot mean another camera than it does.
const confirmation = (mac) => known.cameras.get(mac)?.name || mac;

export async function changePassword(mac) {
    const first = passwordInput({ autocomplete: 'new-password' });
    const second = passwordInput({ autocomplete: 'new-password' });
    const shows = element('input', { type: 'checkbox' });
    shows.addEventListener('change', () => {
        for (const one of [first, second]) one.type = shows.checked ? 'text' : 'password';
    });
    await ask({
        title: t('password.title', { name: cameraName(mac) }),
        content: [labelled(t('password.new'), first, t('password.hint')), labelled(t('password.again'), second),
            element('label', { class: 'choice' }, shows, t('password.show'))],
        confirm: t('password.confirm'),
        submit: async () => {
            if (first.value === '') throw mark(first, t('password.empty'));
            if (first.value !== second.value) throw mark(second, t('password.differs'));
            return withLogin(mac, () => api.password(mac, first.value));
        },
    });
}

export async function reboot(mac) {
    await ask({
        title: t('reboot.title', { name: cameraName(mac) }),
        content: element('p', {}, t('reboot.hint')),
        confirm: t('reboot.confirm', { name: cameraName(mac) }),
        submit: () => withLogin(mac, () => api.reboot(mac, confirmation(mac))),
    });
}

export async function factoryReset(mac) {
    const typed = element('input', { type: 'text', autocomplete: 'off', spellcheck: 'false', autocapitalize: 'none' });
    await ask({
        title: t('reset.title', { name: cameraName(mac) }),
        content: [element('p', {}, t('reset.hint')),
            labelled(t('reset.type', { name: confirmation(mac) }), typed)],
        confirm: t('reset.confirm'),
        isDangerous: true,
        submit: async () => {
            if (typed.value !== confirmation(mac)) throw mark(typed, t('reset.differs', { name: confirmation(mac) }));
            return withLogin(mac, () => api.factoryReset(mac, typed.value));
        },
    });
}
