// The colours of the charts: those of the style sheet, which change with the scheme.
const darkScheme = matchMedia("(prefers-color-scheme: dark)");

function colour(name) {
  return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
}

function onSchemeChange(redraw) {
  darkScheme.addEventListener("change", redraw);
}
