// usage: duckdb.mjs FILE THREADS ROUNDS
// Fills a weighted histogram from a text file with DuckDB and writes the milliseconds of each round, without the start
// of the program.
import { load } from "../../tests/support/npm/load.mjs";

const { DuckDBInstance } = await load("@duckdb/node-api");
const [file, threads, rounds] = process.argv.slice(2);
const database = await DuckDBInstance.create(":memory:", { threads });
const connection = await database.connect();
const query =
    `select floor(z) as bin, sum(w), sum(w * w), sum(w * z), sum(w * z * z), count(*) ` +
    `from read_csv('${file}') where y > 45 group by bin order by bin`;
for (let round = 0; round < Number(rounds); ++round) {
    const begin = performance.now();
    const rows = await connection.runAndReadAll(query);
    if (rows.currentRowCount < 100) {
        throw new Error(`there are ${rows.currentRowCount} bins`);
    }
    console.log(performance.now() - begin);
}
