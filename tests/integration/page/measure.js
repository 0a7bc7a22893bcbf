// SPDX-License-Identifier: Apache-2.0
//
// Measures the report as the browser shows it, and leaves what it finds in the page as JSON. Put in
// front of everything else of the page, whose own policy lets nothing run.
const violations = [];
addEventListener('securitypolicyviolation', event => violations.push(event.violatedDirective));

const boxOf = element => element.getBoundingClientRect();
const textsOf = elements => [...elements].map(element => element.textContent);
const seen = elements => [...elements].filter(element => element.checkVisibility());

// How bright a colour is, by the formula for the contrast of texts.
function luminance(colour) {
  const parts = colour.match(/[\d.]+/g).slice(0, 3).map(part => part / 255)
    .map(part => part <= 0.03928 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4);
  return 0.2126 * parts[0] + 0.7152 * parts[1] + 0.0722 * parts[2];
}

function backgroundOf(element) {
  const colour = getComputedStyle(element).backgroundColor;
  return colour === 'rgba(0, 0, 0, 0)' ? backgroundOf(element.parentElement) : colour;
}

function contrastOf(element) {
  const shades = [getComputedStyle(element).color, backgroundOf(element)].map(luminance);
  return (Math.max(...shades) + 0.05) / (Math.min(...shades) + 0.05);
}

function chartOf(svg) {
  const texts = svg.querySelectorAll('text.tick');
  return {
    ticks: [...svg.querySelectorAll('line.tick')].map((line, i) => ({
      milliseconds: parseFloat(texts[i].textContent), x: boxOf(line).left})),
    bars: [...svg.querySelectorAll('rect')].map(bar => ({
      lane: bar.classList[0], begin: boxOf(bar).left, end: boxOf(bar).right}))};
}

function stepOf(step) {
  const found = {
    name: step.querySelector('.name').textContent,
    outcome: step.querySelector('.outcome').textContent,
    messages: textsOf(seen(step.querySelectorAll('.message'))),
    events: textsOf(seen(step.querySelectorAll('.events div')))};
  step.open = true;
  const svg = step.querySelector('svg');
  return svg === null ? found : {...found, chart: chartOf(svg)};
}

addEventListener('load', () => {
  const cases = [...document.querySelectorAll('.case')];
  const measured = {
    isOpen: cases.map(tried => tried.open),
    steps: [...document.querySelectorAll('.step')].map(stepOf),
    failures: [...document.querySelectorAll('.failures a')].map(
      link => document.querySelector(link.hash).querySelector('.name').textContent),
    overflow: document.documentElement.scrollWidth - document.documentElement.clientWidth,
    requests: performance.getEntriesByType('resource').map(entry => entry.name),
    violations,
    brightness: luminance(getComputedStyle(document.body).backgroundColor),
    contrast: Math.min(...[...document.querySelectorAll('h1, .outcome, .name, .place, .seconds, pre,' +
      '.events, .came, .missed')].map(contrastOf))};
  const result = document.createElement('script');
  result.type = 'application/json';
  result.textContent = JSON.stringify(measured).replace(/</g, '\\u003c');
  document.body.append(result);
});
