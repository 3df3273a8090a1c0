// Writes a table of many types with the npm package apache-arrow: write.mjs FILE file|stream none|lz4|zstd BATCHES.
// Prints what it has written: for each column of a table its name and values, missing ones as null.
import { execFileSync } from "node:child_process";
import { writeFileSync } from "node:fs";
import { columnsOf, upTo } from "../support/columns.mjs";
import { load } from "../../support/npm/load.mjs";

const arrow = await load("apache-arrow");
const [target, form, compression, batches] = process.argv.slice(2);
const rowsOfBatch = 40;

const codecs = { lz4: arrow.CompressionType?.LZ4_FRAME, zstd: arrow.CompressionType?.ZSTD };
if (compression !== "none") {
    const encode = (bytes) => execFileSync(compression, ["-c"], { input: bytes });
    arrow.compressionRegistry.set(codecs[compression], { encode, decode: (bytes) => bytes });
}

// The writer of the package puts the compressed length where the format wants the other one.
function compressed(list) {
    const buffers = [];
    const bufferRegions = [];
    let byteLength = 0;
    for (const buffer of list) {
        const bytes = new Uint8Array(buffer.buffer, buffer.byteOffset, buffer.byteLength);
        if (bytes.length === 0) {
            buffers.push(new Uint8Array(0), new Uint8Array(0));
            bufferRegions.push({ offset: byteLength, length: 0 });
            continue;
        }
        const packed = new Uint8Array(execFileSync(compression, ["-c"], { input: bytes }));
        const isShorter = packed.length < bytes.length;
        const head = new Uint8Array(8);
        new DataView(head.buffer).setBigInt64(0, isShorter ? BigInt(bytes.length) : -1n, true);
        const content = isShorter ? packed : new Uint8Array(bytes);
        buffers.push(head, content);
        bufferRegions.push({ offset: byteLength, length: 8 + content.length });
        byteLength = (byteLength + 8 + content.length + 7) & ~7;
    }
    return { byteLength, bufferRegions, buffers };
}

const missing = (value, i) => (i % 7 === 3 ? null : value);
const list = (type) => new arrow.List(new arrow.Field("item", type, true));
const record = (fields) => new arrow.Struct(Object.entries(fields).map(([name, type]) => new arrow.Field(name, type, true)));
const pair = new arrow.Struct([new arrow.Field("x", new arrow.Float64(), true), new arrow.Field("n", new arrow.Int16(), false)]);
const pairs = new arrow.Field("entries", new arrow.Struct([
    new arrow.Field("word", new arrow.Utf8(), false), new arrow.Field("hits", list(new arrow.Int32()), true)]), false);

