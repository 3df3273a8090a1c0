// Prints the columns that the values of a tree's branches make, as jsroot reads them, with the names and the way of
// concatenating lists that docs/root.md describes: { NAME: [value of each entry] }. Reals are written as the 16
// hexadecimal digits of their bits.
import { load } from "../../support/npm/load.mjs";

const { openFile } = await load("jsroot/io");
const { TSelector, treeProcess } = await load("jsroot/tree");

const view = new DataView(new ArrayBuffer(8));

function plain(value) {
    if (typeof value === "boolean" || typeof value === "string") {
        return value;
    }
    view.setFloat64(0, Number.isNaN(value) ? NaN : Number(value));
    return view.getBigUint64(0).toString(16).padStart(16, "0");
}

const isList = (value) => Array.isArray(value) || ArrayBuffer.isView(value);
const isPair = (value) => value?._typename?.startsWith("pair");

// How deep lists of each name are nested directly in each other.
const depths = {};

function measure(value, name) {
    let depth = 0;
    for (const item of isList(value) ? value : []) {
        depth = Math.max(depth, isList(item) ? measure(item, name) : 0);
    }
    depths[name] = Math.max(depths[name] ?? 0, depth + 1);
    return depth + 1;
}

function members(object, name, visit) {
    for (const [member, value] of Object.entries(object)) {
        const isOfTheReader = member.startsWith("_") || member.startsWith("$") || typeof value === "function";
        if (!isOfTheReader && member !== "fUniqueID" && member !== "fBits") {
            visit(value, `${name}.${isPair(object) ? { first: "key", second: "value" }[member] : member}`);
        }
    }
}

function measureAll(value, name) {
    if (isList(value)) {
        measure(value, name);
        Array.from(value, (item) => measureAll(item, name));
    } else if (typeof value === "object" && value !== null) {
        members(value, name, measureAll);
    }
}

class Entry {
    constructor() {
        this.columns = {};
        this.rows = {};
    }
    push(name, value) {
        (this.columns[name] ??= []).push(value);
    }
    level(list, name, level) {
        const base = name + ".count".repeat(depths[name] - 1 - level);
        const row = (this.rows[base] = (this.rows[base] ?? -1) + 1);
        this.push(`${base}.count`, plain(list.length));
        Array.from(list, () => this.push(`${base}.row`, plain(row)));
    }
    add(value, name, isInList = false, level = 0) {
        if (isList(value)) {
            if (isInList) {
                this.level(value, name, level);
            }
            Array.from(value, (item) => this.add(item, name, true, level + 1));
        } else if (typeof value === "object" && value !== null) {
            members(value, name, (member, inner) => this.add(member, inner, isInList));
        } else {
            this.push(name, plain(value));
        }
    }
}

// The reader fills the same objects again for each entry.
function copyOf(value) {
    if (isList(value)) {
        return Array.from(value, copyOf);
    }
    if (typeof value === "object" && value !== null) {
        return Object.fromEntries(Object.entries(value).map(([name, member]) => [name, copyOf(member)]));
    }
    return value;
}

class Branches extends TSelector {
    constructor(tree) {
        super();
        this.entries = [];
        this.branches = tree.fBranches.arr;
        this.branches.forEach((branch, position) => this.addBranch(branch, `branch${position}`));
    }
    Process() {
        this.entries.push(this.branches.map((branch, position) => copyOf(this.tgtobj[`branch${position}`])));
    }
}

const file = await openFile(process.argv[2]);
const tree = await file.readObject(process.argv[3]);
const selector = new Branches(tree);
await treeProcess(tree, selector);
const names = selector.branches.map((branch) => branch.fName.replace(/\.$/, "").replace(/\[.*/, ""));
for (const values of selector.entries) {
    values.forEach((value, position) => measureAll(value, names[position]));
}
const columns = {};
selector.entries.forEach((values, number) => {
    const entry = new Entry();
    values.forEach((value, position) => entry.add(value, names[position]));
    for (const [name, found] of Object.entries(entry.columns)) {
        (columns[name] ??= selector.entries.map(() => []))[number] = found;
    }
});
console.log(JSON.stringify(columns));
