"use strict";

/* The sections of the page about one run. Each gives the elements that it consists of; none: the section is hidden. */
const maxCells = 200;
const charts = new Map();

function heading(english) {
    return element("h2", {}, text(english));
}

function stateElement(state) {
    return element("span", {class: `state ${state.replace(" ", "")}`}, text(state));
}

function progressPart(run) {
    const progress = run.progress;
    if (!progress || run.ended || !run.alive) {
        return [];
    }
    const parts = [`${progress.plugin}: ${shownCount(progress.rows)} ${text("rows")}`,
                   `${shownCount(Math.round(progress.rowsPerSecond))} ${text("rows per second")}`];
    if (progress.pass > 1) {
        parts.push(`${text("pass")} ${progress.pass}`);
    }
    if (progress.files > 1) {
        parts.push(`${text("file")} ${progress.file} ${text("of")} ${progress.files}`);
    }
    if (progress.secondsLeft !== null) {
        parts.push(`${shownTime(progress.secondsLeft)} ${text("left")}`);
    }
    const bar = progress.fraction === null ? {} : {value: progress.fraction, max: 1};
    return [element("progress", Object.assign({"aria-label": progress.plugin}, bar)), element("p", {class: "quiet"}, parts.join(", "))];
}

function summarySection(run) {
    const state = stateOfRun(run);
    const began = run.began;
    const facts = [began.time ? new Date(began.time).toLocaleString(locale) : "", `${began.threads} ${text("threads")}`];
    if (run.ended) {
        facts.unshift(shownTime(run.ended.seconds));
    }
    const made = [element("h2", {}, titleOfRun(run) + ": ", stateElement(state)), element("p", {class: "quiet"}, facts.filter(Boolean).join(", ")),
                  element("p", {class: "quiet"}, began.results)];
    if (began.settings && began.settings.length > 0) {
        made.push(element("p", {class: "quiet"}, `${text("settings")}: ${began.settings.join(", ")}`));
    }
    made.push(...progressPart(run));
    if (state === "died") {
        made.push(element("p", {class: "failure"}, text("The program that ran this has died.")));
    }
    for (const plugin of run.plugins.values()) {
        if (plugin.outcome === "failed") {
            made.push(element("p", {class: "failure"}, element("strong", {}, plugin.name), ": " + plugin.sentence));
        }
    }
    const former = run.ended && run.ended.former ? run.ended.former : [];
    if (former.length > 0) {
        made.push(element("p", {class: "note"}, `${text("No longer in the results folder")}: ${former.map((file) => file.file).join(", ")} ` +
            `(${text("the earlier one is in the folder former")})`));
    }
    return made;
}

function pipelineSection(run, choose) {
    if (!run.began.pipeline || run.began.pipeline.length === 0) {
        return [];
    }
    return [heading("Pipeline"), pipelineDrawing(run, choose)];
}

function detailSection(run, name, close) {
    const plugin = run.began.pipeline.find((each) => each.name === name);
    if (!plugin) {
        return [];
    }
    const told = run.plugins.get(name) || {};
    const rows = [[text("kind"), plugin.kind], [text("state"), text(stateOfPlugin(run, name))]];
    for (const [label, value] of [["reason", told.sentence || told.reason], ["rows in", told.rowsIn], ["rows out", told.rowsOut],
                                  ["time", told.seconds === undefined ? null : shownTime(told.seconds)]]) {
        if (value) {
            rows.push([text(label), typeof value === "number" ? shownCount(value) : value]);
        }
    }
    for (const input of plugin.inputs) {
        rows.push([input.name, input.from ? `${input.from[0]} → ${input.from[1]}` : input.value]);
    }
    for (const output of (told.outputs || []).filter((each) => each.type === "number")) {
        rows.push([output.name, shownMeasurement(output.value, output.error)]);
    }
    return [element("h2", {}, name + " ", element("button", {type: "button", onclick: close}, text("Close"))), tableOf([text("what"), ""], rows),
            ...wirePart(run, plugin)];
}

/* Of a list of histograms each one, under the name of the output with its key. */
function unfolded(outputs) {
    return outputs.flatMap((output) => !output.groups ? [output] : output.groups.map((group) =>
        ({...group, type: "histogram", name: `${output.name} ${group.key}`, title: output.title ? `${output.title}, ${group.title}` : group.title})));
}

function outputsOf(run) {
    const all = [];
    for (const plugin of run.plugins.values()) {
        for (const output of unfolded(plugin.outputs || [])) {
            all.push({plugin: plugin.name, kind: plugin.kind, output});
        }
    }
    for (const plugin of run.live && !run.ended ? run.live.plugins : []) {
        if (!run.plugins.has(plugin.name)) {
            all.push(...unfolded(plugin.outputs).map((output) => ({plugin: plugin.name, kind: plugin.kind, output, rows: plugin.rows})));
        }
    }
    return all;
}

function isParameterError(run, item) {
    return item.output.name.endsWith("_error") && item.kind === "Fit";
}

