import { placeOf } from "./errors.mjs";

// Messages of acorn that the hook language words differently.
const WORDING = {
  "Assigning to rvalue": "expected a variable, a property or a pattern to assign to",
  "Binding rvalue": "expected a name or a pattern to declare",
  "Complex binding patterns require an initialization value": "expected '=' after the pattern",
  "Illegal newline after throw": "expected an expression in the line of 'throw'",
  "Missing catch or finally clause": "expected 'catch' or 'finally' after the block of 'try'",
  "Unsyntactic break": "'break' outside of a loop or a switch, or to an unknown label",
  "Unsyntactic continue": "'continue' outside of a loop, or to an unknown label",
  "Argument name clash": "a parameter of that name exists already",
};

// What acorn finds unterminated: the words for it, and how far before the reported offset it began.
const UNTERMINATED = {
  "Unterminated string constant": { form: "string", ahead: 0 },
  "Unterminated comment": { form: "comment", ahead: 0, closer: "*/" },
  "Unterminated regular expression": { form: "regular expression", ahead: 1, closer: "/" },
};

export const missingEnd = (input, closer, form, begin) =>
  `expected '${closer}' to end the ${form} that began at ${placeOf(input, begin).text}`;

// The hook language's words for a message of acorn's about an offset of the source.
export function reworded(input, offset, message) {
  const unterminated = UNTERMINATED[message];
  if (unterminated) {
    const { form, ahead, closer = input[offset] } = unterminated;
    return missingEnd(input, closer, form, offset - ahead);
  }
  return WORDING[message] || message.replace(/^[A-Z](?=[a-z ])/, (letter) => letter.toLowerCase());
}
