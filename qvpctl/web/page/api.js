// What the page asks of the tool behind it.

export class ApiError extends Error {
    constructor(status, error) {
        super(error.message ?? `HTTP ${status}`);
        this.status = status;
        this.code = error.code ?? 'unknown';
        this.faults = error.faults ?? [];
    }

    get needsLogin() { return this.status === 401; }
}

async function failure(response) {
    const body = await response.json().catch(() => ({}));
    return new ApiError(response.status, body.error ?? {});
}

async function request(method, path, body) {
    const headers = method === 'GET' ? {} : { 'X-Qvpctl': '1', 'Content-Type': 'application/json' };
    const options = { method, headers, body: body === undefined ? undefined : JSON.stringify(body) };
    const response = await fetch(`/api/${path}`, options).catch(() => {
        throw new ApiError(0, { code: 'connection', message: '' });
    });
    if (!response.ok) throw await failure(response);
    return response;
}

async function json(method, path, body) {
    const response = await request(method, path, body);
    const text = await response.text();
    return text === '' ? null : JSON.parse(text);
}

const ofCamera = (mac, what = '') => `cameras/${encodeURIComponent(mac)}${what}`;

export const api = {
    session: () => json('GET', 'session'),
    settings: () => json('GET', 'settings'),
    search: () => json('POST', 'search', {}),
    startVirtualCameras: () => json('POST', 'virtual-cameras', {}),

    login: (mac, user, password) => json('POST', 'login', { mac, user, password }),
    logout: () => json('DELETE', 'login', {}),

    camera: (mac) => json('GET', ofCamera(mac)),
    plan: (mac, settings) => json('POST', ofCamera(mac, '/plan'), { settings }),
    change: (mac, settings) => json('POST', ofCamera(mac, '/changes'), { settings }),
    scan: (mac) => json('POST', ofCamera(mac, '/scan'), {}),
    password: (mac, password) => json('POST', ofCamera(mac, '/password'), { password }),
    reboot: (mac, confirm) => json('POST', ofCamera(mac, '/reboot'), { confirm }),
    factoryReset: (mac, confirm) => json('POST', ofCamera(mac, '/factory-reset'), { confirm }),

    fleetPlan: (wanted) => json('POST', 'fleet/plan', wanted),
    fleetApply: (wanted, parallel) => json('POST', 'fleet/apply', { ...wanted, parallel }),
    fleetStop: () => json('POST', 'fleet/stop', {}),
    fleetResult: async () => (await request('GET', 'fleet/result.csv')).blob(),
    exported: async () => (await request('GET', 'export.csv')).blob(),
};
