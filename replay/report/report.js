"use strict";
{

// ---- What the page is made of. Text from events only ever becomes text nodes. ----

/** A number as it stood in the JSON: a JavaScript number may not hold all of a 64-bit integer. */
class Literal {
  constructor(source) { this.source = source; }
  toString() { return this.source; }
}

const byId = id => document.getElementById(id);
const dataOf = (id, reviver) => JSON.parse(byId(id).textContent, reviver);
const run = dataOf("run");
const journeys = dataOf("followed", (key, value, context) =>
  typeof value === "number" && context?.source ? new Literal(context.source) : value);

const SVG = "http://www.w3.org/2000/svg";

function fill(node, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (value !== null && value !== undefined) node.setAttribute(name, value);
  }
  node.append(...children.filter(child => child !== null));
  return node;
}
const html = (tag, attributes = {}, ...children) => fill(document.createElement(tag), attributes, children);
const svg = (tag, attributes = {}, ...children) => fill(document.createElementNS(SVG, tag), attributes, children);
/** A name that breaks behind underscores if it must. */
const breakable = name => html("bdi", {}, ...name.split(/(?<=_)(?=[^_])/).flatMap(part => [part, html("wbr")]));
const tooltip = text => svg("title", {}, text);

/** Characters that show nothing or turn the text around them, as escapes. */
const visible = text => String(text).replace(
  /[\u0000-\u001f\u007f-\u009f\u200b-\u200f\u2028-\u202e\u2060-\u2069\ufeff]/g,
  character => "\\u" + character.charCodeAt(0).toString(16).padStart(4, "0"));

// ---- Numbers and times ----

const count = number => number.toLocaleString("en-US");
const percent = (part, whole) => {
  if (whole === 0 || part === 0) return "0 %";
  const share = 100 * part / whole;
  if (share < 0.1) return "< 0.1 %";
  return (share > 99.9 && share < 100 ? "> 99.9" : share.toFixed(1)) + " %";
};
const sum = numbers => numbers.reduce((total, number) => total + number, 0);
const numberCell = number => html("td", {class: number === 0 ? "right zero" : "right"}, count(number));

function duration(ns) {
  for (const [unit, size] of [["s", 1e9], ["ms", 1e6], ["µs", 1e3]]) {
    if (ns >= size) return (ns / size).toPrecision(3) + " " + unit;
  }
  return Math.round(ns) + " ns";
}

const SECOND = 1000, MINUTE = 60 * SECOND, HOUR = 60 * MINUTE, DAY = 24 * HOUR;
const {start_ms: firstMs, width_ms: widthMs, size: bucketCount} = run.buckets;
const spanMs = widthMs * bucketCount;
const isWallClock = run.boot_wall_ms !== null && !isNaN(new Date(run.boot_wall_ms + firstMs + spanMs)) &&
  run.boot_wall_ms >= 0;

function widthText(ms) {
  for (const [unit, size] of [["days", DAY], ["h", HOUR], ["min", MINUTE], ["s", SECOND]]) {
    if (ms >= size) return ms / size + " " + unit;
  }
  return ms + " ms";
}

const dayOf = ms => new Date(run.boot_wall_ms + ms).toISOString().slice(5, 10);
const hasManyDays = isWallClock && dayOf(firstMs) !== dayOf(firstMs + spanMs - 1);

/** A moment, in ms since boot, as fine as the step between such moments. */
function clockText(ms, step = widthMs) {
  const pad = (number, width = 2) => String(Math.floor(number)).padStart(width, "0");
  const fraction = step < SECOND ? "." + pad(ms % SECOND, 3) : "";
  if (isWallClock) {
    const iso = new Date(run.boot_wall_ms + ms).toISOString();
    if (step >= DAY) return iso.slice(0, 10);
    const day = hasManyDays ? iso.slice(5, 10) + " " : "";
    return day + iso.slice(11, step >= MINUTE ? 16 : step < SECOND ? 23 : 19);
  }
  if (step >= DAY) return "day " + Math.floor(ms / DAY);
  const seconds = step < MINUTE ? ":" + pad(ms / SECOND % 60) + fraction : "";
  return pad(ms / HOUR) + ":" + pad(ms / MINUTE % 60) + seconds;
}

