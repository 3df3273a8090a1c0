// The columns of a table for nested values. A type is { leaf: what to print of a value }, { list: type of its elements },
// { map: [type of keys, type of values] } of lists of pairs, or { record: types by name } of objects; null is missing.

// rows: for each row the values in it, several where it is a list.
export function columnsOf(type, name, rows, isInList = false) {
    if (type.record) {
        return Object.assign({}, ...Object.entries(type.record).map(([field, inner]) =>
            columnsOf(inner, `${name}.${field}`, rows.map((row) => row.map((each) => each?.[field] ?? null)), isInList)));
    }
    if (type.list || type.map) return listColumns(type, name, rows, isInList);
    const values = rows.map((row) => row.map(type.leaf));
    return { [name]: isInList ? values : values.flat() };
}

function listColumns(type, name, rows, isInList) {
    const lists = rows.map((row) => row.map((each) => Array.from(each ?? [])));
    const inside = lists.map((row) => row.flat());
    const part = (i) => inside.map((row) => row.map((pair) => pair[i]));
    const columns = type.map
        ? { ...columnsOf(type.map[0], `${name}.key`, part(0), true), ...columnsOf(type.map[1], `${name}.value`, part(1), true) }
        : columnsOf(type.list, name, inside, true);
    if (!isInList) return columns;
    let level = name;
    for (let inner = type.list; inner?.list || inner?.map; inner = inner.list) level += ".count";
    columns[`${level}.count`] = lists.map((row) => row.map((each) => each.length));
    columns[`${level}.row`] = lists.map((row) => row.flatMap((each, i) => each.map(() => i)));
    return columns;
}

export const upTo = (count, make) => Array.from({ length: count }, (_, k) => make(k));
