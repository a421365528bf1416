// The colours of the charts. They are defined in the style sheet and change with the scheme.
const darkScheme = matchMedia("(prefers-color-scheme: dark)");

function colour(name) {
  return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
}

function onSchemeChange(redraw) {
  darkScheme.addEventListener("change", redraw);
}
