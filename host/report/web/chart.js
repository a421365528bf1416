// Draws one chart of the page with uPlot: as wide as the page, in the colours of the scheme.
const CHART_HEIGHT = 240;
const FONT = "12px system-ui, sans-serif";

// spec: {id, title, hint, xLabel, yLabel, sync, height, parts, domain, series, axis, range}
//   parts   {x, ys}: one column of y for each of the series, and their common x
//   domain  values of x that are always shown
//   series  {label, colour, points, stepped, dash, text(value, x)}; `points` draws dots instead of
//           a line, `stepped` draws a line that keeps its height until the next point
//   axis    how y values are formatted, or further options of that axis
//   range   the ends of the y axis, if they are fixed
function addChart(parent, spec) {
  const figure = document.createElement("figure");
  figure.id = spec.id;
  figure.append(element("h3", spec.title));
  if (spec.hint) figure.append(element("p", spec.hint, "hint"));
  parent.append(figure);
  if (spec.parts.every((part) => part.x.length === 0)) {
    figure.append(element("p", "Nothing of this was received.", "nothing"));
    return;
  }
  const data = joined(spec.parts, spec.domain);
  const container = document.createElement("div");
  figure.append(container);
  let chart = new uPlot(chartOptions(spec, container), data, container);
  new ResizeObserver(() => {
    chart.setSize({width: container.clientWidth, height: chart.height});
  }).observe(container);
  onSchemeChange(() => {
    chart.destroy();
    chart = new uPlot(chartOptions(spec, container), data, container);
  });
}

function chartOptions(spec, container) {
  return {
    width: container.clientWidth,
    height: spec.height ?? CHART_HEIGHT,
    scales: {x: {time: false}, y: spec.range ? {range: spec.range} : {}},
    axes: [axisOptions(spec.xLabel, {size: 34}), axisOptions(spec.yLabel, {size: 68, ...spec.axis})],
    series: [{label: spec.xLabel, value: (_, x) => seconds(x)}, ...spec.series.map(seriesOptions)],
    cursor: {
      sync: {key: spec.sync},
      dataIdx: legendPoint(spec.series),
      points: {size: 9},
    },
    legend: {markers: {width: 0, fill: (_, at) => (at > 0 ? colour(spec.series[at - 1].colour) : null)}},
  };
}

function axisOptions(label, more) {
  return {
    label,
    labelFont: FONT,
    font: FONT,
    labelSize: 22,
    stroke: colour("quiet"),
    grid: {stroke: colour("grid"), width: 1},
    ticks: {stroke: colour("grid"), width: 1},
    ...more,
  };
}

function seriesOptions(series) {
  const stroke = colour(series.colour);
  return {
    label: series.label,
    stroke,
    width: series.points ? 0 : 1.5,
    dash: series.dash,
    paths: pathsOf(series),
    points: {show: Boolean(series.points), size: series.points ?? 0, fill: stroke, stroke, width: 0},
    value: (chart, y, _, at) => {
      return y === null || y === undefined ? NONE : series.text(y, at === null ? 0 : chart.data[0][at]);
    },
  };
}

function pathsOf(series) {
  if (series.points) return () => null;
  return series.stepped ? uPlot.paths.stepped({align: 1}) : uPlot.paths.linear();
}

// The point of a series that the legend shows. The hovered point may belong to another series. A
// stepped line then shows the previous point, other lines the nearest one.
function legendPoint(series) {
  return (chart, at, hovered) => {
    if (at === 0) return hovered;
    const [x, column] = [chart.data[0], chart.data[at]];
    const missing = (index) => column[index] === null || column[index] === undefined;
    let before = hovered;
    while (before >= 0 && missing(before)) --before;
    if (before === hovered || (before >= 0 && series[at - 1].stepped)) return before;
    let after = hovered;
    while (after < column.length && missing(after)) ++after;
    if (after === column.length) return before < 0 ? hovered : before;
    if (before < 0) return after;
    return x[hovered] - x[before] <= x[after] - x[hovered] ? before : after;
  };
}
