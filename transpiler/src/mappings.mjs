const DIGITS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

function vlq(number) {
  let rest = number < 0 ? (-number * 2) | 1 : number * 2;
  let text = "";
  for (; rest > 31; rest >>>= 5) text += DIGITS[(rest & 31) | 32];
  return text + DIGITS[rest];
}

// Writes the "mappings" of a version 3 map with one source, whose generated
// lines are its source lines.
export class Mappings {
  constructor() {
    this.pieces = [];
    // Most tokens have the same distance from their predecessor in the code and
    // in the source. The text of such a segment depends only on that distance.
    this.steps = [];
    this.line = 0;
    this.column = 0;
    this.shift = 0;
  }

  // Adds the tokens from `first` to before `end` that begin on the line `line`, and
  // returns the index of the next. `lines` are the offsets of the lines. One call,
  // because without compilers calls take most of the time.
  addTokens(starts, ends, first, end, line, lines, shift) {
    const { pieces, steps } = this;
    const lineBegin = lines[line];
    const lineEnd = lines[line + 1];
    let i = first;
    let isFollowing = line === this.line && shift === this.shift;
    for (; i < end; i++) {
      const start = starts[i];
      if (start >= lineEnd) break;
      // The end of the source and the empty text of a template are empty tokens.
      if (ends[i] === start) continue;
      const column = start - lineBegin;
      const text = isFollowing ? steps[column - this.column] : undefined;
      if (text) {
        pieces[pieces.length] = text;
        this.column = column;
      } else {
        this.add(line, column, shift);
        isFollowing = true;
      }
    }
    return i;
  }

  add(line, column, shift) {
    const step = column - this.column;
    if (line === this.line && shift === this.shift && this.pieces.length > 0) {
      this.pieces.push(this.steps[step] || (this.steps[step] = `,${vlq(step)}AA${vlq(step)}`));
    } else {
      this.addSegment(line, column, shift);
    }
    this.line = line;
    this.column = column;
    this.shift = shift;
  }

  addSegment(line, column, shift) {
    const sameLine = line === this.line && this.pieces.length > 0;
    const from = sameLine ? this.column + this.shift : 0;
    this.pieces.push(
      sameLine ? "," : ";".repeat(line - this.line),
      `${vlq(column + shift - from)}A${vlq(line - this.line)}${vlq(column - this.column)}`,
    );
  }

  toString() {
    return this.pieces.join("");
  }
}
