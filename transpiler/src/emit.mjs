import { lineStarts } from "./lines.mjs";

const BLANKS = /^[ \t]+$/;

// No edit adds or removes a line break, so each generated token is on the same
// line as in the source. Only columns change, by `shift` on the current line.
class Emitter {
  // Follows the lines and adds the edited tokens to `mappings`, unless it is null.
  constructor(source, mappings) {
    this.source = source;
    this.lines = mappings ? lineStarts(source) : [0];
    this.lines.push(Infinity);
    this.line = 0;
    this.shift = 0;
    this.code = "";
    this.copied = 0;
    this.mappings = mappings;
  }

  moveTo(offset) {
    while (offset >= this.lines[this.line + 1]) {
      this.line++;
      this.shift = 0;
    }
  }

  copyTo(offset) {
    this.code += this.source.slice(this.copied, offset);
    this.copied = offset;
  }

  insert(text) {
    this.code += text;
    this.shift += text.length;
  }

  drop(end) {
    this.shift -= end - this.copied;
    this.copied = end;
  }

  mark(offset) {
    if (this.mappings) this.mappings.add(this.line, offset - this.lines[this.line], this.shift);
  }

  applyEdit(edit, previousEnd, start, end) {
    if (edit.tight && BLANKS.test(this.source.slice(previousEnd, start))) {
      this.copyTo(previousEnd);
      this.drop(start);
    }
    this.copyTo(start);
    this.insert(edit.before);
    if (edit.text !== "") this.mark(start);
    if (edit.text !== null) {
      this.insert(edit.text);
      this.drop(end);
    }
    if (edit.after !== "") {
      this.copyTo(end);
      this.moveTo(end);
      this.insert(edit.after);
    }
  }
}

// Returns the code. `starts` and `ends` are the offsets of the tokens. Looks only
// at tokens with edits, which are few.
export function emitCode(source, starts, ends, edits) {
  const emitter = new Emitter(source, null);
  const tokens = edits.tokens();
  for (let t = 0; t < tokens.length; t++) {
    const i = tokens[t];
    emitter.applyEdit(edits.byToken[i], i > 0 ? ends[i - 1] : 0, starts[i], ends[i]);
  }
  emitter.copyTo(source.length);
  return emitter.code;
}

// Adds all tokens to `mappings`.
export function emitMappings(source, starts, ends, edits, mappings) {
  const emitter = new Emitter(source, mappings);
  const { lines } = emitter;
  const tokens = edits.tokens();
  for (let i = 0, t = 0; i < starts.length; ) {
    if (starts[i] >= lines[emitter.line + 1]) emitter.moveTo(starts[i]);
    if (i === tokens[t]) {
      emitter.applyEdit(edits.byToken[i], i > 0 ? ends[i - 1] : 0, starts[i], ends[i]);
      i++;
      t++;
    } else {
      const end = t < tokens.length ? tokens[t] : starts.length;
      i = mappings.addTokens(starts, ends, i, end, emitter.line, lines, emitter.shift);
    }
  }
}
