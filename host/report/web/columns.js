// Converts the report's numbers to the format of the charts: one ascending column of x, and columns
// of y.

// Joins series with different x on one common x, which also holds the values of `domain`. A series
// has no value at an x where it has no point.
function joined(parts, domain = []) {
  const tables = parts.map((part) => [part.x, ...part.ys]);
  const columns = uPlot.join([...tables, [domain, domain.map(() => null)]]);
  return columns.slice(0, -1);
}

// The points sorted by x.
function ordered(x, ...ys) {
  const order = x.map((_, at) => at).sort((a, b) => x[a] - x[b]);
  return {x: order.map((at) => x[at]), ys: ys.map((y) => order.map((at) => y[at]))};
}

// A common x may hold each value only once: the later of two equal values is increased by 1e-6.
function distinct(part) {
  const x = [...part.x];
  for (let at = 1; at < x.length; ++at) {
    if (x[at] <= x[at - 1]) x[at] = x[at - 1] + 1e-6;
  }
  return {x, ys: part.ys};
}

const MOST_WINDOWS = 240;

// How many seconds of stream time one value of the bit rate covers.
function rateWindow(parts) {
  const all = parts.flatMap((points) => points.pts);
  if (all.length === 0) return 1;
  const span = all.reduce((most, x) => Math.max(most, x), -Infinity) -
    all.reduce((least, x) => Math.min(least, x), Infinity);
  return Math.max(1, Math.ceil(span / MOST_WINDOWS));
}

// Bits per second of stream time, window by window. A window without a frame is 0 if it is between
// windows with frames.
function bitRate(points, width) {
  const bytes = new Map();
  points.pts.forEach((pts, at) => {
    const window = Math.floor(pts / width);
    bytes.set(window, (bytes.get(window) ?? 0) + points.bytes[at]);
  });
  const windows = [...bytes.keys()].sort((a, b) => a - b);
  const part = {x: [], ys: [[]]};
  const add = (window, rate) => {
    part.x.push((window + 0.5) * width);
    part.ys[0].push(rate);
  };
  windows.forEach((window, at) => {
    if (at > 0 && window > windows[at - 1] + 1) {
      add(windows[at - 1] + 1, 0);
      if (window > windows[at - 1] + 2) add(window - 1, 0);
    }
    add(window, bytes.get(window) * 8 / width);
  });
  return part;
}
