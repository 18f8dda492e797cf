// The summary of a CSV file as a user of DuckDB or ClickHouse would compute it, in process, from the file.
//
// usage: node summary_sql.mjs duckdb|clickhouse learn|check FILE.csv REFERENCE.json
//
// REFERENCE.json is what `accredit show --format json` prints of the file's own reference. `learn` reads the
// file for the moments and categories, and again for the bins that follow from the moments; `check` takes
// the cut points of the reference and reads it once. Ends with an error if the counts are not the
// reference's.
import { readFileSync } from 'node:fs';

const [engineName, task, file, referencePath] = process.argv.slice(2);
const variables = JSON.parse(readFileSync(referencePath)).variables;
const numbers = variables.filter((each) => each.kind === 'continuous');
const categories = variables.filter((each) => each.kind === 'categorical');

const engines = {
  async duckdb() {
    const { DuckDBInstance } = await import('@duckdb/node-api');
    const connection = await (await DuckDBInstance.create(':memory:')).connect();
    // It would take "yes" and "no" for truth values.
    const types = categories.map(({ name }) => `${name}: 'VARCHAR'`).join(', ');
    return {
      table: `read_csv('${file}', types = {${types}})`,
      histogram: (column) => `CAST(histogram(${column}) AS JSON)`,
      row: async (sql) => (await connection.runAndReadAll(sql)).getRowObjectsJson()[0],
    };
  },
  async clickhouse() {
    const { query } = await import('chdb');
    return {
      table: `file('${file}', 'CSVWithNames')`,
      histogram: (column) => `toJSONString(sumMap(map(ifNull(${column}, ''), 1)))`,
      row: async (sql) => JSON.parse(query(sql, 'JSONEachRow')),
    };
  },
};

const engine = await engines[engineName]();
const moments = numbers.flatMap(({ name }) =>
  ['count', 'min', 'max', 'avg', 'stddev_samp'].map((f) => `${f}(${name}) AS ${name}_${f}`));
const histograms = categories.map(({ name }) => `${engine.histogram(name)} AS ${name}_counts`);
// Of each cut point the values that are not above it.
const notAbove = (cutPoints) => numbers.flatMap(({ name }) =>
  cutPoints(name).map((cut, i) => `count(*) FILTER (WHERE ${name} <= ${cut}) AS ${name}_${i}`));
const ask = (columns) => engine.row(`SELECT ${columns.join(', ')} FROM ${engine.table}`);

let found;
if (task === 'learn') {
  found = await ask([...moments, ...histograms]);
  const cutsOf = (name) => [-2, -1, 0, 1, 2].map(
    (times) => Number(found[`${name}_avg`]) + times * Number(found[`${name}_stddev_samp`]));
  Object.assign(found, await ask(notAbove(cutsOf)));
} else {
  const cutsOf = (name) => numbers.find((each) => each.name === name).cut_points;
  found = await ask([...moments, ...histograms, ...notAbove(cutsOf)]);
}

function expectSame(what, value, expected) {
  if (Number(value) !== expected) throw new Error(`${engineName}, ${what}: ${value} and not ${expected}`);
}
for (const { name, cases, minimum, maximum, frequencies } of numbers) {
  expectSame(`cases of ${name}`, found[`${name}_count`], cases);
  expectSame(`minimum of ${name}`, found[`${name}_min`], minimum);
  expectSame(`maximum of ${name}`, found[`${name}_max`], maximum);
  let sum = 0;
  frequencies.slice(0, -1).forEach((frequency, i) => {
    sum += frequency;
    expectSame(`bin ${i} of ${name}`, found[`${name}_${i}`], sum);
  });
}
for (const { name, categories: values } of categories) {
  const counts = JSON.parse(found[`${name}_counts`]);
  for (const { value, frequency } of values) expectSame(`${name} ${value}`, counts[value], frequency);
}
