// The parser's constants, which it does not export.
const SCOPE_TOP = 1;
const SCOPE_FUNCTION = 2;
const SCOPE_ASYNC = 4;
const SCOPE_ARROW = 16;
const SCOPE_STATIC_BLOCK = 256;
const SCOPE_VAR = SCOPE_TOP | SCOPE_FUNCTION | SCOPE_STATIC_BLOCK;
const BIND_LEXICAL = 2;
const BIND_FUNCTION = 3;
const BIND_SIMPLE_CATCH = 4;

// The kinds of declarations of a name in a scope.
const LEXICAL = 1;
const FUNCTION = 2;

class Scope {
  constructor(flags, outer) {
    this.flags = flags;
    this.inClassFieldInit = false;
    this.firstOrig = -1;
    this.declaresArguments = false;
    this.names = null;
    // Those of the names that no `var` inside the scope may have.
    this.barred = null;
    this.varScope = flags & SCOPE_VAR || !outer ? this : outer.varScope;
    this.thisScope = (flags & SCOPE_VAR && !(flags & SCOPE_ARROW)) || !outer ? this : outer.thisScope;
    // For the whole function: the number of its `var`s so far; by name, the number
    // of the last one and the count of enclosing scopes that bar the name.
    this.varCount = 0;
    this.lastVars = null;
    this.bars = null;
    this.varsBefore = this.varScope.varCount;
  }

  kinds(name) {
    return (this.names && this.names.get(name)) || 0;
  }

  add(name, kind) {
    if (!this.names) this.names = new Map();
    this.names.set(name, this.kinds(name) | kind);
  }

  // Whether this scope, which must be the innermost, contains a `var` of that name.
  hasVar(name) {
    const { lastVars } = this.varScope;
    return lastVars !== null && lastVars.get(name) > this.varsBefore;
  }

  // Returns false if an enclosing scope bars the name.
  addVar(name) {
    const { varScope } = this;
    if (varScope.bars && varScope.bars.has(name)) return false;
    if (!varScope.lastVars) varScope.lastVars = new Map();
    varScope.lastVars.set(name, ++varScope.varCount);
    return true;
  }

  bar(name) {
    if (!this.barred) this.barred = new Set();
    if (this.barred.has(name)) return;
    this.barred.add(name);
    const { varScope } = this;
    if (!varScope.bars) varScope.bars = new Map();
    varScope.bars.set(name, (varScope.bars.get(name) || 0) + 1);
  }

  close() {
    if (!this.barred || this.varScope === this) return;
    const { bars } = this.varScope;
    for (const name of this.barred) {
      const others = bars.get(name) - 1;
      if (others > 0) bars.set(name, others);
      else bars.delete(name);
    }
  }
}

// Declarations and scopes, in a time that depends on neither the number of names
// nor the depth of blocks.
export const withScopes = (Base) => class extends Base {
  enterScope(flags) {
    this.scopeStack.push(new Scope(flags, this.currentScope()));
  }

  exitScope() {
    this.scopeStack.pop().close();
  }

  currentVarScope() {
    return this.currentScope().varScope;
  }

  currentThisScope() {
    return this.currentScope().thisScope;
  }

  get canAwait() {
    const scope = this.currentVarScope();
    return !scope.inClassFieldInit && (scope.flags & SCOPE_ASYNC) !== 0;
  }

  declareName(name, binding, pos) {
    const scope = this.currentScope();
    let redeclared = false;
    if (binding === BIND_LEXICAL) {
      redeclared = scope.kinds(name) !== 0 || scope.hasVar(name);
      scope.add(name, LEXICAL);
      scope.bar(name);
    } else if (binding === BIND_SIMPLE_CATCH) {
      scope.add(name, LEXICAL);
    } else if (binding === BIND_FUNCTION) {
      const isVar = this.treatFunctionsAsVar;
      redeclared = (scope.kinds(name) & LEXICAL) !== 0 || (!isVar && scope.hasVar(name));
      scope.add(name, FUNCTION);
      if (!isVar) scope.bar(name);
    } else {
      redeclared = !scope.addVar(name);
    }
    if (redeclared) this.raise(pos, `Identifier '${name}' has already been declared`);
  }
};
