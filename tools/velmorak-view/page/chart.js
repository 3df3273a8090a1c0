"use strict";

/* Interactive drawings of histograms, profiles, points and functions, without any library. */
const chartWidth = 640;
const chartHeight = 400;
const frame = {left: 74, right: 16, top: 14, bottom: 52};
const curveColours = ["#d55e00", "#009e73", "#cc79a7", "#e69f00"];
const viridis = [[68, 1, 84], [71, 45, 123], [59, 82, 139], [44, 114, 142], [33, 145, 140], [40, 174, 128], [94, 201, 98],
                 [173, 220, 48], [253, 231, 37]];

function edgesOf(axis) {
    if (axis.edges) {
        return axis.edges;
    }
    return Array.from({length: axis.bins + 1}, (unused, i) =>
        i === axis.bins ? axis.high : axis.low + (axis.high - axis.low) * i / axis.bins);
}

/* Everything that is drawn: points with errors, perhaps with edges of bins; curves; or cells. */
function contentsOf(result, curves) {
    if (result.axes && result.axes.length === 2 && result.heights) {
        return {isMap: true, x: edgesOf(result.axes[0]), y: edgesOf(result.axes[1]), z: result.heights};
    }
    let points = [];
    if (result.heights) {
        const edges = edgesOf(result.axes[0]);
        points = result.heights.map((y, i) => ({x: (edges[i] + edges[i + 1]) / 2, low: edges[i], high: edges[i + 1], y,
                                                down: result.errors[i], up: result.errors[i], label: (result.axes[0].labels || [])[i]}));
    } else if (result.points) {
        points = result.points.map((point, i) => {
            const [x, y] = point.length > 1 ? point : [[i + 1, 0, 0], point[0]];
            return {x: x[0], low: x[0] - x[1], high: x[0] + x[2], y: y[0], down: y[1], up: y[2]};
        });
    }
    const lines = curves.filter((curve) => curve.x && curve.y);
    return {isMap: false, points, lines, hasSteps: result.type === "histogram"};
}

function span(values, isLog) {
    const usable = values.filter((value) => value !== null && Number.isFinite(value) && (!isLog || value > 0));
    if (usable.length === 0) {
        return isLog ? [0.1, 1] : [0, 1];
    }
    const low = usable.reduce((a, b) => Math.min(a, b));
    const high = usable.reduce((a, b) => Math.max(a, b));
    return low === high ? (isLog ? [low / 2, high * 2] : [low - 0.5, high + 0.5]) : [low, high];
}

function widened([low, high], isLog, keepsLow) {
    if (isLog) {
        const factor = (high / low) ** 0.06;
        return [low / factor, high * factor];
    }
    const extra = 0.06 * (high - low);
    return [keepsLow ? low : low - extra, high + extra];
}

function ticsOf([low, high], isLog) {
    const tics = [];
    if (isLog) {
        const decades = Math.log10(high / low);
        for (let power = Math.floor(Math.log10(low)); power <= Math.ceil(Math.log10(high)); ++power) {
            for (const factor of decades < 2 ? [1, 2, 5] : [1]) {
                tics.push(factor * 10 ** power);
            }
        }
        const step = Math.ceil(tics.length / 9);
        return tics.filter((tic, i) => tic >= low * 0.999 && tic <= high * 1.001 && (decades < 2 || i % step === 0));
    }
    const rough = (high - low) / 6;
    const decade = 10 ** Math.floor(Math.log10(rough));
    const step = decade * [1, 2, 5, 10].find((factor) => factor * decade >= rough);
    for (let i = Math.ceil(low / step - 1e-9) + 0; i * step <= high + 1e-9 * step; ++i) {
        tics.push(i * step + 0);  // Not -0.
    }
    return tics;
}

function colourAt(part) {
    const place = Math.max(0, Math.min(1, part)) * (viridis.length - 1);
    const first = Math.min(viridis.length - 2, Math.floor(place));
    return viridis[first].map((c, i) => Math.round(c + (viridis[first + 1][i] - c) * (place - first)));
}

