"use strict";

/* Follows the runs and shows the chosen one: the newest, until the user chooses. */
const page = {version: 0, chosen: null, isFixed: false, plugin: null, shown: new Map(), filter: {all: true, words: ""}};

function place(id, stamp, make) {
    if (page.shown.get(id) === stamp) {
        return;
    }
    page.shown.set(id, stamp);
    const section = document.getElementById(id);
    const focused = section.contains(document.activeElement) ? document.activeElement : null;
    const mark = focused && (focused.id ? "#" + focused.id : focused.dataset.name ? `[data-name="${CSS.escape(focused.dataset.name)}"]` : null);
    const parts = make();
    const list = section.querySelector("#messageList, .scroll");
    const top = list ? [list.scrollTop, list.scrollLeft] : [0, 0];
    section.replaceChildren(...parts);
    section.hidden = parts.length === 0;
    const next = section.querySelector("#messageList, .scroll");
    if (next) {
        [next.scrollTop, next.scrollLeft] = top;
    }
    if (focused && focused.isConnected) {
        focused.focus({preventScroll: true});  // It was moved to its place again.
        return;
    }
    const again = mark ? section.querySelector(mark) : null;
    if (again) {
        again.focus({preventScroll: true});
        if (again.id === "words") {
            again.setSelectionRange(again.value.length, again.value.length);
        }
    }
}

function shownRuns() {
    return [...runs.values()].filter((run) => run.began).sort((one, two) => (two.began.time || 0) - (one.began.time || 0));
}

function choose(id, isByUser) {
    page.chosen = id;
    page.isFixed = page.isFixed || isByUser;
    page.plugin = null;
    page.shown.clear();
    charts.clear();
    show();
}

/* The runs of a scan differ in their settings. */
function runButton(run) {
    const settings = (run.began.settings || []).join(", ");
    return element("button", {type: "button", "data-name": run.id, "aria-current": String(run.id === page.chosen),
                              onclick: () => choose(run.id, true)},
        element("span", {class: "name"}, titleOfRun(run)), stateElement(stateOfRun(run)),
        element("span", {class: "quiet"}, " " + (run.isFolder ? text("Results folder") : new Date(run.began.time).toLocaleTimeString(locale))),
        settings === "" ? null : element("span", {class: "settings quiet", title: settings}, shortened(settings, 60)));
}

function runList(all) {
    return [element("h2", {}, text("Runs")), ...all.map(runButton)];
}

function jobList() {
    return jobs.size === 0 ? [] : [element("h2", {}, text("Jobs"))].concat([...jobs].map(([id, job]) => element("button", {
        type: "button", "data-name": id, "aria-current": String(id === page.chosen), onclick: () => choose(id, true)
    }, element("span", {class: "name"}, titleOfJob(job)), stateElement(stateOfJob(job)),
        element("span", {class: "quiet"}, ` ${countsOf(job).done} ${text("of")} ${job.parts.length}`))));
}

function showJob(job) {
    const stamp = JSON.stringify(job);
    document.title = `${titleOfJob(job)}: ${text(stateOfJob(job))} – Velmorak`;
    place("parts", stamp, () => jobSection(job));
    for (const id of ["summary", "pipeline", "detail", "differences", "results", "pictures", "tables", "messages"]) {
        place(id, "job", () => []);
    }
}

/* A job that was named on the command line is shown first. */
function firstChoice(all) {
    const folder = runs.get("folder");
    if (page.job && jobs.has(page.job)) {
        return page.job;
    }
    return (folder && !all.some((run) => run.began.results === folder.began.results && !run.isFolder) ? folder : all[0] || {id: null}).id ||
        [...jobs.keys()][0] || null;
}

