// The filter and the keys. Without this script the page shows everything.
'use strict';
(() => {
  const form = document.getElementById('filter');
  if (!form) return;
  const items = [...document.querySelectorAll('.item')];
  const sections = [...document.querySelectorAll('main section.table')];
  const links = [...document.querySelectorAll('nav[aria-label=tables] li')];
  const search = document.getElementById('search');
  const count = document.getElementById('count');

  const texts = new Map(items.map((item) => [item, item.textContent.toLowerCase()]));

  function apply() {
    const status = form.elements.status.value;
    const wanted = search.value.toLowerCase().split(/\s+/).filter(Boolean);
    for (const item of items) {
      const fits = status === 'all' || item.dataset.status === status;
      item.hidden = !(fits && wanted.every((word) => texts.get(item).includes(word)));
    }
    const isFiltered = status !== 'all' || wanted.length > 0;
    for (const section of sections) section.hidden = isFiltered && !section.querySelector('.item:not([hidden])');
    for (const link of links) link.hidden = document.getElementById(link.firstChild.hash.slice(1)).hidden;
    count.textContent = items.filter((item) => !item.hidden).length + ' of ' + items.length + ' shown';
  }

  // Moves the focus to the next or previous item, or to the first.
  function step(by) {
    const shown = items.filter((item) => !item.hidden);
    if (shown.length === 0) return;
    const current = document.activeElement && document.activeElement.closest('.item');
    const at = shown.indexOf(current);
    const next = at < 0 ? (by > 0 ? 0 : shown.length - 1) : Math.min(Math.max(at + by, 0), shown.length - 1);
    shown[next].focus();
    shown[next].scrollIntoView({ block: 'nearest' });
  }

  const keys = { n: () => step(1), j: () => step(1), p: () => step(-1), k: () => step(-1), '/': () => search.focus() };

  document.addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    if (event.key === 'Escape' && event.target === search) {
      search.value = '';
      search.blur();
      apply();
      return;
    }
    if (event.target === search || !Object.hasOwn(keys, event.key)) return;
    event.preventDefault();
    keys[event.key]();
  });

  // Following a link to a hidden item resets the filter.
  function reveal() {
    const target = document.getElementById(location.hash.slice(1));
    if (!target) return;
    if (target.closest('[hidden]')) {
      form.reset();
      apply();
    }
    if (target.matches('.item')) target.focus();
    target.scrollIntoView({ block: 'nearest' });
  }

  form.addEventListener('input', apply);
  form.addEventListener('submit', (event) => event.preventDefault());
  window.addEventListener('hashchange', reveal);
  form.hidden = false;
  apply();
  if (location.hash) reveal();
})();
