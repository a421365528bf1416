// Formats numbers and untrusted text for display.
const NONE = "–";

function seconds(value, digits = 3) {
  return value === null || value === undefined ? NONE : `${value.toFixed(digits)} s`;
}

function whole(value) {
  return value === null || value === undefined ? NONE : value.toLocaleString("en-US");
}

const UNITS = [[1e9, "G"], [1e6, "M"], [1e3, "k"]];

// With a decimal prefix: 1250000 and "bit/s" give "1.25 Mbit/s".
function scaled(value, unit) {
  if (value === null || value === undefined) return NONE;
  for (const [size, prefix] of UNITS) {
    if (Math.abs(value) >= size) return `${Number((value / size).toPrecision(3))} ${prefix}${unit}`;
  }
  return `${Math.round(value)} ${unit}`.trim();
}

// Invisible characters, and characters that change the direction of the text around them.
const UNSEEN = /[\p{Cc}\u200b-\u200f\u2028-\u202e\u2060-\u2069\ufeff]/gu;

function visible(text) {
  return text.replace(UNSEEN, (c) => `\\u${c.charCodeAt(0).toString(16).padStart(4, "0")}`);
}

function shortened(text, most) {
  return text.length <= most ? text : `${text.slice(0, most - 1)}…`;
}

// An element with text in it. This page never creates anything from markup.
function element(name, text = "", className = "") {
  const made = document.createElement(name);
  made.textContent = text;
  if (className) made.className = className;
  return made;
}