function inputsOf(run) {
    const all = new Map();
    for (const plugin of run.began.pipeline || []) {
        for (const input of plugin.inputs) {
            all.set(`${plugin.name} ${input.name}`, input.from ? `${input.from[0]} → ${input.from[1]}` : input.value || "");
        }
    }
    return all;
}

function changedInputs(run, former) {
    const [before, after] = [inputsOf(former), inputsOf(run)];
    const rows = [];
    for (const [name, value] of after) {
        if (before.get(name) !== value) {
            rows.push([name, before.has(name) ? before.get(name) : "", value]);
        }
    }
    for (const [name, value] of before) {
        if (!after.has(name)) {
            rows.push([name, value, ""]);
        }
    }
    return rows;
}

function changedNumbers(run, former) {
    const before = new Map(outputsOf(former).map((item) => [`${item.plugin} ${item.output.name}`, item.output]));
    const rows = [];
    for (const item of outputsOf(run)) {
        const name = `${item.plugin} ${item.output.name}`;
        const was = before.get(name);
        if (item.output.type !== "number" || !was || was.type !== "number" || was.value === item.output.value) {
            continue;
        }
        const error = item.output.error || was.error;
        const change = item.output.value - was.value;
        rows.push([name, shownMeasurement(was.value, was.error), shownMeasurement(item.output.value, item.output.error), shownNumber(change, 4),
                   error ? shownNumber(change / error, 3) + " σ" : ""]);
    }
    return rows;
}

function differencesSection(run) {
    const former = formerRun(run);
    if (!former || !run.ended) {
        return [];
    }
    const inputs = changedInputs(run, former);
    const numbers = changedNumbers(run, former);
    const made = [heading("Differences to the former run")];
    if (inputs.length > 0) {
        made.push(tableOf([text("input"), text("former"), text("now")], inputs.slice(0, maxCells)));
    }
    if (numbers.length > 0) {
        made.push(tableOf([text("output"), text("former"), text("now"), text("change"), text("in errors")], numbers.slice(0, maxCells), [1, 2, 3, 4]));
    }
    return made.length > 1 ? made : [made[0], element("p", {class: "quiet"}, text("Nothing changed"))];
}

/* The functions that are drawn over an object: those of plug-ins that it feeds, such as fits. */
function curvesOver(run, name) {
    const curves = [];
    for (const plugin of run.began.pipeline || []) {
        const told = run.plugins.get(plugin.name);
        if (told && plugin.inputs.some((input) => input.from && input.from[0] === name)) {
            curves.push(...(told.outputs || []).filter((output) => output.type === "function" && output.x));
        }
    }
    return curves;
}

function chartFigure(run, item) {
    const key = `${run.id} ${item.plugin} ${item.output.name}`;
    const title = item.output.title || `${item.plugin} ${item.output.name}`;
    const curves = item.output.type === "function" ? [item.output] : curvesOver(run, item.plugin);
    const stamp = JSON.stringify([item.output.heights || item.output.points || item.output.y, curves.length]);
    let known = charts.get(key);
    if (!known) {
        const chart = new Chart(title, item.output, curves);
        known = {chart, stamp, facts: element("span", {class: "quiet"})};
        known.figure = element("figure", {}, element("figcaption", {}, element("span", {class: "title"}, title), known.facts),
                               chart.svg, chart.under, chart.tools);
        charts.set(key, known);
    } else if (known.stamp !== stamp) {
        known.stamp = stamp;
        known.chart.update(item.output, curves);
    }
    const {entries, mean, rms} = item.output;
    known.figure.classList.toggle("live", item.rows !== undefined);
    known.facts.textContent = entries === undefined ? "" :
        `${shownCount(entries)} ${text("entries")}` + (mean && mean.length === 1 ? `, ${text("mean")} ${shownNumber(mean[0], 5)}, rms ${shownNumber(rms[0], 5)}` : "") +
        (item.rows === undefined ? "" : `, ${shownCount(item.rows)} ${text("rows so far")}`);
    return known.figure;
}

function isDrawable(item) {
    return Boolean(item.output.heights || item.output.points || item.output.x);
}

function fitPart(run, item) {
    const rows = (item.output.parameters || []).map((parameter) => {
        const number = (run.plugins.get(item.plugin).outputs || []).find((output) => output.name === parameter.name && output.type === "number");
        return [parameter.name, shownMeasurement(parameter.value, number ? number.error : 0)];
    });
    const notes = item.output.notes || {};
    if (notes.chi2 !== undefined) {
        rows.push(["χ²/ndf", `${shownNumber(Number(notes.chi2), 5)} / ${notes.ndf}`], ["p", shownNumber(Number(notes.p_value), 4)]);
    }
    for (const key of ["model", "status"].filter((each) => notes[each])) {
        rows.push([text(key), notes[key]]);
    }
    return [element("h3", {}, item.plugin), tableOf([item.output.title || item.plugin, ""], rows, [])];
}

