import assert from "node:assert/strict";
import test from "node:test";
import vm from "node:vm";
import { codeOf } from "./support.mjs";

const TABLES = {
  "message sends": [
    ["[a b]", 'objc_send(a, "b")'],
    ["[a b:c]", 'objc_send(a, "b:", c)'],
    ["[x foo: a bar : b]", 'objc_send(x, "foo:bar:", a, b)'],
    ["[x foo:(a)bar:b]", 'objc_send(x, "foo:bar:", (a), b)'],
    ["[x foo:a :b]", 'objc_send(x, "foo::", a, b)'],
    ["[[[A alloc]init] set:[b c] to:[d e:[f g]]]", 'objc_send(objc_send(objc_send(A, "alloc"), "init"), "set:to:", objc_send(b, "c"), objc_send(d, "e:", objc_send(f, "g")))'],
    ["[A with:a, b, null]", 'objc_send(A, "with:", a, b, null)'],
    ["[A with:a, ...b,]", 'objc_send(A, "with:", a, ...b,)'],
    ["[[a] count]", 'objc_send([a], "count")'],
    ["[async foo:1] + [async foo]", 'objc_send(async, "foo:", 1) + objc_send(async, "foo")'],
    ["[async foo // c\n] + [async\nfoo\n] + [async /*c*/ \\u{66}oo]", 'objc_send(async, "foo" // c\n) + objc_send(async,\n"foo"\n) + objc_send(async, /*c*/ "foo")'],
    ["[async \u00e9] + [async a\u00f1adir:1] + [async function : 2] + [async class]", 'objc_send(async, "\u00e9") + objc_send(async, "a\u00f1adir:", 1) + objc_send(async, "function:", 2) + objc_send(async, "class")'],
    ["[x foo:async bar:1, async] + [x ? y : async foo]", 'objc_send(x, "foo:bar:", async, 1, async) + objc_send(x ? y : async, "foo")'],
    ["[x a:b ? c : async of:async function:a => async /**/ d /**/ :1]", 'objc_send(x, "a:of:function:d:", b ? c : async, async, a => async, /**/  /**/ 1)'],
    ["[x a:async b => c d:async function() {} e:async (f) g:1]", 'objc_send(x, "a:d:e:g:", async b => c, async function() {}, async (f), 1)'],
    ["[x a:await b:yield c:let d:static e:of f:get / set]", 'objc_send(x, "a:b:c:d:e:f:", await, yield, let, static, of, get / set)'],
    ["[await x]; [yield x]; [let y]; [of z]; [get s]", 'objc_send(await, "x"); objc_send(yield, "x"); objc_send(let, "y"); objc_send(of, "z"); objc_send(get, "s")'],
    ['[5 a] + ["s" b] + [this c] + [new F() d] + [new F d] + [(x ? y : z) e]', 'objc_send(5, "a") + objc_send("s", "b") + objc_send(this, "c") + objc_send(new F(), "d") + objc_send(new F, "d") + objc_send((x ? y : z), "e")'],
    ["[x ? y : z foo] + [x ? [a b:c] : d]", 'objc_send(x ? y : z, "foo") + [x ? objc_send(a, "b:", c) : d]'],
    ["[a b:c ? d : e f:g]", 'objc_send(a, "b:f:", c ? d : e, g)'],
    ["[a b:{k: v} / 2 c:(d, e)]", 'objc_send(a, "b:c:", {k: v} / 2, (d, e))'],
    ["[a map:x => x to:x => { f() } d:1]", 'objc_send(a, "map:to:d:", x => x, x => { f() }, 1)'],
    ["[a b:function() {} / 2 / 1 c:class {} / 2 / 1]", 'objc_send(a, "b:c:", function() {} / 2 / 1, class {} / 2 / 1)'],
    ["for (const x of[a b]) if (y in[c d]) x", 'for (const x of objc_send(a, "b")) if (y in objc_send(c, "d")) x'],
    ["new [A class](1); new [A class]; new A([b c])", 'new (objc_send(A, "class"))(1); new (objc_send(A, "class")); new A(objc_send(b, "c"))'],
    ["x.new;[a b].c = [d e]?.f", 'x.new;objc_send(a, "b").c = objc_send(d, "e")?.f'],
  ],
  "selectors that JavaScript reserves": [
    ["[x class] / 2 / [y function] / 1", 'objc_send(x, "class") / 2 / objc_send(y, "function") / 1'],
    ["[x new:/re/ delete:1 default:2 if:3 in:4]", 'objc_send(x, "new:delete:default:if:in:", /re/, 1, 2, 3, 4)'],
    ["[a in:b] + [a instanceof:b in:c]", 'objc_send(a, "in:", b) + objc_send(a, "instanceof:in:", b, c)'],
    ["for (var i = [a in:b] in c);", 'for (var i = objc_send(a, "in:", b) in c);'],
  ],
  literals: [
    ["@[] + @[a, ...b, [c d],]", 'objc_box([]) + objc_box([a, ...b, objc_send(c, "d"),])'],
    [`@"a" + @'b' + @5 + @-.5 + @true + @false`, `objc_box("a") + objc_box('b') + objc_box(5) + objc_box(-.5) + objc_box(true) + objc_box(false)`],
    ["@(a) + @(a, b) + @[1][0] / 2", "objc_box(a) + objc_box((a, b)) + objc_box([1])[0] / 2"],
    ["@{}; x = @{@\"a\":@1, [x key] : 2, a ? b : c: d,} / 2", 'objc_dictionary([]); x = objc_dictionary([[objc_box("a"), objc_box(1)], [objc_send(x, "key"), 2], [a ? b : c, d],]) / 2'],
    ["@selector(foo) + @selector( a : class : ) + @selector(::)", 'objc_selector("foo") + objc_selector("a:class:") + objc_selector("::")'],
    ["class A extends @{a: b}.c {}; new @[1]", "class A extends objc_dictionary([[a, b]]).c {}; new (objc_box([1]))"],
  ],
  "the original implementation": [
    ["function f() { a\n%orig\n%orig(b, [c d])\nreturn%orig }", 'function f() { a\nobjc_orig(this, arguments)\nobjc_orig(this, arguments, [b, objc_send(c, "d")])\nreturn objc_orig(this, arguments) }'],
    ["f = function() { g(() => %orig() / 2, async (a = %orig / 2) => %orig) }", "f = function() { g(() => objc_orig(this, arguments, []) / 2, async (a = objc_orig(this, arguments) / 2) => objc_orig(this, arguments)) }"],
    ["o = { m() { new %orig(a); x % %orig; return class { [%orig]() { %orig } } } }", "o = { m() { new (objc_orig(this, arguments, [a])); x % objc_orig(this, arguments); return class { [objc_orig(this, arguments)]() { objc_orig(this, arguments) } } } }"],
  ],
  "comments and line breaks": [
    ["[a /* 1 */ b /* 2 */ : /* 3 */ c // 4\n  d:e /* 5 */]", 'objc_send(a, /* 1 */ "b:d:" /* 2 */ , /* 3 */ c, // 4\n  e /* 5 */)'],
    ["@{a // 1\n:b}; @selector(a /* 2 */ : b:)", 'objc_dictionary([[a // 1\n, b]]); objc_selector("a:b:" /* 2 */ )'],
    ["@'a\\\nb' + [c d]", "objc_box('a\\\nb') + objc_send(c, \"d\")"],
  ],
  "sends inside JavaScript": [
    ["`a${[b c]}[d e]` + /[f g]/ + x[[h i]]", '`a${objc_send(b, "c")}[d e]` + /[f g]/ + x[objc_send(h, "i")]'],
    ["[{a = [b c]}, [d e].f, ...[g h].i] = [j, [k l]]", '[{a = objc_send(b, "c")}, objc_send(d, "e").f, ...objc_send(g, "h").i] = [j, objc_send(k, "l")]'],
    ["const {a = [b c], [[d e]]: f} = [[g] h]", 'const {a = objc_send(b, "c"), [objc_send(d, "e")]: f} = objc_send([g], "h")'],
  ],
};

