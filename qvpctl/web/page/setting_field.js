// The control of a setting, made from its row in the tool's table.
import { button, element, labelled, newId, showFault } from './dom.js';
import { has, said, t } from './language.js';
import { passwordInput } from './login.js';

const kMostOptions = 14;

export const settingLabel = (setting) => (has(`label.${setting.key}`) ? t(`label.${setting.key}`) : setting.key);

// "What it is: what it takes; what one would not expect."
export function hintOf(setting) {
    const summary = said(setting.summary);
    const rest = [setting.values, setting.quirk].filter(Boolean).map(said).join('; ');
    return `${summary[0].toUpperCase()}${summary.slice(1)}: ${rest}.`;
}

export const choiceText = (value) => (has(`choice.${value}`) ? t(`choice.${value}`) : value);

function selectOf(choices, value) {
    const all = value === '' || choices.includes(value) ? choices : [value, ...choices];
    const options = all.map((one) => new Option(choiceText(one), one));
    if (value === '') options.unshift(new Option('', ''));
    return element('select', { value }, options);
}

function listedInput(choices, value) {
    const list = element('datalist', { id: newId() }, choices.map((one) => new Option(one, one)));
    return [element('input', { type: 'text', value, list: list.id, autocomplete: 'off', spellcheck: 'false' }), list];
}

function controlOf(setting, value) {
    if (setting.secret) return [passwordInput({ placeholder: t('secret.unchanged'), autocomplete: 'new-password' })];
    if (setting.choices && setting.choices.length <= kMostOptions) return [selectOf(setting.choices, value)];
    if (setting.choices) return listedInput(setting.choices, value);
    return [element('input', { type: 'text', value, autocomplete: 'off', spellcheck: 'false', autocapitalize: 'none' })];
}

// A field knows what the camera has, and whether that is to change.
export class SettingField {
    constructor(setting, value, onInput) {
        this.setting = setting;
        const [control, ...more] = controlOf(setting, value ?? '');
        this.control = control;
        this.before = control.value;  // which may be less than the camera has: a control knows no line ends
        this.control.name = setting.key;
        this.row = labelled(settingLabel(setting), control, hintOf(setting));
        this.row.append(...more);
        this.control.addEventListener('input', () => {
            showFault(this.control, '');
            this.row.classList.toggle('changed', this.isChanged());
            onInput();
        });
        if (setting.key === 'time.now') this.addNow();
    }

    addNow() {
        this.row.append(button(t('time.now.set'), () => this.set('now'), { class: 'small beside' }));
    }

    set(value) {
        this.control.value = value;
        this.control.dispatchEvent(new Event('input'));
    }

    isChanged() {
        return this.control.value !== this.before;
    }

    reset() {
        this.set(this.before);
    }

    // Whether an error of the tool is about this setting: it begins with its key.
    takesFault(message) {
        if (!message.startsWith(`${this.setting.key} `)) return false;
        showFault(this.control, `${settingLabel(this.setting)} ${message.slice(this.setting.key.length + 1)}`);
        return true;
    }
}
