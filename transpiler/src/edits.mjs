// The edits of single tokens. The parser identifies tokens by their index in the
// source. Everything without an edit, including comments and blanks, is emitted
// unchanged.
export class Edits {
  constructor() {
    this.byToken = [];
    this.indices = [];
  }

  at(index) {
    const known = this.byToken[index];
    if (known) return known;
    this.indices.push(index);
    return (this.byToken[index] = { before: "", text: null, after: "", tight: false });
  }

  // The indices of the tokens with edits, in order. A typed array is made and sorted
  // without calls.
  tokens() {
    return new Float64Array(this.indices).sort();
  }

  replace(index, text) {
    this.at(index).text = text;
  }

  // Outer constructs come first, because the parser meets them before inner ones.
  insertBefore(index, text) {
    this.at(index).before += text;
  }

  // Inner constructs come first, because they end before outer ones.
  insertAfter(index, text) {
    this.at(index).after += text;
  }

  // Removes the blanks before the token, but no comment or line break.
  tighten(index) {
    this.at(index).tight = true;
  }
}
