// The top of the page: what was played, what is odd about it, and the main numbers.
function showAddress(report) {
  const address = visible(report.address);
  document.getElementById("address").textContent = address;
  document.title = `Stream report: ${shortened(address, 80)}`;
  const {video, audio} = report;
  document.getElementById("overview").textContent =
    `${whole(video.frames)} video and ${whole(audio.frames)} audio frames in ${seconds(report.elapsed, 1)}.`;
}

function verdict(odd, notes) {
  const things = (count, one, many) => `${count} ${count === 1 ? one : many}`;
  const found = odd === 0 ? "Nothing odd." : `${things(odd, "thing is", "things are")} odd.`;
  return notes === 0 ? found : `${found} ${things(notes, "thing is", "things are")} worth knowing.`;
}

function showFindings(report) {
  const container = document.getElementById("findings");
  const odd = report.findings.filter((finding) => finding.odd).length;
  const text = element("p", verdict(odd, report.findings.length - odd), odd ? "verdict odd" : "verdict good");
  text.id = "verdict";
  const list = document.createElement("ul");
  list.append(...report.findings.map((finding) => {
    const item = element("li", "", finding.odd ? "odd" : "note");
    item.append(element("span", finding.odd ? "odd" : "note", "badge"));
    const words = document.createElement("div");
    words.append(element("strong", finding.title), element("p", finding.sentence));
    item.append(words);
    return item;
  }));
  container.append(text, list);
}

function showFacts(report) {
  const {video, audio} = report;
  const received = [video, audio].filter((frames) => frames.frames > 0);
  const first = received.length > 0 ? Math.min(...received.map((frames) => frames.first_at)) : null;
  const spans = received.map((frames) => frames.span);
  const facts = [
    ["video frames", whole(video.frames)],
    ["audio frames", whole(audio.frames)],
    ["payload", scaled(video.bytes + audio.bytes, "B")],
    ["stream time", seconds(spans.length > 0 ? Math.max(...spans) : null, 2)],
    ["first frame after", seconds(first)],
    ["gaps and jumps", whole(report.jumps.count)],
  ];
  document.getElementById("facts").append(...facts.map(([name, value]) => {
    const fact = element("div", "", "fact");
    fact.append(element("span", value, "value"), element("span", name, "name"));
    return fact;
  }));
}
