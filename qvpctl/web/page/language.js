// The page's texts in the reader's language: a table a language. What the tool itself says is English; where the table
// knows a translation of such a text, that is shown instead.
const kLanguages = { en: 'English', de: 'Deutsch' };
const kKept = 'qvpctl.language';

let texts = {};
let known = {};
let plurals = new Intl.PluralRules('en');

function wantedLanguage() {
    const wanted = [localStorage.getItem(kKept), ...navigator.languages].map((tag) => (tag ?? '').slice(0, 2));
    return wanted.find((code) => code in kLanguages) ?? 'en';
}

async function fetchTable(code) {
    return (await fetch(`/languages/${code}.json`)).json();
}

export async function loadLanguage() {
    const code = wantedLanguage();
    const table = await fetchTable(code);
    const english = code === 'en' ? table : await fetchTable('en');
    texts = { ...english.texts, ...table.texts };
    known = table.known ?? {};
    plurals = new Intl.PluralRules(code);
    document.documentElement.lang = code;
    for (const one of document.querySelectorAll('[data-text]')) one.textContent = t(one.dataset.text);
    document.title = t('title');
}

export function fillLanguages(select) {
    for (const [code, name] of Object.entries(kLanguages)) {
        const option = new Option(name, code);
        option.lang = code;
        select.append(option);
    }
    select.value = document.documentElement.lang;
    select.addEventListener('change', () => {
        localStorage.setItem(kKept, select.value);
        location.reload();
    });
}

// The text of a key, with {names} in it replaced.
export function t(key, values = {}) {
    return (texts[key] ?? key).replace(/\{(\w+)\}/g, (whole, name) => (name in values ? String(values[name]) : whole));
}

export const has = (key) => key in texts;

// The form that a number asks for: KEY.one or KEY.other.
export const count = (key, number, values = {}) => t(`${key}.${plurals.select(number)}`, { n: number, ...values });

// A text of the tool.
export const said = (text) => known[text] ?? text;

export function timeText(iso) {
    const time = new Date(iso);
    if (Number.isNaN(time.getTime())) return iso;
    return time.toLocaleTimeString(document.documentElement.lang, { hour: '2-digit', minute: '2-digit' });
}
