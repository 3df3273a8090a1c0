// usage: duckdb.mjs FILE THREADS ROUNDS MEMORY
// Sorts the rows of a Parquet file with DuckDB and writes the milliseconds of each round, without the start of the
// program. The sorted rows become a table in memory.
import { connectTo, expectNumber, printEach, timesOf } from "../peers/duckdb.mjs";

const [file, threads, rounds, memory] = process.argv.slice(2);
const connection = await connectTo({ threads, memory_limit: memory });
const times = await timesOf(rounds, async () => {
    await connection.run(`create or replace temp table sorted as select * from read_parquet('${file}') order by x`);
    await expectNumber(connection, "select count(*) from sorted", 10_000_000);
});
printEach(times);
