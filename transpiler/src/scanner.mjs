import { isIdentifierChar, isIdentifierStart, keywordTypes, tokTypes as tt } from "acorn";

const KEYWORDS = new Map(Object.entries(keywordTypes));

const asciiTable = (test) => Uint8Array.from({ length: 128 }, (_, code) => (test(code) ? 1 : 0));
const WORD_START = asciiTable((code) => isIdentifierStart(code));
const WORD_PART = asciiTable((code) => isIdentifierChar(code));

// The steps that run for each character or token, with a fast path for typical
// hook sources. Without a JIT compiler, every avoided call and regular expression
// counts. Line positions are found later, for all tokens at once.
export const withScanner = (Base) => class extends Base {
  nextToken() {
    const context = this.curContext();
    if (!context.preserveSpace) this.skipSpace();
    this.start = this.pos;
    if (this.pos >= this.input.length) return this.finishToken(tt.eof);
    if (context.override) return context.override(this);
    if (WORD_START[this.input.charCodeAt(this.pos)] === 1) return this.readWord();
    return this.readToken(this.fullCharCodeAtPos());
  }

  skipSpace() {
    const { input } = this;
    let { pos } = this;
    let code = input.charCodeAt(pos);
    while (code === 32 || code === 9 || code === 10) code = input.charCodeAt(++pos);
    this.pos = pos;
    if (code < 33 || code === 47 || code > 126) super.skipSpace();
  }

  readWord() {
    const word = this.readWord1();
    return this.finishToken(KEYWORDS.get(word) || tt.name, word);
  }

  readWord1() {
    const { input, pos: start } = this;
    let end = start;
    while (WORD_PART[input.charCodeAt(end)] === 1) end++;
    const code = input.charCodeAt(end);
    // A backslash begins an escaped character of the word.
    if (code > 127 || code === 92) return super.readWord1();
    this.containsEsc = false;
    this.pos = end;
    return input.slice(start, end);
  }

  finishToken(type, value) {
    const previous = this.type;
    this.end = this.pos;
    this.type = type;
    this.value = value;
    if (type.updateContext === null) this.exprAllowed = type.beforeExpr && !(type.keyword && previous === tt.dot);
    else this.updateContext(previous);
  }
};
