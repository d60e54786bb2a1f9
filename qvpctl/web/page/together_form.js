// The selected cameras get names with a counter, addresses from a range, and settings that are the same for all.
import { Marked, mark } from './dialog.js';
import { button, element, labelled, showFault, table } from './dom.js';
import { t } from './language.js';
import { addressesFrom, nameAt, parseNetworkAddress } from './ranges.js';
import { SettingField, settingLabel } from './setting_field.js';
import { known, nameOf } from './store.js';

function textInput(value, properties = {}) {
    return element('input', { type: 'text', autocomplete: 'off', spellcheck: 'false', value, ...properties });
}

const foldable = (title, ...content) => element('fieldset', {}, element('legend', {}, title), ...content);

export class TogetherForm {
    constructor(cameras, onPlan) {
        this.cameras = cameras;
        this.shared = new Map();
        this.pattern = textInput('', { placeholder: t('many.names.example') });
        this.first = element('input', { type: 'number', min: '0', value: '1' });
        this.from = textInput('', { placeholder: '192.168.1.20/24', inputmode: 'decimal' });
        this.gateway = textInput('', { placeholder: '192.168.1.1' });
        this.preview = element('div', { class: 'preview' });
        this.problem = element('p', { class: 'problem-text', hidden: true });
        this.element = element('form', { class: 'together', novalidate: true }, this.nameGroup(), this.addressGroup(),
            this.sharedGroup(), this.preview, this.problem,
            element('div', { class: 'actions' }, element('button', { type: 'submit', class: 'primary' }, t('many.plan'))));
        this.element.addEventListener('input', () => this.writePreview());
        this.element.addEventListener('submit', (event) => {
            event.preventDefault();
            this.submit(onPlan);
        });
        this.writePreview();
    }

    nameGroup() {
        return foldable(t('many.names'), labelled(t('many.names.pattern'), this.pattern, t('many.names.hint')),
            labelled(t('many.names.first'), this.first));
    }

    addressGroup() {
        return foldable(t('many.addresses'), labelled(t('many.addresses.first'), this.from, t('many.addresses.hint')),
            labelled(t('label.ipv4.gateway'), this.gateway, t('many.gateway.hint')));
    }

    sharedGroup() {
        const offered = known.settings.filter((one) => !one.readOnly && !['name', 'ipv4.address', 'ipv4.gateway', 'time.now'].includes(one.key));
        const choice = element('select', {}, offered.map((one) => new Option(settingLabel(one), one.key)));
        const place = element('div', {});
        const add = button(t('many.shared.add'), () => this.addShared(offered.find((one) => one.key === choice.value), place));
        return foldable(t('many.shared'), labelled(t('many.shared.which'), choice, t('many.shared.hint')), add, place);
    }

    addShared(setting, place) {
        if (!this.shared.has(setting.key)) {
            const field = new SettingField(setting, null, () => {});
            field.row.append(button(t('many.shared.remove', { name: settingLabel(setting) }), () => {
                field.row.remove();
                this.shared.delete(setting.key);
            }, { class: 'small beside' }));
            this.shared.set(setting.key, field);
            place.append(field.row);
        }
        this.shared.get(setting.key).control.focus();
    }

    // Those that other cameras have, and the router's.
    taken() {
        const ours = new Set(this.cameras.map((camera) => camera.mac));
        const others = [...known.cameras.values()].filter((camera) => !ours.has(camera.mac)).map((camera) => camera.address);
        return new Set([...others, this.gateway.value.trim()]);
    }

    addresses() {
        if (this.from.value.trim() === '') return null;
        const first = parseNetworkAddress(this.from.value);
        if (first === null) throw mark(this.from, t('many.addresses.bad'));
        const addresses = addressesFrom(first, this.cameras.length, this.taken());
        if (addresses === null) throw mark(this.from, t('many.addresses.few'));
        return addresses;
    }

    settingsOf(at, addresses) {
        const wanted = {};
        if (this.pattern.value.trim() !== '') wanted.name = nameAt(this.pattern.value.trim(), Number(this.first.value), at);
        if (addresses) wanted['ipv4.address'] = addresses[at];
        if (this.gateway.value.trim() !== '') wanted['ipv4.gateway'] = this.gateway.value.trim();
        for (const [key, field] of this.shared) {
            if (field.control.value !== '') wanted[key] = field.control.value;
        }
        return wanted;
    }

    // What the tool is asked for. Throws when a field is wrong, and has said so there.
    wanted() {
        showFault(this.from, '');
        const addresses = this.addresses();
        const cameras = this.cameras.map((camera, at) => ({ mac: camera.mac, settings: this.settingsOf(at, addresses) }));
        if (Object.keys(cameras[0].settings).length === 0) throw mark(this.pattern, t('many.nothing'));
        return { cameras };
    }

    async submit(onPlan) {
        this.problem.hidden = true;
        try {
            await onPlan(this.wanted());
        } catch (error) {
            if (!(error instanceof Marked)) throw error;
            this.element.querySelector('[aria-invalid]')?.focus();
        }
    }

    // Shows what is right so far; what is wrong is told when the plan is asked for.
    writePreview() {
        const first = parseNetworkAddress(this.from.value);
        const addresses = first && addressesFrom(first, this.cameras.length, this.taken());
        const rows = this.cameras.map((camera, at) => {
            const wanted = this.settingsOf(at, addresses);
            return [nameOf(camera), wanted.name ?? '–', wanted['ipv4.address'] ?? '–'];
        });
        this.preview.replaceChildren(table(t('many.preview'), [t('column.camera'), t('many.preview.name'), t('many.preview.address')], rows));
    }
}
