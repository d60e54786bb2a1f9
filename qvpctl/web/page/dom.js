// Elements, and what every part of the page does with them. A text becomes text here, never markup.

export function element(tag, properties = {}, ...children) {
    const made = document.createElement(tag);
    const { on = {}, value, ...attributes } = properties;
    for (const [name, one] of Object.entries(attributes)) {
        if (one === null || one === undefined || one === false) continue;
        made.setAttribute(name, one === true ? '' : one);
    }
    for (const [event, listener] of Object.entries(on)) made.addEventListener(event, listener);
    made.append(...children.flat().filter((child) => child !== null && child !== undefined && child !== ''));
    if (value !== undefined && value !== null) made.value = value;  // behind the options of a select
    return made;
}

export function button(text, onClick, properties = {}) {
    return element('button', { type: 'button', ...properties, on: { click: onClick } }, text);
}

export const hiddenText = (text) => element('span', { class: 'hidden' }, text);

let lastId = 0;
export const newId = () => `e${++lastId}`;

// A control with its label, and what is to be known of it.
export function labelled(label, control, hint = '') {
    control.id ||= newId();
    const row = element('div', { class: 'field' }, element('label', { for: control.id }, label), control);
    if (hint === '') return row;
    const text = element('p', { class: 'hint', id: newId() }, hint);
    control.setAttribute('aria-describedby', text.id);
    row.append(text);
    return row;
}

// Says what is wrong with a control beside it, or that nothing is.
export function showFault(control, text) {
    control.parentElement.querySelector('.fault')?.remove();
    const others = (control.getAttribute('aria-describedby') ?? '').split(' ').filter((id) => !id.startsWith('fault-'));
    control.removeAttribute('aria-invalid');
    if (text !== '') {
        const fault = element('p', { class: 'fault', id: `fault-${newId()}` }, text);
        control.after(fault);
        control.setAttribute('aria-invalid', 'true');
        others.unshift(fault.id);
    }
    control.setAttribute('aria-describedby', others.filter(Boolean).join(' '));
}

// Real columns; a row is a list of texts or elements.
export function table(caption, headings, rows, properties = {}) {
    const cell = (tag, content, attributes = {}) => element(tag, attributes, ...[content].flat());
    return element('div', { class: 'scroll' }, element('table', properties,
        element('caption', { class: 'hidden' }, caption),
        element('thead', {}, element('tr', {}, headings.map((one) => cell('th', one, { scope: 'col' })))),
        element('tbody', {}, rows.map((row) => element('tr', {}, row.map((one, at) =>
            (at === 0 ? cell('th', one, { scope: 'row' }) : cell('td', one))))))));
}

// Tells those who cannot see it; what comes at the same time is told together.
let pending = [];
export function announce(text) {
    pending.push(text);
    if (pending.length > 1) return;
    setTimeout(() => {
        document.getElementById('live').textContent = pending.slice(-5).join(' ');
        pending = [];
    }, 150);
}

export function download(name, blob) {
    const link = element('a', { href: URL.createObjectURL(blob), download: name, hidden: true });
    document.body.append(link);
    link.click();
    link.remove();
    setTimeout(() => URL.revokeObjectURL(link.href), 10000);
}