const bucketText = bucket => {
  const from = firstMs + bucket * widthMs;
  return clockText(from) + " to " + clockText(from + widthMs);
};
const timeNote = isWallClock ? "UTC" : "since boot";

/** Moments to label, at most eight. */
function ticks() {
  const steps = [1, 5, 10, 50, 100, 500, SECOND, 5 * SECOND, 15 * SECOND, 30 * SECOND, MINUTE, 5 * MINUTE,
    15 * MINUTE, 30 * MINUTE, HOUR, 2 * HOUR, 3 * HOUR, 6 * HOUR, 12 * HOUR, DAY];
  let step = steps.find(candidate => spanMs / candidate <= 9) ?? DAY;
  while (spanMs / step > 9) step *= 2;
  const zero = isWallClock ? run.boot_wall_ms : 0;
  const moments = [];
  for (let at = Math.ceil((zero + firstMs) / step) * step - zero; at < firstMs + spanMs; at += step) moments.push(at);
  return {step, moments};
}
const axisTicks = bucketCount > 0 ? ticks() : {step: widthMs, moments: []};
/** A day is named where it begins. */
const tickText = ms => !hasManyDays || axisTicks.step >= DAY ? clockText(ms, axisTicks.step)
  : (run.boot_wall_ms + ms) % DAY === 0 ? dayOf(ms) : clockText(ms, axisTicks.step).slice(6);
const fractionOf = ms => (ms - firstMs) / spanMs;

// ---- Colours, which stand for the same guard everywhere ----

const guardColour = guard => {
  const index = run.guards.findIndex(other => other.name === guard);
  return index < 0 ? "var(--lost)" : `var(--guard-${index % 6})`;
};
const reasonColour = reason => guardColour(run.guard_of_reason[reason]);
const dot = colour => html("span", {class: "dot", style: "background:" + colour});

// ---- Head ----

function drawHead() {
  const {counts, inputs} = run;
  byId("inputs").textContent = inputs.map(visible).join("  ");
  const seconds = run.elapsed_ns / 1e9;
  const started = run.started.replace("T", " ").replace("Z", " UTC");
  byId("provenance").textContent = `telemetry-replay ${run.version}, run at ${started}, ` +
    `${count(counts.bytes)} bytes in ${duration(run.elapsed_ns)}`;
  document.title = "Replay of " + inputs.map(input => visible(input).split("/").pop()).join(", ");

  const logged = counts.read + counts.reported;
  const rate = seconds > 0 ? Math.floor(counts.read / seconds) : 0;
  const each = counts.read > 0 ? duration(run.elapsed_ns / counts.read) + " for each read" : "nothing read";
  for (const [name, value, note, colour] of [
    ["read", counts.read, "lines of input", "var(--read)"],
    ["reported", counts.reported, "monitor events", "var(--reported)"],
    ["kept", counts.kept, percent(counts.kept, logged), "var(--kept)"],
    ["dropped", counts.dropped, percent(counts.dropped, logged), "var(--lost)"],
    ["bad", counts.bad, percent(counts.bad, logged), "var(--bad)"],
    ["events per second", rate, each, null],
  ]) {
    byId("totals").append(html("div", {},
      html("dt", {}, colour ? dot(colour) : null, name),
      html("dd", {class: "number", "data-total": name}, count(value)),
      html("dd", {class: "muted"}, note)));
  }
}

function setUpTheme() {
  const root = document.documentElement, button = byId("theme");
  const wish = () => matchMedia("(prefers-color-scheme: dark)").matches ? "dark" : "light";
  const isDark = () => (root.dataset.theme ?? wish()) === "dark";
  const label = () => { button.textContent = isDark() ? "Light mode" : "Dark mode"; };
  button.addEventListener("click", () => { root.dataset.theme = isDark() ? "light" : "dark"; label(); });
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", label);
  label();
}

// ---- Flow ----

const FLOW = {width: 1180, top: 40, height: 124, left: 96, join: 190, right: 1060, gap: 16, radius: 12, minimum: 1.5};

