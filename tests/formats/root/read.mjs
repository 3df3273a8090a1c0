// Prints what jsroot reads from a ROOT file as JSON. Reals are written as the 16 hexadecimal digits of their bits, every
// NaN as the same.
import { load } from "../../support/npm/load.mjs";

const { openFile } = await load("jsroot/io");
const { TSelector, treeProcess } = await load("jsroot/tree");

const view = new DataView(new ArrayBuffer(8));

// Texts are UTF-8, of which jsroot makes a character from each byte.
function decoded(text) {
    return /[^\x00-\xff]/.test(text) ? text : Buffer.from(text, "latin1").toString("utf8");
}

function plain(value) {
    if (typeof value === "number") {
        view.setFloat64(0, Number.isNaN(value) ? NaN : value);
        return view.getBigUint64(0).toString(16).padStart(16, "0");
    }
    if (ArrayBuffer.isView(value) || Array.isArray(value)) {
        return Array.from(value, plain);
    }
    if (typeof value === "string") {
        return decoded(value);
    }
    return typeof value === "bigint" ? plain(Number(value)) : value;
}

class Columns extends TSelector {
    constructor(tree) {
        super();
        this.columns = {};
        this.booleans = new Set();
        for (const branch of tree.fBranches.arr) {
            this.columns[branch.fName] = [];
            if (branch.fLeaves.arr[0]._typename === "TLeafO") {
                this.booleans.add(branch.fName);  // In lists, they are numbers.
            }
            this.addBranch(branch, branch.fName);
        }
    }
    Process() {
        for (const name in this.columns) {
            const value = this.tgtobj[name];
            const isBooleans = this.booleans.has(name) && typeof value === "object";
            this.columns[name].push(isBooleans ? Array.from(value, Boolean) : plain(value));
        }
    }
}

function members(object) {
    const result = {};
    for (const [name, value] of Object.entries(object)) {
        if (["string", "number", "boolean"].includes(typeof value) || ArrayBuffer.isView(value)) {
            result[name] = plain(value);
        } else if (Array.isArray(value) && value.every((each) => typeof each === "number")) {
            result[name] = plain(value);
        } else if (value?._typename === "TAxis" || value?._typename === "TObjString") {
            result[name] = members(value);
        } else if (Array.isArray(value?.arr)) {
            result[name] = value.arr.map((each) => decoded(each.fString ?? each.fName ?? ""));
        }
    }
    return result;
}

async function table(tree) {
    const selector = new Columns(tree);
    if (tree.fEntries > 0) {
        await treeProcess(tree, selector);
    }
    return { class: "TTree", title: tree.fTitle, entries: Number(tree.fEntries), columns: selector.columns };
}

async function contents(directory, path, found) {
    for (const key of directory.fKeys) {
        const name = path + key.fName;
        if (key.fClassName.startsWith("TDirectory")) {
            await contents(await directory.readObject(key.fName), name + "/", found);
        } else if (key.fClassName !== "TList") {
            const object = await directory.readObject(key.fName);
            found[name] = key.fClassName === "TTree" ? await table(object) : members(object);
        }
    }
    return found;
}

const file = await openFile(process.argv[2]);
console.log(JSON.stringify(await contents(file, "", {})));
