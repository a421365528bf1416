// A table that is sorted by a click on a column's head, first ascending, then descending.
// columns: {title, value(row), text(row), className}; rows are sorted by `value`.
function makeTable(id, caption, columns, rows) {
  const table = element("table");
  table.id = id;
  table.append(element("caption", caption));
  const body = document.createElement("tbody");
  const heads = columns.map((column) => makeHead(column));
  heads.forEach((head, at) => {
    head.firstChild.addEventListener("click", () => {
      const down = head.getAttribute("aria-sort") === "ascending";
      for (const other of heads) other.setAttribute("aria-sort", "none");
      head.setAttribute("aria-sort", down ? "descending" : "ascending");
      fillBody(body, columns, sortedRows(rows, columns[at], down));
    });
  });
  const headRow = document.createElement("tr");
  headRow.append(...heads);
  const head = document.createElement("thead");
  head.append(headRow);
  table.append(head, body);
  fillBody(body, columns, rows);
  const frame = element("div", "", "table");
  frame.append(table);
  if (rows.length === 0) frame.append(element("p", "None.", "nothing"));
  return frame;
}

function makeHead(column) {
  const head = element("th", "", column.className);
  head.scope = "col";
  head.setAttribute("aria-sort", "none");
  const button = element("button", column.title);
  button.type = "button";
  head.append(button);
  return head;
}

function fillBody(body, columns, rows) {
  body.replaceChildren(...rows.map((row) => {
    const line = document.createElement("tr");
    line.append(...columns.map((column) => element("td", column.text(row), column.className)));
    return line;
  }));
}

// Rows without a value are last in either order.
function sortedRows(rows, column, down) {
  const missing = (value) => value === null || value === undefined;
  return [...rows].sort((left, right) => {
    const a = column.value(left);
    const b = column.value(right);
    if (missing(a) || missing(b)) return missing(a) - missing(b);
    const order = typeof a === "string" ? a.localeCompare(b) : a - b;
    return down ? -order : order;
  });
}
