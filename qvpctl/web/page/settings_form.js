// All settings of a camera in their groups, and the bar that offers to send what was changed.
import { announce, button, element, newId } from './dom.js';
import { count, said, t } from './language.js';
import { review } from './review.js';
import { SettingField, choiceText, hintOf, settingLabel } from './setting_field.js';
import { known } from './store.js';

function readOnlyRow(setting, value) {
    const text = setting.choices ? choiceText(value ?? '') : value;
    return element('div', { class: 'field' }, element('span', { class: 'label' }, settingLabel(setting)),
        element('span', { class: 'value' }, text || '–'), element('p', { class: 'hint' }, hintOf(setting)));
}

function effectText(setting) {
    const seconds = setting.awaySeconds > 0 ? ` ${count('group.away', setting.awaySeconds)}` : '';
    return t('group.effect', { effect: said(setting.effect) }) + seconds;
}

const capital = (text) => text[0].toUpperCase() + text.slice(1);

// `extras` has what more stands in a group, by its name.
export class SettingsForm {
    constructor(mac, values, { isLocked, extras = {} }) {
        this.mac = mac;
        this.fields = [];
        this.values = new Map(values.map((one) => [one.key, one.value]));
        this.isLocked = isLocked;
        this.element = element('form', { class: 'settings', novalidate: true });
        this.element.addEventListener('submit', (event) => {
            event.preventDefault();
            this.openReview();
        });
        for (const rows of this.groups()) this.element.append(this.groupElement(rows, extras[rows[0].group]));
        this.element.append(this.makeBar());
    }

    groups() {
        const shown = known.settings.filter((one) => one.key !== 'password' && (this.values.has(one.key) || (one.secret && !this.isLocked)));
        return [...Map.groupBy(shown, (one) => one.group).values()];
    }

    groupElement(rows, extra) {
        const effect = element('p', { class: 'hint effect', id: newId() }, effectText(rows[0]));
        return element('fieldset', { 'aria-describedby': effect.id }, element('legend', {}, capital(said(rows[0].groupName))),
            effect, extra, rows.map((setting) => this.rowOf(setting)));
    }

    rowOf(setting) {
        const value = this.values.get(setting.key);
        if (setting.readOnly || this.isLocked) return readOnlyRow(setting, value);
        const field = new SettingField(setting, value, () => this.writeBar());
        this.fields.push(field);
        return field.row;
    }

    makeBar() {
        this.barText = element('span', {});
        this.bar = element('div', { class: 'change-bar', role: 'group', 'aria-label': t('changes.title'), hidden: true }, this.barText,
            button(t('changes.discard'), () => this.discard()),
            element('button', { type: 'submit', class: 'primary' }, t('changes.review')));
        return this.bar;
    }

    wanted() {
        return Object.fromEntries(this.fields.filter((one) => one.isChanged()).map((one) => [one.setting.key, one.control.value]));
    }

    writeBar() {
        const number = Object.keys(this.wanted()).length;
        const wasHidden = this.bar.hidden;
        this.bar.hidden = number === 0 || this.isBusy;
        this.barText.textContent = count('changes.count', number);
        if (wasHidden && number > 0) announce(t('changes.hint'));
    }

    // While a change is on its way, nothing more can be typed.
    setBusy(isBusy) {
        this.isBusy = isBusy;
        for (const group of this.element.querySelectorAll('fieldset')) group.disabled = isBusy;
        this.writeBar();
    }

    discard() {
        for (const field of this.fields) if (field.isChanged()) field.reset();
        this.fields[0]?.control.focus();
    }

    async openReview() {
        const wanted = this.wanted();
        if (Object.keys(wanted).length === 0) return;
        try {
            await review(this.mac, wanted);
        } catch (error) {
            const field = this.fields.find((one) => one.takesFault(error.message));
            if (!field) throw error;
            announce(error.message);
            field.control.focus();
        }
    }

    isEdited() {
        return Object.keys(this.wanted()).length > 0;
    }
}