/** Where events leave, in order: each guard, and bad lines before and after them if there are any. */
function exits() {
  const {counts, failed, unwritable} = run;
  const isLine = counts.bad - failed - unwritable;
  const reasonsOf = guard => run.inputs_by_name.concat(run.reports_by_name).reduce((reasons, row) => {
    for (const [reason, number] of Object.entries(row.drops)) {
      if (run.guard_of_reason[reason] === guard) reasons[reason] = (reasons[reason] ?? 0) + number;
    }
    return reasons;
  }, {});
  const list = run.guards.map(guard => ({
    name: guard.name, number: guard.dropped, colour: guardColour(guard.name),
    detail: Object.entries(reasonsOf(guard.name)).map(([reason, number]) => `\n${reason}: ${count(number)}`).join(""),
  }));
  if (isLine > 0) list.unshift({name: "bad: no event", number: isLine, colour: "var(--bad)", detail: ""});
  if (failed + unwritable > 0) {
    list.push({name: "bad: cannot be processed", number: failed + unwritable, colour: "var(--bad)",
      detail: `\nfailed in a stage: ${count(failed)}\ncannot be written: ${count(unwritable)}`});
  }
  return list;
}

/** The name in lines of about this many characters, broken behind underscores and spaces. */
function wrapped(name, width) {
  const lines = [""];
  for (const part of name.match(/[^_ ]+[_ ]?/g) ?? []) {
    if (lines[lines.length - 1] && (lines[lines.length - 1] + part).length > width + 1) lines.push("");
    lines[lines.length - 1] += part;
  }
  return lines;
}

/** A branch that leaves the band at (x, bottom) and turns down to `end`. */
function branchPath(x, bottom, thickness, end) {
  const r = FLOW.radius, outer = r + thickness;
  return `M${x},${bottom - thickness} A${outer},${outer} 0 0 1 ${x + outer},${bottom + r} V${end} ` +
    `H${x + r} V${bottom + r} A${r},${r} 0 0 0 ${x},${bottom} Z`;
}

function drawSource(name, number, note, colour, y, height, target, labelY) {
  const {left, join} = FLOW, middle = (left + join) / 2;
  const shown = number > 0 ? Math.max(height, FLOW.minimum) : 0;
  return svg("g", {}, tooltip(`${name}: ${count(number)}`),
    svg("path", {class: "band", fill: colour, d:
      `M${left},${y} C${middle},${y} ${middle},${target} ${join},${target} V${target + shown} ` +
      `C${middle},${target + shown} ${middle},${y + shown} ${left},${y + shown} Z`}),
    svg("text", {class: "big", x: left - 12, y: labelY, "text-anchor": "end"}, count(number)),
    svg("text", {class: "soft", x: left - 12, y: labelY + 16, "text-anchor": "end"}, note));
}

function drawExit(exit, x, bottom, thickness, end, total) {
  const lines = wrapped(exit.name, 13);
  const text = (y, attributes, content) => svg("text", {x: x + FLOW.radius, y, ...attributes}, content);
  return svg("g", {class: exit.number > 0 ? "exit" : "exit none", "data-exit": exit.name, "data-number": exit.number},
    tooltip(`${exit.name}: ${count(exit.number)} (${percent(exit.number, total)})${exit.detail}`),
    exit.number > 0 ? svg("path", {class: "band", fill: exit.colour, d: branchPath(x, bottom, thickness, end)}) : null,
    text(end + 20, {class: "big"}, count(exit.number)),
    text(end + 36, {class: "soft"}, percent(exit.number, total)),
    ...lines.map((line, i) => text(end + 55 + 14 * i, {}, line)));
}

