// Fills the page.
function footerText(report) {
  const perPoint = mostPerPoint(report);
  const text = "Counts and findings are exact. Time stamps are counts of a 90 kHz clock, shown in seconds.";
  return perPoint > 1
    ? `${text} The stream is long: in the charts up to ${whole(perPoint)} neighbouring frames share a point.`
    : text;
}

const streamReport = JSON.parse(document.getElementById("data").textContent);
showAddress(streamReport);
showFindings(streamReport);
showFacts(streamReport);
addCharts(streamReport);
addTables(streamReport);
document.getElementById("footer").textContent = footerText(streamReport);
