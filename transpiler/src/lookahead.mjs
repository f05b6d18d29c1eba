import { isIdentifierChar, isIdentifierStart, isNewLine } from "acorn";

const SPACE = /\s/;
const ESCAPE = /\\u(?:[\da-f]{4}|\{[\da-f]+\})/iy;

// Each function takes a position in the source and returns the position after the
// skipped text.

export function skipSpace(input, pos) {
  for (;;) {
    const code = input.charCodeAt(pos);
    if (code === 47 || (code === 35 && pos === 0)) {
      const end = commentEnd(input, pos);
      if (end < 0) return pos;
      pos = end;
    } else if (code === 32 || code === 10 || code === 9 || SPACE.test(input[pos])) {
      pos++;
    } else {
      return pos;
    }
  }
}

function commentEnd(input, pos) {
  const code = input.charCodeAt(pos + 1);
  if (code === 42) {
    const end = input.indexOf("*/", pos + 2);
    return end < 0 ? -1 : end + 2;
  }
  const isHashbang = pos === 0 && input.startsWith("#!");
  if (code !== 47 && !isHashbang) return -1;
  for (pos += 2; pos < input.length && !isNewLine(input.charCodeAt(pos)); pos++);
  return pos;
}

// Does not check which characters are escaped; the tokenizer does.
export function skipWord(input, pos) {
  for (let isPart = isIdentifierStart; pos < input.length; isPart = isIdentifierChar) {
    const code = input.codePointAt(pos);
    ESCAPE.lastIndex = pos;
    if (code === 92 && ESCAPE.test(input)) pos = ESCAPE.lastIndex;
    else if (isPart(code, true)) pos += code > 0xffff ? 2 : 1;
    else break;
  }
  return pos;
}

const ORIG_TEXT = "%orig";

// The position after `%orig`, or `pos` if there is no such token.
export function skipOrig(input, pos) {
  if (!input.startsWith(ORIG_TEXT, pos)) return pos;
  const end = pos + ORIG_TEXT.length;
  const code = end < input.length ? input.codePointAt(end) : 0;
  // A backslash begins an escaped character of an identifier.
  return code === 92 || isIdentifierChar(code, true) ? pos : end;
}
