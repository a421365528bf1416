// The configuration of eslint for the scripts of the report page. They run as one program, in the
// order in which host/report/CMakeLists.txt embeds them: a file may use the declarations of the
// others, and none may be declared twice.
import {readdirSync, readFileSync} from "node:fs";
import {URL, fileURLToPath} from "node:url";

import js from "@eslint/js";

const BROWSER = ["ResizeObserver", "document", "getComputedStyle", "matchMedia"];
const LIBRARIES = ["uPlot"];

const folder = fileURLToPath(new URL(".", import.meta.url));
const texts = new Map(readdirSync(folder)
  .filter((name) => name.endsWith(".js"))
  .map((name) => [name, readFileSync(`${folder}/${name}`, "utf8")]));

// The names that a script declares outside its functions.
function declared(text) {
  return [...text.matchAll(/^(?:async )?(?:function|const|let|class) (\w+)/gm)].map((match) => match[1]);
}

function configOf(name) {
  const others = [...texts.keys()].filter((other) => other !== name);
  const globals = [...BROWSER, ...LIBRARIES, ...others.flatMap((other) => declared(texts.get(other)))];
  const used = declared(texts.get(name)).filter((own) =>
    others.some((other) => new RegExp(`\\b${own}\\b`).test(texts.get(other))));
  return {
    files: [name],
    languageOptions: {
      sourceType: "script",
      globals: Object.fromEntries(globals.map((global) => [global, "readonly"])),
    },
    linterOptions: {reportUnusedDisableDirectives: "error"},
    rules: {
      "array-callback-return": "error",
      "eqeqeq": "error",
      "no-implied-eval": "error",
      "no-redeclare": ["error", {builtinGlobals: true}],
      "no-shadow": "error",
      "no-unused-vars": ["error", {varsIgnorePattern: `^(${used.join("|")})$`, argsIgnorePattern: "^_$"}],
      "no-use-before-define": ["error", {functions: false, variables: false}],
      "no-var": "error",
      "prefer-const": "error",
    },
  };
}

export default [js.configs.recommended, ...[...texts.keys()].map(configOf)];
