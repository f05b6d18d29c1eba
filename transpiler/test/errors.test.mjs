import assert from "node:assert/strict";
import test from "node:test";
import { errorOf, transpile } from "./support.mjs";

// Each row: the source, its line and column, and the message without them.
const TABLES = {
  "message sends": [
    ["[", 1, 2, "expected an expression in the brackets that began at 1:1"],
    ["[a", 1, 3, "expected a selector, ',' or ']' in the brackets that began at 1:1"],
    ["[x :a]", 1, 4, "expected a selector, ',' or ']' in the brackets that began at 1:1"],
    ["[a, b c]", 1, 7, "expected ',' or ']' in the brackets that began at 1:1"],
    ["x;\n\n    [a b", 3, 9, "expected ']' to end the message send that began at 3:5"],
    ["new [A class;", 1, 13, "expected ']' to end the message send that began at 1:5"],
    ["[a b:1,;", 1, 8, "expected an argument after ',' in the message send that began at 1:1"],
    ["[x a:...b]", 1, 6, "expected an argument after 'a:' in the message send that began at 1:1"],
    ["[[a b] c:[d e] f::]", 1, 18, "expected an argument after 'f:' in the message send that began at 1:1"],
    ["[[a b] c:[d e:1 :]]", 1, 18, "expected an argument after ':' in the message send that began at 1:10"],
    ["x;\n  [a b:c d]", 2, 11, "expected ':' after 'd' in the message send that began at 2:3"],
    ["[a b:(c d]", 1, 9, "expected ',' or ')' in the parentheses that began at 1:6"],
    ["`([{ ${[a b:`]`}`", 1, 16, "expected ']' to end the message send that began at 1:8"],
    ["[super foo]", 1, 2, "'super' keyword outside a method"],
    ["x[a b]", 1, 2, "a message send cannot follow an expression; is a semicolon missing before the '['?"],
    ["x()\n[a b]", 2, 1, "a message send cannot follow an expression; is a semicolon missing before the '['?"],
  ],
  "literals": [
    ["@[1, 2", 1, 7, "expected ',' or ']' in the array literal that began at 1:1"],
    ["f(@[a,,b])", 1, 7, "expected an element in the array literal that began at 1:3"],
    ["@{,}", 1, 3, "expected a key in the dictionary literal that began at 1:1"],
    ["@{a}", 1, 4, "expected ':' after the key in the dictionary literal that began at 1:1"],
    ["@{a:", 1, 5, "expected a value after ':' in the dictionary literal that began at 1:1"],
    ["@{a: 1 b}", 1, 8, "expected ',' or '}' in the dictionary literal that began at 1:1"],
    ["@()", 1, 3, "expected an expression in the boxed expression that began at 1:1"],
    ["@(a b)", 1, 5, "expected ')' to end the boxed expression that began at 1:1"],
    ["@selector a", 1, 11, "expected '(' after '@selector'"],
    ["@selector()", 1, 11, "expected a selector in the selector literal that began at 1:1"],
    ["@selector(a b)", 1, 13, "expected ':' or ')' after 'a' in the selector literal that began at 1:1"],
    ["@selector(a:b)", 1, 14, "expected ':' after 'b' in the selector literal that began at 1:1"],
    ["@selector(a:5)", 1, 13, "expected a part of the selector or ')' in the selector literal that began at 1:1"],
    ["@name", 1, 2, "expected a string, a number, 'true', 'false', '(', '[', '{' or 'selector' after '@'"],
    ["@-x", 1, 3, "expected a number after '@-'"],
    ["f('\u{1F600}', @ [a])", 1, 9, "no blank may follow '@'"],
  ],
  "JavaScript's own syntax": [
    ["a @[b]", 1, 3, "expected ';' or an operator"],
    ["f(a", 1, 4, "expected ',' or ')' in the parentheses that began at 1:2"],
    ["if (a b)", 1, 7, "expected ')' to end the parentheses that began at 1:4"],
    ["x[1", 1, 4, "expected ']' to end the brackets that began at 1:2"],
    ["a;\nfunction f() {\n  if (b) {}", 3, 12, "expected '}' to end the braces that began at 2:14"],
    ["`a${b c}`", 1, 7, "expected '}' to end the substitution that began at 1:3"],
    ["`a", 1, 2, "expected '`' to end the template that began at 1:1"],
    ["x = 'abc", 1, 5, "expected ''' to end the string that began at 1:5"],
    ["x; #", 1, 5, "expected the name of a private member after '#'"],
    ["x = /* a", 1, 5, "expected '*/' to end the comment that began at 1:5"],
    ["x = /(", 1, 6, "expected '/' to end the regular expression that began at 1:5"],
    ["x = /(/", 1, 6, "invalid regular expression: /(/: Unterminated group"],
    ["if (a) }", 1, 8, "unexpected '}'"],
    ["\r\n\u2028 )", 3, 2, "unexpected ')'"],
    ["a.", 1, 3, "unexpected end of the source"],
    ["let [a, 5] = b", 1, 9, "expected a name or a pattern in the brackets that began at 1:5"],
    ["a.'b c'", 1, 3, "unexpected token"],
    ["(...a)", 1, 2, "unexpected '...'"],
    ["return 1", 1, 1, "'return' outside of function"],
    ["let [a];", 1, 8, "expected '=' after the pattern"],
    ["throw\na", 1, 6, "expected an expression in the line of 'throw'"],
    ["try {} a", 1, 1, "expected 'catch' or 'finally' after the block of 'try'"],
    ["break", 1, 1, "'break' outside of a loop or a switch, or to an unknown label"],
    ["a: for (;;) { continue b }", 1, 15, "'continue' outside of a loop, or to an unknown label"],
    ["(a, a) => 1", 1, 5, "a parameter of that name exists already"],
  ],
  "sends are not places to assign to": [
    ["[a b] = c", 1, 1, "expected a variable, a property or a pattern to assign to"],
    ["x, [[a b], c] = d", 1, 5, "expected a variable, a property or a pattern to assign to"],
    ["([a b]) => 1", 1, 2, "expected a variable, a property or a pattern to assign to"],
    ["[{a = 1} foo]", 1, 5, "shorthand property assignments are valid only in destructuring patterns"],
    ["[{a = 1}]", 1, 5, "shorthand property assignments are valid only in destructuring patterns"],
    ["f = function() { %orig++ }", 1, 18, "expected a variable, a property or a pattern to assign to"],
  ],
  "%orig": [
    ["%orig", 1, 1, "%orig outside of a function"],
    ["x = () => %orig", 1, 11, "%orig outside of a function"],
    ["f = function() { class A { x = %orig } }", 1, 32, "%orig outside of a function"],
    ["f = function() { class A { static { %orig } } }", 1, 37, "%orig outside of a function"],
    ["f = function() { 10 %orig }", 1, 21, "'%orig' cannot follow an expression; the remainder is written '% orig'"],
    ["f = function() { %orig(a b) }", 1, 26, "expected ',' or ')' in the call of %orig that began at 1:18"],
    ["f = function() { %orig(,) }", 1, 24, "expected an expression in the call of %orig that began at 1:18"],
    ["f = function() { g(10 %orig) }", 1, 23, "'%orig' cannot follow an expression; the remainder is written '% orig'"],
    ["f = function() { let\n%orig }", 2, 1, "'%orig' cannot follow an expression; the remainder is written '% orig'"],
    ...[
      "function(arguments) { return ~ }", "function(a = () => ~, ...arguments) {}", "function() { ~; let arguments }",
      "function() { () => ~; { var arguments } }", "function() { for (const [arguments] of a) ~ }",
      "function() { try {} catch (arguments) { ~ } }", "function() { (arguments) => ~ }", "function() { arguments => { ~ } }",
      "function() { { function arguments() {} } ~ }", "function() { ~; if (a) function arguments() {} }",
    ].map((source) => [`f = ${source.replace("~", "%orig")}`, 1, source.indexOf("~") + 5, "%orig in a function that declares 'arguments'"]),
  ],
  "names of the run time": [
    ["var objc_send", 1, 5, "'objc_send' belongs to the run time and cannot be declared or assigned"],
    ["x = function objc_orig() {}", 1, 14, "'objc_orig' belongs to the run time and cannot be declared or assigned"],
    ["x = class objc_box {}", 1, 11, "'objc_box' belongs to the run time and cannot be declared or assigned"],
    ["({a: [objc_selector]}) => 1", 1, 7, "'objc_selector' belongs to the run time and cannot be declared or assigned"],
    ["objc_dictionary = 1", 1, 1, "'objc_dictionary' belongs to the run time and cannot be declared or assigned"],
  ],
  "declarations that JavaScript refuses": [
    ["let a; var a", 1, 12, "identifier 'a' has already been declared"],
    ["var a; { let a; { var a } }", 1, 23, "identifier 'a' has already been declared"],
    ["{ function a() {} let a }", 1, 23, "identifier 'a' has already been declared"],
    ["try {} catch (e) { let e }", 1, 24, "identifier 'e' has already been declared"],
    ["function f(a) { let a }", 1, 21, "identifier 'a' has already been declared"],
    ["{ { var a } let a }", 1, 17, "identifier 'a' has already been declared"],
    ["{ { { var a } } function a() {} }", 1, 26, "identifier 'a' has already been declared"],
    ["{ let a; { let a } var a }", 1, 24, "identifier 'a' has already been declared"],
    ["class A { static { { var a } { function a() { } var a } } }", 1, 53, "identifier 'a' has already been declared"],
    ["class A { m() { o.#a; class B { #a; m() { o.#a } } o.#b } }", 1, 19, "private field '#a' must be declared in an enclosing class"],
    ["/(?<a>.)(?<b>.)(?<a>.)/", 1, 2, "invalid regular expression: /(?<a>.)(?<b>.)(?<a>.)/: Duplicate capture group name"],
    ["/(?<a>.)/; /(?<b>.)\\k<a>/", 1, 13, "invalid regular expression: /(?<b>.)\\k<a>/: Invalid named capture referenced"],
    ["a ?? b || c", 1, 8, "logical expressions and coalesce expressions cannot be mixed. Wrap either by parentheses"],
    ["(a || b) + a && b ?? c", 1, 19, "logical expressions and coalesce expressions cannot be mixed. Wrap either by parentheses"],
  ],
  '"use strict"': [
    ['"use strict"; 010', 1, 15, "invalid number"],
    ["function f() { /**/ 'a'\n;'use strict'\n with (a) b }", 3, 2, "'with' in strict mode"],
    ['#!/x\n"use strict"\n010', 3, 1, "invalid number"],
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
      assert.equal(error.message, `${message} (${line}:${column})`, source);
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
