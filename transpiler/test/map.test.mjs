import assert from "node:assert/strict";
import { createRequire } from "node:module";
import test from "node:test";
import { SAMPLE, transpile } from "./support.mjs";

const acorn = createRequire(import.meta.url)("acorn");
const DIGITS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

function numbers(segment) {
  const fields = [];
  let value = 0;
  let scale = 1;
  for (const character of segment) {
    const digit = DIGITS.indexOf(character);
    value += (digit & 31) * scale;
    scale *= 32;
    if (digit > 31) continue;
    fields.push(value % 2 ? -(value - 1) / 2 : value / 2);
    value = 0;
    scale = 1;
  }
  return fields;
}

// Source positions by "line:column" of the generated code, counted from 0.
function decode(mappings) {
  const places = new Map();
  let [line, column] = [0, 0];
  mappings.split(";").forEach((segments, generatedLine) => {
    let generatedColumn = 0;
    for (const segment of segments.split(",").filter(Boolean)) {
      const [step, source, lines, columns, ...more] = numbers(segment);
      assert.deepEqual([source, more], [0, []]);
      assert.ok(step > 0 || generatedColumn === 0, "segments are in order");
      generatedColumn += step;
      line += lines;
      column += columns;
      places.set(`${generatedLine}:${generatedColumn}`, [line, column]);
    }
  });
  return places;
}

const split = (text) => text.split(/\r\n|[\n\r\u2028\u2029]/);
const isCall = (token) => token.value && /^objc_/.test(token.value);

test("leads each token back to its line and column", () => {
  const source = SAMPLE + "x = '\u2028', y;\r[a b:'\u{1F600}' c:@\"\\\n\"] + z\n".repeat(40) + SAMPLE.slice(SAMPLE.indexOf("\n"));
  const { code, map } = transpile(source);
  const places = decode(JSON.parse(map).mappings);
  const lines = split(source);
  let compared = 0;
  for (const token of acorn.tokenizer(code, { ecmaVersion: "latest", locations: true })) {
    const { line, column } = token.loc.start;
    const place = places.get(`${line - 1}:${column}`);
    const text = split(code.slice(token.start, token.end))[0];
    if (/^[\w'`/]/.test(text) && !isCall(token) && !["this", "arguments"].includes(text)) {
      assert.ok(place, `no place for ${text}`);
      assert.ok(lines[place[0]].startsWith(text, place[1]), `${text} at ${place}`);
      compared++;
    } else if (isCall(token)) {
      assert.match(lines[place[0]].slice(place[1]), /^(\[|@|%orig)/);
    }
  }
  assert.ok(compared > 300, `${compared} tokens compared`);
});

test("leads selectors back to their first part, and brackets to brackets", () => {
  const places = decode(JSON.parse(transpile("x;\n [a  bc:d ef:g]").map).mappings);
  const code = ' objc_send(a,  "bc:ef:", d, g)';
  for (const [text, column] of [["objc_send", 1], ["a", 2], ['"bc:ef:"', 5], ["d,", 8], ["g", 13], [")", 14]]) {
    assert.deepEqual(places.get(`1:${code.indexOf(text)}`), [1, column], text);
  }
});

test("is a version 3 map with the source in it", () => {
  for (const source of ["", "[a b] // \ud800\n", SAMPLE]) {
    const { mappings, ...rest } = JSON.parse(transpile(source).map);
    assert.equal(typeof mappings, "string");
    assert.deepEqual(rest, { version: 3, sources: ["tweak.objs"], sourcesContent: [source], names: [] });
  }
});
