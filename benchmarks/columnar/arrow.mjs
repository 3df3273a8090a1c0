// Writes an uncompressed Arrow file of 5 columns of reals in batches of 100,000 rows: arrow.mjs FILE ROWS.
import { writeFileSync } from "node:fs";
import { load } from "../../tests/support/npm/load.mjs";

const arrow = await load("apache-arrow");
const [target, rows] = process.argv.slice(2);
const batchRows = 100000;
const tables = [];
for (let first = 0; first < Number(rows); first += batchRows) {
    const count = Math.min(batchRows, Number(rows) - first);
    const column = (k) => Float64Array.from({ length: count }, (_, i) => Math.sin(first + i + k));
    tables.push(arrow.tableFromArrays({ c0: column(0), c1: column(1), c2: column(2), c3: column(3), c4: column(4) }));
}
const table = tables.reduce((all, each) => all.concat(each));
writeFileSync(target, arrow.tableToIPC(table, "file"));