function show() {
    const all = shownRuns();
    const isKnown = runs.has(page.chosen) || jobs.has(page.chosen);
    if ((!page.isFixed || !isKnown) && (all.length > 0 || jobs.size > 0)) {
        const wanted = firstChoice(all);
        if (page.chosen !== wanted) {
            choose(wanted, false);
            return;
        }
    }
    place("runs", JSON.stringify([all.map((run) => [run.id, stateOfRun(run), run.id === page.chosen]),
                                  [...jobs].map(([id, job]) => [id, countsOf(job), id === page.chosen])]),
          () => runList(all).concat(jobList()));
    if (jobs.has(page.chosen)) {
        showJob(jobs.get(page.chosen));
        return;
    }
    place("parts", "none", () => []);
    const run = runs.get(page.chosen);
    const stray = [...runs.values()].filter((each) => each.isStray).flatMap((each) => each.messages);
    if (!run || !run.began) {
        place("summary", "none", () => [heading("No run yet"), element("p", {}, text("Start a run in the window or with velmorak-run; it appears here."))]);
        place("messages", `none ${stray.length}`, () => stray.length > 0 ? messagesSection(stray, page.filter, showMessages) : []);
        return;
    }
    const stamp = `${run.id} ${run.version} ${run.alive}`;
    document.title = `${titleOfRun(run)}: ${text(stateOfRun(run))} – Velmorak`;
    place("summary", stamp, () => summarySection(run));
    place("pipeline", stamp, () => pipelineSection(run, choosePlugin));
    place("detail", `${stamp} ${page.plugin}`, () => page.plugin ? detailSection(run, page.plugin, () => choosePlugin(null)) : []);
    place("differences", `${stamp} ${all.length}`, () => differencesSection(run));
    place("results", `${run.id} ${run.plugins.size} ${Boolean(run.ended)} ${run.live ? run.version : 0}`, () => resultsSection(run));
    place("pictures", `${run.id} ${JSON.stringify(run.files.map((file) => [file.name, file.time]))}`, () => picturesSection(run));
    place("tables", `${run.id} ${JSON.stringify(run.files.map((file) => [file.name, file.time]))} ${heads.size} ${run.version}`,
          () => tablesSection(run, show));
    showMessages();
}

function showMessages() {
    const run = runs.get(page.chosen);
    const stray = [...runs.values()].filter((each) => each.isStray).flatMap((each) => each.messages);
    const messages = run && run.began ? run.messages.concat(stray.filter((message) => message.time >= (run.began.time || Infinity))) : stray;
    messages.sort((one, two) => one.time - two.time);
    place("messages", `${page.chosen} ${messages.length} ${JSON.stringify(page.filter)}`,
          () => messagesSection(messages, page.filter, showMessages));
}

function choosePlugin(name) {
    page.plugin = name;
    show();
    for (const box of document.querySelectorAll(".box")) {
        box.classList.toggle("chosen", box.dataset.name === name);
    }
    if (name) {
        document.getElementById("detail").scrollIntoView({block: "nearest"});
    }
}

/* Pictures appear when the plug-in that makes them has told of its end. */
async function readChangedFiles() {
    const run = runs.get(page.chosen);
    const stamp = run ? `${run.plugins.size} ${Boolean(run.ended)}` : "";
    if (run && run.began && run.began.results && run.filesVersion !== stamp) {
        run.filesVersion = stamp;
        await readFiles(run);
    }
}

function connected(isConnected) {
    document.getElementById("connection").textContent = isConnected ? "" : text("Not connected") + ": " + text("The server of this page has ended.");
}

async function follow() {
    for (;;) {
        try {
            const look = document.visibilityState === "visible" ? "&look=1" : "";
            const answer = await fetch(`api/runs?version=${page.version}${look}`);
            const list = await answer.json();
            page.version = list.version;
            await takeList(list.runs);
            connected(true);
            show();
            await readLive(runs.get(page.chosen));
            await readChangedFiles();
            show();
        } catch (error) {
            connected(false);
            await new Promise((resolve) => setTimeout(resolve, 2000));
        }
    }
}

matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
    for (const {chart} of charts.values()) {
        chart.draw();
    }
});
readFolder().catch((error) => console.warn("the results folder cannot be read", error)).then(() => {
    show();
    followJobs();
    return follow();
});
