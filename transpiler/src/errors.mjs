import { getLineInfo } from "acorn";

// A SyntaxError at an offset of the hook source; line and column count from 1.
export function syntaxError(source, offset, message) {
  const { line, column } = getLineInfo(source, offset);
  const error = new SyntaxError(`${message} (${line}:${column + 1})`);
  error.line = line;
  error.column = column + 1;
  return error;
}