function drawFlow() {
  const {counts} = run, total = counts.read + counts.reported;
  if (total === 0) return byId("flow-picture").append(html("p", {class: "empty"}, "Nothing was read."));

  const {width, top, height, join, right, gap} = FLOW;
  const size = number => height * number / total;
  const leaving = exits(), step = (right - join) / (leaving.length + 0.35);
  const end = top + height + gap + 46;
  const picture = svg("svg", {viewBox: `0 0 ${width} ${end + 106}`, role: "img", "aria-labelledby": "flow-title"});

  const readLabel = top + Math.max(size(counts.read) / 2, 6);
  const reportedY = top + size(counts.read) + gap;
  picture.append(
    drawSource("read", counts.read, "read", "var(--read)", top, size(counts.read), top, readLabel),
    drawSource("reported", counts.reported, "reported", "var(--reported)", reportedY, size(counts.reported),
      top + size(counts.read), Math.max(reportedY + size(counts.reported) / 2, readLabel + 42)));

  let left = total, outline = `M${join},${top + height}`;
  const branches = [], numbers = [];
  leaving.forEach((exit, i) => {
    const x = join + step * (i + 0.35);
    numbers.push(svg("text", {class: "soft", x: x - 6, y: top - 8, "text-anchor": "end"}, count(left)));
    outline += ` H${x}`;
    branches.push(drawExit(exit, x, top + size(left), Math.max(size(exit.number), FLOW.minimum), end, total));
    left -= exit.number;
    outline += ` V${top + (left > 0 ? Math.max(size(left), FLOW.minimum) : 0)}`;
  });
  picture.append(
    svg("g", {}, tooltip(`kept: ${count(counts.kept)} (${percent(counts.kept, total)})`),
      svg("path", {class: "band", fill: "var(--kept)", d: `${outline} H${right} V${top} H${join} Z`}),
      svg("text", {class: "big", x: right + 14, y: top + size(left) / 2, "data-kept": counts.kept}, count(counts.kept)),
      svg("text", {class: "soft", x: right + 14, y: top + size(left) / 2 + 16},
        "kept, " + percent(counts.kept, total))),
    ...branches, ...numbers);
  byId("flow-picture").append(picture);
}

// ---- Series over time ----

const gridLines = height => axisTicks.moments.map(ms =>
  svg("line", {class: "grid", x1: fractionOf(ms) * bucketCount, x2: fractionOf(ms) * bucketCount, y1: 0, y2: height}));

/** Bars, from the bottom of a picture that is as many units wide as there are buckets. */
const barsPath = (pairs, most, height) => pairs.map(([bucket, number]) => {
  const tall = Math.max(number / most * height, 0.06 * height);
  return `M${bucket + 0.08},${height} V${height - tall} H${bucket + 0.92} V${height} Z`;
}).join("");

function sparkline(row) {
  const most = Math.max(...row.all.map(pair => pair[1]), 1);
  const label = row.all.length > 0 ? `at most ${count(most)} in ${widthText(widthMs)}` : "no times";
  const viewBox = `0 0 ${bucketCount || 1} 20`;
  return svg("svg", {viewBox, preserveAspectRatio: "none", role: "img", "aria-label": label},
    tooltip(label),
    svg("path", {d: `M0,20 H${bucketCount || 1}`, class: "grid"}),
    svg("path", {d: barsPath(row.all, most, 20), fill: row.isMonitor ? "var(--reported)" : "var(--read)"}),
    svg("path", {d: barsPath(row.lost, most, 20), fill: "var(--lost)"}));
}

function lane(pairs, colour) {
  const most = Math.max(...pairs.map(pair => pair[1]), 1);
  return svg("svg", {viewBox: `0 0 ${bucketCount || 1} 24`, preserveAspectRatio: "none"},
    ...gridLines(24),
    ...pairs.map(([bucket, number]) => svg("g", {}, tooltip(`${bucketText(bucket)}: ${count(number)}`),
      svg("rect", {x: bucket, y: 0, width: 1, height: 24, fill: "transparent"}),
      svg("path", {d: barsPath([[bucket, number]], most, 24), fill: colour}))));
}

/** How many there are, beside each bar that has room for it before the next. */
const barLabels = pairs => pairs.length > 6 ? [] : pairs
  .filter(([bucket], i) => i + 1 === pairs.length || pairs[i + 1][0] - bucket > bucketCount / 20)
  .map(([bucket, number]) =>
    html("span", {class: "muted", style: `left:${100 * (bucket + 1) / bucketCount}%`}, count(number)));

const axis = () => html("div", {class: "axis"}, ...axisTicks.moments
  .filter(ms => fractionOf(ms) > 0.02 && fractionOf(ms) < 0.98)
  .map(ms => html("span", {style: `left:${100 * fractionOf(ms)}%`}, tickText(ms))));

