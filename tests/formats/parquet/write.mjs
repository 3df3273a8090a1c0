// Writes nested values with the npm package @duckdb/node-api: write.mjs FILE V1|V2 uncompressed|snappy|gzip|zstd|brotli|lz4_raw
// ROWS. Prints for each column of a table its name and values.
import { columnsOf, upTo } from "../support/columns.mjs";
import { load } from "../../support/npm/load.mjs";

const { DuckDBInstance } = await load("@duckdb/node-api");
const [target, version, codec, rows] = process.argv.slice(2);

// A generator of numbers that are the same in every run.
let state = 1;
const below = (count) => (state = (state * 48271) % 2147483647) % count;
const perhaps = (make) => (below(5) === 0 ? null : make());

const plain = (value) => (typeof value === "number" && !isFinite(value) ? String(value) : value);
const leaf = (sql, make) => ({ sql, make, leaf: plain });
const list = (item) => ({
    sql: `${item.sql}[]`, list: item, make: () => upTo(Math.max(0, below(6) - 1), () => perhaps(item.make)) });
const record = (record) => ({
    sql: `STRUCT(${Object.entries(record).map(([name, type]) => `${name} ${type.sql}`)})`, record,
    make: () => Object.fromEntries(Object.entries(record).map(([name, type]) => [name, perhaps(type.make)])) });
const map = (item) => ({
    sql: `MAP(VARCHAR, ${item.sql})`, map: [leaf("VARCHAR", plain), item],
    make: () => upTo(below(4), (k) => [`key ${k}`, perhaps(item.make)]) });

const long = leaf("BIGINT", () => below(2000000000) - 1000000000);
const small = leaf("SMALLINT", () => below(9));
const real = leaf("DOUBLE", () => (below(9) === 0 ? NaN : below(2147483646) / 1024 - 1e6));
const text = leaf("VARCHAR", () => ["up", "down", "strange", "\u00e4"][below(4)]);
const truth = leaf("BOOLEAN", () => below(2) === 0);
const types = {
    x: real, n: long, word: text, yes: truth, xs: list(real), words: list(text),
    lists: list(list(small)), deep: list(list(list(real))), truths: list(list(truth)), texts: list(list(text)),
    event: record({ t: real, hits: list(long), best: record({ n: small, lists: list(list(real)) }) }),
    tracks: list(record({ p: real, hits: list(small), place: record({ layer: small, names: list(text) }) })),
    named: map(real), groups: map(list(small)), maps: list(map(small)), boxes: list(list(record({ a: small, b: text }))),
};

const made = upTo(Number(rows), () => Object.fromEntries(Object.entries(types).map(([name, type]) => [name, perhaps(type.make)])));
const literal = (type, value) => value === null ? "NULL"
    : type.list ? `[${value.map((each) => literal(type.list, each))}]`
    : type.map ? `MAP {${value.map(([key, each]) => `'${key}': ${literal(type.map[1], each)}`)}}`
    : type.record ? `{${Object.entries(type.record).map(([name, inner]) => `'${name}': ${literal(inner, value[name])}`)}}`
    : typeof value !== "number" ? `'${value}'`
    : isNaN(value) ? "'NaN'::DOUBLE" : Number.isInteger(value) ? String(value) : `${value}e0`;

const connection = await (await DuckDBInstance.create(":memory:")).connect();
await connection.run("SET threads = 1");
await connection.run(`CREATE TABLE t (${Object.entries(types).map(([name, type]) => `${name} ${type.sql}`)})`);
for (let first = 0; first < made.length; first += 500) {
    const values = made.slice(first, first + 500).map((row) => `(${Object.entries(types).map(([name, type]) => literal(type, row[name]))})`);
    await connection.run(`INSERT INTO t VALUES ${values}`);
}
await connection.run(`COPY t TO '${target}' (FORMAT parquet, CODEC '${codec}', PARQUET_VERSION '${version}', ROW_GROUP_SIZE 2048)`);
console.log(JSON.stringify(Object.assign({}, ...Object.entries(types).map(([name, type]) =>
    columnsOf(type, name, made.map((row) => [row[name]]))))));
