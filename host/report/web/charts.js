// The charts of the report, one function for each.
const KINDS = [
  {name: "video", colour: "video", y: 0},
  {name: "audio", colour: "audio", y: 1},
];
const SINCE_START = "time since the start (s)";
const STREAM_TIME = "stream time (s)";

function addCharts(report) {
  const arrival = document.getElementById("arrival");
  const domain = [0, report.elapsed];
  for (const make of [statusChart, arrivalChart, distanceChart, stepChart, valuesChart]) {
    addChart(arrival, {sync: "arrival", xLabel: SINCE_START, domain, ...make(report)});
  }
  const stream = document.getElementById("stream");
  for (const make of [sizeChart, rateChart]) {
    addChart(stream, {sync: "stream", xLabel: STREAM_TIME, ...make(report)});
  }
}

// The note below a chart whose points are joined.
function joinedHint(perPoint, what) {
  return perPoint > 1 ? ` One point stands for ${whole(perPoint)} frames${what}.` : "";
}

function mostPerPoint(report) {
  return Math.max(...KINDS.map(({name}) => report[name].points.per_point));
}

// A chart with a column of y for each kind of frame.
function kindParts(report, ys) {
  return KINDS.map(({name}) => {
    const points = report[name].points;
    return distinct({x: points.t, ys: ys(points)});
  });
}

const LANES = ["status lines", "results", "duration", "buffered", "video", "audio"];

function lanes(report) {
  const linesOf = (kind) => report.texts.kept.filter((line) => line.kind === kind);
  return [
    {x: linesOf("message").map((line) => line.t), lines: linesOf("message"), colour: "message"},
    {x: linesOf("result").map((line) => line.t), lines: linesOf("result"), colour: "result"},
    {x: report.duration.points.t, values: report.duration.points.newest, colour: "third"},
    {x: report.buffered_time.points.t, values: report.buffered_time.points.newest, colour: "fourth"},
    {x: report.video.points.t, values: report.video.points.pts, colour: "video"},
    {x: report.audio.points.t, values: report.audio.points.pts, colour: "audio"},
  ];
}

function statusChart(report) {
  const heights = LANES.map((_, at) => LANES.length - 1 - at);
  const parts = lanes(report).map((lane, at) => {
    const part = distinct({x: lane.x, ys: [lane.x.map(() => heights[at])]});
    const texts = lane.lines?.map((line) => shortened(visible(line.text), 60)) ??
      lane.values.map((value) => seconds(value));
    return {...part, colour: lane.colour, texts: new Map(part.x.map((x, i) => [x, texts[i]]))};
  });
  return {
    id: "chart-status",
    title: "Status lines",
    hint: "When each line, number and frame was received. A table below has the full lines.",
    height: 260,
    parts,
    series: parts.map((part, at) => ({
      label: LANES[at],
      colour: part.colour,
      points: at < 4 ? 8 : 4,
      text: (_, x) => part.texts.get(x) ?? NONE,
    })),
    range: [-0.6, LANES.length - 0.4],
    axis: {
      size: 90,
      splits: () => [...heights].reverse(),
      values: (_, splits) => splits.map((y) => LANES[LANES.length - 1 - y]),
    },
  };
}

// How far a player has got that starts with the first video frame, or with the first audio frame if
// there is no video.
function playedLine(report) {
  const {t, pts} = report[report.video.frames > 0 ? "video" : "audio"].points;
  return distinct({x: t, ys: [t.map((at) => pts[0] + at - t[0])]});
}

function arrivalChart(report) {
  const parts = kindParts(report, (points) => [points.pts]);
  return {
    id: "chart-arrival",
    title: "Stream time against arrival",
    hint: "Above the dashed line frames are received faster than they are played." +
      joinedHint(mostPerPoint(report), ", of which the first is shown"),
    yLabel: STREAM_TIME,
    parts: [...parts, playedLine(report)],
    series: [
      ...KINDS.map(({name, colour: tint}) => (
        {label: name, colour: tint, stepped: true, text: (y) => seconds(y)})),
      {label: "as fast as played", colour: "quiet", dash: [6, 5], text: (y) => seconds(y)},
    ],
  };
}

function distanceChart(report) {
  const points = report.distance.points;
  const isJoined = points.per_point > 1;
  const part = distinct({x: points.t,
    ys: isJoined ? [points.newest, points.low, points.high] : [points.newest]});
  const labels = [["video ahead by", "video"], ["least", "third"], ["most", "fourth"]];
  return {
    id: "chart-distance",
    title: "Distance between video and audio",
    hint: "How far video has got before audio; below zero audio is ahead." +
      joinedHint(points.per_point, ", with the least and the largest of them"),
    yLabel: "distance (s)",
    parts: [part],
    series: part.ys.map((_, at) => (
      {label: labels[at][0], colour: labels[at][1], stepped: true, text: (y) => seconds(y)})),
  };
}

// The step with the largest absolute value among the joined steps.
function extremeSteps(points) {
  return points.step_low.map((low, at) => {
    const high = points.step_high[at];
    return Math.abs(low) > Math.abs(high) ? low : high;
  });
}

function stepChart(report) {
  return {
    id: "chart-steps",
    title: "Gaps and jumps of the time stamps",
    hint: "The step from each frame to the next in decode order. A gap stands out above, a jump " +
      "back lies below zero." + joinedHint(mostPerPoint(report), ", of which the widest is shown"),
    yLabel: "step (s)",
    parts: kindParts(report, (points) => [extremeSteps(points)]),
    series: KINDS.map(({name, colour: tint}) => (
      {label: name, colour: tint, points: 4, text: (y) => seconds(y, 4)})),
  };
}

const VALUES = [
  {name: "duration", label: "duration", colour: "third"},
  {name: "buffered_time", label: "buffered time", colour: "fourth"},
  {name: "audio_clock", label: "audio clock", colour: "audio"},
];

function valuesChart(report) {
  const parts = VALUES.map(({name}) => {
    const points = report[name].points;
    return distinct({x: points.t, ys: [points.newest]});
  });
  return {
    id: "chart-reported",
    title: "Buffered time, duration and audio clock",
    hint: "As they were reported to the player.",
    yLabel: STREAM_TIME,
    parts,
    series: VALUES.map(({label, colour: tint}) => (
      {label, colour: tint, stepped: true, text: (y) => seconds(y)})),
  };
}

function sizeChart(report) {
  const parts = KINDS.map(({name}) => {
    const points = report[name].points;
    return distinct(ordered(points.pts, points.largest));
  });
  return {
    id: "chart-sizes",
    title: "Frame sizes",
    hint: `The payload of each frame.${joinedHint(mostPerPoint(report), ", of which the largest is shown")}`,
    yLabel: "size (bytes)",
    parts,
    series: KINDS.map(({name, colour: tint}) => (
      {label: name, colour: tint, points: 4, text: (y) => `${whole(y)} bytes`})),
    axis: {values: (_, splits) => splits.map((y) => scaled(y, ""))},
  };
}

function rateChart(report) {
  const width = rateWindow(KINDS.map(({name}) => report[name].points));
  return {
    id: "chart-rate",
    title: "Bit rate",
    hint: `Of the payloads, by windows of ${whole(width)} s of stream time.`,
    yLabel: "bit rate (bit/s)",
    parts: KINDS.map(({name}) => bitRate(report[name].points, width)),
    series: KINDS.map(({name, colour: tint}) => (
      {label: name, colour: tint, text: (y) => scaled(y, "bit/s")})),
    axis: {values: (_, splits) => splits.map((y) => scaled(y, ""))},
  };
}
