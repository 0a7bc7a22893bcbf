// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_REPORT_PAGESTYLE_H
#define NORIX_ASSISTANT_REPORT_PAGESTYLE_H

namespace norix::assistant::report {

/// How the report in HTML looks, in the light and in the dark.
constexpr const char *kPageStyle = R"(
:root { color-scheme: light dark; --page: #f6f8fa; --card: #ffffff; --text: #1f2328; --faint: #59636e;
  --line: #d1d9e0; --block: #f0f3f6; --good: #1a7f37; --bad: #c31e29; --open: #8a5d00;
  --assistant: #0969da; --library: #8250df; --application: #1a7f37; --findings: #cf222e; }
@media (prefers-color-scheme: dark) { :root { --page: #0d1117; --card: #151b23; --text: #e6edf3;
  --faint: #9198a1; --line: #3d444d; --block: #21262d; --good: #3fb950; --bad: #ff7b72;
  --open: #d29922; --assistant: #58a6ff; --library: #bc8cff; --application: #3fb950;
  --findings: #f85149; } }
body { background: var(--page); color: var(--text); font: 15px/1.5 system-ui, sans-serif;
  margin: 2rem auto; max-width: 68rem; padding: 0 1rem; }
h1 { font-size: 1.5rem; margin: 0; }
h2 { font-size: 1rem; margin: 1.2rem 0 .2rem; }
a { color: inherit; }
ul { margin: 0; padding-left: 1.4rem; }
.faint, .place, .seconds { color: var(--faint); font-size: .87em; }
.passed { --outcome: var(--good); }
.failed, .error { --outcome: var(--bad); }
.tolerated, .skipped { --outcome: var(--open); }
.outcome { color: var(--outcome); font-weight: 600; }
.share { border-radius: 4px; display: flex; gap: 2px; height: 8px; margin: .8rem 0; overflow: hidden; }
.share span { background: var(--outcome); min-width: 4px; }
summary { align-items: baseline; cursor: pointer; display: flex; gap: .6rem; }
summary::before { color: var(--faint); content: "\25B8"; flex: none; }
details[open] > summary::before { content: "\25BE"; }
summary::-webkit-details-marker { display: none; }
summary .name { overflow-wrap: anywhere; }
summary .place { overflow-wrap: anywhere; }
summary .seconds { flex: none; margin-left: auto; font-variant-numeric: tabular-nums; }
.case { background: var(--card); border: 1px solid var(--line); border-left: 4px solid var(--outcome);
  border-radius: 6px; margin: .7rem 0; padding: .5rem .9rem; }
.case > summary .name { font-weight: 600; }
.step { border-top: 1px solid var(--line); padding: .25rem 0 .25rem .2rem; }
.step:first-of-type { margin-top: .5rem; }
.output { margin: .5rem 0; }
.output > summary { color: var(--faint); font-size: .87em; }
pre, .events { background: var(--block); border-radius: 6px; font: 13px/1.5 ui-monospace, monospace;
  margin: .5rem 0; overflow-wrap: anywhere; padding: .6rem .8rem; white-space: pre-wrap; }
pre.message { border-left: 3px solid var(--outcome); }
.output pre { max-height: 24rem; overflow-y: auto; }
.events div { padding-left: 14ch; text-indent: -14ch; }
.came { color: var(--bad); } .missed { color: var(--good); }
svg.chart { display: block; margin: .6rem 0; width: 100%; }
svg text { fill: currentColor; font-size: 12px; }
svg text.tick { fill: var(--faint); text-anchor: middle; }
svg line.tick { stroke: var(--line); }
svg .assistant { fill: var(--assistant); } svg .library { fill: var(--library); }
svg .application { fill: var(--application); } svg .findings { fill: var(--findings); }
svg rect { opacity: .6; }
)";

} // namespace norix::assistant::report

#endif