class Chart {
    constructor(name, result, curves) {
        this.name = name;
        this.isLog = {x: false, y: false, z: false};
        this.zoom = null;
        this.svg = drawn("svg", {class: "chart", viewBox: `0 0 ${chartWidth} ${chartHeight}`, tabindex: "0", role: "img",
                                 "aria-label": `${text("Chart")} ${name}: ` +
                                     text("drag to zoom, double click to reset; arrows, + and - on the keyboard")});
        this.under = element("p", {class: "under"});
        this.tools = element("div", {class: "tools"});
        this.listen();
        this.update(result, curves);
    }

    update(result, curves) {
        this.result = result;
        this.curves = curves;
        this.contents = contentsOf(result, curves);
        this.showTools();
        this.draw();
    }

    showTools() {
        const toggles = (this.contents.isMap ? ["z"] : ["x", "y"]).map((axis) =>
            element("button", {type: "button", "aria-pressed": String(this.isLog[axis]), onclick: () => this.toggle(axis)}, text("log " + axis)));
        this.tools.replaceChildren(...toggles,
            element("button", {type: "button", onclick: () => this.reset()}, text("Reset")),
            element("button", {type: "button", onclick: () => this.saveSvg()}, "SVG"),
            element("button", {type: "button", onclick: () => this.savePng()}, "PNG"),
            element("button", {type: "button", onclick: () => save(this.fileName("csv"), this.csv(), "text/csv")}, "CSV"));
    }

    toggle(axis) {
        this.isLog[axis] = !this.isLog[axis];
        this.zoom = axis === "x" ? null : this.zoom;
        this.showTools();
        this.draw();
    }

    reset() {
        this.zoom = null;
        this.draw();
    }

    ranges() {
        const {isMap, points, lines, x, y} = this.contents;
        if (isMap) {
            return {x: this.zoom || [x[0], x[x.length - 1]], y: [y[0], y[y.length - 1]]};
        }
        const all = points.flatMap((point) => [point.low, point.high]).concat(points.length > 0 ? [] : lines.flatMap((line) => line.x));
        const xSpan = this.zoom || (this.contents.hasSteps && !this.isLog.x ? span(all, false)
                                                                           : widened(span(all, this.isLog.x), this.isLog.x));
        const isIn = (value) => value >= xSpan[0] && value <= xSpan[1];
        const heights = points.filter((point) => point.high >= xSpan[0] && point.low <= xSpan[1])
            .flatMap((point) => this.isLog.y ? [point.y, point.y + point.up] : [point.y, point.y - point.down, point.y + point.up])
            .concat(this.isLog.y && points.length > 0 ? [] : lines.flatMap((line) => line.y.filter((value, i) => isIn(line.x[i]))));
        const isFromZero = this.contents.hasSteps && !this.isLog.y && heights.every((value) => value === null || value >= 0);
        let ySpan = span(isFromZero ? heights.concat([0]) : heights, this.isLog.y);
        ySpan = widened(ySpan, this.isLog.y, isFromZero);
        return {x: xSpan, y: ySpan};
    }

    scales() {
        const {x, y} = this.ranges();
        const scale = ([low, high], isLog, begin, end) => {
            const [from, to] = isLog ? [Math.log(low), Math.log(high)] : [low, high];
            const forth = (value) => begin + (end - begin) * ((isLog ? Math.log(value) : value) - from) / (to - from);
            const back = (place) => {
                const value = from + (to - from) * (place - begin) / (end - begin);
                return isLog ? Math.exp(value) : value;
            };
            return {low, high, isLog, forth, back};
        };
        return {x: scale(x, this.isLog.x, frame.left, chartWidth - frame.right),
                y: scale(y, this.isLog.y, chartHeight - frame.bottom, frame.top)};
    }

