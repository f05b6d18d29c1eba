// A run time for tests. It offers what generated code calls, lets a test call the hooked methods, and
// writes everything that happens into `record.log`, a text each.

const record = { classes: {}, log: [], stack: [] };
const resourcesPath = { object: "resourcesPath" };

// An object of Objective-C is { object: text }; the text says how it came about.
function shown(value) {
	if (value === null || value === undefined) return "nil";
	if (Array.isArray(value)) return "[" + value.map(shown).join(", ") + "]";
	if (typeof value === "object") return value.object;
	return typeof value === "string" ? JSON.stringify(value) : String(value);
}

function objc_send(receiver, selector, ...args) {
	const names = selector.split(":");
	const parts = args.map((value, i) => `${names[i]}:${shown(value)}`);
	const object = `[${shown(receiver)} ${args.length ? parts.join(" ") : selector}]`;
	record.log.push(object);
	if (object in record.answers) return record.answers[object];
	return { object };
}

function objc_box(value) {
	if (value === null || value === undefined || value.object !== undefined) return value;
	return { object: "@" + shown(value) };
}

function objc_dictionary(entries) {
	return { object: "@{" + entries.map(([key, value]) => `${shown(key)}: ${shown(value)}`).join(", ") + "}" };
}

function objc_selector(name) {
	return { object: `@selector(${name})` };
}

function objc_orig(self, current, given) {
	const top = record.stack[record.stack.length - 1];
	if (!top || top.self !== self || top.hook !== current.callee) throw new Error("no hook is running");
	const args = Array.from(given || current);
	record.log.push(`orig(${args.map(shown).join(", ")})`);
	return { object: "original" };
}

function loadFunc(name, types) {
	return argument => ({ object: `${name}<${types}>(${shown(argument)})` });
}

function hookClass(name, classMethods, methods) {
	if (Object.keys(classMethods).length) throw new Error("the second argument is empty");
	Object.assign(record.classes[name] ||= {}, methods);
}

for (const name of ["NSArray", "NSDate", "NSDictionary", "NSData", "NSNull", "NSURL", "NSUserDefaults", "UIColor", "UIImage"]) {
	globalThis[name] = { object: name };
}

// Calls a hooked method with `args`; the result and then all that happened, a line each. `answers` maps
// messages to results of their own.
function callHook(className, key, args, answers) {
	const hook = record.classes[className][key];
	const self = { object: "self" };
	record.log = [];
	record.answers = answers;
	record.stack.push({ self, hook });
	const result = hook.apply(self, args);
	record.stack.pop();
	return [shown(result), ...record.log].join("\n");
}