function textPart(item) {
    const rows = item.output.text.replace(/\n$/, "").split("\n").map((line) => line.split("\t"));
    const isTable = rows.length > 1 && rows[0].length > 1 && rows.every((row) => row.length === rows[0].length);
    const shown = isTable ? tableOf(rows[0], rows.slice(1, maxCells), rows[0].map((unused, i) => i).slice(1))
                          : element("div", {class: "scroll"}, element("pre", {}, item.output.text));
    return [element("h3", {}, `${item.plugin} ${item.output.name}`), shown];
}

function resultsSection(run) {
    const items = outputsOf(run);
    const fitted = items.filter((item) => run.plugins.has(item.plugin) && item.output.type === "function" && item.output.parameters && item.output.parameters.length > 0);
    const isOverlaid = (item) => item.output.type === "function" && (run.began.pipeline || []).some((plugin) => plugin.name === item.plugin &&
        feedersOf(plugin).some((name) => items.some((other) => other.plugin === name && isDrawable(other) && other.output.type !== "function")));
    const drawnItems = items.filter((item) => isDrawable(item) && !isOverlaid(item));
    const numbers = items.filter((item) => item.output.type === "number" && !isParameterError(run, item));
    const texts = items.filter((item) => item.output.type === "text" && item.output.text !== "" && item.kind !== "Fit");
    const made = [];
    if (drawnItems.length > 0) {
        made.push(element("div", {class: "grid"}, drawnItems.slice(0, maxCells).map((item) => chartFigure(run, item))));
    }
    if (fitted.length > 0) {
        made.push(heading("Fits"), ...fitted.flatMap((item) => fitPart(run, item)));
    }
    if (numbers.length > 0) {
        made.push(heading("Numbers"), tableOf([text("plug-in"), text("output"), text("value")], numbers.slice(0, 10 * maxCells).map((item) =>
            [item.plugin, item.output.name, shownMeasurement(item.output.value, item.output.error)]), [2]));
    }
    if (texts.length > 0) {
        made.push(heading("Texts"), ...texts.slice(0, maxCells).flatMap(textPart));
    }
    return made.length > 0 ? [heading("Results"), ...made] : [];
}

function addressOf(run, file) {
    return `file/${encodeURIComponent(run.id)}/${file.name.split("/").map(encodeURIComponent).join("/")}`;
}

function isFormer(file) {
    return file.name.startsWith("former/");
}

/* Of a picture that was written in several formats, the one that is sharpest. */
function picturesSection(run) {
    const best = new Map();
    for (const file of run.files.filter((each) => /\.(svg|png)$/i.test(each.name) && !isFormer(each))) {
        const base = file.name.replace(/\.[^.]*$/, "");
        if (!best.has(base) || file.name.endsWith(".svg")) {
            best.set(base, file);
        }
    }
    const isPage = (name) => name.endsWith(".html") || (name.endsWith(".pdf") && !best.has(name.replace(/\.[^.]*$/, "")));
    const pages = run.files.filter((file) => isPage(file.name) && !isFormer(file));
    if (best.size === 0 && pages.length === 0) {
        return [];
    }
    const link = (file, label) => element("a", {href: addressOf(run, file), target: "_blank", rel: "noopener"}, label);
    const figures = [...best.values()].map((file) => element("figure", {},
        element("figcaption", {}, element("span", {class: "title"}, link(file, file.name))),
        element("img", {loading: "lazy", decoding: "async", alt: file.name, src: `${addressOf(run, file)}?${file.time}`})));
    return [heading("Pictures"), ...pages.map((file) => element("p", {}, link(file, file.name))), element("div", {class: "grid"}, figures)];
}

function kindOfMessage(message) {
    if (/^[^"]*"[^"]*" failed: |^The run failed/.test(message.text)) {
        return "failed";
    }
    return message.text.includes(": warning: ") ? "warning" : "plain";
}

function messagesSection(messages, filter, redraw) {
    const shown = messages.filter((message) => (filter.all || kindOfMessage(message) !== "plain") &&
        message.text.toLowerCase().includes(filter.words.toLowerCase()));
    const choice = element("select", {id: "which", "aria-label": text("Messages"), onchange: (event) => {
        filter.all = event.target.value === "all";
        redraw();
    }}, element("option", {value: "all", selected: filter.all}, text("all")),
        element("option", {value: "some", selected: !filter.all}, text("warnings and failures")));
    const search = element("input", {id: "words", type: "search", placeholder: text("Search"), "aria-label": text("Search"), value: filter.words,
                                     oninput: (event) => {
                                         filter.words = event.target.value;
                                         redraw();
                                     }});
    const list = element("div", {id: "messageList", class: "scroll", tabindex: "0"}, shown.slice(-1000).map((message) =>
        element("div", {class: `message ${kindOfMessage(message)}`}, message.text)));
    return [element("h2", {}, `${text("Messages")} (${shown.length})`), element("div", {class: "filters"}, choice, search), list];
}
