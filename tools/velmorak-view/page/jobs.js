"use strict";

/* Jobs that are done in many parts, by processes on this machine or on others. */
const jobs = new Map();
const maxCellsOfJob = 3000;
const partStates = ["waiting", "running", "done", "failed", "died"];

function idOfJob(job) {
    return "job " + job.folder;
}

function countsOf(job) {
    const counts = Object.fromEntries(partStates.map((state) => [state, 0]));
    for (const part of job.parts) {
        counts[part.state]++;
    }
    return counts;
}

function stateOfJob(job) {
    const counts = countsOf(job);
    if (job.error || counts.failed + counts.died > 0) {
        return "failed";
    }
    return counts.done === job.parts.length ? "done" : counts.running > 0 ? "running" : "waiting";
}

function titleOfJob(job) {
    return job.document ? fileNameOf(job.document) : fileNameOf(job.folder);
}

async function readJobs() {
    const answer = await fetch("api/jobs");
    if (!answer.ok) {
        return;
    }
    const known = new Set();
    for (const job of await answer.json()) {
        known.add(idOfJob(job));
        jobs.set(idOfJob(job), job);
    }
    for (const id of [...jobs.keys()].filter((each) => !known.has(each))) {
        jobs.delete(id);
    }
}

function partTitle(part, number) {
    return `${text("part")} ${number}: ${text(part.state)}` + (part.host ? `, ${part.host}` : "") +
        (part.seconds === undefined ? "" : `, ${shownTime(part.seconds)}`);
}

function cellsOf(job) {
    const side = 16;
    const columns = Math.min(50, job.parts.length);
    const rows = Math.ceil(Math.min(job.parts.length, maxCellsOfJob) / columns);
    const picture = drawn("svg", {class: "cells", viewBox: `0 0 ${columns * side} ${rows * side}`, width: columns * side, height: rows * side,
                                  role: "img", "aria-label": text("Parts")});
    job.parts.slice(0, maxCellsOfJob).forEach((part, i) => {
        picture.append(drawn("rect", {class: `part ${part.state}`, x: side * (i % columns) + 1, y: side * Math.floor(i / columns) + 1,
                                      width: side - 2, height: side - 2, rx: 2}, drawn("title", {}, partTitle(part, i + 1))));
    });
    return picture;
}

function nodesPart(job) {
    const hosts = new Map();
    job.parts.forEach((part, i) => {
        if (part.host) {
            const host = hosts.get(part.host) || {done: [], running: [], failed: [], died: [], seconds: 0};
            (host[part.state] || []).push(i + 1);
            host.seconds += part.seconds || 0;
            hosts.set(part.host, host);
        }
    });
    if (hosts.size === 0) {
        return [];
    }
    const rows = [...hosts].sort().map(([name, host]) =>
        [name, rangesOf(host.running), rangesOf(host.done), rangesOf(host.failed.concat(host.died)),
         host.done.length > 0 ? shownTime(host.seconds / host.done.length) : ""]);
    return [heading("Nodes"), tableOf([text("node"), text("running"), text("done"), text("failed"), text("time of a part")], rows, [4])];
}

/* 1-4, 7 */
function rangesOf(numbers) {
    const sorted = [...numbers].sort((one, two) => one - two);
    const ranges = [];
    for (const number of sorted) {
        const last = ranges[ranges.length - 1];
        if (last && last[1] + 1 === number) {
            last[1] = number;
        } else {
            ranges.push([number, number]);
        }
    }
    return ranges.map(([from, to]) => from === to ? String(from) : `${from}–${to}`).join(", ");
}

function roundsPart(job) {
    const groups = new Map();
    for (const part of job.parts) {
        const key = `${part.round} ${part.run} ${part.targets}`;
        const group = groups.get(key) || {part, all: 0, done: 0};
        group.all++;
        group.done += part.state === "done" ? 1 : 0;
        groups.set(key, group);
    }
    if (groups.size < 2) {
        return [];
    }
    return [heading("Rounds"), tableOf([text("round"), text("plug-in"), text("settings"), text("done")],
                                       [...groups.values()].slice(0, maxCells).map((group) =>
                                           [group.part.round, group.part.targets, group.part.run, `${group.done} ${text("of")} ${group.all}`]), [0, 3])];
}

function jobSection(job) {
    const counts = countsOf(job);
    const made = [element("h2", {}, titleOfJob(job) + ": ", stateElement(stateOfJob(job))),
                  element("p", {class: "quiet"}, job.folder),
                  element("p", {}, `${shownCount(counts.done)} ${text("of")} ${shownCount(job.parts.length)} ${text("parts are done")}` +
                      partStates.filter((state) => state !== "done" && counts[state] > 0).map((state) => `, ${counts[state]} ${text(state)}`).join("")),
                  element("progress", {value: counts.done, max: Math.max(1, job.parts.length), "aria-label": text("Parts")})];
    if (job.error) {
        made.push(element("p", {class: "failure"}, job.error));
    }
    if (counts.done === job.parts.length && !job.error) {
        made.push(element("p", {class: "quiet"}, text("All parts are done; velmorak-run --merge puts them together.")));
    }
    job.parts.map((part, i) => [part, i + 1]).filter(([part]) => part.state === "failed" || part.state === "died").slice(0, maxCells)
        .forEach(([part, number]) => made.push(element("p", {class: "failure"}, element("strong", {}, partTitle(part, number)),
            part.state === "died" ? ". " + text("The program that ran this has died.") : ": " + (part.reason || ""))));
    made.push(heading("Parts"), element("div", {class: "scroll"}, cellsOf(job)), ...nodesPart(job), ...roundsPart(job));
    return made;
}

async function followJobs() {
    for (;;) {
        try {
            await readJobs();
            show();
        } catch (error) {
            console.warn("the jobs cannot be read", error);
        }
        const isBusy = [...jobs.values()].some((job) => ["running", "waiting"].includes(stateOfJob(job)));
        await new Promise((resolve) => setTimeout(resolve, isBusy && document.visibilityState === "visible" ? 2000 : 10000));
    }
}
