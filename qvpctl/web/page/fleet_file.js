// A table of cameras from a spreadsheet: chosen or dropped, and the secrets that it asks for.
import { ask } from './dialog.js';
import { element, labelled, newId } from './dom.js';
import { t } from './language.js';
import { passwordInput } from './login.js';

const kLargest = 1000 * 1000;

// The references `prompt` and `prompt:NAME` that stand alone in a cell.
export function secretReferences(csv) {
    const cells = csv.split(/[,;\r\n]/).map((cell) => cell.trim().replace(/^"(.*)"$/, '$1'));
    return [...new Set(cells.filter((cell) => cell === 'prompt' || /^prompt:./.test(cell)))];
}

// The file with its secrets, or null when the user left the question.
export async function withSecrets(csv) {
    const references = secretReferences(csv);
    if (references.length === 0) return { csv };
    const inputs = references.map(() => passwordInput());
    const label = (reference) => (reference === 'prompt' ? t('file.secret') : reference.slice('prompt:'.length));
    return ask({
        title: t('file.secrets'),
        content: [element('p', { class: 'hint' }, t('file.secrets.hint')),
            ...references.map((one, at) => labelled(label(one), inputs[at]))],
        confirm: t('many.plan'),
        submit: () => ({ csv, secrets: Object.fromEntries(references.map((one, at) => [one, inputs[at].value])) }),
    });
}

export async function readFile(file) {
    if (file.size > kLargest) throw Object.assign(new Error(t('file.large', { name: file.name })), { code: 'too-large' });
    return file.text();
}

export function fileChooser(onFile) {
    const hint = element('p', { class: 'hint', id: newId() }, t('file.hint'));
    const input = element('input', { type: 'file', accept: '.csv,text/csv', id: newId(), 'aria-describedby': hint.id });
    input.addEventListener('change', () => {
        if (input.files.length > 0) onFile(input.files[0]);
        input.value = '';
    });
    return element('div', { class: 'drop' }, element('label', { for: input.id }, t('file.choose')), input, hint);
}

// The whole page takes a file that is dropped on it.
export function takeDrops(onFile) {
    const hasFile = (event) => [...event.dataTransfer?.types ?? []].includes('Files');
    document.addEventListener('dragover', (event) => {
        if (!hasFile(event)) return;
        event.preventDefault();
        document.body.classList.add('dropping');
    });
    document.addEventListener('dragleave', (event) => {
        if (event.relatedTarget === null) document.body.classList.remove('dropping');
    });
    document.addEventListener('drop', (event) => {
        document.body.classList.remove('dropping');
        if (!hasFile(event)) return;
        event.preventDefault();
        onFile(event.dataTransfer.files[0]);
    });
}
