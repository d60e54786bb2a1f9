// Many cameras at once, in three steps: what is wanted, the plan, and the run with its result.
import { api } from './api.js';
import { errorText } from './dialog.js';
import { announce, button, download, element } from './dom.js';
import { fileChooser, readFile, takeDrops, withSecrets } from './fleet_file.js';
import { count, t } from './language.js';
import { withLogin } from './login.js';
import { faultTable, planSummary, planTable, runElements } from './plan_view.js';
import { selectedCameras } from './selection.js';
import { known, onChange, tell } from './store.js';
import { TogetherForm } from './together_form.js';

const kParallel = ['1', '2', '4', '8', '16', '32'];
let step = 'wanted';
let wanted = null;  // what the tool was asked to plan
let plan = null;

const section = () => document.getElementById('many');

function frame(...content) {
    const heading = element('h2', { id: 'many-heading', tabindex: '-1' }, t(`many.step.${step}`));
    section().replaceChildren(element('div', { class: 'detail-head' }, heading,
        element('a', { class: 'button', href: '#cameras' }, t('many.leave'))), ...content.flat().filter(Boolean));
    return heading;
}

function problemPlace() {
    return element('div', { id: 'many-problem' });
}

function showProblem(error) {
    const text = errorText(error);
    document.getElementById('many-problem')?.replaceChildren(...[element('p', { class: 'problem-text' }, text),
        error.faults ? faultTable(error) : null].filter(Boolean));
    announce(text);
}

function writeWanted() {
    step = 'wanted';
    const cameras = selectedCameras();
    const together = cameras.length === 0 ? element('p', { class: 'quiet' }, t('many.none'))
        : new TogetherForm(cameras, (body) => makePlan(body)).element;
    frame(problemPlace(),
        element('div', { class: 'ways' },
            element('div', { class: 'card' }, element('h3', {}, count('many.selected', cameras.length)), together),
            element('div', { class: 'card' }, element('h3', {}, t('many.file')), fileChooser(takeFile)))).focus();
}

// The logins are asked for first where the tool has none: a plan reads every setting of every camera.
async function makePlan(body) {
    document.getElementById('many-problem').replaceChildren(element('p', { class: 'working' }, t('plan.working')));
    announce(t('plan.working'));
    try {
        const made = await withLogin(null, () => api.fleetPlan(body));
        document.getElementById('many-problem')?.replaceChildren();
        if (made === null) return;
        wanted = body;
        plan = made;
        writePlan();
    } catch (error) {
        showProblem(error);
    }
}

// What is said of the file is said on this view, so it has to be there.
function showView() {
    return new Promise((resolve) => {
        addEventListener('hashchange', resolve, { once: true });
        location.hash = '#many';
    });
}

async function takeFile(file) {
    if (section().hidden) await showView();
    if (step !== 'wanted') writeWanted();
    try {
        const body = await withSecrets(await readFile(file));
        if (body !== null) await makePlan(body);
    } catch (error) {
        showProblem(error);
    }
}

function parallelChoice() {
    const choice = element('select', { value: '8' }, kParallel.map((one) => new Option(one, one)));
    return { choice, label: element('label', { class: 'inline' }, t('plan.parallel'), ' ', choice) };
}

function writePlan() {
    step = 'plan';
    const { choice, label } = parallelChoice();
    const number = plan.summary.toChange;
    const apply = button(count('plan.apply', number), () => startRun(Number(choice.value)), { class: 'primary' });
    const actions = element('div', { class: 'actions' }, button(t('plan.back'), writeWanted),
        number > 0 ? [label, apply] : []);
    frame(planSummary(plan.summary), problemPlace(), planTable(plan), actions).focus();
}

async function startRun(parallel) {
    try {
        const started = await withLogin(null, () => api.fleetApply(wanted, parallel));
        if (started === null) return;
        wanted = null;
        step = 'run';
        writeRun();
        document.getElementById('many-heading').focus();
    } catch (error) {
        showProblem(error);
    }
}

async function saveResult() {
    try {
        download('result.csv', await api.fleetResult());
    } catch (error) {
        showProblem(error);
    }
}

// It is told at once: the cameras that are on their way may take long.
async function stopRun(event) {
    const stop = event.currentTarget;
    if (stop.getAttribute('aria-disabled') === 'true') return;
    stop.setAttribute('aria-disabled', 'true');
    stop.textContent = t('run.stopping');
    announce(stop.textContent);
    try {
        await api.fleetStop();
    } catch (error) {
        stop.setAttribute('aria-disabled', 'false');
        stop.textContent = t('run.stop');
        showProblem(error);
    }
}

function runActions() {
    const isRunning = known.run?.stage === 'running';
    return element('div', { class: 'actions' }, isRunning ? button(t('run.stop'), stopRun, { id: 'run-stop' })
        : [button(t('run.result'), saveResult, { id: 'run-result', class: 'primary' }), button(t('run.more'), writeWanted)]);
}

// The heading and the buttons stay while they are the same, so that the focus does.
function writeRun() {
    if (document.getElementById('run-body') === null) {
        frame(problemPlace(), element('div', { id: 'run-body' }), element('div', { id: 'run-actions' }));
    }
    if (known.run === null) return;
    document.getElementById('run-body').replaceChildren(...runElements(known.run));
    const place = document.getElementById('run-actions');
    if (place.dataset.stage === known.run.stage) return;
    const hadFocus = place.contains(document.activeElement);
    place.dataset.stage = known.run.stage;
    place.replaceChildren(runActions());
    if (hadFocus) document.getElementById('many-heading').focus();
}

export function showMany() {
    if (known.run?.stage === 'running') step = 'run';
    if (step === 'run') writeRun();
    else if (step === 'plan') writePlan();
    else writeWanted();
}

export function startMany() {
    takeDrops(takeFile);
    onChange('run', () => {
        const banner = document.getElementById('run-banner');
        banner.hidden = known.run?.stage !== 'running' || !section().hidden;
        if (!banner.hidden) banner.firstElementChild.textContent = t('run.running', known.run);
        if (!section().hidden && step === 'run') writeRun();
    });
    onChange('view', () => tell('run'));
}
