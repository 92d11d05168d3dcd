// Makes one file of the chart library, which begins with its licences, and a file of these alone:
//
//   node build.mjs FOLDER    charts.js and charts-licences.txt in FOLDER
//
// Run in a folder where "npm ci" has installed what package-lock.json names.
import { build } from 'esbuild';
import { readFileSync, readdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';

// The folder of the package that a bundled file belongs to.
const folderOf = (input) => input.match(/^.*node_modules\/(@[^/]+\/)?[^/]+/)?.[0];

// One package comes without its licence: that of the repository it is from.
const licenceElsewhere = { 'node_modules/vega-interpreter': 'node_modules/vega' };

function licenceOf(folder) {
  const place = licenceElsewhere[folder] ?? folder;
  const file = readdirSync(place).find((each) => /^(licen[sc]e|copying)/i.test(each));
  if (!file) throw new Error(`${folder}: no file with its licence`);
  return readFileSync(join(place, file), 'utf8').replaceAll('\r', '').trim();
}

const isNotice = (line) => /^copyright .*\d{4}/i.test(line.trim());

// "NAME VERSION", and its copyright lines below.
function titleOf(folder, licence) {
  const { name, version } = JSON.parse(readFileSync(join(folder, 'package.json'), 'utf8'));
  return [`${name} ${version}`, ...licence.filter(isNotice).map((line) => `    ${line.trim()}`)].join('\n');
}

// The licences of packages: those with the same text stand together.
function licencesOf(folders) {
  const groups = new Map();
  for (const folder of folders) {
    const lines = licenceOf(folder).split('\n');
    const text = lines.filter((line) => !isNotice(line)).join('\n').replace(/\n{3,}/g, '\n\n').trim();
    const key = text.replace(/\s+/g, ' ');
    if (!groups.has(key)) groups.set(key, { text, titles: [] });
    groups.get(key).titles.push(titleOf(folder, lines));
  }
  const parts = [...groups.values()].map(({ text, titles }) => `${titles.join('\n')}\n\n${text}\n`);
  return parts.join(`\n${'-'.repeat(80)}\n\n`);
}

const folder = process.argv[2];
const { metafile, outputFiles } = await build({
  entryPoints: ['charts.mjs'],
  bundle: true,
  format: 'iife',
  globalName: 'marrowbenchCharts',
  legalComments: 'none',
  metafile: true,
  minify: true,
  target: 'es2020',
  write: false,
});
const bundled = Object.keys(metafile.inputs).map(folderOf).filter((each) => each);
const licences = licencesOf([...new Set(bundled)].sort());
if (licences.includes('*/')) throw new Error('a licence would end the comment it stands in');
const script = `/*!\n${licences}*/\n${outputFiles[0].text}`;
// It stands inside a page, where these would end it or change how it is read.
if (/<\/script|<script|<!--/i.test(script)) throw new Error('the script would not stay one inside a page');
writeFileSync(join(folder, 'charts.js'), script);
writeFileSync(join(folder, 'charts-licences.txt'), licences);
