import { transpile } from "./transpile.mjs";

globalThis.OBJSTranspiler = { transpile };
