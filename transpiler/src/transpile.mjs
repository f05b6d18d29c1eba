import { emitCode, emitMappings } from "./emit.mjs";
import { syntaxError } from "./errors.mjs";
import { Mappings } from "./mappings.mjs";
import { HookParser } from "./parser.mjs";

const SOURCE_NAME = "tweak.objs";

export function transpile(source) {
  if (typeof source !== "string") throw new TypeError("The hook source must be a string");
  const parser = new HookParser({ ecmaVersion: "latest", sourceType: "script" }, source);
  parse(parser, source);
  const { starts, ends, edits } = parser;
  return {
    code: emitCode(source, starts, ends, edits),
    // Made when it is read, in a second pass: most callers have no use for it.
    get map() {
      const mappings = new Mappings();
      emitMappings(source, starts, ends, edits, mappings);
      return JSON.stringify({ version: 3, sources: [SOURCE_NAME], sourcesContent: [source], names: [], mappings: mappings.toString() });
    },
  };
}

function parse(parser, source) {
  try {
    parser.parse();
  } catch (error) {
    // The parser recurses for every level of nesting in the source.
    if (error instanceof RangeError && /call stack/i.test(error.message)) {
      throw syntaxError(source, parser.start, "nested too deeply");
    }
    throw error;
  }
}
