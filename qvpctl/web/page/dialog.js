// A question in front of the page. Escape and the first button leave it; the focus goes back to where it was.
import { announce, button, element, newId, showFault } from './dom.js';
import { t } from './language.js';

function parts(title, content, actions) {
    const heading = element('h2', { id: newId() }, title);
    const problem = element('p', { class: 'problem-text', hidden: true });
    const form = element('form', { novalidate: true }, heading, content, problem, element('div', { class: 'actions' }, actions));
    return { form, problem, dialog: element('dialog', { 'aria-labelledby': heading.id }, form) };
}

// `submit` does what the question is about and may throw: the dialog says why and stays open. What it returns is the
// dialog's result, null when the user left it.
export function ask({ title, content, confirm, submit, isDangerous = false, isWide = false }) {
    return new Promise((resolve) => {
        let result = null;
        const leave = button(t('cancel'), () => dialog.close());
        const go = element('button', { type: 'submit', class: isDangerous ? 'danger' : 'primary' }, confirm);
        const { dialog, form, problem } = parts(title, content, [leave, go]);
        if (isWide) dialog.classList.add('broad');

        form.addEventListener('submit', async (event) => {
            event.preventDefault();
            if (go.getAttribute('aria-disabled') === 'true') return;
            problem.hidden = true;
            go.setAttribute('aria-disabled', 'true');
            try {
                result = await submit();
                if (dialog.open) dialog.close();
            } catch (error) {
                showProblem(form, problem, error);
            } finally {
                go.removeAttribute('aria-disabled');
            }
        });
        dialog.addEventListener('close', () => {
            dialog.remove();
            keepFocus();
            resolve(result);
        });
        document.body.append(dialog);
        dialog.showModal();
    });
}

// What was focused before may be gone by now: then the focus goes to what came of the answer.
function keepFocus() {
    if (document.activeElement !== document.body) return;
    for (const id of ['detail-change', 'detail-heading', 'many-heading', 'cameras']) {
        document.getElementById(id)?.focus();
        if (document.activeElement !== document.body) return;
    }
}

function showProblem(form, problem, error) {
    problem.textContent = errorText(error);
    problem.hidden = problem.textContent === '';
    announce(problem.textContent);
    (form.querySelector('[aria-invalid]') ?? form.querySelector('input, select'))?.focus();
}

// Thrown by a `submit` that has marked the control itself.
export class Marked extends Error {}

export function mark(control, text) {
    showFault(control, text);
    control.addEventListener('input', () => showFault(control, ''), { once: true });
    announce(text);
    return new Marked('');
}

export function errorText(error) {
    if (error instanceof Marked) return '';
    if (error.code === 'connection') return t('connection.lost');
    if (error.code === undefined) console.error(error);  // a fault of this page
    return error.message;
}
