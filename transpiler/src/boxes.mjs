import { tokContexts, tokTypes as tt } from "acorn";
import { BOX, DICTIONARY, SELECTOR } from "./names.mjs";

const SIMPLE_VALUES = new Set([tt.string, tt.num, tt._true, tt._false]);
const BOXABLE = "a string, a number, 'true', 'false', '(', '[', '{' or 'selector'";

// The expressions that begin with `@`: boxed values, arrays, dictionaries and selectors.
export const withBoxes = (Base) => class extends Base {
  parseAt() {
    const node = this.startNode();
    const around = this.surroundings();
    this.next();
    if (this.start !== this.lastTokEnd) this.raise(this.lastTokStart, "no blank may follow '@'");
    if (this.type === tt.braceL) this.parseDictionary(around);
    else if (this.type === tt.parenL) this.parseBoxedExpression(around);
    else if (this.isContextual("selector")) this.parseSelectorLiteral(around);
    else this.parseBoxedLiteral(around);
    return this.finishNode(node, "CallExpression");
  }

  // Ends the call after the last token consumed.
  closeCall(around, text) {
    this.edits.insertAfter(this.tokenIndex - 1, text + around.close);
  }

  parseBoxedLiteral(around) {
    this.openCall(around, `${BOX}(`);
    if (this.type === tt.bracketL) this.parseBoxedArray();
    else this.parseBoxedScalar();
    this.closeCall(around, ")");
  }

  parseBoxedArray() {
    this.next();
    while (this.type !== tt.bracketR) {
      if (this.type === tt.ellipsis) this.parseSpread();
      else this.parsePart("an element");
      if (this.type !== tt.bracketR) this.expect(tt.comma);
    }
    this.next();
  }

  parseBoxedScalar() {
    const sign = this.type === tt.plusMin ? this.value : "";
    if (sign) this.next();
    if (!(sign ? this.type === tt.num : SIMPLE_VALUES.has(this.type))) {
      this.raise(this.start, `expected ${sign ? "a number" : BOXABLE} after '@${sign}'`);
    }
    this.next();
  }

  parseBoxedExpression(around) {
    this.openCall(around, BOX);
    const paren = this.tokenIndex;
    this.next();
    const isList = this.parseExpression().type === "SequenceExpression";
    this.expect(tt.parenR);
    if (isList) this.edits.replace(paren, "((");
    this.closeCall(around, isList ? ")" : "");
  }

  parseDictionary(around) {
    this.openCall(around, `${DICTIONARY}(`);
    this.edits.replace(this.tokenIndex, "[");
    this.overrideContext(tokContexts.b_expr);
    this.next();
    while (this.type !== tt.braceR) {
      this.parseEntry();
      if (this.type !== tt.braceR) this.expect(tt.comma);
    }
    this.edits.replace(this.tokenIndex, "]");
    this.next();
    this.closeCall(around, ")");
  }

  parseEntry() {
    this.edits.insertBefore(this.tokenIndex, "[");
    this.parsePart("a key");
    const colon = this.tokenIndex;
    if (!this.eat(tt.colon)) this.expected("':' after the key");
    this.edits.tighten(colon);
    this.edits.replace(colon, this.start === this.lastTokEnd ? ", " : ",");
    this.parsePart("a value after ':'");
    this.edits.insertAfter(this.tokenIndex - 1, "]");
  }

  // One of the expressions of a literal.
  parsePart(what) {
    this.expectExpression(what);
    this.parseMaybeAssign(false);
  }

  parseSelectorLiteral(around) {
    this.openCall(around, SELECTOR);
    this.edits.replace(this.tokenIndex, "");
    this.next();
    if (!this.eat(tt.parenL)) this.raise(this.start, "expected '(' after '@selector'");
    const first = this.tokenIndex;
    const selector = this.parseSelector();
    this.edits.tighten(this.tokenIndex);
    this.expect(tt.parenR);
    this.edits.replace(first, `"${selector}"`);
    this.closeCall(around, "");
  }

  parseSelector() {
    const takeToken = () => {
      this.edits.tighten(this.tokenIndex);
      this.edits.replace(this.tokenIndex, "");
    };
    let selector = "";
    while (this.type !== tt.parenR || selector === "") {
      takeToken();
      const part = this.parseSelectorPart(selector);
      selector += part;
      // Only a selector without arguments may end without a colon.
      if (this.type === tt.parenR && !selector.includes(":")) break;
      takeToken();
      if (!this.eat(tt.colon)) this.expected(`${selector === part ? "':' or ')'" : "':'"} after '${part}'`);
      selector += ":";
    }
    return selector;
  }

  // The name before a colon; empty if there is none. `previous` is the selector so far.
  parseSelectorPart(previous) {
    if (this.type === tt.colon) return "";
    if (!this.isSelectorPart()) this.expected(previous === "" ? "a selector" : "a part of the selector or ')'");
    return this.parseIdent(true).name;
  }
};
