import { lineStarts } from "./lines.mjs";

const BLANKS = /^[ \t]+$/;

// No edit adds or removes a line break, so each generated token is on the same
// line as in the source. Only columns change, by `shift` on the current line.
class Emitter {
  constructor(source, mappings) {
    this.source = source;
    this.lines = lineStarts(source);
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

// Returns the code, and adds the tokens to `mappings` unless it is null. `starts`
// and `ends` are the offsets of the tokens.
export function emit(source, starts, ends, edits, mappings) {
  const emitter = new Emitter(source, mappings);
  let previousEnd = 0;
  for (let i = 0; i < starts.length; i++) {
    const start = starts[i];
    const edit = edits.byToken[i];
    if (start >= emitter.lines[emitter.line + 1]) emitter.moveTo(start);
    if (edit) emitter.applyEdit(edit, previousEnd, start, ends[i]);
    // The end of the source and the empty text of a template are empty tokens.
    else if (mappings && ends[i] > start) emitter.mark(start);
    previousEnd = ends[i];
  }
  emitter.copyTo(source.length);
  return emitter.code;
}
