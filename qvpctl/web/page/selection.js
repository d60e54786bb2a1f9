// The cameras that are selected, and the bar that says how many.
import { announce } from './dom.js';
import { count } from './language.js';
import { known, onChange, tell } from './store.js';

export const selected = new Set();

export const selectedCameras = () => [...known.cameras.values()].filter((camera) => selected.has(camera.mac));

export function tellSelection() {
    announce(count('selection', selected.size));
    tell('selection');
}

function writeBar() {
    for (const mac of selected) if (!known.cameras.has(mac)) selected.delete(mac);
    const isInList = !document.getElementById('list').hidden;
    document.getElementById('selection').hidden = selected.size === 0 || !isInList;
    document.getElementById('selection-text').textContent = count('selection', selected.size);
}

export function startSelection() {
    document.getElementById('selection-clear').addEventListener('click', () => {
        selected.clear();
        tellSelection();
        document.getElementById('select-all').focus();
    });
    for (const topic of ['selection', 'cameras', 'view']) onChange(topic, writeBar);
}
