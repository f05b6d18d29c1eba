import { tokTypes as tt } from "acorn";
import { placeOf, syntaxError } from "./errors.mjs";
import { innermostOpening } from "./openings.mjs";
import { orig } from "./tokens.mjs";
import { missingEnd, reworded } from "./wording.mjs";

// The tokens that begin no statement and continue none.
const STATEMENT_ENDS = new Set([tt.eof, tt.parenR, tt.bracketR, tt.braceR]);
// Messages quote only short tokens, on one line.
const SHOWN_TOKEN = /^\S{1,20}$/;

// Errors that say what the parser expected, and in which bracket, message or literal.
export const withExpectations = (Base) => class extends Base {
  // Throws the error for a missing `what` at the current token.
  expected(what) {
    const opening = innermostOpening(this);
    const where = opening ? ` in the ${opening.form} that began at ${placeOf(this.input, opening.begin).text}` : "";
    this.raise(this.start, `expected ${what}${where}`);
  }

  // Throws unless an expression, described by `what`, may begin with the current token.
  expectExpression(what) {
    // The tokenizer may take the beginning of a regular expression for a division.
    if (!this.type.startsExpr && this.type !== tt.slash) this.expected(what);
  }

  expect(type) {
    if (!this.eat(type)) this.missing(type);
  }

  missing(type) {
    if (this.type === orig) this.unexpected();
    const opening = innermostOpening(this);
    if (opening && type.label === opening.closer) this.missingCloser(opening);
    this.expected(opening && type === tt.comma ? `',' or '${opening.closer}'` : `'${type.label}'`);
  }

  missingCloser({ closer, form, begin }) {
    this.raise(this.start, missingEnd(this.input, closer, form, begin));
  }

  semicolon() {
    if (this.eat(tt.semi) || this.insertSemicolon()) return;
    if (STATEMENT_ENDS.has(this.type) || this.type === orig) this.unexpected();
    this.raise(this.start, "expected ';' or an operator");
  }

  parseStatement(context, topLevel, exports) {
    if (STATEMENT_ENDS.has(this.type)) this.unexpected();
    return super.parseStatement(context, topLevel, exports);
  }

  parseBindingAtom() {
    if (this.type !== tt.name && this.type !== tt.bracketL && this.type !== tt.braceL && !this.type.keyword) {
      this.expected("a name or a pattern");
    }
    return super.parseBindingAtom();
  }

  unexpected(pos) {
    const offset = pos == null ? this.start : pos;
    const isCurrent = offset === this.start;
    if (isCurrent && this.type === orig) {
      this.raise(offset, "'%orig' cannot follow an expression; the remainder is written '% orig'");
    }
    if (isCurrent && this.type === tt.eof) {
      const opening = innermostOpening(this);
      if (opening) this.missingCloser(opening);
      this.raise(offset, "unexpected end of the source");
    }
    const text = isCurrent ? this.input.slice(offset, this.end) : this.consumedTokenAt(offset);
    this.raise(offset, SHOWN_TOKEN.test(text) ? `unexpected '${text}'` : "unexpected token");
  }

  consumedTokenAt(offset) {
    const index = this.starts.lastIndexOf(offset);
    return index < 0 ? "" : this.input.slice(offset, this.ends[index]);
  }

  raise(pos, message) {
    if (message.startsWith("Unterminated template")) this.missingCloser(innermostOpening(this));
    // Acorn names the character after a '#', which need not be visible, or exist.
    if (message.startsWith("Unexpected character") && this.input[pos - 1] === "#")
      throw syntaxError(this.input, pos, "expected the name of a private member after '#'");
    throw syntaxError(this.input, pos, reworded(this.input, pos, message));
  }

  raiseRecoverable(pos, message) {
    this.raise(pos, message);
  }
};
