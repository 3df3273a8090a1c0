// Reads a Parquet file with the npm package hyparquet: read.mjs FILE. Prints the number of rows and, for each column,
// its values.
import { load } from "../../support/npm/load.mjs";

const { asyncBufferFromFile, parquetReadObjects } = await load("hyparquet");
const { compressors } = await load("hyparquet-compressors");

const file = await asyncBufferFromFile(process.argv[2]);
const rows = await parquetReadObjects({ file, compressors });

const plain = (value) => {
    if (typeof value === "bigint") return value.toString();
    if (typeof value === "number" && !isFinite(value)) return String(value);
    if (typeof value === "object" && value && Symbol.iterator in value) return Array.from(value, plain);
    return value;
};
const columns = {};
for (const name of rows.length > 0 ? Object.keys(rows[0]) : []) {
    columns[name] = rows.map((row) => plain(row[name]));
}
console.log(JSON.stringify({ rows: rows.length, columns }));
