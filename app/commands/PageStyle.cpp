#include "app/commands/PageStyle.h"

namespace app {

// The reference is a filled bar and the new data an outline, so that no colour is needed to tell
// them apart; both, and all text, keep their contrast in either scheme.
const char* const kPageStyle = R"(
:root {
  color-scheme: light dark;
  --back: #fff; --text: #1c2126; --soft: #535c66; --line: #d5dbe1; --shade: #f4f6f8;
  --reference: #86a8cf; --new: #a64400; --link: #0b57a4;
  --major: #a9201a; --moderate: #855400; --minor: #0b57a4;
}
@media (prefers-color-scheme: dark) {
  :root {
    --back: #14181d; --text: #e4e8ec; --soft: #a3adb8; --line: #38414b; --shade: #1d2329;
    --reference: #466a94; --new: #ffac5e; --link: #8abfff;
    --major: #ff9189; --moderate: #edb95a; --minor: #8abfff;
  }
}
* { box-sizing: border-box }
body {
  margin: 0; background: var(--back); color: var(--text);
  font: 1rem/1.5 system-ui, sans-serif; overflow-wrap: anywhere;
}
main { max-width: 66rem; margin: 0 auto; padding: 1.5rem 1rem 3rem }
h1, h2, h3, h4 { line-height: 1.25; margin: 0 }
h1 { font-size: 1.25rem; font-weight: 500; color: var(--soft) }
h2 { font-size: 1.375rem; margin-top: 2.5rem }
h3 { font-size: 1.125rem }
h4 { font-size: 1.0625rem }
h2 + p { margin-top: .25rem }
p { margin: .5rem 0; max-width: 46rem }
a { color: var(--link) }
.answer { font-size: 1.375rem; line-height: 1.35; margin: .75rem 0 1rem }
.failed { border-left: 4px solid var(--major); padding: .25rem .75rem; background: var(--shade) }
.legend { color: var(--soft) }
.legend svg { display: inline-block; width: 2.5em; margin: 0 .25em; vertical-align: -.2em }
nav ol { margin: 1rem 0; padding: 0; list-style: none; display: flex; flex-wrap: wrap; gap: .25rem 1.25rem }
section { border-top: 1px solid var(--line); margin-top: 1.25rem; padding-top: 1rem }
.part { border-top: 3px solid var(--line); margin-top: 3rem; padding-top: 0 }
.v b { font-size: .875rem; font-weight: 600; margin-left: .5rem; color: var(--soft); white-space: nowrap }
.v.major b { color: var(--major) }
.v.moderate b { color: var(--moderate) }
.v.minor b { color: var(--minor) }
table { border-collapse: collapse; width: 100%; font-variant-numeric: tabular-nums }
caption { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%) }
th { font-weight: 400; text-align: left }
thead { color: var(--soft); font-size: .8125rem }
.d { font-size: .875rem; line-height: 1.3 }
.d th, .d td { padding: .15rem 0 .15rem .5rem; vertical-align: top; border-bottom: 1px solid var(--line) }
.d th:first-child { padding-left: 0; min-width: 5.5rem }
.d td { text-align: right; white-space: nowrap }
.d thead th + td { text-align: left }
.d thead th ~ th { text-align: right }
.d td:nth-child(2) { width: 45%; min-width: 3.5rem; padding: .15rem .25rem .15rem .75rem }
.d thead b { float: right; font-weight: 400 }
.d em { color: var(--new); font-style: normal; font-size: .8125rem }
svg { display: block; width: 100%; height: 1.1em; overflow: visible }
rect { height: 1.1em; fill: var(--reference) }
rect + rect { height: .6em; y: .25em; fill: none; stroke: var(--new); stroke-width: 2px }
dl { margin: .75rem 0; font-size: .875rem; line-height: 1.4; display: grid; grid-template-columns: max-content 1fr; gap: .125rem .75rem }
dt { color: var(--soft) }
dd { margin: 0 }
ul { margin: .5rem 0; padding-left: 1.1rem; font-size: .875rem }
details { border-top: 1px solid var(--line); padding: .375rem 0 }
summary { cursor: pointer }
summary small { font-size: .875rem; color: var(--soft); margin-left: .5rem }
.f { font-size: .875rem }
.f th, .f td { padding: .25rem .75rem .25rem 0; vertical-align: top; border-bottom: 1px solid var(--line) }
@media (min-width: 60em) {
  .v { display: grid; grid-template-columns: 1fr 20rem; gap: 0 2.5rem; align-content: start }
  .v > * { grid-column: 1 / -1; min-width: 0 }
  .v > table { grid-column: 1; margin-top: .5rem }
  .v > .facts { grid-column: 2; margin-top: .5rem }
  .facts dl { margin-top: 0 }
}
@media (max-width: 30em) {
  .d { font-size: .8125rem }
  .d th, .d td { padding-left: .375rem }
  .answer { font-size: 1.1875rem }
}
@media print {
  :root {
    color-scheme: light;
    --back: #fff; --text: #000; --soft: #444; --line: #bbb; --shade: #fff;
    --reference: #bbb; --new: #000; --link: #000; --major: #000; --moderate: #000; --minor: #000;
  }
  main { max-width: none; padding: 0 }
  body { font-size: 10pt }
  tr, dl, h2, h3, h4 { break-inside: avoid }
  h2, h3, h4 { break-after: avoid }
  .v { break-inside: avoid }
  nav { display: none }
}
)";

}  // namespace app
