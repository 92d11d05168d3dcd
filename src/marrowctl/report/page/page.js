// Draws the charts of the page: their specifications and tables stand in the element "charts".
(function () {
  'use strict';
  const library = marrowbenchCharts;
  const page = JSON.parse(document.getElementById('charts').textContent);
  // On paper, of a chart alone and of a small one beside another.
  const printWidth = 760;
  const smallPrintWidth = 370;
  const pieceMilliseconds = 100;
  const drawn = new Map();
  const parsed = new Map();
  const tip = document.getElementById('tip');

  // A column is a list of values; a text is a number into the column's texts.
  const valueOf = (column, i) => {
    const value = column.values[i];
    return value === null || !column.texts ? value : column.texts[value];
  };

  const rowsOf = (table) => {
    const count = table.length ? table[0].values.length : 0;
    return Array.from({ length: count }, (_, i) =>
      Object.fromEntries(table.map((column) => [column.name, valueOf(column, i)])));
  };

  // Times are those of the place where the report was made, told to the browser as if they were UTC.
  const timeText = (milliseconds) => new Date(milliseconds).toISOString().slice(0, 19).replace('T', ' ');

  // Made once: a formatter takes longer to make than thousands of numbers to format.
  const decimals = (digits) => new Intl.NumberFormat('en-US', { maximumFractionDigits: digits });
  const [small, medium, large] = [decimals(3), decimals(1), decimals(0)];
  const numberText = (number) => {
    const size = Math.abs(number);
    return (size < 10 ? small : size < 1000 ? medium : large).format(number);
  };

  function shown(column, value) {
    if (value === null || value === undefined) return '';
    if (column.kind === 'time') return timeText(value);
    return column.kind === 'number' ? numberText(value) : value;
  }

  function element(name, text, className) {
    const made = document.createElement(name);
    if (text !== undefined) made.textContent = text;
    if (className) made.className = className;
    return made;
  }

  // What is known of a row: titles and texts.
  const entriesOf = (columns, row) => columns
    .map((column) => [column.title, shown(column, row[column.name])])
    .filter(([, text]) => text !== '');

  // Rows as a chart takes them, with what a screen reader says of their marks.
  const spokenRowsOf = (columns) => rowsOf(columns).map((row) => ({
    ...row, spoken: entriesOf(columns, row).map((entry) => entry.join(': ')).join('; '),
  }));

  const classOf = (column) => (column.kind === 'number' ? 'number' : undefined);

  function tableOf(columns) {
    const table = element('table');
    const head = table.createTHead().insertRow();
    for (const column of columns) head.append(element('th', column.title, classOf(column)));
    const body = table.createTBody();
    rowsOf(columns).forEach((row) => {
      const line = body.insertRow();
      for (const column of columns) {
        line.append(element('td', shown(column, row[column.name]), classOf(column)));
      }
    });
    return table;
  }

  // The table is made when it is asked for: thousands of rows would slow the page down.
  function fill(details, chart) {
    if (!details.open || details.querySelector('table')) return;
    const scroll = element('div', undefined, 'scroll');
    scroll.append(tableOf(chart.table));
    details.append(scroll);
  }

  function showTip(columns, event, row) {
    if (!row) {
      tip.style.visibility = 'hidden';
      return;
    }
    tip.replaceChildren(...entriesOf(columns, row).map(([title, text]) => {
      const line = element('div', `${title}: `);
      line.append(element('b', text));
      return line;
    }));
    tip.style.visibility = 'visible';
    tip.style.left = `${Math.max(0, Math.min(event.clientX + 14, innerWidth - tip.offsetWidth - 8))}px`;
    tip.style.top = `${Math.max(0, Math.min(event.clientY + 14, innerHeight - tip.offsetHeight - 8))}px`;
  }

  // Charts that differ in nothing but their rows and width are compiled once.
  function parse(drawing) {
    const key = JSON.stringify(drawing);
    if (!parsed.has(key)) {
      const full = {
        ...drawing, config: page.config, width: 100, autosize: { type: 'fit-x', contains: 'padding' }, data: { name: 'rows' },
      };
      parsed.set(key, library.parse(library.lowered(full), null, { ast: true }));
    }
    return parsed.get(key);
  }

  const placeOf = (chart) => document.getElementById(chart.id).querySelector('.chart');

  function draw(chart) {
    if (drawn.has(chart.id)) return;
    const place = placeOf(chart);
    const view = new library.View(parse(chart.drawing), {
      expr: library.expressionInterpreter,
      renderer: 'svg',
      container: place,
      tooltip: (handler, event, item, row) => showTip(chart.table, event, row),
    });
    drawn.set(chart.id, { view, place });
    view.data('rows', spokenRowsOf(chart.table)).width(place.clientWidth).run();
  }

  function resize(widthOf) {
    for (const { view, place } of drawn.values()) view.width(widthOf(place)).run();
  }

  // Room for what is not drawn yet, so that a link to a part below leads there.
  for (const chart of page.charts) placeOf(chart).style.minHeight = `${chart.drawing.height ?? 0}px`;

  // In pieces, so that the page can be scrolled meanwhile; a chart a piece would have all be painted anew for each.
  function drawFrom(index) {
    const end = performance.now() + pieceMilliseconds;
    for (; index < page.charts.length && performance.now() < end; ++index) draw(page.charts[index]);
    if (index < page.charts.length)
      setTimeout(drawFrom, 0, index);
    else
      document.documentElement.dataset.charts = 'drawn';
  }

  for (const chart of page.charts) {
    const details = document.getElementById(chart.id).querySelector('details');
    details.addEventListener('toggle', () => fill(details, chart));
  }
  let waiting = 0;
  addEventListener('resize', () => {
    clearTimeout(waiting);
    waiting = setTimeout(resize, 150, (place) => place.clientWidth);
  });
  addEventListener('beforeprint', () => {
    page.charts.forEach(draw);
    resize((place) => (place.closest('.small') ? smallPrintWidth : printWidth));
  });
  addEventListener('afterprint', () => resize((place) => place.clientWidth));
  drawFrom(0);
})();
