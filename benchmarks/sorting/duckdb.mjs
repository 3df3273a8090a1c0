// usage: duckdb.mjs FILE THREADS ROUNDS MEMORY
// Sorts the rows of a Parquet file with DuckDB and writes the milliseconds of each round, without the start of the
// program. The sorted rows become a table in memory.
import { load } from "../../tests/support/npm/load.mjs";

const { DuckDBInstance } = await load("@duckdb/node-api");
const [file, threads, rounds, memory] = process.argv.slice(2);
const database = await DuckDBInstance.create(":memory:", { threads, memory_limit: memory });
const connection = await database.connect();
for (let round = 0; round < Number(rounds); ++round) {
    const begin = performance.now();
    await connection.run(`create or replace temp table sorted as select * from read_parquet('${file}') order by x`);
    const rows = await connection.runAndReadAll("select count(*) from sorted");
    if (Number(rows.getRows()[0][0]) !== 10_000_000) {
        throw new Error(`there are ${rows.getRows()[0][0]} rows`);
    }
    console.log(performance.now() - begin);
}
