import { join } from "node:path";
import { pathToFileURL } from "node:url";

const { load: loadThere } = await import(pathToFileURL(join(process.env.NPM_PACKAGES, "load.mjs")));

/// Imports a package that scripts/prepare has installed.
export const load = loadThere;
