import { getLineInfo } from "acorn";

// The line and the column of an offset of the hook source, counted from 1.
export function placeOf(source, offset) {
  const { line, column } = getLineInfo(source, offset);
  return { line, column: column + 1, text: `${line}:${column + 1}` };
}

// A SyntaxError at an offset of the hook source.
export function syntaxError(source, offset, message) {
  const { line, column, text } = placeOf(source, offset);
  const error = new SyntaxError(`${message} (${text})`);
  error.line = line;
  error.column = column;
  return error;
}
