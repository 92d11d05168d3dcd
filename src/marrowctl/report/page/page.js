// Draws the charts of the page: their specifications and tables stand in the element "charts".
(function () {
  'use strict';
  const library = marrowbenchCharts;
  const page = JSON.parse(document.getElementById('charts').textContent);
  const printWidth = 760;
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

  const numberText = (number) => number.toLocaleString('en-US', {
    maximumFractionDigits: Math.abs(number) < 10 ? 3 : Math.abs(number) < 1000 ? 1 : 0,
  });

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

  function showTip(handler, event, item, value) {
    if (value === null || value === undefined || value === '') {
      tip.style.visibility = 'hidden';
      return;
    }
    const entries = typeof value === 'object' ? Object.entries(value) : [['', String(value)]];
    tip.replaceChildren(...entries.map(([name, text]) => {
      const line = element('div', name ? `${name}: ` : '');
      line.append(element('b', text));
      return line;
    }));
    tip.style.visibility = 'visible';
    tip.style.left = `${Math.max(0, Math.min(event.clientX + 14, innerWidth - tip.offsetWidth - 8))}px`;
    tip.style.top = `${Math.max(0, Math.min(event.clientY + 14, innerHeight - tip.offsetHeight - 8))}px`;
  }

  // Charts that differ in nothing but their rows and width are compiled once.
  function parse(spec) {
    const key = JSON.stringify(spec);
    if (!parsed.has(key)) {
      const full = {
        ...spec, config: page.config, width: 100, autosize: { type: 'fit-x', contains: 'padding' }, data: { name: 'rows' },
      };
      parsed.set(key, library.parse(library.compile(full).spec, null, { ast: true }));
    }
    return parsed.get(key);
  }

  function draw(chart) {
    if (drawn.has(chart.id)) return;
    const place = document.getElementById(chart.id).querySelector('.chart');
    const view = new library.View(parse(chart.spec), {
      expr: library.expressionInterpreter,
      renderer: 'svg',
      container: place,
      tooltip: showTip,
    });
    drawn.set(chart.id, { view, place });
    view.data('rows', rowsOf(chart.table)).width(place.clientWidth).run();
  }

  function resize(widthOf) {
    for (const { view, place } of drawn.values()) view.width(widthOf(place)).run();
  }

  // One after the other, so that the page can be scrolled meanwhile.
  function drawFrom(index) {
    if (index === page.charts.length) {
      document.documentElement.dataset.charts = 'drawn';
      return;
    }
    draw(page.charts[index]);
    setTimeout(drawFrom, 0, index + 1);
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
    resize(() => printWidth);
  });
  addEventListener('afterprint', () => resize((place) => place.clientWidth));
  drawFrom(0);
})();
