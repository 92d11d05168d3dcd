// Draws the charts of a page without a browser, with the page's own scripts:
//
//   node draw_charts.mjs PAGE    prints JSON: each chart's SVG by its name, and what the library complains of
import { readFileSync } from 'node:fs';
import vm from 'node:vm';

const page = readFileSync(process.argv[2], 'utf8');
const [library, script] = [...page.matchAll(/<script>([^]*?)<\/script>/g)].map((match) => match[1]);
const charts = page.match(/<script type="application\/json" id="charts">([^]*?)<\/script>/)[1];

const complaints = [];
for (const level of ['warn', 'error', 'log', 'info']) console[level] = (...texts) => complaints.push(texts.join(' '));

// As much of a document as the page's script needs to draw.
class Place {
  constructor(id) {
    this.id = id;
    this.clientWidth = 760;
    this.dataset = {};
    this.style = {};
  }
  querySelector() { return this; }
  addEventListener() {}
}
const places = new Map([['charts', { textContent: charts }]]);
globalThis.document = {
  documentElement: new Place('page'),
  getElementById(id) {
    if (!places.has(id)) places.set(id, new Place(id));
    return places.get(id);
  },
};
globalThis.addEventListener = () => {};

vm.runInThisContext(library);
const views = new Map();
const { View } = globalThis.marrowbenchCharts;
globalThis.marrowbenchCharts = {
  ...globalThis.marrowbenchCharts,
  View: class extends View {
    constructor(runtime, options) {
      super(runtime, { ...options, renderer: 'none', container: undefined });
      views.set(options.container.id, this);
    }
  },
};
vm.runInThisContext(script);
while (document.documentElement.dataset.charts !== 'drawn') await new Promise((done) => setTimeout(done, 10));
const drawings = {};
for (const [id, view] of views) drawings[id] = await view.toSVG();
process.stdout.write(JSON.stringify({ drawings, complaints }));
