import { readFileSync } from "node:fs";
import vm from "node:vm";

// Runs the bundle as shipped, in a context that has only ECMAScript's globals.
export const context = vm.createContext({});
vm.runInContext(readFileSync(process.env.TAVLEN_OB_JS, "utf8"), context, { filename: "ob.js" });

export const { OBJSTranspiler } = context;
export const transpile = (source) => OBJSTranspiler.transpile(source);
export const codeOf = (source) => transpile(source).code;

export function errorOf(source) {
  try {
    transpile(source);
  } catch (error) {
    return error;
  }
  return null;
}

export const SAMPLE = `#!/usr/bin/env objs
"use strict"; // a directive
loadFunc("CGRectMake", "{CGRect=dddd}", ["d", "d", "d", "d"]);
hookClass("ExampleView", {}, {
	"@24@0:8Q16-titleForState:": function() {
		arguments[0] = 5;
		%orig;
		return @[[NSNull null], x];
	},
	/* [not a send] */
	"v16@0:8-layout": function() {
		const saved = items.map(item => %orig([item /* why */ key], 0x1F)), [p, q = 2] = saved;
		[[UILabel alloc] initWithFrame:CGRectMake(0, 0, 10, 20)
		                          text:@"sent \${x}" // tail
		                         class:\`t \${[p description]} \${q}\`];
		return @{@"a": @1, [p key]: @(p / q), k: [p, q, /[a b]/g.source]};
	},
});
label: for (const [a, b] of @[[1, 2]]) { if (a % b) continue label; else [a foo:b, null] }
var rest = [x performSelector:@selector(set::) withObject:x ? [x in:1] : @-2]\r
`;
