// The lists of the connected iPod: what is known of them, and what is fetched.

import { get } from "./api.js";

const AT_ONCE = 10;

/** One list. Names are fetched in groups of AT_ONCE rows, those in view first. */
export class List {
  constructor(path, generation, changed) {
    this.path = path;
    this.generation = generation;
    this.changed = changed;
    this.facts = null;
    this.items = new Map();
    this.failure = null;
    this.groups = new Map();
  }

  get size() {
    return this.facts ? this.facts.count : 0;
  }

  item(index) {
    return this.items.get(index);
  }

  /** Fetches the rows from `first` to before `end`. What is fetched and is not wanted any more ends. */
  want(first, end) {
    const groups = new Set();
    for (let group = Math.floor(first / AT_ONCE); group * AT_ONCE < end; ++group) groups.add(group);
    for (const [group, fetching] of this.groups) {
      if (!groups.has(group)) fetching.abort();
    }
    for (const group of groups) {
      if (!this.groups.has(group) && !this.has(group)) this.fetch(group);
    }
  }

  leave() {
    for (const fetching of this.groups.values()) fetching.abort();
  }

  has(group) {
    if (!this.facts) return false;
    const end = Math.min((group + 1) * AT_ONCE, this.size);
    for (let index = group * AT_ONCE; index < end; ++index) {
      if (!this.items.has(index)) return false;
    }
    return true;
  }

  async fetch(group) {
    const fetching = new AbortController();
    this.groups.set(group, fetching);
    const query = `generation=${this.generation}&offset=${group * AT_ONCE}&count=${AT_ONCE}`;
    try {
      this.take(await get(`/v1/list/${this.path}?${query}`, fetching.signal));
      this.failure = null;
    } catch (error) {
      if (error.name !== "AbortError") this.failure = error;
    } finally {
      this.groups.delete(group);
    }
    this.changed();
  }

  take(page) {
    this.facts = page;
    for (const item of page.items) this.items.set(item.index, item);
  }
}

/** The tabs of a long list, a group of labels at a time. */
export class Tabs {
  constructor(path, generation, changed) {
    this.path = path;
    this.generation = generation;
    this.changed = changed;
    this.tabs = [];
    this.fetching = null;
    this.failure = null;
  }

  async want(first, end) {
    if (this.fetching) return;
    const missing = this.tabs.slice(first, end).some((tab) => tab.label === null);
    if (this.tabs.length > 0 && !missing) return;
    this.fetching = new AbortController();
    const query = `generation=${this.generation}&offset=${first}&count=${Math.max(8, end - first)}`;
    try {
      const page = await get(`/v1/tabs/${this.path}?${query}`, this.fetching.signal);
      for (const tab of page.tabs) {
        const known = this.tabs[tab.tab];
        this.tabs[tab.tab] = tab.label === null && known ? known : tab;
      }
    } catch (error) {
      if (error.name !== "AbortError") this.failure = error;
    } finally {
      this.fetching = null;
    }
    this.changed();
  }

  leave() {
    this.fetching?.abort();
  }
}