/** A table of rows {name, number, note, pairs}, each with its time line. */
function drawLanes(id, rows, columns, colour, emptyText) {
  if (rows.length === 0) return byId(id).append(html("p", {class: "empty"}, emptyText));
  const table = html("table", {class: "lanes"},
    html("thead", {}, html("tr", {},
      html("th", {scope: "col"}, columns.name),
      columns.note ? html("th", {scope: "col", class: "right rule"}, columns.note) : null,
      html("th", {scope: "col", class: "right count"}, columns.number),
      html("th", {scope: "col", title: timeNote}, axis()))),
    html("tbody", {}, ...rows.map(row => html("tr", {},
      html("th", {scope: "row", class: "mono"}, breakable(row.name)),
      columns.note ? html("td", {class: "right muted"}, row.note) : null,
      numberCell(row.number),
      html("td", {class: "lane"}, lane(row.pairs, colour), ...barLabels(row.pairs))))));
  byId(id).append(html("div", {class: "scroll"}, table),
    html("p", {class: "muted"}, `Each bar is ${widthText(widthMs)}. Times are ${timeNote}.`));
}

const byNumber = (a, b) => b.number - a.number || (a.name < b.name ? -1 : 1);

function drawLimits() {
  const rows = run.breaches.map(breach => ({
    name: breach.name === null ? "other identifiers" : visible(breach.name),
    note: breach.name === null ? "" : count(breach.limit) +
      (breach.window_ms === null ? " in all" : " in " + widthText(breach.window_ms)),
    number: breach.refused, pairs: breach.times}));
  const guard = run.guards.findIndex(({name}) => name === run.guard_of_reason["rate_limit.exceeded"]);
  drawLanes("limits-lanes", rows.sort(byNumber), {name: "Identifier", note: "Limit", number: "Refused"},
    `var(--guard-${Math.max(0, guard) % 6})`, "No event was beyond its limit.");
}

function drawMonitors() {
  const rows = run.reports_by_name.map(row => ({
    name: row.name === null ? "other names" : visible(row.name), number: row.events, pairs: row.all}));
  drawLanes("monitors-lanes", rows.sort(byNumber), {name: "Name", number: "Reported"}, "var(--reported)",
    "No stage reported anything.");
}

// ---- Events by name ----

const nameRows = [["inputs_by_name", false], ["reports_by_name", true]].flatMap(([list, isMonitor]) =>
  run[list].map(row => ({...row, isMonitor, dropped: sum(Object.values(row.drops)),
    label: row.name === null ? "other names" : visible(row.name)})));

const NAME_COLUMNS = [
  {title: "Name", key: row => row.label},
  {title: "Logged", key: row => row.events, isNumber: true},
  {title: "Kept", key: row => row.kept, isNumber: true},
  {title: "Dropped", key: row => row.dropped, isNumber: true},
  {title: "Bad", key: row => row.bad, isNumber: true},
  {title: "Share kept", key: row => row.kept / row.events, isNumber: true, isPicture: true},
  {title: "Dropped by reason"},
  {title: "Over time"},
];

function outcomeBar(row) {
  const parts = [["kept", row.kept, "var(--kept)"],
    ...Object.entries(row.drops).map(([reason, number]) => [reason, number, reasonColour(reason)]),
    ["bad", row.bad, "var(--bad)"]].filter(part => part[1] > 0);
  const text = parts.map(([name, number]) => `${name}: ${count(number)} (${percent(number, row.events)})`).join("\n");
  let at = 0;
  return svg("svg", {viewBox: `0 0 ${row.events} 1`, preserveAspectRatio: "none", role: "img", "aria-label": text},
    tooltip(text), ...parts.map(([, number, fill]) => {
      const part = svg("rect", {x: at, y: 0, width: number, height: 1, fill});
      at += number;
      return part;
    }));
}

function nameRow(row) {
  const found = !row.isMonitor && journeys.some(journey => journey.name === row.name);
  const name = breakable(row.label);
  return html("tr", {"data-name": row.label},
    html("th", {scope: "row"},
      found ? html("a", {class: "mono", href: "#name=" + encodeURIComponent(row.name), title: "Show journeys"}, name)
        : html("span", {class: row.name === null ? "muted" : "mono"}, name),
      row.isMonitor ? " " : null, row.isMonitor ? html("span", {class: "tag"}, "monitor") : null),
    numberCell(row.events), numberCell(row.kept), numberCell(row.dropped), numberCell(row.bad),
    html("td", {class: "outcome"}, outcomeBar(row)),
    html("td", {class: "reasons"}, ...Object.entries(row.drops).sort((a, b) => b[1] - a[1]).map(([reason, number]) =>
      html("span", {}, dot(reasonColour(reason)), reason, html("b", {}, count(number))))),
    html("td", {class: "spark"}, sparkline(row)));
}