for (const [name, rows] of Object.entries(TABLES)) {
  test(name, () => {
    for (const [source, code] of rows) {
      assert.equal(codeOf(source), code);
      new vm.Script(code);
    }
  });
}

test("plain JavaScript stays as it is", () => {
  const sources = [
    "", "// [a b]\n", "[]; [a]; [a, b]; [, a]; [a, , b,]; [...a, b]; [a -b]; [a in b]; [a instanceof b]",
    "[a, b] = [b, a]; [{c = 1}, [d]] = e; for ([f, g] of h); const [x, , y = 1, ...z] = i",
    "[(a), (b.c)] = d; ({a: [b] = c} = d); ([a], {b}) => [a]; async ([a]) => a; [async x /**/ => x, async]; [async function() {}]; [async in b]",
    "a % b; a %b; x %origin; x % orig; x %= orig; a[i][j]; a?.[b]; `[a b] ${[a]}`; /[a b]/.test('[a b]')",
    'hookClass("A", {}, {}); loadFunc("f", "v", []); "@[a]" + \'%orig\' // %orig @"x"',
    "x.objc_send + objc_send(a); class A { #p; q = #p in this }; y = a ?? (b || c); a && b || c; 2 ** 3",
    "try { } catch (e) { var e } var f; var f; function f() {} { function g() {} function g() {} }",
    "function f(arguments) { let g = arguments => { }; return arguments[0] } try { } catch (arguments) { }",
    "let a; function f() { var a; { let a } { let a; { let a } } { var a } } x => { var x; { var x } }",
    "class A { #a; m() { class B { #b; m() { o.#a; o.#b } } class C { #b } } }; /(?<a>.)\\k<a>/; /(?<a>.)/",
    "<!-- a comment\n--> another\nif (a) { b } else if (c) d\nfunction* g() { [yield x]; yield /r/ }",
  ];
  for (const source of sources) assert.equal(codeOf(source), source);
});

test("evaluates receivers and arguments once, from left to right", () => {
  const log = [];
  const note = (x) => (log.push(x), x);
  const world = {
    note,
    objc_send: (receiver, selector, ...args) => `${receiver}.${selector}(${args})`,
    objc_orig: (self, current, given) => `${self.name}<${given || [...current]}>`,
    objc_dictionary: (entries) => entries.map((entry) => entry.join("=")).join(),
  };
  const source = `(function(first) {
    const deep = () => () => [note("r") a:note(1) b:note(2), note(3)] + %orig + %orig(note(4));
    first = "changed";
    return deep()() + @{note("k"): note("v")};
  }).call({name: "self"}, "given", "second")`;
  const result = vm.runInNewContext(codeOf(source), world);
  assert.equal(result, "r.a:b:(1,2,3)self<changed,second>self<4>k=v");
  assert.deepEqual(log, ["r", 1, 2, 3, 4, "k", "v"]);
});
