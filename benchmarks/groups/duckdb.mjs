// usage: duckdb.mjs FOLDER THREADS ROUNDS QUERY
// Groups or joins the rows of Parquet files with DuckDB and writes the milliseconds of each round, without the start of
// the program. The groups become a table in memory; of the joined rows a sum is made.
import { load } from "../../tests/support/npm/load.mjs";

const { DuckDBInstance } = await load("@duckdb/node-api");
const [folder, threads, rounds, query] = process.argv.slice(2);
const rows = `read_parquet('${folder}/make.results/rows.parquet')`;
const others = `read_parquet('${folder}/make.results/others.parquet')`;
const statements = {
    group: `create or replace temp table made as select "group", count(*) as n, sum(x) as s, avg(x) as m,
            stddev_pop(x) as d, min(y) as l, max(y) as h from ${rows} group by "group" order by "group"`,
    join: `create or replace temp table made as select sum(a.x * b.gain) as s, count(*) as n
           from ${rows} a join ${others} b on a.k = b.k`,
};
const database = await DuckDBInstance.create(":memory:", { threads });
const connection = await database.connect();
for (let round = 0; round < Number(rounds); ++round) {
    const begin = performance.now();
    await connection.run(statements[query]);
    const made = await connection.runAndReadAll("select sum(n) from made");
    if (Number(made.getRows()[0][0]) !== 10_000_000) {
        throw new Error(`there are ${made.getRows()[0][0]} rows`);
    }
    console.log(performance.now() - begin);
}
