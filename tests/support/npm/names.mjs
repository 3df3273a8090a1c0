import { load } from "./load.mjs";

const [name, text] = process.argv.slice(2);
const count = Object.keys(await load(name)).length;
console.log(`${name} has ${count > 0 ? "" : "no "}names, ${text}`);
