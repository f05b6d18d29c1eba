import { Parser } from "acorn";
import { withExpectations } from "./expectations.mjs";
import { withLinearTime } from "./linear.mjs";
import { withPrivateNames } from "./privates.mjs";
import { withScanner } from "./scanner.mjs";
import { withScopes } from "./scopes.mjs";
import { withSyntax } from "./syntax.mjs";
import { withTokens } from "./tokens.mjs";

export const HookParser = Parser.extend(withLinearTime, withScopes, withPrivateNames, withScanner, withTokens, withExpectations, withSyntax);
