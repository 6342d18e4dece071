// The style sheet of the report's page: for light and dark screens of any width, and for printing.

#pragma once

#include <string_view>

inline constexpr std::string_view kPageStyle = R"(
:root {
  --back: #fff; --text: #1d2125; --quiet: #5c6670; --line: #dfe3e8;
  --bar: #3f74b8; --fine: #17703f; --bad: #b3261e;
}
@media screen and (prefers-color-scheme: dark) {
  :root {
    --back: #15181c; --text: #e4e7eb; --quiet: #9aa5b1; --line: #2d333b;
    --bar: #6d9fe0; --fine: #63c490; --bad: #ff8f86;
  }
}
* { box-sizing: border-box; }
dl, dd { margin: 0; }
body {
  margin: 0 auto; max-width: 76rem; padding: 2rem clamp(1rem, 4vw, 3rem);
  background: var(--back); color: var(--text);
  font: 1rem/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "DejaVu Sans", sans-serif;
  font-variant-numeric: tabular-nums; overflow-wrap: anywhere;
}
h1 { margin: 0; font-size: 1.9rem; line-height: 1.2; }
h2 { margin: 0 0 .6rem; font-size: 1.1rem; }
section { margin-top: 2.4rem; }
p { margin: .4rem 0; }
.quiet, footer, th, dt { color: var(--quiet); font-weight: normal; }
.verdict { margin: 1rem 0 0; padding: .1rem 0 .1rem .8rem; border-left: .3rem solid; font-size: 1.25rem; }
.fine { color: var(--fine); }
.bad { color: var(--bad); }
dl { display: grid; gap: 1rem 2rem; grid-template-columns: repeat(auto-fill, minmax(10.5rem, 1fr)); }
dt { font-size: .85rem; }
dt::first-letter, .problems td:first-child::first-letter { text-transform: uppercase; }
.figures dd { font-size: 1.5rem; line-height: 1.3; }
.figures small { display: block; font-size: .85rem; }
.charts { columns: 2 24rem; column-gap: 3.5rem; margin-top: 2.4rem; }
.charts section { break-inside: avoid; margin: 0 0 2.4rem; }
table { width: 100%; border-collapse: collapse; font-size: .9rem; }
tr { border-bottom: 1px solid var(--line); }
th, td { padding: .3rem .8rem .3rem 0; text-align: left; vertical-align: top; }
th:last-child, td:last-child { padding-right: 0; }
tbody th { color: inherit; }
.chart tbody th { width: 45%; }
.chart .number { width: 1%; text-align: right; white-space: nowrap; }
.chart svg { display: block; margin-top: .35rem; fill: var(--bar); }
.problems { table-layout: fixed; }
.problems th:nth-child(1) { width: 11rem; }
.problems th:nth-child(2) { width: 24%; }
.problems th:nth-child(4) { width: 19rem; }
.problems td:nth-child(4) { color: var(--quiet); font: .75rem/1.8 ui-monospace, monospace; }
footer { margin-top: 2.4rem; font-size: .85rem; }
@media screen and (max-width: 60rem) {
  .problems thead { position: absolute; clip-path: inset(50%); }
  .problems tr { display: block; padding: .5rem 0; }
  .problems td { display: block; padding: 0; }
}
@media (max-width: 30rem) {
  .chart tbody th { width: 52%; font-size: .8rem; }
}
@media print {
  body { max-width: none; padding: 0; font-size: 10pt; }
  tr, dl > div { break-inside: avoid; }
  h2 { break-after: avoid; }
  .problems { font-size: 8pt; }
  .problems th:nth-child(1) { width: 18%; }
  .problems th:nth-child(4) { width: 31%; }
  .problems td:nth-child(4) { font-size: 6.5pt; }
}
)";
