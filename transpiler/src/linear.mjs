import { keywordTypes, tokTypes as tt } from "acorn";
import { hasUseStrict } from "./directives.mjs";

// The names that are refused in some contexts; all others need no check.
const DOUBTFUL = new Set([
  ..."enum await yield eval arguments implements interface let package private protected public static".split(" "),
  ...Object.keys(keywordTypes),
]);

// The names of a regular expression's groups; replaces the parser's array.
class GroupNames {
  constructor() {
    this.names = new Set();
  }

  get length() {
    return this.names.size;
  }

  // The parser only ever sets the length to 0.
  set length(_) {
    this.names.clear();
  }

  indexOf(name) {
    return this.names.has(name) ? 0 : -1;
  }

  push(name) {
    this.names.add(name);
  }
}

// Replaces the parser's steps that take more than linear time: linear searches in
// lists of names, copies of the rest of the file, a recursion for each operator
// of a chain.
export const withLinearTime = (Base) => class extends Base {
  strictDirective(start) {
    return hasUseStrict(this.input, start);
  }

  checkUnreserved(identifier) {
    if (DOUBTFUL.has(identifier.name)) super.checkUnreserved(identifier);
  }

  validateRegExpFlags(state) {
    if (!(state.groupNames instanceof GroupNames)) state.groupNames = new GroupNames();
    super.validateRegExpFlags(state);
  }

  // The tree is not needed after checking its source. If it were kept, each
  // statement would cost the garbage collector more than the previous one.
  parseTopLevel(node) {
    while (this.type !== tt.eof) this.parseStatement(null, true);
    this.next();
    return this.finishNode(node, "Program");
  }

  parseBlock(createScope = true, node = this.startNode(), exitStrict = false) {
    node.body = [];
    this.expect(tt.braceL);
    if (createScope) this.enterScope(0);
    while (this.type !== tt.braceR) this.parseStatement(null);
    if (exitStrict) this.strict = false;
    this.next();
    if (createScope) this.exitScope();
    return this.finishNode(node, "BlockStatement");
  }

  parseExprOp(left, startPos, startLoc, minPrecedence, forInit) {
    let node = left;
    while (this.type.binop !== null && this.binaryPrecedence(forInit) > minPrecedence) {
      node = this.parseOperation(node, startPos, startLoc, forInit);
    }
    return node;
  }

  binaryPrecedence(forInit) {
    return forInit && this.type === tt._in ? -1 : this.type.binop;
  }

  parseOperation(left, startPos, startLoc, forInit) {
    const operator = this.value;
    const logical = this.type === tt.logicalOR || this.type === tt.logicalAND;
    const coalesce = this.type === tt.coalesce;
    // `??` accepts no unparenthesised `||` or `&&` on its right, so that mixing
    // them is detected.
    const precedence = coalesce ? tt.logicalAND.binop : this.type.binop;
    this.next();
    const { start, startLoc: loc } = this;
    const operand = this.parseMaybeUnary(null, false, false, forInit);
    const right = this.parseExprOp(operand, start, loc, precedence, forInit);
    const mixed = coalesce ? this.type === tt.logicalOR || this.type === tt.logicalAND : logical && this.type === tt.coalesce;
    if (mixed) this.raise(this.start, "Logical expressions and coalesce expressions cannot be mixed. Wrap either by parentheses");
    return this.buildBinary(startPos, startLoc, left, right, operator, logical || coalesce);
  }
};
