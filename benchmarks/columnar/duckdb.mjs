// The peer of the benchmark of columnar files, with the npm package @duckdb/node-api:
//     duckdb.mjs make FOLDER ROWS    writes numbers.snappy.parquet and numbers.zstd.parquet, with 5 columns of reals
//     duckdb.mjs fill FILE ROUNDS    fills a weighted histogram after a cut with two threads; prints the median in ms
import { connectTo, timesOf } from "../peers/duckdb.mjs";

const connection = await connectTo({ threads: "2" });
const [task, where, count] = process.argv.slice(2);

if (task === "make") {
    const uniform = (seed) => `(hash(i * 5 + ${seed}) / 18446744073709551616.0)::double`;
    await connection.run(
        `create table numbers as select ${[0, 1, 2, 3, 4].map((seed) => `${uniform(seed)} as c${seed}`).join(", ")}
         from range(${count}) as rows(i)`
    );
    for (const codec of ["snappy", "zstd"]) {
        await connection.run(`copy numbers to '${where}/numbers.${codec}.parquet' (format parquet, compression ${codec})`);
    }
} else {
    const times = await timesOf(count, () =>
        connection.runAndReadAll(
            `select floor(c0 * 100)::int as bin, sum(c1) as w, sum(c1 * c1) as ww
             from read_parquet('${where}') where c2 > 0.5 group by bin order by bin`
        )
    );
    console.log(times.sort((a, b) => a - b)[Math.floor(times.length / 2)]);
}
