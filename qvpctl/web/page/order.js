// Which cameras are shown, and in which order. No document here.
import { isEnded, nameOf } from './store.js';

const collator = new Intl.Collator(undefined, { numeric: true, sensitivity: 'base' });

export const addressNumber = (text) => text.split('.').reduce((number, part) => number * 256 + Number(part), 0);

// What asks for attention comes first.
function urgency(camera, change) {
    if (change && !isEnded(change)) return 0;
    if (camera.state === 'silent') return 1;
    return camera.problems.length > 0 ? 2 : 3;
}

const kComparisons = {
    name: (one, other) => collator.compare(nameOf(one), nameOf(other)),
    state: (one, other, changeOf) => urgency(one, changeOf(one.mac)) - urgency(other, changeOf(other.mac)),
    address: (one, other) => addressNumber(one.address) - addressNumber(other.address),
    mac: (one, other) => (one.mac < other.mac ? -1 : 1),
    product: (one, other) => collator.compare(one.product, other.product),
    firmware: (one, other) => collator.compare(one.firmware, other.firmware),
};

export function sorted(cameras, { column, isDescending }, changeOf) {
    const sign = isDescending ? -1 : 1;
    const compare = kComparisons[column];
    return [...cameras].sort((one, other) => sign * compare(one, other, changeOf) || kComparisons.mac(one, other));
}

const kSearched = ['name', 'mac', 'address', 'product', 'model', 'brand', 'firmware', 'hardware', 'interface'];

function matches(camera, words) {
    const text = kSearched.map((key) => camera[key] ?? '').join('\n').toLowerCase();
    return words.every((word) => text.includes(word));
}

export function filtered(cameras, search, filter, selected) {
    const words = search.toLowerCase().split(/\s+/).filter(Boolean);
    const kFilters = {
        all: () => true,
        problems: (camera) => camera.problems.length > 0,
        silent: (camera) => camera.state === 'silent',
        selected: (camera) => selected.has(camera.mac),
    };
    return [...cameras].filter((camera) => kFilters[filter](camera) && matches(camera, words));
}
