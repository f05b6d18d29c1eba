import { isIdentifierChar } from "acorn";
import { RUNTIME_NAMES } from "./names.mjs";

// Calls of the run time, and the names that are reserved for them.
export const withCalls = (Base) => class extends Base {
  parseNew() {
    this.newStart = this.start;
    return super.parseNew();
  }

  // The text needed around a call that replaces the current token: parentheses
  // after `new`, which would take the arguments as its own, and a blank in
  // `return[a b]`, where the name would touch the previous word.
  surroundings() {
    const isCallee = this.newStart !== undefined && this.lastTokStart === this.newStart;
    const touchesWord = this.start > 0 && isIdentifierChar(this.input.charCodeAt(this.start - 1), true);
    return {
      index: this.tokenIndex,
      open: (touchesWord ? " " : "") + (isCallee ? "(" : ""),
      close: isCallee ? ")" : "",
    };
  }

  openCall(around, text) {
    this.edits.replace(around.index, around.open + text);
  }

  checkLValSimple(target, binding, clashes) {
    this.checkRuntimeName(target);
    return super.checkLValSimple(target, binding, clashes);
  }

  parseFunction(node, statement, allowExpressionBody, isAsync, forInit) {
    const parsed = super.parseFunction(node, statement, allowExpressionBody, isAsync, forInit);
    this.checkRuntimeName(parsed.id);
    return parsed;
  }

  parseClassId(node, isStatement) {
    super.parseClassId(node, isStatement);
    this.checkRuntimeName(node.id);
  }

  checkRuntimeName(target) {
    if (target && target.type === "Identifier" && RUNTIME_NAMES.has(target.name)) {
      this.raise(target.start, `'${target.name}' belongs to the run time and cannot be declared or assigned`);
    }
  }
};