function setUpNames() {
  const textOf = row => [row.label, ...Object.keys(row.drops)].join(" ").toLowerCase();
  const rows = nameRows.map(row => ({row, node: nameRow(row), text: textOf(row)}));
  const kinds = {
    all: () => true, input: row => !row.isMonitor, monitor: row => row.isMonitor, lost: row => row.events > row.kept};
  let sorting = {column: NAME_COLUMNS[1], descending: true};

  const show = () => {
    const wanted = byId("names-filter").value.trim().toLowerCase(), isOfKind = kinds[byId("names-kind").value];
    const shown = rows.filter(({row, text}) => text.includes(wanted) && isOfKind(row));
    const {column, descending} = sorting, sign = descending ? -1 : 1;
    shown.sort((a, b) => {
      const [x, y] = [column.key(a.row), column.key(b.row)];
      return x === y ? (a.row.label < b.row.label ? -1 : 1) : (x < y ? -sign : sign);
    });
    document.querySelector("#names-table tbody").replaceChildren(...shown.map(({node}) => node));
    byId("names-shown").textContent = `${count(shown.length)} of ${count(rows.length)} names, ` +
      `${count(sum(shown.map(({row}) => row.events)))} events`;
    for (const other of NAME_COLUMNS) {
      const order = other !== column ? "none" : descending ? "descending" : "ascending";
      if (other.key) other.header.setAttribute("aria-sort", order);
    }
  };

  for (const column of NAME_COLUMNS) {
    const sort = () => {
      sorting = {column, descending: sorting.column === column ? !sorting.descending : Boolean(column.isNumber)};
      show();
    };
    const title = column.key ? html("button", {type: "button"}, column.title) : column.title;
    if (column.key) title.addEventListener("click", sort);
    column.header = html("th", {scope: "col", class: column.isNumber && !column.isPicture ? "right" : null}, title);
    document.querySelector("#names-table thead tr").append(column.header);
  }
  byId("names-filter").addEventListener("input", show);
  byId("names-kind").addEventListener("change", show);
  show();

  byId("names-note").textContent =
    (bucketCount === 0 ? ""
      : `Time lines run from ${clockText(firstMs)} to ${clockText(firstMs + spanMs)}, ${timeNote}. `) +
    (run.untimed === 0 ? ""
      : `${count(run.untimed)} events do not say plausibly when they were created, and are in none.`);
}

// ---- Stages and counters ----

function drawStages() {
  const stages = run.stage_times.stages.filter(stage => stage.events > 0).sort((a, b) => b.ns - a.ns);
  const total = sum(stages.map(stage => stage.ns));
  byId("stages-note").textContent = stages.length === 0 ? "No event was timed."
    : `Time from when an event enters a stage to when it leaves it, ${duration(total)} in all. ` +
      (run.stage_times.of_followed_events ? "All events were followed on their journeys, which adds to the times."
        : "Events with a journey are left out: to follow them takes time of its own.");
  if (stages.length === 0) return;
  const columns = [["Stage"], ["Kind"], ["Share", "share"], ["", "right"], ["Events", "right"], ["Each", "right"]];
  byId("stages-table").append(
    html("thead", {}, html("tr", {},
      ...columns.map(([title, kind]) => html("th", {scope: "col", class: kind}, title)))),
    html("tbody", {}, ...stages.map(stage => html("tr", {},
      html("th", {scope: "row"}, html("span", {class: "mono"}, breakable(stage.name))),
      html("td", {class: "muted"}, stage.kind),
      html("td", {class: "share"}, svg("svg", {viewBox: "0 0 100 1", preserveAspectRatio: "none", role: "presentation"},
        svg("rect", {x: 0, y: 0, height: 1, width: 100 * stage.ns / stages[0].ns, fill: "var(--read)"}))),
      html("td", {class: "right"}, percent(stage.ns, total)),
      numberCell(stage.events),
      html("td", {class: "right"}, duration(stage.ns / stage.events))))));
}

