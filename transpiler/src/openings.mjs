import { SEND } from "./names.mjs";

// By the text of an opening token: its closing one, and the words for both and what they enclose.
const PAIRS = {
  "(": { closer: ")", form: "parentheses" },
  "[": { closer: "]", form: "brackets" },
  "{": { closer: "}", form: "braces" },
  "${": { closer: "}", form: "substitution" },
  "`": { closer: "`", form: "template" },
};
const LITERALS = { "[": "array literal", "{": "dictionary literal", "(": "boxed expression" };
const CLOSERS = new Set([")", "]", "}"]);

// The innermost bracket, message, literal or template that the tokens read so far leave
// open: the words for it, the text that ends it and the offset where it began. Null if there
// is none. Only an error needs it, so it is searched for from the start, not kept up to date.
export function innermostOpening(parser) {
  const open = [];
  for (let i = 0; i < parser.starts.length; i++) {
    const text = shortText(parser, i);
    const inTemplate = open.length > 0 && shortText(parser, open[open.length - 1]) === "`";
    if (inTemplate && text === "`") open.pop();
    // Any other token of a template is its text.
    else if (inTemplate ? text === "${" : PAIRS[text]) open.push(i);
    else if (!inTemplate && CLOSERS.has(text)) open.pop();
  }
  return open.length > 0 ? openingAt(parser, open[open.length - 1]) : null;
}

// The text of a token; empty if it is too long for a bracket.
function shortText({ input, starts, ends }, index) {
  return ends[index] - starts[index] < 3 ? input.slice(starts[index], ends[index]) : "";
}

function openingAt(parser, index) {
  const text = shortText(parser, index);
  const { form, firstToken } = hookFormAt(parser, index, text) || { form: PAIRS[text].form, firstToken: index };
  return { form, closer: PAIRS[text].closer, begin: parser.starts[firstToken] };
}

// The form of the hook language that the bracket belongs to, and the form's first token.
function hookFormAt(parser, index, text) {
  const { input, starts, ends } = parser;
  const isToken = (i, name) => i >= 0 && input.slice(starts[i], ends[i]) === name;
  const edit = parser.edits.byToken[index];
  if (text === "[" && edit && edit.text !== null && edit.text.endsWith(`${SEND}(`)) return { form: "message send", firstToken: index };
  if (isToken(index - 1, "@") && LITERALS[text]) return { form: LITERALS[text], firstToken: index - 1 };
  if (text !== "(") return null;
  if (isToken(index - 2, "@") && isToken(index - 1, "selector")) return { form: "selector literal", firstToken: index - 2 };
  return isToken(index - 1, "%orig") ? { form: "call of %orig", firstToken: index - 1 } : null;
}
