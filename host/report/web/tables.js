// The tables of the report, one function for each.
const MAX_VALUE_ROWS = 500;

function addTables(report) {
  const container = document.getElementById("numbers");
  for (const make of [framesTable, jumpsTable, linesTable, numbersTable, valueChangesTable]) {
    container.append(make(report));
  }
}

// Columns that show the field `name` of each row.
function textColumn(title, name, className = "") {
  return {title, className, value: (row) => row[name], text: (row) => visible(row[name])};
}

function numberColumn(title, name, write) {
  return {title, className: "number", value: (row) => row[name], text: (row) => write(row[name])};
}

function framesTable(report) {
  const rate = (frames) => (frames.span > 0 ? frames.bytes * 8 / frames.span : null);
  const row = (what, write, field) => ({what, write, video: field(report.video), audio: field(report.audio)});
  const ifReceived = (frames, value) => (frames.frames > 0 ? value : null);
  const rows = [
    row("frames", whole, (f) => f.frames),
    row("bytes", whole, (f) => f.bytes),
    row("smallest frame, bytes", whole, (f) => ifReceived(f, f.smallest)),
    row("largest frame, bytes", whole, (f) => ifReceived(f, f.largest)),
    row("frames without a payload", whole, (f) => f.empty),
    row("mean bit rate", (value) => scaled(value, "bit/s"), rate),
    row("first time stamp", seconds, (f) => ifReceived(f, f.first_pts)),
    row("last time stamp", seconds, (f) => ifReceived(f, f.last_pts)),
    row("span of the time stamps", seconds, (f) => ifReceived(f, f.span)),
    row("gaps", whole, (f) => f.gaps),
    row("jumps back", whole, (f) => f.backs),
    row("same time stamp again", whole, (f) => f.same_time),
    row("frames without playTime", whole, (f) => f.without_play_time),
    row("playTime goes back", whole, (f) => f.play_time_back),
    row("first arrival", seconds, (f) => ifReceived(f, f.first_at)),
    row("last arrival", seconds, (f) => ifReceived(f, f.last_at)),
    row("longest silence", seconds, (f) => ifReceived(f, f.longest_silence)),
    row("frames received too late", whole, (f) => f.late_frames),
    row("the latest was late by", seconds, (f) => ifReceived(f, f.latest)),
  ];
  const kind = (name) => (
    {title: name, className: "number", value: (r) => r[name], text: (r) => r.write(r[name])});
  return makeTable("table-frames", "Frames", [textColumn("what", "what"), kind("video"), kind("audio")], rows);
}

function jumpsTable(report) {
  const {count, listed} = report.jumps;
  const caption = count > listed.length
    ? `Gaps and jumps: the first ${whole(listed.length)} of ${whole(count)}`
    : `Gaps and jumps: ${whole(count)}`;
  return makeTable("table-jumps", caption, [
    textColumn("kind", "kind"),
    textColumn("what", "what"),
    numberColumn("arrival", "t", seconds),
    numberColumn("frame", "index", whole),
    numberColumn("from", "from", seconds),
    numberColumn("to", "to", seconds),
    numberColumn("step", "seconds", seconds),
  ], listed);
}

function linesTable(report) {
  const {messages, results, dropped, kept} = report.texts;
  const omitted = dropped > 0 ? `; ${whole(dropped)} in the middle are omitted` : "";
  return makeTable("table-lines", `Status lines: ${whole(messages)}, results: ${whole(results)}${omitted}`, [
    numberColumn("arrival", "t", seconds),
    textColumn("kind", "kind"),
    textColumn("line", "text", "line"),
  ], kept);
}

function numbersTable(report) {
  const values = VALUES.map(({name, label}) => ({label, ...report[name]}));
  // A decreasing distance is normal.
  const rows = [...values, {...report.distance, label: "video ahead of audio", went_back: null}];
  return makeTable("table-numbers", "Numbers", [
    textColumn("what", "label"),
    numberColumn("times", "count", whole),
    numberColumn("first", "first", seconds),
    numberColumn("last", "newest", seconds),
    numberColumn("least", "low", seconds),
    numberColumn("largest", "high", seconds),
    numberColumn("went back", "went_back", whole),
  ], rows);
}

// The rows whose value differs from the previous one.
function valueChanges({name, label}, report) {
  const {t, newest} = report[name].points;
  return t.map((at, i) => ({label, t: at, value: newest[i]}))
    .filter((row, i) => i === 0 || newest[i] !== newest[i - 1]);
}

function valueChangesTable(report) {
  const rows = VALUES.slice(0, 2).flatMap((value) => valueChanges(value, report)).sort((a, b) => a.t - b.t);
  const listed = rows.slice(0, MAX_VALUE_ROWS);
  const caption = listed.length < rows.length
    ? `Durations and buffered times: the first ${whole(listed.length)} of ${whole(rows.length)} changes`
    : `Durations and buffered times: ${whole(rows.length)} changes`;
  return makeTable("table-reported", caption, [
    numberColumn("arrival", "t", seconds),
    textColumn("what", "label"),
    numberColumn("value", "value", seconds),
  ], listed);
}
