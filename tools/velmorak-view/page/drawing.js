"use strict";

/* The pipeline as a drawing: a box for each plug-in, coloured by its state, and the wires. */
const boxWidth = 168;
const boxHeight = 58;
const margin = 14;

function overlaps(places) {
    for (let i = 0; i < places.length; ++i) {
        for (let j = 0; j < i; ++j) {
            if (Math.abs(places[i].x - places[j].x) < boxWidth + 4 && Math.abs(places[i].y - places[j].y) < boxHeight + 4) {
                return true;
            }
        }
    }
    return false;
}

function feedersOf(plugin) {
    return plugin.inputs.filter((input) => input.from).map((input) => input.from[0]);
}

/* Columns by distance from the sources, for a document without places, or whose boxes would cover each other. */
function layered(pipeline) {
    const byName = new Map(pipeline.map((plugin) => [plugin.name, plugin]));
    const layers = new Map();
    for (let round = 0; round < pipeline.length; ++round) {
        let isChanged = false;
        for (const plugin of pipeline) {
            const above = feedersOf(plugin).filter((name) => byName.has(name)).map((name) => layers.get(name) || 0);
            const layer = above.length === 0 ? 0 : Math.min(pipeline.length, Math.max(...above) + 1);
            isChanged = isChanged || layers.get(plugin.name) !== layer;
            layers.set(plugin.name, layer);
        }
        if (!isChanged) {
            break;
        }
    }
    const filled = new Map();
    return pipeline.map((plugin) => {
        const layer = layers.get(plugin.name);
        const row = filled.get(layer) || 0;
        filled.set(layer, row + 1);
        return {x: layer * (boxWidth + 60), y: row * (boxHeight + 18)};
    });
}

function placesOf(pipeline) {
    const scale = 1.25;
    const given = pipeline.map((plugin) => ({x: scale * plugin.x, y: -scale * plugin.y}));
    return pipeline.length < 400 && !overlaps(given) ? given : layered(pipeline);
}

function shortened(name, most) {
    return name.length <= most ? name : name.slice(0, most - 1) + "…";
}

/* A wire with a table can be chosen, to see its first rows. */
function wireOf(from, to, row, label, choose) {
    const [x1, y1] = [from.x + boxWidth, from.y + boxHeight / 2];
    const [x2, y2] = [to.x, to.y + 12 + 10 * Math.min(row, 4)];
    const bend = Math.max(30, Math.abs(x2 - x1) / 2);
    const d = `M${x1} ${y1} C${x1 + bend} ${y1} ${x2 - bend} ${y2} ${x2} ${y2}`;
    if (!choose) {
        return drawn("path", {class: "wire", d});
    }
    return drawn("g", {class: "tableWire", tabindex: "0", role: "button", "aria-label": label, "data-name": label, onclick: choose,
                       onkeydown: (event) => {
                           if (event.key === "Enter" || event.key === " ") {
                               event.preventDefault();
                               choose();
                           }
                       }},
        drawn("title", {}, label), drawn("path", {class: "grip", d}), drawn("path", {class: "wire", d}));
}

function rowsText(plugin) {
    if (!plugin || (!plugin.rowsIn && !plugin.rowsOut)) {
        return "";
    }
    return plugin.rowsIn && plugin.rowsOut ? `${shownCount(plugin.rowsIn)} → ${shownCount(plugin.rowsOut)}`
                                           : shownCount(plugin.rowsIn || plugin.rowsOut);
}

function boxOf(run, plugin, place, choose) {
    const state = stateOfPlugin(run, plugin.name);
    const told = run.plugins.get(plugin.name);
    const label = `${plugin.kind} ${plugin.name}: ${text(state)}`;
    const group = drawn("g", {class: `box ${state.replace(" ", "")}`, transform: `translate(${place.x} ${place.y})`, tabindex: "0",
                              role: "button", "aria-label": label, "data-name": plugin.name,
                              onclick: () => choose(plugin.name),
                              onkeydown: (event) => {
                                  if (event.key === "Enter" || event.key === " ") {
                                      event.preventDefault();
                                      choose(plugin.name);
                                  }
                              }},
        drawn("title", {}, label),
        drawn("rect", {class: "frame", width: boxWidth, height: boxHeight, rx: 6}),
        drawn("text", {x: 8, y: 18}, shortened(plugin.name, 21)),
        drawn("text", {x: 8, y: 33, class: "small"}, shortened(plugin.kind, 24)),
        drawn("text", {x: 8, y: 48, class: "small"}, shortened(text(state) + (rowsText(told) ? ", " + rowsText(told) : ""), 27)));
    if (state === "running" && run.progress && run.progress.plugin === plugin.name && run.progress.fraction !== null) {
        group.append(drawn("rect", {class: "bar", x: 1, y: boxHeight - 5, width: (boxWidth - 2) * run.progress.fraction, height: 4}));
    }
    return group;
}

function pipelineDrawing(run, choose) {
    const pipeline = run.began.pipeline;
    const places = placesOf(pipeline);
    const at = new Map(pipeline.map((plugin, i) => [plugin.name, places[i]]));
    const byName = new Map(pipeline.map((plugin) => [plugin.name, plugin]));
    const left = Math.min(...places.map((place) => place.x)) - margin;
    const top = Math.min(...places.map((place) => place.y)) - margin;
    const width = Math.max(...places.map((place) => place.x)) + boxWidth + margin - left;
    const height = Math.max(...places.map((place) => place.y)) + boxHeight + margin - top;
    const picture = drawn("svg", {viewBox: `${left} ${top} ${width} ${height}`, width, height,
                                  role: "group", "aria-label": text("Pipeline")});
    picture.style.maxWidth = width < 1400 ? "100%" : "none";
    picture.style.height = "auto";
    picture.style.minWidth = Math.min(width, 640) + "px";
    for (const plugin of pipeline) {
        plugin.inputs.filter((input) => input.from && at.has(input.from[0])).forEach((input, row) => {
            const feeder = byName.get(input.from[0]);
            const isTable = (feeder.outputs || []).some((output) => output.name === input.from[1] && output.type === "table");
            picture.append(wireOf(at.get(feeder.name), at.get(plugin.name), row,
                                  `${feeder.name} → ${plugin.name}: ${text("first rows")}`, isTable ? () => choose(feeder.name) : null));
        });
    }
    pipeline.forEach((plugin, i) => picture.append(boxOf(run, plugin, places[i], choose)));
    return element("div", {class: "scroll", id: "drawing"}, picture);
}
