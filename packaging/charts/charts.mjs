// What marrowctl's page takes from its chart library.
export { compile } from 'vega-lite';
export { expressionInterpreter } from 'vega-interpreter';
export { parse, View } from 'vega';
