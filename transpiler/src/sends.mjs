import { tokContexts, tokTypes as tt } from "acorn";
import { SEND } from "./names.mjs";

// Brackets: message sends and JavaScript's arrays.
export const withSends = (Base) => class extends Base {
  // `errors` records syntax that is valid only in a destructuring pattern.
  parseBracket(errors) {
    const node = this.startNode();
    const around = this.surroundings();
    this.next();
    if (this.type === tt.bracketR || this.type === tt.comma || this.type === tt.ellipsis) {
      node.elements = this.parseExprList(tt.bracketR, true, true, errors);
      return this.finishNode(node, "ArrayExpression");
    }
    const own = errors && noErrors();
    const first = this.parseMaybeAssign(false, own);
    if (this.isSelectorPart()) {
      this.checkExpressionErrors(own, true);
      this.parseSend(around);
      return this.finishNode(node, "CallExpression");
    }
    mergeErrors(errors, own);
    node.elements = this.parseOtherElements(first, errors);
    return this.finishNode(node, "ArrayExpression");
  }

  parseOtherElements(first, errors) {
    if (this.eat(tt.bracketR)) return [first];
    if (!this.eat(tt.comma)) this.expected("a selector, ',' or ']'");
    if (this.afterTrailingComma(tt.bracketR)) return [first];
    const elements = this.parseExprList(tt.bracketR, true, true, errors);
    elements.unshift(first);
    return elements;
  }

  isSelectorPart() {
    return this.type === tt.name || this.type.keyword !== undefined;
  }

  // `in` and `instanceof` before a colon are parts of a selector.
  binaryPrecedence(forInit) {
    const isPart = this.type.keyword && this.input.charCodeAt(this.end) === 58;
    return isPart ? -1 : super.binaryPrecedence(forInit);
  }

  // From the first part of the selector to the closing bracket.
  parseSend(around) {
    this.openCall(around, `${SEND}(`);
    this.separate();
    const part = this.tokenIndex;
    let selector = this.parseIdent(true).name;
    if (this.type === tt.colon) {
      this.edits.tighten(this.tokenIndex);
      this.edits.replace(this.tokenIndex, ",");
      this.next();
      if (this.start === this.lastTokEnd) this.edits.replace(this.tokenIndex - 1, ", ");
      this.parseArgument(`${selector}:`);
      selector += `:${this.parseOtherParts()}`;
      this.parseVariadicTail();
    }
    this.edits.replace(part, `"${selector}"`);
    this.edits.replace(this.tokenIndex, `)${around.close}`);
    this.expect(tt.bracketR);
  }

  parseOtherParts() {
    let parts = "";
    while (this.type === tt.colon || this.isSelectorPart()) {
      this.separate();
      let part = "";
      if (this.type !== tt.colon) {
        this.edits.replace(this.tokenIndex, "");
        part = this.parseIdent(true).name;
        this.edits.tighten(this.tokenIndex);
      }
      this.edits.replace(this.tokenIndex, "");
      if (!this.eat(tt.colon)) this.expected(`':' after '${part}'`);
      this.edits.tighten(this.tokenIndex);
      part += ":";
      this.parseArgument(part);
      parts += part;
    }
    return parts;
  }

  parseVariadicTail() {
    while (this.eat(tt.comma) && this.type !== tt.bracketR) {
      if (this.type === tt.ellipsis) this.parseSpread();
      else this.parseArgument(",");
    }
  }

  // `previous` is the text that the argument follows.
  parseArgument(previous) {
    this.expectExpression(`an argument after '${previous}'`);
    // After a colon, the tokenizer would read a function as a labelled statement.
    if (this.type === tt._function || this.type === tt._class) this.overrideContext(tokContexts.f_expr);
    this.parseMaybeAssign(false);
  }

  // A comma between the previous token and the current one.
  separate() {
    this.edits.insertAfter(this.tokenIndex - 1, this.start === this.lastTokEnd ? ", " : ",");
  }
};

const noErrors = () => ({
  shorthandAssign: -1,
  trailingComma: -1,
  parenthesizedAssign: -1,
  parenthesizedBind: -1,
  doubleProto: -1,
});

function mergeErrors(errors, own) {
  if (!errors) return;
  for (const kind of Object.keys(own)) {
    if (errors[kind] < 0) errors[kind] = own[kind];
  }
}