function drawCounters() {
  const counters = Object.entries(run.counters);
  if (counters.length === 0) return byId("counters").append(html("p", {class: "empty"}, "None was raised."));
  byId("counters-table").append(
    html("thead", {}, html("tr", {},
      html("th", {scope: "col"}, "Counter"), html("th", {scope: "col", class: "right"}, "Count"))),
    html("tbody", {}, ...counters.map(([name, number]) => html("tr", {},
      html("th", {scope: "row", class: "mono"}, breakable(name)), numberCell(number)))));
}

// ---- Journeys ----

const isScalar = value => value === null || typeof value !== "object" || value instanceof Literal;

/** The value as JSON, on several lines if it has members and an indent is given. */
function jsonText(value, indent) {
  if (isScalar(value)) return typeof value === "string" ? visible(JSON.stringify(value)) : String(value);
  const isList = Array.isArray(value), inner = indent === undefined ? undefined : indent + "  ";
  const items = isList ? value.map(item => jsonText(item, inner))
    : Object.entries(value).map(([key, item]) => visible(JSON.stringify(key)) + ": " + jsonText(item, inner));
  const [open, close] = isList ? "[]" : "{}";
  if (items.length === 0) return open + close;
  return indent === undefined ? open + items.join(", ") + close
    : `${open}\n${inner}${items.join(",\n" + inner)}\n${indent}${close}`;
}

function verdictOf(journey) {
  if (journey.dropped) return {kind: "dropped", text: journey.dropped.reason ?? "dropped", by: journey.dropped.guard};
  if (journey.bad !== undefined) return {kind: "bad", text: "bad", by: journey.bad};
  return {kind: "kept", text: "kept", by: ""};
}
const shortPlace = journey => journey.place.split("/").pop();

const members = object => html("dl", {class: "members mono"}, ...Object.entries(object).flatMap(([name, value]) =>
  [html("dt", {}, visible(name)), html("dd", {}, jsonText(value))]));

function changeLine(change) {
  const prefix = {header: "header.", event: "event."}[change.in] ?? "";
  const isNew = change.old === undefined;
  return html("div", {class: isNew ? "change" : "change changed"},
    html("span", {class: "sign"}, isNew ? "+" : "~"), prefix + visible(change.field) + " ",
    html("span", {class: "value"}, isNew ? "" : jsonText(change.old) + " \u2192 "),
    html("span", {class: "value"}, jsonText(change.new)));
}

function stageItem(stage, journey) {
  const isEnd = stage.fate === "dropped" || stage.fate === "failed";
  const why = stage.fate === "failed" ? ": " + visible(journey.bad)
    : stage.fate === "dropped" ? ": " + verdictOf(journey).text : "";
  const because = Object.entries(journey.dropped ?? {}).filter(([name]) => name !== "guard" && name !== "reason");
  return html("li", {class: stage.fate + (stage.within ? " within" : "")},
    html("span", {class: "mono"}, stage.name), html("span", {class: "fate"}, stage.fate.replace("_", " ") + why),
    ...(stage.changes ?? []).map(changeLine),
    isEnd && because.length > 0 ? members(Object.fromEntries(because)) : null,
    ...(stage.reports ?? []).map(report => html("details", {class: "report"},
      html("summary", {}, "reported ", html("span", {class: "mono"}, visible(report.name))),
      members(report.bundle))));
}

const payload = (title, value, isOpen) => html("details", {class: "payload", open: isOpen ? "" : null},
  html("summary", {}, title), html("pre", {}, jsonText(value, "")));

const lastItem = (kind, title, text) =>
  html("li", {class: kind}, html("b", {class: kind}, title), html("span", {class: "fate"}, text));

