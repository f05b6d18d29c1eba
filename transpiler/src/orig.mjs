import { tokTypes as tt } from "acorn";
import { ORIG } from "./names.mjs";

// The parser's constants, which it does not export.
const SCOPE_FUNCTION = 2;
const FUNC_STATEMENT = 1;

// `%orig`, whose code passes `arguments` with the meaning at that place.
export const withOrig = (Base) => class extends Base {
  parseOrig() {
    const scope = this.currentThisScope();
    if (!(scope.flags & SCOPE_FUNCTION) || scope.inClassFieldInit) {
      this.raise(this.start, "%orig outside of a function");
    }
    if (scope.firstOrig < 0) scope.firstOrig = this.start;
    this.checkArguments(scope);
    const node = this.startNode();
    const around = this.surroundings();
    this.openCall(around, ORIG);
    this.next();
    if (this.type === tt.parenL) {
      this.edits.replace(this.tokenIndex, "(this, arguments, [");
      this.next();
      this.parseExprList(tt.parenR, true, false);
      this.edits.replace(this.tokenIndex - 1, `])${around.close}`);
    } else {
      this.edits.insertAfter(around.index, `(this, arguments)${around.close}`);
    }
    return this.finishNode(node, "CallExpression");
  }

  declareName(name, binding, pos) {
    super.declareName(name, binding, pos);
    if (name === "arguments") this.noteArguments();
  }

  // Not every function statement declares its name: one that is a branch of an
  // `if` assigns it instead.
  parseFunction(node, statement, allowExpressionBody, isAsync, forInit) {
    const parsed = super.parseFunction(node, statement, allowExpressionBody, isAsync, forInit);
    if (statement & FUNC_STATEMENT && parsed.id && parsed.id.name === "arguments") this.noteArguments();
    return parsed;
  }

  noteArguments() {
    const scope = this.currentThisScope();
    scope.declaresArguments = true;
    this.checkArguments(scope);
  }

  // Parameters of arrow functions and `var` may be declared after their use, so
  // the whole function is checked at its end.
  checkArguments(scope) {
    if (scope.declaresArguments && scope.firstOrig >= 0) {
      this.raise(scope.firstOrig, "%orig in a function that declares 'arguments'");
    }
  }
};
