// Names and addresses for many cameras, counted up. No document here.

// "Gate #" and 7 give "Gate 7", "Gate 8" ...; as many signs as digits: "Gate ##" gives "Gate 07".
export function nameAt(pattern, first, at) {
    const number = String(first + at);
    if (!pattern.includes('#')) return `${pattern} ${number}`;
    return pattern.replace(/#+/, (signs) => number.padStart(signs.length, '0'));
}

function numberOf(text) {
    const parts = text.split('.');
    if (parts.length !== 4 || !parts.every((part) => /^\d{1,3}$/.test(part) && Number(part) < 256)) return null;
    return parts.reduce((number, part) => number * 256 + Number(part), 0);
}

const textOf = (number) => [24, 16, 8, 0].map((shift) => Math.floor(number / 2 ** shift) % 256).join('.');

// "192.168.1.20/24" as numbers, or null.
export function parseNetworkAddress(text) {
    const [address, prefix, ...more] = text.trim().split('/');
    const number = numberOf(address);
    if (number === null || more.length > 0 || !/^\d{1,2}$/.test(prefix ?? '')) return null;
    const length = Number(prefix);
    if (length < 1 || length > 30) return null;
    const size = 2 ** (32 - length);
    const network = Math.floor(number / size) * size;
    return { number, length, lowest: network + 1, highest: network + size - 2 };
}

// That many addresses from the first on, without those that are left out; null where the network ends before.
export function addressesFrom(first, howMany, leftOut) {
    const addresses = [];
    for (let number = first.number; addresses.length < howMany; number++) {
        if (number < first.lowest || number > first.highest) return null;
        if (!leftOut.has(textOf(number))) addresses.push(`${textOf(number)}/${first.length}`);
    }
    return addresses;
}
