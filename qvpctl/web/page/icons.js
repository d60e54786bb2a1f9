// Small pictures. They only ever stand beside a text that says the same.
const kSpace = 'http://www.w3.org/2000/svg';

const kPaths = {
    camera: 'M1.5 5.5 11 3l1.5 5.5L3 11zM12 5l2.5-.5.5 2.5-2.3.5M6 10.5 4.8 13.5H2',
    ok: 'M8 1.8a6.2 6.2 0 1 1 0 12.4A6.2 6.2 0 0 1 8 1.8zM5.2 8.2l2 2 3.6-4.2',
    warning: 'M8 2 14.5 13.5h-13zM8 6.5v3M8 11.6v.1',
    silent: 'M8 1.8a6.2 6.2 0 1 1 0 12.4A6.2 6.2 0 0 1 8 1.8zM5 8h6',
    away: 'M8 1.8a6.2 6.2 0 1 1 0 12.4A6.2 6.2 0 0 1 8 1.8zM8 4.5V8l2.5 1.7',
    failed: 'M8 1.8a6.2 6.2 0 1 1 0 12.4A6.2 6.2 0 0 1 8 1.8zM5.7 5.7l4.6 4.6M10.3 5.7l-4.6 4.6',
    next: 'M8 3.8a4.2 4.2 0 1 1 0 8.4 4.2 4.2 0 0 1 0-8.4z',
    up: 'M4 10l4-4 4 4',
    down: 'M4 6l4 4 4-4',
    back: 'M9.5 3 4.5 8l5 5',
};

export function icon(name) {
    const picture = document.createElementNS(kSpace, 'svg');
    const path = document.createElementNS(kSpace, 'path');
    picture.setAttribute('viewBox', '0 0 16 16');
    picture.setAttribute('aria-hidden', 'true');
    picture.setAttribute('class', `icon ${name}`);
    path.setAttribute('d', kPaths[name]);
    picture.append(path);
    return picture;
}

// Four bars as on a telephone; the percentage stands beside them.
export function signalBars(percent) {
    const picture = document.createElementNS(kSpace, 'svg');
    picture.setAttribute('viewBox', '0 0 20 16');
    picture.setAttribute('aria-hidden', 'true');
    picture.setAttribute('class', 'bars');
    for (let bar = 0; bar < 4; bar++) {
        const one = document.createElementNS(kSpace, 'rect');
        const height = 4 + bar * 4;
        const place = { x: bar * 5, y: 16 - height, width: 4, height, rx: 1 };
        for (const [name, value] of Object.entries(place)) one.setAttribute(name, value);
        if (percent > bar * 25) one.setAttribute('class', 'on');
        picture.append(one);
    }
    return picture;
}
