// usage: duckdb.mjs FOLDER THREADS ROUNDS QUERY
// Groups or joins the rows of Parquet files with DuckDB and writes the milliseconds of each round, without the start of
// the program. The groups become a table in memory; of the joined rows a sum is made.
import { connectTo, expectNumber, printEach, timesOf } from "../peers/duckdb.mjs";

const [folder, threads, rounds, query] = process.argv.slice(2);
const rows = `read_parquet('${folder}/make.results/rows.parquet')`;
const others = `read_parquet('${folder}/make.results/others.parquet')`;
const statements = {
    group: `create or replace temp table made as select "group", count(*) as n, sum(x) as s, avg(x) as m,
            stddev_pop(x) as d, min(y) as l, max(y) as h from ${rows} group by "group" order by "group"`,
    join: `create or replace temp table made as select sum(a.x * b.gain) as s, count(*) as n
           from ${rows} a join ${others} b on a.k = b.k`,
};
const connection = await connectTo({ threads });
const times = await timesOf(rounds, async () => {
    await connection.run(statements[query]);
    await expectNumber(connection, "select sum(n) from made", 10_000_000);
});
printEach(times);
