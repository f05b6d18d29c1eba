// The uses of private names without a declaration so far.
class Uses {
  constructor() {
    this.count = 0;
    this.byName = new Map();
  }

  push(node) {
    const use = { node, number: this.count++ };
    const uses = this.byName.get(node.name);
    if (uses) uses.push(use);
    else this.byName.set(node.name, [use]);
  }

  // Removes the uses of a name, starting with number `first`.
  drop(name, first) {
    const uses = this.byName.get(name);
    while (uses.length > 0 && uses[uses.length - 1].number >= first) uses.pop();
    if (uses.length === 0) this.byName.delete(name);
  }
}

// Finds the declarations of private names without passing each use from class to class.
export const withPrivateNames = (Base) => class extends Base {
  enterClassBody() {
    const { privateNameStack: stack } = this;
    const used = stack.length > 0 ? stack[0].used : new Uses();
    const body = { declared: Object.create(null), used, first: used.count };
    stack.push(body);
    return body.declared;
  }

  exitClassBody() {
    const { declared, used, first } = this.privateNameStack.pop();
    for (const name of Object.keys(declared)) used.drop(name, first);
    if (this.privateNameStack.length > 0) return;
    const [undeclared] = used.byName.values();
    if (!undeclared) return;
    const { start, name } = undeclared[0].node;
    this.raise(start, `Private field '#${name}' must be declared in an enclosing class`);
  }
};
