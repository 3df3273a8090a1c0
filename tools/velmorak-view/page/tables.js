"use strict";

/* The first rows of tables: of those on wires as the run has seen them, and of result files. */
const shownRowsOfFile = 10;
const headBytes = 65536;

/* The rows that left a plug-in in this run, or in the last one of the document in which they passed. */
function tableOn(run, name) {
    for (let at = run; at; at = formerRun(at)) {
        if (at.tables.has(name)) {
            return {table: at.tables.get(name), run: at};
        }
    }
    return null;
}

function hasTable(plugin) {
    return Boolean(plugin) && (plugin.outputs || []).some((output) => output.type === "table");
}

function headingOf(column) {
    return element("span", {}, column.name, element("span", {class: "quiet"}, ` ${column.unit ? `[${column.unit}] ` : ""}${text(column.type)}`));
}

function wirePart(run, plugin) {
    if (!hasTable(plugin)) {
        return [];
    }
    const title = element("h3", {}, `${plugin.name} ${text("table")}: ${text("first rows")}`);
    const found = tableOn(run, plugin.name);
    if (!found) {
        return [title, element("p", {class: "quiet"}, text("No row has passed here yet."))];
    }
    const {table} = found;
    const used = table.columns.map((column, i) => i).filter((i) => table.columns[i].used);
    const unused = table.columns.filter((column) => !column.used).map((column) => column.name);
    const numeric = used.map((i, at) => at).filter((at) => ["real", "integer"].includes(table.columns[used[at]].type) && !table.columns[used[at]].list);
    const made = [title, tableOf(used.map((i) => headingOf(table.columns[i])), table.rows.map((row) => used.map((i) => row[i])), numeric)];
    if (found.run !== run) {
        made.push(element("p", {class: "quiet"}, `${text("Of the run at")} ${new Date(found.run.began.time).toLocaleTimeString(locale)}: ` +
            text("in this one no row had to pass.")));
    }
    if (unused.length > 0) {
        made.push(element("p", {class: "quiet"}, `${text("Not read, because nothing uses them")}: ${unused.join(", ")}`));
    }
    if (table.columnsInAll > table.columns.length) {
        made.push(element("p", {class: "quiet"}, `${table.columnsInAll - table.columns.length} ${text("more columns")}`));
    }
    return made;
}

/* Records of a text file of rows (RFC 4180), whose separator is the one that its first line has most of. */
function recordsOf(content) {
    const first = content.split("\n", 1)[0].replace(/"[^"]*"/g, "");
    const separator = [",", ";", "\t"].reduce((best, each) => first.split(each).length > first.split(best).length ? each : best);
    const records = [[""]];
    let isQuoted = false;
    for (let i = 0; i < content.length && records.length < shownRowsOfFile + 2; ++i) {
        const character = content[i];
        const record = records[records.length - 1];
        if (character === '"') {
            if (isQuoted && content[i + 1] === '"') {
                record[record.length - 1] += '"';
                ++i;
            } else {
                isQuoted = !isQuoted;
            }
        } else if (character === separator && !isQuoted) {
            record.push("");
        } else if (character === "\n" && !isQuoted) {
            records.push([""]);
        } else if (character !== "\r" || isQuoted) {
            record[record.length - 1] += character;
        }
    }
    return records;
}

const heads = new Map();

async function readHead(run, file, redraw) {
    const key = addressOf(run, file) + file.time;
    heads.set(key, []);
    const part = file.size > headBytes ? {headers: {Range: `bytes=0-${headBytes - 1}`}} : {};
    const answer = await fetch(addressOf(run, file), part);
    let content = answer.ok ? await answer.text() : "";
    if (file.size > headBytes) {
        content = content.slice(0, content.lastIndexOf("\n") + 1);  // The last line may be cut.
    }
    const lines = content.replace(/^\uFEFF/, "").split("\n").filter((line, i, all) => !line.startsWith("#") && (line !== "" || i + 1 < all.length));
    heads.set(key, recordsOf(lines.join("\n")).filter((record) => record.length > 1 || record[0] !== "").slice(0, shownRowsOfFile + 1));
    run.version++;
    redraw();
}

function tablesSection(run, redraw) {
    const files = run.files.filter((file) => /\.(csv|tsv)$/i.test(file.name) && !isFormer(file)).slice(0, 20);
    const made = [];
    for (const file of files) {
        const rows = heads.get(addressOf(run, file) + file.time);
        if (rows === undefined) {
            readHead(run, file, redraw).catch((error) => console.warn("a table cannot be read", error));
        } else if (rows.length > 0) {
            made.push(element("h3", {}, `${file.name}: ${text("first rows")}`), tableOf(rows[0], rows.slice(1)));
        }
    }
    return made.length > 0 ? [heading("Tables"), ...made] : [];
}
