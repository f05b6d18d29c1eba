const TERMINATORS = ["\n", "\r", "\u2028", "\u2029"];

// The offsets of the line starts in `text`. Searches natively for each
// terminator, so that the time does not depend on the engine's JIT compiler.
export function lineStarts(text) {
  const next = TERMINATORS.map((mark) => nextIndex(text, mark, 0));
  const starts = [0];
  for (;;) {
    const at = Math.min(...next);
    if (at === Infinity) return starts;
    const which = next.indexOf(at);
    next[which] = nextIndex(text, TERMINATORS[which], at + 1);
    // In a CRLF pair, the LF ends the line, not the CR.
    if (text[at] !== "\r" || next[0] !== at + 1) starts.push(at + 1);
  }
}

function nextIndex(text, mark, from) {
  const at = text.indexOf(mark, from);
  return at < 0 ? Infinity : at;
}
