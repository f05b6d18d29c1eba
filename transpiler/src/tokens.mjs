import { TokenType } from "acorn";
import { Edits } from "./edits.mjs";
import { skipOrig } from "./lookahead.mjs";

export const at = new TokenType("@", { beforeExpr: true, startsExpr: true });
export const orig = new TokenType("%orig", { startsExpr: true });

// The tokens `@` and `%orig`, and a record of the positions of all tokens.
export const withTokens = (Base) => class extends Base {
  constructor(options, input, startPos) {
    super(options, input, startPos);
    this.starts = [];
    this.ends = [];
    this.edits = new Edits();
  }

  // The index of the current token, which is the last one that was read.
  get tokenIndex() {
    return this.starts.length;
  }

  next(ignoreEscapeSequenceInKeyword) {
    this.starts.push(this.start);
    this.ends.push(this.end);
    super.next(ignoreEscapeSequenceInKeyword);
  }

  getTokenFromCode(code) {
    if (code === 64) {
      this.pos++;
      return this.finishToken(at);
    }
    if (code === 37) {
      const end = skipOrig(this.input, this.pos);
      if (end > this.pos) {
        this.pos = end;
        return this.finishToken(orig);
      }
    }
    return super.getTokenFromCode(code);
  }
};