    draw() {
        const style = getComputedStyle(document.documentElement);
        this.ink = style.getPropertyValue("--ink").trim();
        this.quiet = style.getPropertyValue("--line").trim();
        this.accent = style.getPropertyValue("--accent").trim();
        this.scale = this.scales();
        const clip = "clip" + Math.random().toString(36).slice(2);
        const body = drawn("g", {"clip-path": `url(#${clip})`});
        if (this.contents.isMap) {
            this.drawCells(body);
        } else {
            this.drawPoints(body);
            this.contents.lines.forEach((line, i) => this.drawLine(body, line, i));
        }
        this.svg.replaceChildren(
            drawn("defs", {}, drawn("clipPath", {id: clip}, drawn("rect", this.inner()))),
            ...this.axes(), body, drawn("rect", Object.assign({fill: "none", stroke: this.ink}, this.inner())));
    }

    inner() {
        return {x: frame.left, y: frame.top, width: chartWidth - frame.left - frame.right,
                height: chartHeight - frame.top - frame.bottom};
    }

    label(x, y, content, anchor, turned) {
        return drawn("text", {x, y, "font-size": 13, "font-family": "DejaVu Sans, sans-serif", fill: this.ink, "text-anchor": anchor,
                              transform: turned ? `rotate(-90 ${x} ${y})` : null}, content);
    }

    axes() {
        const made = [];
        const bottom = chartHeight - frame.bottom;
        const labels = this.result.axes && this.result.axes[0] && this.result.axes[0].labels;
        const xTics = labels ? labels.map((unused, i) => i).filter((i) => i % Math.ceil(labels.length / 10) === 0)
                             : ticsOf([this.scale.x.low, this.scale.x.high], this.isLog.x);
        for (const tic of xTics) {
            const x = this.scale.x.forth(tic);
            if (x >= frame.left - 1 && x <= chartWidth - frame.right + 1) {
                made.push(drawn("line", {x1: x, x2: x, y1: bottom, y2: frame.top, stroke: this.quiet}));
                made.push(this.label(x, bottom + 18, labels ? shortened(labels[tic], 12) : shownNumber(tic), "middle"));
            }
        }
        for (const tic of ticsOf([this.scale.y.low, this.scale.y.high], this.isLog.y)) {
            const y = this.scale.y.forth(tic);
            made.push(drawn("line", {x1: frame.left, x2: chartWidth - frame.right, y1: y, y2: y, stroke: this.quiet}));
            made.push(this.label(frame.left - 6, y + 4, shownNumber(tic), "end"));
        }
        const titles = (this.result.axes || []).map((axis) => axis.title || "");
        made.push(this.label((frame.left + chartWidth - frame.right) / 2, chartHeight - 10, shortened(titles[0] || "", 70), "middle"));
        made.push(this.label(15, (frame.top + bottom) / 2, shortened(titles[1] || "", 40), "middle", true));
        return made;
    }

    drawPoints(body) {
        const {x, y} = this.scale;
        const ground = y.isLog ? chartHeight - frame.bottom : y.forth(Math.max(0, y.low));
        const height = (value) => y.isLog && !(value > 0) ? chartHeight : y.forth(value);
        const place = (value) => x.isLog && !(value > 0) ? frame.left - 10 : x.forth(value);
        const {points, hasSteps, lines} = this.contents;
        if (hasSteps && points.length > 0) {
            let path = `M${place(points[0].low)} ${ground}`;
            for (const point of points) {
                path += ` V${height(point.y)} H${place(point.high)}`;
            }
            body.append(drawn("path", {d: path + ` V${ground}`, fill: this.accent, "fill-opacity": lines.length > 0 ? 0.08 : 0.18,
                                       stroke: this.accent, "stroke-width": 1.6, "stroke-linejoin": "round"}));
        }
        for (const point of points) {
            const [px, py] = [place(point.x), height(point.y)];
            if (point.y === null || points.length > 2000) {
                continue;
            }
            if (point.down > 0 || point.up > 0) {
                body.append(drawn("line", {x1: px, x2: px, y1: height(point.y - point.down), y2: height(point.y + point.up),
                                           stroke: this.accent, "stroke-width": 1.2}));
            }
            if (!hasSteps) {
                body.append(drawn("line", {x1: place(point.low), x2: place(point.high), y1: py, y2: py, stroke: this.accent}));
                body.append(drawn("circle", {cx: px, cy: py, r: 3.2, fill: this.accent}));
            }
        }
    }

