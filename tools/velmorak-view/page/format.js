"use strict";

/* Makes elements and shows numbers. Texts never become markup. */
function element(tag, attributes, ...children) {
    const made = document.createElement(tag);
    return fill(made, attributes, children);
}

function drawn(tag, attributes, ...children) {
    return fill(document.createElementNS("http://www.w3.org/2000/svg", tag), attributes, children);
}

function fill(made, attributes, children) {
    for (const [name, value] of Object.entries(attributes || {})) {
        if (name.startsWith("on")) {
            made.addEventListener(name.slice(2), value);
        } else if (value !== null && value !== undefined && value !== false) {
            made.setAttribute(name, value === true ? "" : value);
        }
    }
    for (const child of children.flat()) {
        if (child !== null && child !== undefined) {
            made.append(child);
        }
    }
    return made;
}

const locale = isGerman ? "de-DE" : "en-GB";

function shownNumber(value, digits = 6) {
    if (value === null || value === undefined || Number.isNaN(value)) {
        return "NaN";
    }
    if (!Number.isFinite(value)) {
        return value > 0 ? "∞" : "−∞";
    }
    const size = Math.abs(value);
    const isPlain = size === 0 || (size >= 1e-4 && size < 1e9);
    return new Intl.NumberFormat(locale, isPlain ? {maximumSignificantDigits: digits}
                                                 : {notation: "scientific", maximumSignificantDigits: digits})
        .format(value).replace("-", "−");
}

function shownCount(value) {
    return new Intl.NumberFormat(locale).format(value);
}

/* The error has two digits, one from 0.355 of its decade on, as the Particle Data Group rounds. */
function shownMeasurement(value, error) {
    if (!(error > 0) || !Number.isFinite(error) || !Number.isFinite(value)) {
        return shownNumber(value, 8);
    }
    const decade = Math.floor(Math.log10(error));
    const mantissa = error / 10 ** decade;
    const digits = Math.max(0, Math.min(15, (mantissa < 3.55 ? 1 : 0) - decade));
    const size = Math.max(Math.abs(value), error);
    if (size >= 1e7 || size < 1e-5) {
        return shownNumber(value, 6) + " ± " + shownNumber(error, 2);
    }
    const format = new Intl.NumberFormat(locale, {minimumFractionDigits: digits, maximumFractionDigits: digits});
    return (format.format(value) + " ± " + format.format(error)).replace("-", "−");
}

function shownTime(seconds) {
    if (seconds < 100) {
        return shownNumber(Number(seconds.toFixed(seconds < 10 ? 2 : 1)), 3) + " s";
    }
    const minutes = Math.floor(seconds / 60);
    const hours = Math.floor(minutes / 60);
    return hours > 0 ? `${hours} h ${minutes % 60} min` : `${minutes} min ${Math.floor(seconds % 60)} s`;
}

function fileNameOf(path) {
    return path.split("/").pop();
}

function tableOf(headings, rows, numeric = []) {
    const kind = (column) => numeric.includes(column) ? "number" : null;
    return element("div", {class: "scroll"}, element("table", {},
        element("thead", {}, element("tr", {}, headings.map((name, i) => element("th", {class: kind(i), scope: "col"}, name)))),
        element("tbody", {}, rows.map((row) =>
            element("tr", {}, row.map((cell, i) => element("td", {class: kind(i)}, cell)))))));
}

function save(name, content, type) {
    const address = URL.createObjectURL(content instanceof Blob ? content : new Blob([content], {type}));
    const link = element("a", {href: address, download: name});
    document.body.append(link);
    link.click();
    link.remove();
    setTimeout(() => URL.revokeObjectURL(address), 10000);
}
