// The filter and the keys. Without it the page shows all there is.
'use strict';
(() => {
  const form = document.getElementById('filter');
  if (!form) return;
  const items = [...document.querySelectorAll('.item')];
  const sections = [...document.querySelectorAll('main section.table')];
  const words = document.getElementById('words');
  const count = document.getElementById('count');

  const texts = new Map(items.map((item) => [item, item.textContent.toLowerCase()]));

  function apply() {
    const look = form.elements.look.value;
    const wanted = words.value.toLowerCase().split(/\s+/).filter(Boolean);
    for (const item of items) {
      const fits = look === 'all' || item.dataset.look === look;
      item.hidden = !(fits && wanted.every((word) => texts.get(item).includes(word)));
    }
    const isFiltered = look !== 'all' || wanted.length > 0;
    for (const section of sections) section.hidden = isFiltered && !section.querySelector('.item:not([hidden])');
    count.textContent = items.filter((item) => !item.hidden).length + ' of ' + items.length + ' shown';
  }

  // The item behind or before the one that has the focus, or the first.
  function step(by) {
    const shown = items.filter((item) => !item.hidden);
    if (shown.length === 0) return;
    const current = document.activeElement && document.activeElement.closest('.item');
    const at = shown.indexOf(current);
    const next = at < 0 ? (by > 0 ? 0 : shown.length - 1) : Math.min(Math.max(at + by, 0), shown.length - 1);
    shown[next].focus();
    shown[next].scrollIntoView({ block: 'nearest' });
  }

  const keys = { n: () => step(1), j: () => step(1), p: () => step(-1), k: () => step(-1), '/': () => words.focus() };

  document.addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    if (event.key === 'Escape' && event.target === words) {
      words.value = '';
      words.blur();
      apply();
      return;
    }
    if (event.target === words || !Object.hasOwn(keys, event.key)) return;
    event.preventDefault();
    keys[event.key]();
  });

  // A link to what the filter hides shows it again.
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
