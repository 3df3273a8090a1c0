// usage: duckdb.mjs FILE THREADS ROUNDS
// Fills a weighted histogram from a text file with DuckDB and writes the milliseconds of each round, without the start
// of the program.
import { connectTo, printEach, timesOf } from "../peers/duckdb.mjs";

const [file, threads, rounds] = process.argv.slice(2);
const connection = await connectTo({ threads });
const query =
    `select floor(z) as bin, sum(w), sum(w * w), sum(w * z), sum(w * z * z), count(*) ` +
    `from read_csv('${file}') where y > 45 group by bin order by bin`;
const times = await timesOf(rounds, async () => {
    const rows = await connection.runAndReadAll(query);
    if (rows.currentRowCount < 100) {
        throw new Error(`there are ${rows.currentRowCount} bins`);
    }
});
printEach(times);
