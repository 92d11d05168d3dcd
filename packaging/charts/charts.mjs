// What marrowctl's page takes from its chart library.
import { compile } from 'vega-lite';

export { expressionInterpreter } from 'vega-interpreter';
export { parse, View } from 'vega';

// A drawing for Vega-Lite as one for Vega: the first of what the compiler returns; the other is the drawing in its
// own long form.
export const lowered = (drawing) => Object.values(compile(drawing))[0];
