// What the peers with DuckDB have in common, with the npm package @duckdb/node-api.
import { load } from "../../tests/support/npm/load.mjs";

/** A connection to an empty database in memory. */
export async function connectTo(options) {
    const { DuckDBInstance } = await load("@duckdb/node-api");
    return (await DuckDBInstance.create(":memory:", options)).connect();
}

/** The milliseconds of each round of a task. */
export async function timesOf(rounds, task) {
    const times = [];
    for (let round = 0; round < Number(rounds); ++round) {
        const begin = performance.now();
        await task();
        times.push(performance.now() - begin);
    }
    return times;
}

/** Throws unless the only number that a query gives is the expected one. */
export async function expectNumber(connection, query, expected) {
    const rows = await connection.runAndReadAll(query);
    const found = Number(rows.getRows()[0][0]);
    if (found !== expected) {
        throw new Error(`"${query}" gives ${found} instead of ${expected}`);
    }
}

export function printEach(times) {
    times.forEach((time) => console.log(time));
}
