// The table of all cameras. A row is made once and kept; what changes is written into it.
import { button, element } from './dom.js';
import { icon } from './icons.js';
import { count, t } from './language.js';
import { filtered, sorted } from './order.js';
import { selected, tellSelection } from './selection.js';
import { stateMarks } from './state_mark.js';
import { changeOf, known, nameOf, onChange, tell } from './store.js';

const kMostRows = 300;
const rows = new Map();
const order = { column: 'name', isDescending: false };
let showsAll = false;
const byId = (id) => document.getElementById(id);

// Only the web page of a camera's own address is ever linked, and only where this browser can reach it.
export function addressLink(camera) {
    const isWebPage = /^https?:\/\/[0-9.]+(:[0-9]+)?\/$/.test(camera.url ?? '');
    if (!isWebPage || known.session?.isVirtual) return element('span', {}, camera.address);
    return element('a', { href: camera.url, target: '_blank', rel: 'noopener noreferrer' }, camera.address);
}

// Left alone while it is the same: it may have the focus.
function writeAddress(cell, camera) {
    const link = addressLink(camera);
    if (cell.firstChild?.isEqualNode(link) !== true) cell.replaceChildren(link);
}

function makeRow(mac) {
    const check = element('input', { type: 'checkbox' });
    check.addEventListener('change', () => {
        if (check.checked) selected.add(mac);
        else selected.delete(mac);
        tellSelection();
    });
    const name = element('a', { class: 'name', href: `#camera/${mac}` });
    const below = element('span', { class: 'below' });
    const cells = {
        check: element('td', { class: 'check' }, check),
        name: element('th', { scope: 'row' }, element('span', { class: 'with-picture' }, icon('camera'), element('span', {}, name, below))),
        state: element('td'),
        address: element('td', { class: 'wide number' }),
        mac: element('td', { class: 'wide narrow-too number' }, mac),
        product: element('td', { class: 'wide narrow-too' }),
        firmware: element('td', { class: 'wide narrow-too' }),
    };
    return { line: element('tr', { 'data-mac': mac }, Object.values(cells)), check, name, below, cells, shown: null, change: null };
}

function writeRow(row, camera) {
    const change = changeOf(camera.mac);
    row.check.checked = selected.has(camera.mac);
    row.line.classList.toggle('chosen', row.check.checked);
    writeOpened(row);
    if (row.shown === camera && row.change === change) return;
    row.shown = camera;
    row.change = change;
    row.name.textContent = nameOf(camera);
    row.below.replaceChildren(element('span', {}, camera.address), ' ', element('span', {}, camera.mac));
    row.check.setAttribute('aria-label', t('list.select', { name: nameOf(camera) }));
    row.cells.state.replaceChildren(...stateMarks(camera));
    writeAddress(row.cells.address, camera);
    row.cells.product.textContent = camera.product;
    row.cells.firmware.textContent = camera.firmware;
    row.line.classList.toggle('silent', camera.state === 'silent');
}

function writeOpened(row) {
    const isOpened = row.name.hash === location.hash;
    row.line.classList.toggle('opened', isOpened);
    if (isOpened) row.name.setAttribute('aria-current', 'true');
    else row.name.removeAttribute('aria-current');
}

function rowOf(camera) {
    if (!rows.has(camera.mac)) rows.set(camera.mac, makeRow(camera.mac));
    const row = rows.get(camera.mac);
    writeRow(row, camera);
    return row.line;
}

// Moves only what stands wrong, so that the focus stays where it is.
function place(body, lines) {
    const focused = document.activeElement;
    for (const old of [...body.children]) if (!lines.includes(old)) old.remove();
    lines.forEach((line, at) => {
        if (body.children[at] !== line) body.insertBefore(line, body.children[at] ?? null);
    });
    if (document.activeElement !== focused && body.contains(focused)) focused.focus();
}

function shownCameras() {
    const matching = filtered(known.cameras.values(), byId('search').value, byId('filter').value, selected);
    return sorted(matching, order, changeOf);
}

function writeHeadings() {
    for (const heading of document.querySelectorAll('#camera-table [data-sort]')) {
        const isSorted = heading.dataset.sort === order.column;
        const direction = order.isDescending ? 'descending' : 'ascending';
        heading.setAttribute('aria-sort', isSorted ? direction : 'none');
        const sign = heading.querySelector('.icon');
        sign.replaceWith(icon(isSorted && order.isDescending ? 'down' : 'up'));
    }
}

function writeSelectAll(cameras) {
    const chosen = cameras.filter((camera) => selected.has(camera.mac)).length;
    const box = byId('select-all');
    box.checked = chosen > 0 && chosen === cameras.length;
    box.indeterminate = chosen > 0 && chosen < cameras.length;
}

export function writeList() {
    const cameras = shownCameras();
    const shown = showsAll ? cameras : cameras.slice(0, kMostRows);
    for (const mac of rows.keys()) if (!known.cameras.has(mac)) rows.delete(mac);
    place(document.querySelector('#camera-table tbody'), shown.map(rowOf));
    writeHeadings();
    writeSelectAll(cameras);
    byId('camera-table').hidden = cameras.length === 0;
    byId('no-match').hidden = cameras.length > 0;
    byId('more').hidden = shown.length === cameras.length;
    const all = count('list.count', known.cameras.size);
    byId('count').textContent = cameras.length === known.cameras.size ? all : t('list.of', { n: cameras.length, all });
}

function sortBy(column) {
    order.isDescending = order.column === column && !order.isDescending;
    order.column = column;
    writeList();
}

export function startList() {
    for (const heading of document.querySelectorAll('#camera-table [data-sort]')) {
        const column = heading.dataset.sort;
        heading.append(button(t(`column.${column}`), () => sortBy(column), { class: 'sort' }));
        heading.firstElementChild.append(icon('up'));
    }
    byId('search').setAttribute('placeholder', t('list.search.hint'));
    byId('select-all').setAttribute('aria-label', t('list.select.all'));
    byId('search').addEventListener('input', writeList);
    byId('filter').addEventListener('change', writeList);
    byId('more').firstElementChild.addEventListener('click', () => {
        showsAll = true;
        writeList();
    });
    byId('select-all').addEventListener('change', (event) => {
        for (const camera of shownCameras()) {
            if (event.target.checked) selected.add(camera.mac);
            else selected.delete(camera.mac);
        }
        tellSelection();
    });
    for (const topic of ['cameras', 'changes', 'selection', 'view']) onChange(topic, () => tell('list'));
    onChange('session', () => {
        rows.clear();
        tell('list');
    });
    onChange('list', writeList);
}
