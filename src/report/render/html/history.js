// Compares the texts of two versions in a page about histories. Without this script the page shows every step.
'use strict';
(() => {
  const kMaxDistance = 4000; // changed lines; a larger difference takes too long to compute

  // Changed lines as [sign, position], by the shortest edit script; null if it is longer than kMaxDistance.
  function differences(before, after) {
    let start = 0;
    while (start < before.length && start < after.length && before[start] === after[start]) ++start;
    let end = 0;
    const most = Math.min(before.length, after.length) - start;
    while (end < most && before[before.length - 1 - end] === after[after.length - 1 - end]) ++end;
    const n = before.length - start - end;
    const m = after.length - start - end;
    const trace = [];
    const reach = new Map([[1, 0]]);
    const at = (k) => (reach.has(k) ? reach.get(k) : -1);
    for (let d = 0; d <= Math.min(n + m, kMaxDistance); ++d) {
      trace.push(new Map(reach));
      for (let k = -d; k <= d; k += 2) {
        let x = k === -d || (k !== d && at(k - 1) < at(k + 1)) ? at(k + 1) : at(k - 1) + 1;
        while (x < n && x - k < m && x - k >= 0 && before[start + x] === after[start + x - k]) ++x;
        reach.set(k, x);
        if (x >= n && x - k >= m) return backtrack(trace, n, m, start);
      }
    }
    return null;
  }

  function backtrack(trace, n, m, start) {
    const changes = [];
    let x = n;
    let y = m;
    for (let d = trace.length - 1; d > 0; --d) {
      const reach = trace[d];
      const at = (k) => (reach.has(k) ? reach.get(k) : -1);
      const k = x - y;
      const isAdded = k === -d || (k !== d && at(k - 1) < at(k + 1));
      const previous = isAdded ? k + 1 : k - 1;
      x = at(previous);
      y = x - previous;
      changes.push(isAdded ? ['+', start + y] : ['-', start + x]);
    }
    return changes.reverse();
  }

  function show(section) {
    const data = JSON.parse(section.querySelector('script').textContent);
    const [from, to] = [...section.querySelectorAll('select')].map((list) => Number(list.value));
    const before = data.texts[from];
    const after = data.texts[to];
    const output = section.querySelector('output');
    output.textContent = '';
    const say = (text) => output.append(Object.assign(document.createElement('p'), { textContent: text }));
    if (!before || !after) return say('The page does not have the text of this version.');
    const changes = differences(before, after);
    if (changes === null) return say('The versions differ in more than ' + kMaxDistance + ' lines.');
    if (changes.length === 0) return say('The texts are the same.');
    const block = document.createElement('pre');
    for (const [sign, position] of changes) {
      const line = document.createElement('span');
      line.className = sign === '+' ? 'added' : 'removed';
      const id = sign === '+' ? after[position] : before[position];
      line.textContent = sign + ' ' + String(position + 1).padStart(5) + ' | ' + data.lines[id] + '\n';
      block.append(line);
    }
    say(changes.length + ' lines removed or added:');
    output.append(block);
  }

  for (const section of document.querySelectorAll('section.compare')) {
    section.querySelector('form').hidden = false;
    for (const list of section.querySelectorAll('select')) list.addEventListener('change', () => show(section));
    show(section);
  }
})();
