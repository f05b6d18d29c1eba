import { keywordTypes, tokTypes as tt } from "acorn";
import { hasUseStrict } from "./directives.mjs";

// The parser's own numbers, which it does not export.
const SCOPE_TOP = 1;
const SCOPE_FUNCTION = 2;
const SCOPE_ARROW = 16;
const SCOPE_STATIC_BLOCK = 256;
const SCOPE_VAR = SCOPE_TOP | SCOPE_FUNCTION | SCOPE_STATIC_BLOCK;
const BIND_LEXICAL = 2;
const BIND_FUNCTION = 3;
const BIND_SIMPLE_CATCH = 4;

// What a scope knows of a name.
const VAR = 1;
const LEXICAL = 2;
const FUNCTION = 4;

// The names that may be refused somewhere; all others need no look.
const DOUBTFUL = new Set([
  ..."enum await yield eval arguments implements interface let package private protected public static".split(" "),
  ...Object.keys(keywordTypes),
]);

class Scope {
  constructor(flags, outer) {
    this.flags = flags;
    this.inClassFieldInit = false;
    this.names = null;
    this.catchName = null;
    this.varScope = flags & SCOPE_VAR || !outer ? this : outer.varScope;
    this.thisScope = (flags & SCOPE_VAR && !(flags & SCOPE_ARROW)) || !outer ? this : outer.thisScope;
  }

  kinds(name) {
    return (this.names && this.names.get(name)) || 0;
  }

  add(name, kind) {
    if (!this.names) this.names = new Map();
    this.names.set(name, this.kinds(name) | kind);
  }
}

// Replaces the parser's steps whose time grows faster than the source: lists of
// names searched from end to end, copies of the rest of the file, a recursion
// for each operator of a chain.
export const withLinearTime = (Base) => class extends Base {
  strictDirective(start) {
    return hasUseStrict(this.input, start);
  }

  checkUnreserved(identifier) {
    if (DOUBTFUL.has(identifier.name)) super.checkUnreserved(identifier);
  }

  enterScope(flags) {
    this.scopeStack.push(new Scope(flags, this.currentScope()));
  }

  currentVarScope() {
    return this.currentScope().varScope;
  }

  currentThisScope() {
    return this.currentScope().thisScope;
  }

  declareName(name, binding, pos) {
    const scope = this.currentScope();
    let redeclared = false;
    if (binding === BIND_LEXICAL) {
      redeclared = scope.kinds(name) !== 0;
      scope.add(name, LEXICAL);
    } else if (binding === BIND_SIMPLE_CATCH) {
      scope.add(name, LEXICAL);
      scope.catchName = name;
    } else if (binding === BIND_FUNCTION) {
      redeclared = (scope.kinds(name) & (this.treatFunctionsAsVar ? LEXICAL : LEXICAL | VAR)) !== 0;
      scope.add(name, FUNCTION);
    } else {
      redeclared = !this.declareVar(name);
    }
    if (redeclared) this.raise(pos, `Identifier '${name}' has already been declared`);
  }

  // A `var` belongs to each scope from its own up to the function's.
  declareVar(name) {
    for (let i = this.scopeStack.length - 1; ; i--) {
      const scope = this.scopeStack[i];
      const lexical = scope.kinds(name) & LEXICAL && scope.catchName !== name;
      const blockFunction = scope.kinds(name) & FUNCTION && !this.treatFunctionsAsVarInScope(scope);
      if (lexical || blockFunction) return false;
      scope.add(name, VAR);
      if (scope.flags & SCOPE_VAR) return true;
    }
  }

  // The tree is of no use once its source is checked: kept whole, it would cost
  // the garbage collector more with each statement.
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
    // `??` takes no bare `||` or `&&` on its right, so that mixing is noticed.
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
