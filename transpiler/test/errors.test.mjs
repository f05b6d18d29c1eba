import assert from "node:assert/strict";
import test from "node:test";
import { errorOf, transpile } from "./support.mjs";

// Each row: the source, its line and column, and the beginning of the message.
const TABLES = {
  "unfinished and misplaced syntax": [
    ["[a b", 1, 5, "Unexpected token"],
    ["x;\n  [a b:c d]", 2, 11, "Unexpected token"],
    ["'\u{1F600}' @ [a]", 1, 6, "Unexpected '@'"],
    ["a @[b]", 1, 3, "Unexpected '@'"],
    ["@[a b]", 1, 5, "Unexpected token"],
    ["@[a,,b]", 1, 5, "Unexpected token"],
    ["@()", 1, 3, "Unexpected token"],
    ["@{a}", 1, 4, "Unexpected token"],
    ["@selector(a:b)", 1, 14, "Unexpected token"],
    ["@selector()", 1, 11, "Unexpected token"],
    ["@name", 1, 2, "Unexpected token"],
    ["[x :a]", 1, 4, "Unexpected token"],
    ["[x a:...b]", 1, 6, "Unexpected token"],
    ["[super foo]", 1, 2, "'super' keyword outside a method"],
    ["return 1", 1, 1, "'return' outside of function"],
    ["'abc", 1, 1, "Unterminated string constant"],
    ["x = /(/", 1, 6, "Invalid regular expression"],
    ["\r\n\u2028 )", 3, 2, "Unexpected token"],
  ],
  "sends are not places to assign to": [
    ["[a b] = c", 1, 1, "Assigning to rvalue"],
    ["x, [[a b], c] = d", 1, 5, "Assigning to rvalue"],
    ["([a b]) => 1", 1, 2, "Assigning to rvalue"],
    ["[{a = 1} foo]", 1, 5, "Shorthand property assignments"],
    ["[{a = 1}]", 1, 5, "Shorthand property assignments"],
    ["f = function() { %orig++ }", 1, 18, "Assigning to rvalue"],
  ],
  "a send after an expression": [
    ["x[a b]", 1, 2, "A message send cannot follow an expression"],
    ["x()\n[a b]", 2, 1, "A message send cannot follow an expression"],
  ],
  "%orig": [
    ["%orig", 1, 1, "%orig outside of a function"],
    ["x = () => %orig", 1, 11, "%orig outside of a function"],
    ["f = function() { class A { x = %orig } }", 1, 32, "%orig outside of a function"],
    ["f = function() { class A { static { %orig } } }", 1, 37, "%orig outside of a function"],
    ["f = function() { 10 %orig }", 1, 21, "'%orig' cannot follow an expression"],
    ["f = function() { let\n%orig }", 2, 1, "'%orig' cannot follow an expression"],
    ...[
      "function(arguments) { return ~ }", "function(a = () => ~, ...arguments) {}", "function() { ~; let arguments }",
      "function() { () => ~; { var arguments } }", "function() { for (const [arguments] of a) ~ }",
      "function() { try {} catch (arguments) { ~ } }", "function() { (arguments) => ~ }", "function() { arguments => { ~ } }",
      "function() { { function arguments() {} } ~ }", "function() { ~; if (a) function arguments() {} }",
    ].map((source) => [`f = ${source.replace("~", "%orig")}`, 1, source.indexOf("~") + 5, "%orig in a function that declares 'arguments'"]),
  ],
  "names of the run time": [
    ["var objc_send", 1, 5, "'objc_send' belongs to the run time"],
    ["x = function objc_orig() {}", 1, 14, "'objc_orig' belongs to the run time"],
    ["x = class objc_box {}", 1, 11, "'objc_box' belongs to the run time"],
    ["({a: [objc_selector]}) => 1", 1, 7, "'objc_selector' belongs to the run time"],
    ["objc_dictionary = 1", 1, 1, "'objc_dictionary' belongs to the run time"],
  ],
  "declarations that JavaScript refuses": [
    ["let a; var a", 1, 12, "Identifier 'a' has already been declared"],
    ["var a; { let a; { var a } }", 1, 23, "Identifier 'a' has already been declared"],
    ["{ function a() {} let a }", 1, 23, "Identifier 'a' has already been declared"],
    ["try {} catch (e) { let e }", 1, 24, "Identifier 'e' has already been declared"],
    ["function f(a) { let a }", 1, 21, "Identifier 'a' has already been declared"],
    ["{ { var a } let a }", 1, 17, "Identifier 'a' has already been declared"],
    ["{ { { var a } } function a() {} }", 1, 26, "Identifier 'a' has already been declared"],
    ["{ let a; { let a } var a }", 1, 24, "Identifier 'a' has already been declared"],
    ["class A { static { { var a } { function a() { } var a } } }", 1, 53, "Identifier 'a' has already been declared"],
    ["class A { m() { o.#a; class B { #a; m() { o.#a } } o.#b } }", 1, 19, "Private field '#a' must be declared"],
    ["/(?<a>.)(?<b>.)(?<a>.)/", 1, 2, "Invalid regular expression"],
    ["/(?<a>.)/; /(?<b>.)\\k<a>/", 1, 13, "Invalid regular expression"],
    ["a ?? b || c", 1, 8, "Logical expressions and coalesce"],
    ["(a || b) + a && b ?? c", 1, 19, "Logical expressions and coalesce"],
  ],
  '"use strict"': [
    ['"use strict"; 010', 1, 15, "Invalid number"],
    ["function f() { /**/ 'a'\n;'use strict'\n with (a) b }", 3, 2, "'with' in strict mode"],
    ['#!/x\n"use strict"\n010', 3, 1, "Invalid number"],
    ['function f() {\n "use strict" // c\n %orig\n with (a) b }', 4, 2, "'with' in strict mode"],
  ],
};

for (const [name, rows] of Object.entries(TABLES)) {
  test(name, () => {
    for (const [source, line, column, message] of rows) {
      const error = errorOf(source);
      assert.ok(error, `${source} is accepted`);
      assert.equal(error.name, "SyntaxError", error.stack);
      assert.deepEqual([error.line, error.column], [line, column], `${source}: ${error.message}`);
      assert.ok(error.message.startsWith(message), `${source}: ${error.message}`);
      assert.ok(error.message.endsWith(` (${line}:${column})`), error.message);
    }
  });
}

test("a string that merely looks like a directive is none", () => {
  for (const source of ['"use strict" + 1; 010', '"use strict"\n.length; 010', '("use strict"); 010', '"use strict"\n%origin; 010', '"use\\x20strict"; 010']) {
    assert.equal(transpile(source).code, source);
  }
});

test("refuses anything but a string", () => {
  for (const value of [undefined, null, 1, {}, ["x"]]) {
    assert.throws(() => transpile(value), { name: "TypeError" });
  }
});
