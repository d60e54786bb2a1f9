// What is known of the network, and who wants to hear that it changed. Filled by the stream of events alone.
import { announce } from './dom.js';
import { count, t } from './language.js';

export const known = {
    session: null,
    settings: [],
    cameras: new Map(),
    changes: new Map(),
    search: { running: false, interfaces: [], found: 0, warnings: [] },
    run: null,
};

const listeners = new Map();
const waiting = new Set();

export function onChange(topic, listener) {
    if (!listeners.has(topic)) listeners.set(topic, new Set());
    listeners.get(topic).add(listener);
}

// Once a picture, however much changes in between.
export function tell(topic) {
    if (waiting.size === 0) requestAnimationFrame(deliver);
    waiting.add(topic);
}

function deliver() {
    const topics = [...waiting];
    waiting.clear();
    for (const topic of topics) for (const listener of listeners.get(topic) ?? []) listener();
}

export const nameOf = (camera) => camera.name || camera.mac;

export const cameraName = (mac) => (known.cameras.has(mac) ? nameOf(known.cameras.get(mac)) : mac);

const kEnded = ['verified', 'failed', 'unverified'];
export const isEnded = (change) => kEnded.includes(change.stage);

// The latest of a camera, if any.
export function changeOf(mac) {
    let latest = null;
    for (const change of known.changes.values()) if (change.mac === mac) latest = change;
    return latest;
}

const withDeadline = (change) => ({ ...change, until: performance.now() + 1000 * (change.seconds ?? 0) });

export function takeSnapshot(snapshot) {
    known.cameras = new Map(snapshot.cameras.map((camera) => [camera.mac, camera]));
    known.changes = new Map(snapshot.changes.map((change) => [change.id, withDeadline(change)]));
    known.search = { ...known.search, ...snapshot.search };
    known.run = snapshot.run ?? null;
    for (const topic of ['cameras', 'changes', 'search', 'run']) tell(topic);
}

export function takeCamera(camera) {
    const before = known.cameras.get(camera.mac);
    known.cameras.set(camera.mac, camera);
    if (!before) announce(t('live.new', { name: nameOf(camera) }));
    else if (before.state !== camera.state) announce(t(`live.${camera.state}`, { name: nameOf(camera) }));
    tell('cameras');
}

export function takeChange(change) {
    const before = known.changes.get(change.id);
    known.changes.delete(change.id);  // so that it stands last
    known.changes.set(change.id, withDeadline(change));
    if (before?.stage !== change.stage) {
        announce(t(`live.stage.${change.stage}`, { name: cameraName(change.mac), why: change.error?.message ?? '' }));
    }
    tell('changes');
}

export function takeSearch(search) {
    if (known.search.running && !search.running) announce(count('live.search', search.found));
    known.search = search;
    tell('search');
}

export function takeRun(run) {
    if (run && run.stage !== 'running' && known.run?.stage === 'running') announce(t(`live.run.${run.stage}`));
    known.run = run;
    tell('run');
}