function drawJourney(index) {
  const journey = journeys[index], verdict = verdictOf(journey);
  const skipped = journey.stages.filter(stage => stage.fate === "not_reached");
  const items = journey.stages.filter(stage => stage.fate !== "not_reached").map(stage => stageItem(stage, journey));
  const skippedNames = skipped.map(stage => stage.name).join(", ");
  if (skipped.length > 0) items.push(lastItem("not_reached", "", "not reached: " + skippedNames));
  if (verdict.kind === "kept") items.push(lastItem("kept", "kept", ""));
  const isUnwritable = verdict.kind === "bad" && !journey.stages.some(stage => stage.fate === "failed");
  if (isUnwritable) items.push(lastItem("unwritable bad", "bad", visible(journey.bad)));

  byId("journey").replaceChildren(
    html("h3", {class: "mono"}, html("bdi", {}, visible(journey.name))),
    html("p", {class: "muted"}, visible(journey.place) + `, uid ${journey.uid}, ${journey.format}` +
      (journey.identifier === journey.name ? "" : `, identifier ${visible(journey.identifier)}`)),
    html("ol", {class: "stages"}, ...items),
    payload("Data before the first stage", journey.data, journey.output === undefined),
    journey.output === undefined ? "" : payload("As it left", journey.output, true));
  byId("journey").dataset.journey = index + 1;
}

const MOST_FOUND = 300;

function searchText(journey) {
  const verdict = verdictOf(journey);
  return [journey.name, journey.place, "uid", journey.uid, journey.identifier, journey.format,
    verdict.kind, verdict.text, verdict.by].map(visible).join(" ").toLowerCase();
}

function journeyLink(journey, index) {
  const verdict = verdictOf(journey);
  return html("li", {}, html("a", {href: "#journey-" + (index + 1)},
    html("span", {class: "head"}, html("bdi", {class: "mono"}, visible(journey.name)),
      html("span", {class: "verdict " + verdict.kind}, verdict.text)),
    html("span", {class: "muted"}, visible(shortPlace(journey)) + ", uid " + journey.uid)));
}

function setUpJourneys() {
  const first = journeys.length === 1 ? "the first event" : `the first ${count(journeys.length)} events`;
  byId("journeys-note").textContent = journeys.length === 0
    ? "No journey was kept; --report-events N keeps those of the first N events."
    : `What each stage did with ${first}, of ${count(run.counts.read)} that were read. ` +
      "A search finds those in which each of its words occurs.";
  const texts = journeys.map(searchText), search = byId("journeys-search"), list = byId("journeys-list");

  const markCurrent = () => {
    for (const link of list.querySelectorAll("a")) {
      if (link.hash === location.hash) link.setAttribute("aria-current", "true");
      else link.removeAttribute("aria-current");
    }
  };
  const show = isWanted => {
    const found = journeys.map((_, index) => index).filter(isWanted);
    list.replaceChildren(...found.slice(0, MOST_FOUND).map(index => journeyLink(journeys[index], index)));
    const more = found.length - MOST_FOUND;
    if (more > 0) list.append(html("li", {class: "more muted"}, `and ${count(more)} more`));
    byId("journeys-shown").textContent = `${count(found.length)} found`;
    if (found.length === 0) list.append(html("li", {class: "more muted"},
      `Nothing among the journeys of the first ${count(journeys.length)} events. --report-events N follows more.`));
    markCurrent();
    return found;
  };
  const find = () => {
    const words = search.value.toLowerCase().split(/\s+/).filter(Boolean);
    return show(index => words.every(word => texts[index].includes(word)));
  };
  const follow = () => {
    const hash = location.hash, opened = /^#journey-(\d+)$/.exec(hash);
    if (opened && journeys[opened[1] - 1]) {
      drawJourney(opened[1] - 1);
      markCurrent();
      byId("journeys").scrollIntoView({block: "start"});
    } else if (hash.startsWith("#name=")) {
      const name = new URLSearchParams(hash.slice(1)).get("name");
      search.value = visible(name);
      const found = show(index => journeys[index].name === name);
      if (found.length > 0) drawJourney(found[0]);
      byId("journeys").scrollIntoView({block: "start"});
    }
  };

  search.addEventListener("input", find);
  window.addEventListener("hashchange", follow);
  find();
  if (journeys.length > 0) drawJourney(0);
  follow();
}

drawHead();
setUpTheme();
drawFlow();
setUpNames();
drawLimits();
drawMonitors();
drawStages();
drawCounters();
setUpJourneys();
byId("foot").textContent = "This page holds all that it shows and asks no network for anything.";

}
