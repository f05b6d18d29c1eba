// What becomes of single tokens. The parser names tokens by their index in the
// order of the source; everything it does not name, comments and blanks
// included, is emitted as it stands.
export class Edits {
  constructor() {
    this.byToken = [];
  }

  at(index) {
    return (this.byToken[index] = this.byToken[index] || { before: "", text: null, after: "", tight: false });
  }

  replace(index, text) {
    this.at(index).text = text;
  }

  // Outer constructs come first: they reach a token before the inner ones do.
  insertBefore(index, text) {
    this.at(index).before += text;
  }

  // Inner constructs come first: they end before the outer ones do.
  insertAfter(index, text) {
    this.at(index).after += text;
  }

  // Swallows the blanks (never a comment or a line break) before the token.
  tighten(index) {
    this.at(index).tight = true;
  }
}