    drawLine(body, line, number) {
        const {x, y} = this.scale;
        const usable = line.x.map((at, i) => [at, line.y[i]])
            .filter(([at, value]) => value !== null && (!x.isLog || at > 0) && (!y.isLog || value > 0));
        const path = usable.map(([at, value], i) => `${i === 0 ? "M" : "L"}${x.forth(at).toFixed(2)} ${y.forth(value).toFixed(2)}`);
        const isOpen = line.notes && line.notes.status === "not converged";
        body.append(drawn("path", {d: path.join(""), fill: "none", stroke: curveColours[number % curveColours.length],
                                   "stroke-width": 2.4, "stroke-dasharray": isOpen ? "7 4" : null}));
    }

    drawCells(body) {
        const {x: xEdges, y: yEdges, z} = this.contents;
        const isUsed = (value) => value !== null && value !== 0 && (!this.isLog.z || value > 0);
        const [low, high] = span(this.isLog.z ? z : z.concat([0]), this.isLog.z);
        const part = (value) => this.isLog.z ? Math.log(value / low) / Math.log(high / low) : (value - low) / (high - low);
        const nx = xEdges.length - 1;
        z.forEach((value, cell) => {
            if (!isUsed(value)) {
                return;
            }
            const [i, j] = [cell % nx, Math.floor(cell / nx)];
            const [left, right] = [this.scale.x.forth(xEdges[i]), this.scale.x.forth(xEdges[i + 1])];
            const [bottom, top] = [this.scale.y.forth(yEdges[j]), this.scale.y.forth(yEdges[j + 1])];
            body.append(drawn("rect", {x: left.toFixed(2), y: top.toFixed(2), width: (right - left + 0.3).toFixed(2),
                                       height: (bottom - top + 0.3).toFixed(2), "shape-rendering": "crispEdges", fill: `rgb(${colourAt(part(value)).join(",")})`}));
        });
    }

    listen() {
        let from = null;
        const placeOf = (event) => {
            const box = this.svg.getBoundingClientRect();
            return [(event.clientX - box.left) * chartWidth / box.width, (event.clientY - box.top) * chartHeight / box.height];
        };
        this.svg.addEventListener("pointerdown", (event) => {
            from = placeOf(event)[0];
        });
        this.svg.addEventListener("pointermove", (event) => this.showUnder(...placeOf(event)));
        this.svg.addEventListener("pointerup", (event) => {
            const to = placeOf(event)[0];
            if (from !== null && Math.abs(to - from) > 8) {
                this.zoomTo(this.scale.x.back(Math.min(from, to)), this.scale.x.back(Math.max(from, to)));
            }
            from = null;
        });
        this.svg.addEventListener("dblclick", () => this.reset());
        this.svg.addEventListener("wheel", (event) => {
            if (event.ctrlKey) {
                event.preventDefault();
                this.zoomAround(placeOf(event)[0], event.deltaY > 0 ? 1.25 : 0.8);
            }
        }, {passive: false});
        this.svg.addEventListener("keydown", (event) => this.onKey(event));
    }

    onKey(event) {
        const middle = (frame.left + chartWidth - frame.right) / 2;
        const width = chartWidth - frame.left - frame.right;
        const moves = {ArrowLeft: -0.1, ArrowRight: 0.1};
        if (event.key === "+" || event.key === "-") {
            this.zoomAround(middle, event.key === "+" ? 0.8 : 1.25);
        } else if (event.key in moves) {
            const shift = moves[event.key] * width;
            this.zoomTo(this.scale.x.back(frame.left + shift), this.scale.x.back(chartWidth - frame.right + shift));
        } else if (event.key === "l") {
            this.toggle(this.contents.isMap ? "z" : "y");
        } else if (event.key === "0" || event.key === "Escape") {
            this.reset();
        } else {
            return;
        }
        event.preventDefault();
    }

    zoomAround(place, factor) {
        const [begin, end] = [frame.left, chartWidth - frame.right];
        this.zoomTo(this.scale.x.back(place - (place - begin) * factor), this.scale.x.back(place + (end - place) * factor));
    }

