"use strict";

/* What the runs have told, by their ids. */
const maxMessages = 5000;
const runs = new Map();
const strayMessages = [];

function newRun(id) {
    return {id, read: 0, version: 0, alive: true, progress: null, began: null, ended: null, plugins: new Map(),
            messages: [], tables: new Map(), live: null, liveTime: 0, files: [], filesVersion: -1, isBusy: false};
}

function take(run, event) {
    run.version++;
    if (event.event === "began") {
        run.began = event;
    } else if (event.event === "plugin") {
        run.plugins.set(event.name, event);
    } else if (event.event === "message" && run.messages.length < maxMessages) {
        run.messages.push(event);
    } else if (event.event === "table") {
        run.tables.set(event.plugin, event);
    } else if (event.event === "ended") {
        run.ended = event;
    }
}

async function readEvents(run) {
    if (run.isBusy) {
        return;
    }
    run.isBusy = true;
    try {
        while (run.read < run.size) {
            const answer = await fetch(`api/events?run=${encodeURIComponent(run.id)}&from=${run.read}`);
            const next = Number(answer.headers.get("X-Next"));
            if (!answer.ok || !(next > run.read)) {
                break;
            }
            for (const line of (await answer.text()).split("\n")) {
                if (line !== "") {
                    take(run, JSON.parse(line));
                }
            }
            run.read = next;
        }
    } finally {
        run.isBusy = false;
    }
}

async function readFiles(run) {
    const answer = await fetch(`api/files?run=${encodeURIComponent(run.id)}`);
    if (answer.ok) {
        run.files = await answer.json();
        run.version++;
    }
}

/* A results folder that was named on the command line, told by its record. */
async function readFolder() {
    const start = await (await fetch("api/start")).json();
    if (start.job) {
        page.job = "job " + start.job;
    }
    if (!start.folder) {
        return;
    }
    const run = newRun("folder");
    run.alive = false;
    run.isFolder = true;
    const answer = await fetch("file/folder/run.json");
    const record = answer.ok ? await answer.json() : null;
    run.began = {document: record ? record.document.file : "", results: start.folder, settings: record ? record.settings : [],
                 threads: record ? record.threads : 0, time: record ? Date.parse(record.began) : 0,
                 pipeline: record ? pipelineOf(record) : []};
    for (const plugin of record ? record.plugins : []) {
        const outputs = plugin.outputs.filter((output) => output.value !== undefined).map((output) =>
            ({name: output.name, type: "number", value: Number(output.value),
              error: output.error === undefined ? undefined : Number(output.error)}));
        run.plugins.set(plugin.name, Object.assign({}, plugin, {outputs, files: plugin.results.map((file) => file.file)}));
    }
    if (record) {
        const hasFailed = record.plugins.some((plugin) => plugin.outcome === "failed");
        run.ended = {outcome: !record.complete ? "stopped" : hasFailed ? "failed" : "done", seconds: record.seconds,
                     former: record.former || []};
    }
    await readFiles(run);
    runs.set(run.id, run);
}

function pipelineOf(record) {
    let places = new Map();
    try {
        places = new Map(JSON.parse(record.document.text).plugins.map((plugin) => [plugin.name, plugin]));
    } catch (error) {
        console.warn("the document of the record cannot be read", error);
    }
    return record.plugins.map((plugin) => {
        const place = places.get(plugin.name) || {};
        const [x, y] = place.position || [place.x || 0, place.y || 0];
        return {name: plugin.name, kind: plugin.kind, x, y, inputs: plugin.inputs, outputs: plugin.outputs};
    });
}

function stateOfRun(run) {
    if (run.ended) {
        return run.ended.outcome;
    }
    return run.alive ? "running" : "died";
}

function stateOfPlugin(run, name) {
    const plugin = run.plugins.get(name);
    if (plugin) {
        return plugin.outcome;
    }
    if (run.ended || !run.alive) {
        return run.ended && run.ended.outcome === "done" ? "not asked" : "unfinished";
    }
    const isFilling = Boolean(run.live) && run.live.plugins.some((plugin) => plugin.name === name);
    return isFilling || (run.progress && run.progress.plugin === name) ? "running" : "waiting";
}

function titleOfRun(run) {
    return run.began && run.began.document ? fileNameOf(run.began.document) : text("unnamed");
}

/* Results of plug-ins that are being executed: those of plug-ins that are done come with their events. */
async function readLive(run) {
    if (!run || !run.liveAt || run.liveTime === run.liveAt || run.ended) {
        return;
    }
    run.liveTime = run.liveAt;
    const answer = await fetch(`api/live?run=${encodeURIComponent(run.id)}`);
    if (answer.ok) {
        run.live = await answer.json();
        run.version++;
    }
}

/* The last ended run of the same document before this one. */
function formerRun(run) {
    let found = null;
    for (const other of runs.values()) {
        const isSame = other !== run && other.began && run.began && other.ended && other.began.document === run.began.document &&
            other.began.results === run.began.results;
        if (isSame && !other.isFolder && other.began.time < run.began.time && (!found || other.began.time > found.began.time)) {
            found = other;
        }
    }
    return found;
}

async function takeList(list) {
    const known = new Set(["folder"]);
    for (const entry of list) {
        known.add(entry.id);
        if (!runs.has(entry.id)) {
            runs.set(entry.id, newRun(entry.id));
        }
        const run = runs.get(entry.id);
        run.isStray = entry.id.startsWith("messages-");
        const progress = JSON.stringify(entry.progress || null);
        if (run.alive !== (entry.alive !== false) || JSON.stringify(run.progress) !== progress) {
            run.version++;
        }
        run.alive = entry.alive !== false;
        run.progress = entry.progress || null;
        run.size = entry.size;
        await readEvents(run);
        run.liveAt = entry.live || 0;
    }
    for (const id of [...runs.keys()]) {
        if (!known.has(id)) {
            runs.delete(id);
        }
    }
}
