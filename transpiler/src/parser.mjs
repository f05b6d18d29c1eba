import { Parser } from "acorn";
import { withLinearTime } from "./linear.mjs";
import { withScanner } from "./scanner.mjs";
import { withSyntax } from "./syntax.mjs";
import { withTokens } from "./tokens.mjs";

export const HookParser = Parser.extend(withLinearTime, withScanner, withTokens, withSyntax);
