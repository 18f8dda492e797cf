#include "app/commands/PageStyle.h"

namespace app {

// The reference is a wide pale bar and the new data a narrow dark one on it, so that no colour is
// needed to tell them apart. In the dark scheme it is the narrow one that is bright.
const char* const kPageStyle = R"(
:root {
  color-scheme: light dark;
  --back: #fff; --text: #1c2126; --soft: #535c66; --line: #d5dbe1; --shade: #f4f6f8;
  --reference: #6f97c4; --new: #7a2e00; --link: #0b57a4;
  --major: #a9201a; --moderate: #855400; --minor: #0b57a4;
}
@media (prefers-color-scheme: dark) {
  :root {
    --back: #14181d; --text: #e4e8ec; --soft: #a3adb8; --line: #38414b; --shade: #1d2329;
    --reference: #4a6f9b; --new: #ffb870; --link: #8abfff;
    --major: #ff9189; --moderate: #edb95a; --minor: #8abfff;
  }
}
* { box-sizing: border-box }
body { margin: 0; background: var(--back); color: var(--text); font: 1rem/1.5 system-ui, sans-serif; overflow-wrap: anywhere }
main { max-width: 66rem; margin: 0 auto; padding: 1.5rem 1rem 3rem }
h1, h2, h3, h4 { line-height: 1.25; margin: 0 }
h1 { font-size: 1.25rem; font-weight: 500; color: var(--soft) }
h2 { font-size: 1.375rem; margin-top: 2.5rem }
h3 { font-size: 1.125rem }
h4 { font-size: 1.0625rem }
p { margin: .5rem 0; max-width: 46rem }
a { color: var(--link) }
.answer { font-size: 1.375rem; line-height: 1.35; margin: .75rem 0 1rem }
.failed { border-left: 4px solid var(--major); padding: .25rem .75rem; background: var(--shade) }
.legend { color: var(--soft) }
nav ol { margin: 1rem 0; padding: 0; list-style: none; display: flex; flex-wrap: wrap; gap: .25rem 1.25rem }
section { border-top: 1px solid var(--line); margin-top: 1.25rem; padding-top: 1rem }
.part { border-top: 3px solid var(--line); margin-top: 3rem; padding-top: 0 }
.part h3 { margin-top: 2rem }
h3 b, h4 b { font-size: .875rem; font-weight: 600; margin-left: .5rem; color: var(--soft); white-space: nowrap }
.major > :is(h3, h4) b { color: var(--major) }
.moderate > :is(h3, h4) b { color: var(--moderate) }
.minor > :is(h3, h4) b { color: var(--minor) }
table { border-collapse: collapse; width: 100%; font-size: .875rem; line-height: 1.3; font-variant-numeric: tabular-nums }
caption { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%) }
th, td { text-align: left; font-weight: 400; padding: .15rem 0 .15rem .5rem; vertical-align: top; border-bottom: 1px solid var(--line) }
th:first-child { padding-left: 0 }
tr:first-child { color: var(--soft); font-size: .8125rem }
th, bdi, p, li, dd { white-space: pre-wrap }
i { font-style: normal; color: var(--soft) }
em { font-style: normal; color: var(--new); font-size: .8125rem }
.v th { position: relative }
.v th:first-child { width: 100% }
.v td, .v th + th { text-align: right; white-space: nowrap; width: 1px }
.v td:nth-child(4) { padding-left: 1rem }
th u { display: block; text-decoration: none }
th u b { float: right; font-weight: 400 }
svg { display: block; width: 100%; height: 1.1em; margin: .1em 0; overflow: visible }
.legend svg { display: inline-block; width: 2.5em; margin: 0 .25em; vertical-align: -.2em }
line { stroke: var(--reference); stroke-width: 1.1em; transform: translateY(.55em) }
line + line { stroke: var(--new); stroke-width: .4em }
.files { overflow-wrap: break-word }
.files bdi { overflow-wrap: anywhere }
dl { margin: .75rem 0; font-size: .875rem; line-height: 1.4; display: grid; grid-template-columns: max-content 1fr; gap: .125rem .75rem }
dt { color: var(--soft) }
dd { margin: 0 }
ul { margin: .5rem 0; padding-left: 1.1rem; font-size: .875rem }
details { border-top: 1px solid var(--line); padding: .375rem 0 }
summary { cursor: pointer }
small { font-size: .875rem; color: var(--soft); margin-left: .5rem }
@media (min-width: 40em) {
  .v th:first-child { padding-right: 17em }
  .v th svg, th u { position: absolute; top: .15rem; right: 0; width: 16em; margin: 0 }
}
@media (min-width: 60em) {
  .v { display: grid; grid-template-columns: 1fr 20rem; grid-template-rows: auto auto auto 1fr; gap: 0 2.5rem }
  .v > * { grid-column: 1 / -1; min-width: 0 }
  .v > table { grid-column: 1; grid-row: 3 / 5; align-self: start; margin-top: .5rem }
  .v > table ~ * { grid-column: 2 }
}
@media (max-width: 30em) {
  .answer { font-size: 1.1875rem }
  table { font-size: .8125rem }
  th, td { padding-left: .375rem }
  .v td:nth-child(4) { padding-left: .75rem }
}
@media print {
  :root {
    color-scheme: light;
    --back: #fff; --text: #000; --soft: #444; --line: #bbb; --shade: #fff;
    --reference: #949494; --new: #000; --link: #000; --major: #000; --moderate: #000; --minor: #000;
  }
  main { max-width: none; padding: 0 }
  body { font-size: 10pt }
  .v, tr, dl { break-inside: avoid }
  h2, h3, h4 { break-after: avoid }
  nav { display: none }
}
)";

}  // namespace app
