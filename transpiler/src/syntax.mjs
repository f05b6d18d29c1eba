import { keywordTypes, tokTypes as tt } from "acorn";
import { withBoxes } from "./boxes.mjs";
import { withCalls } from "./calls.mjs";
import { skipSpace, skipWord } from "./lookahead.mjs";
import { withOrig } from "./orig.mjs";
import { withSends } from "./sends.mjs";
import { at, orig } from "./tokens.mjs";

const KEYWORDS = new Set(Object.keys(keywordTypes));
const SUBSCRIPT_STARTS = new Set([tt.bracketL, tt.dot, tt.questionDot, tt.parenL, tt.backQuote]);

// Adds the hook language's expressions to those of JavaScript.
const withAtoms = (Base) => class extends Base {
  parseExprAtom(errors, forInit) {
    if (this.type === tt.bracketL) return this.parseBracket(errors);
    if (this.type === at) return this.parseAt();
    if (this.type === orig) return this.parseOrig();
    if (this.value === "async" && this.isVariableAsync()) return this.parseIdent(false);
    this.expectExpression("an expression");
    return super.parseExprAtom(errors, forInit);
  }

  // `async name` and `async function` normally begin functions, but not if the word is
  // part of a selector: a bracket or a colon follows it.
  isVariableAsync() {
    if (!this.isContextual("async")) return false;
    const { input } = this;
    const start = skipSpace(input, this.end);
    const end = skipWord(input, start);
    const word = input.slice(start, end);
    if (word === "" || (word !== "function" && KEYWORDS.has(word))) return false;
    const mark = input[skipSpace(input, end)];
    return mark === "]" || mark === ":";
  }

  parseSubscript(base, startPos, startLoc, noCalls, maybeAsyncArrow, optionalChained, forInit) {
    if (!SUBSCRIPT_STARTS.has(this.type)) return base;
    if (this.type !== tt.bracketL) {
      return super.parseSubscript(base, startPos, startLoc, noCalls, maybeAsyncArrow, optionalChained, forInit);
    }
    const bracket = this.start;
    const node = this.startNodeAt(startPos, startLoc);
    node.object = base;
    this.next();
    node.property = this.parseExpression();
    if (this.isSelectorPart()) {
      this.raise(bracket, "a message send cannot follow an expression; is a semicolon missing before the '['?");
    }
    this.expect(tt.bracketR);
    node.computed = true;
    node.optional = false;
    return this.finishNode(node, "MemberExpression");
  }

  // `let` and a line break before `%orig` form a separate statement, but in the
  // code they would declare the name of the call that replaces `%orig`.
  parseExpressionStatement(node, expression) {
    const isLet = expression.type === "Identifier" && expression.name === "let";
    if (isLet && (this.type === at || this.type === orig)) this.unexpected();
    return super.parseExpressionStatement(node, expression);
  }
};

export const withSyntax = (Base) => withAtoms(withOrig(withBoxes(withSends(withCalls(Base)))));
