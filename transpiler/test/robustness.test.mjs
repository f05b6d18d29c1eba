import assert from "node:assert/strict";
import test from "node:test";
import vm from "node:vm";
import { OBJSTranspiler, SAMPLE, codeOf, context, errorOf, transpile } from "./support.mjs";

test("adds one global with one method of one argument", () => {
  assert.deepEqual(Object.keys(context), ["OBJSTranspiler"]);
  assert.deepEqual(Object.keys(OBJSTranspiler), ["transpile"]);
  assert.equal(OBJSTranspiler.transpile.length, 1);
});

test("ends deep nesting with a SyntaxError", () => {
  const depth = 20000;
  const around = (open, inner, close) => open.repeat(depth) + inner + close.repeat(depth);
  for (const source of [around("[", "x", " y]"), around("[", "", "]"), around("[x y:", "1", "]"), around("@[", "", "]"), around("@{1:", "2", "}"), around("(", "1", ")"), around("{", "", "}"), "[".repeat(depth)]) {
    const error = errorOf(source);
    assert.equal(error && error.name, "SyntaxError", source.slice(0, 9));
    assert.match(error.message, /^nested too deeply \(1:\d+\)$/);
  }
  assert.equal(codeOf("[a b]"), 'objc_send(a, "b")');
});

test("takes long chains and lists in its stride", () => {
  const times = 20000;
  for (const source of ["x" + " + x".repeat(times), "x" + ".y".repeat(times), "x" + " || y && z".repeat(times), "f(" + "a,".repeat(times) + ")", "x;\n".repeat(times)]) {
    assert.equal(codeOf(source), source);
  }
});

test("takes time in proportion to the number of functions", () => {
  const source = (count) => Array.from({ length: count }, (_, i) => `const c${i} = [a b:@${i}];\nfunction f${i}(x) { return [x c${i}:f${i >> 1}] }\n`).join("");
  const bestTime = (count) => {
    const text = source(count);
    const times = Array.from({ length: 3 }, () => {
      const start = process.hrtime.bigint();
      assert.ok(transpile(text).map);
      return Number(process.hrtime.bigint() - start);
    });
    return Math.min(...times);
  };
  bestTime(1000);
  const ratio = bestTime(10000) / bestTime(1000);
  assert.ok(ratio < 30, `ten times the source took ${ratio} times as long`); // a square takes 100
});

// A small pseudo-random generator, so that every run has the same mutations.
function generator(seed) {
  let state = seed;
  return (limit) => {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return Math.floor((state / 2 ** 32) * limit);
  };
}

test("mutated sources become valid JavaScript or throw a SyntaxError", () => {
  const random = generator(20);
  const words = SAMPLE.split(/\b|(?=\W)/);
  const pieces = words.concat("let\n", "async ", "new ", "%orig", "@", "[", "]", "class ", "`${", "}", "\u2028", "return ", "yield ", "=>", "<!--", "\\u{");
  let accepted = 0;
  for (let round = 0; round < 2000; round++) {
    const mutant = words.slice();
    for (let edits = 1 + random(2); edits > 0; edits--) {
      mutant.splice(random(mutant.length), random(3), pieces[random(pieces.length)]);
    }
    const source = mutant.join("");
    const error = errorOf(source);
    if (error) {
      assert.equal(error.name, "SyntaxError", `${error.stack}\n${source}`);
      assert.match(error.message, new RegExp(`\\(${error.line}:${error.column}\\)$`));
    } else {
      accepted++;
      assert.doesNotThrow(() => new vm.Script(codeOf(source)), source);
    }
  }
  assert.ok(accepted > 100, `${accepted} accepted`);
});

test("the sample is valid JavaScript, line by line in place", () => {
  const code = codeOf(SAMPLE);
  new vm.Script(code);
  assert.equal(code.split("\n").length, SAMPLE.split("\n").length);
});