    zoomTo(low, high) {
        if (high > low && Number.isFinite(high - low)) {
            this.zoom = [low, high];
            this.draw();
        }
    }

    showUnder(px, py) {
        const [x, y] = [this.scale.x.back(px), this.scale.y.back(py)];
        this.under.textContent = this.contents.isMap ? this.cellAt(x, y) : this.pointAt(x);
    }

    cellAt(x, y) {
        const {x: xEdges, y: yEdges, z} = this.contents;
        const i = xEdges.findIndex((edge, at) => x >= edge && x < xEdges[at + 1]);
        const j = yEdges.findIndex((edge, at) => y >= edge && y < yEdges[at + 1]);
        if (i < 0 || j < 0) {
            return "";
        }
        return `${shownNumber(xEdges[i])} … ${shownNumber(xEdges[i + 1])}, ${shownNumber(yEdges[j])} … ${shownNumber(yEdges[j + 1])}: ` +
            shownNumber(z[j * (xEdges.length - 1) + i]);
    }

    pointAt(x) {
        const {points, lines, hasSteps} = this.contents;
        let nearest = null;
        for (const point of points) {
            if (hasSteps ? x >= point.low && x < point.high : !nearest || Math.abs(point.x - x) < Math.abs(nearest.x - x)) {
                nearest = point;
            }
        }
        const parts = [];
        if (nearest) {
            const where = nearest.label !== undefined ? nearest.label
                                                      : hasSteps ? `${shownNumber(nearest.low)} … ${shownNumber(nearest.high)}` : shownNumber(nearest.x);
            parts.push(`${where}: ${shownMeasurement(nearest.y, nearest.up)}`);
        }
        for (const line of lines) {
            const at = line.x.findIndex((value) => value >= x);
            if (at >= 0 && line.y[at] !== null) {
                parts.push(`${line.title || line.name}(${shownNumber(line.x[at], 4)}) = ${shownNumber(line.y[at], 5)}`);
            }
        }
        return parts.join("; ");
    }

    fileName(ending) {
        return this.name.replace(/[^\p{L}\p{N}._-]+/gu, "_") + "." + ending;
    }

    csv() {
        if (this.contents.isMap) {
            const {x, y, z} = this.contents;
            const rows = z.map((value, cell) => {
                const [i, j] = [cell % (x.length - 1), Math.floor(cell / (x.length - 1))];
                return [x[i], x[i + 1], y[j], y[j + 1], value].join(",");
            });
            return ["x_low,x_high,y_low,y_high,value", ...rows].join("\n") + "\n";
        }
        const {points, lines} = this.contents;
        if (points.length === 0) {
            const line = lines[0] || {x: [], y: []};
            return ["x,y", ...line.x.map((at, i) => [at, line.y[i]].join(","))].join("\n") + "\n";
        }
        return ["x_low,x_high,y,error_down,error_up",
                ...points.map((point) => [point.low, point.high, point.y, point.down, point.up].join(","))].join("\n") + "\n";
    }

    svgText() {
        const copy = this.svg.cloneNode(true);
        for (const [name, value] of Object.entries({xmlns: "http://www.w3.org/2000/svg", width: chartWidth, height: chartHeight})) {
            copy.setAttribute(name, value);
        }
        copy.removeAttribute("class");
        const ground = getComputedStyle(document.documentElement).getPropertyValue("--ground").trim();
        copy.insertBefore(drawn("rect", {width: chartWidth, height: chartHeight, fill: ground}), copy.firstChild);
        return new XMLSerializer().serializeToString(copy);
    }

    saveSvg() {
        save(this.fileName("svg"), this.svgText(), "image/svg+xml");
    }

    savePng() {
        const picture = new Image();
        const canvas = element("canvas", {width: 3 * chartWidth, height: 3 * chartHeight});
        picture.onload = () => {
            canvas.getContext("2d").drawImage(picture, 0, 0, canvas.width, canvas.height);
            canvas.toBlob((blob) => save(this.fileName("png"), blob), "image/png");
        };
        picture.src = "data:image/svg+xml;charset=utf-8," + encodeURIComponent(this.svgText());
    }
}