const columns = {
    i8: [new arrow.Int8(), (i) => (i % 256) - 128],
    u16: [new arrow.Uint16(), (i) => i * 500],
    i32: [new arrow.Int32(), (i) => missing(-i * 100000, i)],
    u32: [new arrow.Uint32(), (i) => 4294967295 - i],
    i64: [new arrow.Int64(), (i) => BigInt(i) * 1000000000000n - 5n],
    f32: [new arrow.Float32(), (i) => missing(i / 4, i)],
    f64: [new arrow.Float64(), (i) => (i === 5 ? NaN : missing(Math.sqrt(i), i))],
    yes: [new arrow.Bool(), (i) => i % 3 === 0],
    perhaps: [new arrow.Bool(), (i) => missing(i % 3 === 0, i)],
    text: [new arrow.Utf8(), (i) => missing("text " + "\u00e4".repeat(i % 4), i)],
    word: [new arrow.Dictionary(new arrow.Utf8(), new arrow.Int16(), 1), (i) => missing(["up", "down", "strange"][i % 3], i)],
    day: [new arrow.DateDay(), (i) => new Date(86400000 * i)],
    stamp: [new arrow.TimestampMicrosecond(), (i) => 1700000000123 + i],
    reals: [list(new arrow.Float64()), (i) => missing(Array.from({ length: i % 4 }, (_, k) => missing(i + k / 2, i + k)), i)],
    lists: [list(list(new arrow.Int32())), (i) => missing([[i, i + 1], missing([], i), [i + 2, missing(7, i + 1)]].slice(0, i % 4), i + 2)],
    ups: [list(list(new arrow.Dictionary(new arrow.Utf8(), new arrow.Int16(), 2))), (i) => missing([upTo(i % 3, (k) => ["up", "down", null][k]), missing(["up"], i + 1)], i)],
    deep: [list(list(list(new arrow.Int8()))), (i) => upTo(i % 3, (k) => missing(upTo(k + i % 2, (l) => missing(upTo(l, () => i), i + 1)), i))],
    tracks: [list(record({ p: new arrow.Float64(), hits: list(new arrow.Int16()) })),
        (i) => missing(upTo(i % 4, (k) => missing({ p: missing(i / 2, i + k), hits: missing(upTo(k, (l) => l), i + k + 1) }, i + k + 2)), i + 1)],
    event: [record({ t: new arrow.Float32(), hits: list(new arrow.Float64()) }),
        (i) => missing({ t: missing(i, i + 1), hits: missing(upTo(i % 3, (k) => missing(k, i + k)), i + 2) }, i)],
    named: [new arrow.Map_(pairs), (i) => missing(new Map(upTo(i % 3, (k) => ["w" + k, missing(upTo(k, () => i), i + k)])), i)],
    pair: [pair, (i) => ({ x: missing(i / 8, i), n: i })],
    nothing: [new arrow.Null(), () => null],
};

function vectorOf(type, make, first, rows) {
    const builder = arrow.makeBuilder({ type, nullValues: [null, undefined] });
    for (let i = first; i < first + rows; ++i) {
        builder.append(make(i));
    }
    return builder.finish().toVector();
}

const plain = (value) => {
    if (typeof value === "bigint") return value.toString();
    if (value instanceof Date) return value.getTime() / 1000;
    if (typeof value === "number" && isNaN(value)) return "NaN";
    return value ?? null;
};

// What columns.mjs knows of a type.
function described(type) {
    if (arrow.DataType.isStruct(type)) {
        return { record: Object.fromEntries(type.children.map((field) => [field.name, described(field.type)])) };
    }
    if (arrow.DataType.isMap(type)) return { map: type.children[0].type.children.map((field) => described(field.type)) };
    if (arrow.DataType.isList(type)) return { list: described(type.children[0].type) };
    return { leaf: arrow.DataType.isTimestamp(type) ? (value) => value / 1000 : plain };
}

// One vector of each column for all rows, cut into batches, so that they share their dictionaries.
const rows = rowsOfBatch * Math.max(1, Number(batches));
const vectors = Object.fromEntries(Object.entries(columns).map(([name, [type, make]]) => [name, vectorOf(type, make, 0, rows)]));
const all = new arrow.Table(vectors);
const parts = [];
for (let batch = 0; batch < Number(batches); ++batch) {
    parts.push(...all.slice(batch * rowsOfBatch, (batch + 1) * rowsOfBatch).batches);
}
const table = parts.length > 0 ? new arrow.Table(all.schema, parts) : new arrow.Table(all.schema);
const Writer = form === "file" ? arrow.RecordBatchFileWriter : arrow.RecordBatchStreamWriter;
const writer = new Writer(compression === "none" ? {} : { compressionType: codecs[compression] });
if (compression !== "none") {
    writer._compressBodyBuffers = compressed;
}
writer.writeAll(table);
writer.finish();
writeFileSync(target, writer.toUint8Array(true));

const values = {};
for (const [name, [type, make]] of Object.entries(columns)) {
    Object.assign(values, columnsOf(described(type), name, upTo(rowsOfBatch * Number(batches), (i) => [make(i)])));
}
console.log(JSON.stringify(values));
