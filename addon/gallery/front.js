// SPDX-License-Identifier: MIT
// Search and order of the list, which is whole without it.
'use strict';
(() => {
  document.documentElement.classList.add('live');

  let input, order, count, list, total;
  let cards = [];  // by name, as they were written
  let words = null;  // what each card is found by
  let isLoading = false;

  // As the words are in the file: in lower case, without the accents of letters, a blank between.
  const fold = text => text.normalize('NFD').replace(/[\u0300-\u036f]/g, '').normalize('NFC')
      .toLowerCase().replace(/\u03c2/g, '\u03c3').replace(/[^\p{L}\p{M}\p{N}\p{Co}]+/gu, ' ')
      .trim();

  // Without the file, or with that of another list, the cards themselves are read.
  const settle = () => {
    words ??= cards.map(card => [...card.querySelectorAll('h2, p')]
        .map(each => ' ' + fold(each.textContent)).join('|'));
    find();
  };
  window.kraddonTerms = (sequence, text) => {
    const lines = text.split('\n').slice(1, -1);
    const isOurs = String(sequence) === document.body.dataset.sequence;
    if (isOurs && lines.length === cards.length) words ??= lines;
  };
  const load = () => {
    if (isLoading) return;
    isLoading = true;
    const script = document.createElement('script');
    script.src = 'terms.js';
    script.onload = script.onerror = settle;
    document.head.append(script);
    setTimeout(settle, 5000);
  };

  const find = () => {
    const wanted = input.value.split(/\s+/).map(fold).filter(word => word).map(word => ' ' + word);
    if (wanted.length > 0 && !words) return load();
    let found = 0;
    cards.forEach((card, i) => {
      const isFound = wanted.every(word => words[i].includes(word));
      if (card.hidden === isFound) card.hidden = !isFound;
      found += isFound;
    });
    let text = total;
    if (wanted.length > 0) text = `${found.toLocaleString('en')} of ${total}`;
    if (wanted.length > 0 && found === 0) text = `None of ${total} has these words`;
    if (count.textContent !== text) count.textContent = text;
  };

  let shownOrder = 'name';
  const sort = () => {
    if (shownOrder === order.value) return;
    shownOrder = order.value;
    let sorted = cards;
    if (shownOrder === 'date') {
      const dates = new Map(cards.map(card => [card, card.querySelector('time')?.dateTime ?? '']));
      const compare = (a, b) => (a < b) - (a > b);
      sorted = [...cards].sort((a, b) => compare(dates.get(a), dates.get(b)));
    }
    list.append(...sorted);
  };

  document.addEventListener('DOMContentLoaded', () => {
    [input, order, count, list] = ['words', 'order', 'count', 'list']
        .map(id => document.getElementById(id));
    cards = [...list.children];
    total = count.textContent;
    // Also what was entered before now, or when the reader was here before.
    const follow = () => {
      sort();
      find();
    };
    follow();
    addEventListener('pageshow', follow);
    for (const control of [input, order]) {
      control.addEventListener('input', () => {
        follow();
        scrollTo(0, 0);
      });
    }
  });
})();
