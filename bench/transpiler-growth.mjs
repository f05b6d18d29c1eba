// The growth of the transpiler's time for kinds of source that often take a parser quadratic time: the time for a source
// of double size, divided by the time for the source, each the best of a few runs. Linear time gives 2, quadratic 4.
// Run by scripts/bench; TAVLEN_OB_JS is the path of the bundle.
import { readFileSync } from "node:fs";
import vm from "node:vm";

const context = vm.createContext({});
vm.runInContext(readFileSync(process.env.TAVLEN_OB_JS, "utf8"), context, { filename: "ob.js" });

function bestTime(source) {
  const time = () => {
    const start = process.hrtime.bigint();
    context.OBJSTranspiler.transpile(source);
    return Number(process.hrtime.bigint() - start);
  };
  return Math.min(...Array.from({ length: 3 }, time));
}

const numbered = (count, line) => Array.from({ length: count }, (_, i) => line(i)).join("");
const nested = (depth, open, inner, close) => open.repeat(depth) + inner + close.repeat(depth);

const sources = {
  declarations: [5000, (n) => numbered(n, (i) => `const c${i} = ${i}; var v${i}; function f${i}() {}\n`)],
  functions: [6000, (n) => numbered(n, (i) => `x = function() { /* ${i} */ "a"; return [a b:${i}] };\n`)],
  "sends on one line": [6000, (n) => numbered(n, (i) => `[a${i} foo:@"a" bar:@[b]];`)],
  "names of groups": [4000, (n) => `/${numbered(n, (i) => `(?<a${i}>.)\\k<a${i}>`)}/`],
  "var in blocks": [6000, (n) => nested(n / 15, "{", numbered(n, (i) => `var a, b${i};`), "}")],
  "private names in classes": [4000, (n) => `class A { ${numbered(n, (i) => `#a${i};`)}${nested(n / 40, "a = class {", `a = [${numbered(n, (i) => `o.#a${i},`)}]`, "}")} }`],
};

for (const [name, [count, build]] of Object.entries(sources)) {
  bestTime(build(count));
  const ratio = bestTime(build(2 * count)) / bestTime(build(count));
  console.log(`  ${name.padEnd(30)}${ratio.toFixed(2).padStart(8)}`);
}
