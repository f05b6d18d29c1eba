import { isNewLine } from "acorn";
import { skipOrig, skipSpace } from "./lookahead.mjs";

const CONTINUES_EXPRESSION = /[(`.[+\-/*%<>=,?^&|]/;

// Whether the directive prologue at `pos` contains "use strict". Reads only the
// prologue, and only once, because it is called for each function.
export function hasUseStrict(input, pos) {
  for (;;) {
    const start = skipSpace(input, pos);
    const end = stringEnd(input, start);
    if (end < 0) return false;
    const next = skipSpace(input, end);
    if (input.slice(start + 1, end - 1) === "use strict") return endsStatement(input, end, next);
    pos = input[next] === ";" ? next + 1 : next;
  }
}

function stringEnd(input, start) {
  const quote = input.charCodeAt(start);
  if (quote !== 34 && quote !== 39) return -1;
  for (let pos = start + 1; pos < input.length; pos++) {
    const code = input.charCodeAt(pos);
    if (code === quote) return pos + 1;
    if (code === 92) pos++;
    else if (code === 10 || code === 13) return -1;
  }
  return -1;
}

function endsStatement(input, end, next) {
  const mark = input[next];
  if (mark === undefined || mark === ";" || mark === "}") return true;
  for (let pos = end; pos < next; pos++) {
    if (isNewLine(input.charCodeAt(pos))) return !continuesExpression(input, next);
  }
  return false;
}

function continuesExpression(input, pos) {
  if (skipOrig(input, pos) > pos) return false;
  return CONTINUES_EXPRESSION.test(input[pos]) || input.startsWith("!=", pos);
}
